#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>

#include <Object.h>

#include "morvakit/pdf/pdf_component.h"

class GooString;

namespace morvakit {

/// A text string of the file, in UTF-16 with a mark, in UTF-8 with one, or in the format's own
/// 8-bit set, as UTF-8. Empty for null.
std::string to_text(GooString const* string);
/// The same for an object, which may be a stream that holds the string; of one that is very long
/// only the beginning, which is noted in the sink. Empty for other objects.
std::string to_text(Object const& object, PdfSink& sink);

/// Whether a stream is packed as only pictures are: by what packs nothing else, among other ways or
/// alone, or in rows of over 16 million numbers. The library makes room for a whole picture or row,
/// as large as it is said to be, before it gives a byte.
bool is_packed_as_picture(Object const& stream);
/// Unpacks a stream in pieces until `take` gives false; one that is packed as a picture has none.
void read_pdf_stream(Object const& stream, std::function<bool(std::string_view)> const& take);
/// The bytes that the stream takes in the file, as it states.
std::int64_t packed_size(Object const& stream);

/// The objects that have been met. An object without a number of its own counts as new.
class PdfObjectsMet {
 public:
  /// `object`: as it stands, a reference or not.
  bool is_new(Object const& object);

 private:
  std::set<std::pair<int, int>> met_;
};

}  // namespace morvakit
