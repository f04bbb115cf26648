#pragma once

#include <Object.h>

#include "morvakit/pdf/pdf_component.h"

namespace morvakit {

/// Whether the library can take a stream. It unpacks some of them whole, keeps many times their
/// size, and ends the process where there is no memory for it. Each answer ends the reading in the
/// sink where it is no; an object that is no stream is harmless. A stream that is packed as a
/// picture is damage, as nothing but a picture is to be: it is never opened.
class PdfBounds {
 public:
  explicit PdfBounds(PdfSink& sink) : sink_(sink) {}

  /// Keeps to the bounds on what may be unpacked. Only looked into where it could be over them.
  bool is_bounded(Object const& stream);
  /// A map of characters whose ranges are not too long.
  bool is_sound_map(Object const& stream);
  /// A shading that is not made of too many pieces.
  bool is_sound_shading(Object const& shading);

 private:
  bool is_no_picture(Object const& stream);

  PdfSink& sink_;
};

}  // namespace morvakit
