#pragma once

#include <string_view>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseFile.h"

namespace morvakit {

/// What the PDF component asks of the library that loads it: the part of `ReadContext` that it
/// needs, as virtual functions, so that the component needs no symbol of the library.
class PdfSink {
 public:
  PdfSink() = default;
  PdfSink(PdfSink const&) = delete;
  PdfSink& operator=(PdfSink const&) = delete;

  /// As those of `ReadContext`.
  virtual bool text(Orlec::ParseTextType type, std::string_view utf8) = 0;
  virtual bool separate(Orlec::ParseTextType type, char separator) = 0;
  virtual bool keep_going() = 0;
  virtual void end(Orlec::ParseOutcome outcome, std::string_view reason) = 0;
  virtual void note(Orlec::ParseOutcome outcome, std::string_view reason) = 0;

 protected:
  ~PdfSink() = default;
};

/// Offered by the component under `read_pdf_symbol`: reads a document into the sink.
using ReadPdfFunction = void (*)(Orlec::Reader const& reader, PdfSink& sink);

inline constexpr char const* read_pdf_symbol = "morvakit_read_pdf";

}  // namespace morvakit
