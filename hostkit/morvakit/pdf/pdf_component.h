#pragma once

#include <cstdint>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseFile.h"

namespace morvakit {

/// What a document holds beside its pages, which is not for the component to read.
enum class PdfPart {
  metadata,  ///< XMP; properties that the document has stated already do not count again
  form,      ///< XFA: a form's template and data, one XML document
  file,      ///< an attached file
};

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
  virtual void count_pages(std::int64_t number) = 0;
  virtual void count_images(std::int64_t number) = 0;
  virtual bool keep_going() = 0;
  virtual bool charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added) = 0;
  virtual void end(Orlec::ParseOutcome outcome, std::string_view reason) = 0;
  virtual void note(Orlec::ParseOutcome outcome, std::string_view reason) = 0;

  /// A property of the document, on a line of its own. False when reading is to stop.
  virtual bool property(std::string_view name, std::string_view value) = 0;

  /// A part follows, then its bytes in pieces, then its end; files come behind all text. The name
  /// is a file's. False when the part is not wanted: then nothing of it follows.
  virtual bool begin_part(PdfPart part, std::string_view name) = 0;
  /// `packed`: bytes that the whole part takes in the document. False when no more is wanted.
  virtual bool part_bytes(std::string_view bytes, std::int64_t packed) = 0;
  /// False when reading is to stop.
  virtual bool end_part() = 0;

 protected:
  ~PdfSink() = default;
};

/// Offered by the component under `read_pdf_symbol`: reads a document into the sink.
using ReadPdfFunction = void (*)(Orlec::Reader const& reader, PdfSink& sink);

inline constexpr char const* read_pdf_symbol = "morvakit_read_pdf";

}  // namespace morvakit
