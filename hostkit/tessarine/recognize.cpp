#include <algorithm>

#include "morvabs/text_decoder.h"

#include "tessarine/byte_reader.h"
#include "tessarine/file_type.h"
#include "tessarine/mail_types.h"
#include "tessarine/ole_types.h"
#include "tessarine/pdf_encryption.h"
#include "tessarine/signatures.h"
#include "tessarine/text_types.h"
#include "tessarine/zip_types.h"

namespace tessarine {
namespace {

constexpr std::int64_t head_size = 64 << 10;
constexpr std::int64_t tail_size = 2 << 10;
// What is looked at to tell the encoding: a text may have one character beyond ASCII far behind its
// beginning, but a binary file shows itself early.
constexpr std::int64_t text_sample_size = 256 << 10;
// Readers of PDF accept anything in front of the header, within this distance.
constexpr std::size_t pdf_header_distance = 1024;

// A text may tell of PDF headers, and a damaged PDF may have lost its own: where the header does
// not stand right at the beginning, the body has to look like a PDF's.
bool is_pdf(Orlec::Reader const& reader, std::string_view head) {
  auto const start = std::min(head.find_first_not_of("\xef\xbb\xbf \t\r\n"), head.size());
  if (head.substr(start).starts_with("%PDF-")) {
    return true;
  }
  auto const has_header =
      head.substr(0, pdf_header_distance).find("%PDF-") != std::string_view::npos;
  auto const is_comment = head.substr(start).starts_with('%');
  if (!has_header && !is_comment) {
    return false;
  }
  auto const tail =
      read_piece(reader, std::max<std::int64_t>(0, reader.GetSize() - tail_size), tail_size);
  auto const has_object = head.find(" obj") != std::string_view::npos;
  auto const has_end = tail.find("startxref") != std::string::npos ||
                       tail.find("%%EOF") != std::string::npos ||
                       tail.find("trailer") != std::string::npos;
  return has_object && (has_end || head.find("endobj") != std::string_view::npos);
}

bool is_rtf(std::string_view head) {
  auto const start = std::min(head.find_first_not_of("\xef\xbb\xbf \t\r\n"), head.size());
  auto const text = head.substr(start);
  return text.starts_with("{\\rtf") || text.starts_with("{\\urtf") || text.starts_with("{\\pard ");
}

Recognition recognize_text_file(Orlec::Reader const& reader, std::string_view head) {
  auto const suffix = name_suffix(reader);
  if (auto const mail = recognize_mail(head, suffix); mail.type != FileType::unknown) {
    return mail;
  }
  auto const sample = read_piece(reader, 0, text_sample_size);
  auto const encoding = morvabs::detect_encoding(sample);
  if (encoding.name.empty()) {
    return {};
  }
  morvabs::TextDecoder decoder(encoding.name);
  std::string text;
  decoder.decode(head.substr(std::min(encoding.mark_length, head.size())), false, text);
  return recognize_text(text, suffix);
}

}  // namespace

Recognition recognize(Orlec::Reader const& reader) {
  auto const head = read_piece(reader, 0, head_size);
  if (head.empty()) {
    return {reader.GetSize() == 0 ? FileType::empty : FileType::unknown};
  }
  if (is_zip(head)) {
    return recognize_zip(reader);
  }
  if (is_ole(head)) {
    return recognize_ole(reader);
  }
  if (is_pdf(reader, head)) {
    return {FileType::pdf, "pdf", pdf_needs_password(reader)};
  }
  if (is_rtf(head)) {
    return {FileType::rtf, "rtf"};
  }
  if (is_bare_workbook(head)) {
    return {FileType::xls, "xls"};
  }
  if (auto const known = recognize_signature(head); known.type != FileType::unknown) {
    return known;
  }
  return recognize_text_file(reader, head);
}

}  // namespace tessarine
