#include "morvakit/doc/doc_form_field.h"

#include <algorithm>
#include <string>

#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little16;
using tessarine::little32;

constexpr auto kind = Orlec::ParseTextType_control;

/// Moves through the fields of the data.
class FieldData {
 public:
  explicit FieldData(std::string_view bytes) : bytes_(bytes) {}

  void skip(std::size_t size) { bytes_.remove_prefix(std::min(size, bytes_.size())); }
  std::uint16_t number() {
    auto const value = little16(bytes_, 0);
    skip(2);
    return value;
  }
  std::string text() {
    auto const size = std::size_t{number()} * 2;
    auto text = decode_utf16(bytes_.substr(0, size));
    skip(size);
    return text;
  }
  std::string ended_text() {
    auto text = this->text();
    skip(2);
    return text;
  }
  bool is_empty() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
};

void read_list(FieldData& data, TextFlow& flow) {
  constexpr std::size_t mark_size = 2;
  data.skip(mark_size);
  auto const count = data.number() | std::uint32_t{data.number()} << 16U;
  auto const extra_size = std::size_t{data.number()};
  for (std::uint32_t i = 0; i < count && !data.is_empty(); ++i) {
    flow.line(kind, data.text());
    data.skip(extra_size);
  }
}

}  // namespace

void read_form_field(Orlec::Reader const& data, std::int64_t offset, TextFlow& flow) {
  constexpr std::int64_t longest = 64 << 10;
  constexpr std::uint32_t version = 0xFFFFFFFF;
  constexpr unsigned text_field = 0;
  constexpr unsigned list_field = 2;
  auto const head = tessarine::read_piece(data, offset, 6);
  std::int64_t const header_size = little16(head, 4);
  std::int64_t const size = little32(head, 0);
  auto const bytes = tessarine::read_piece(
      data, offset + header_size, std::clamp<std::int64_t>(size - header_size, 0, longest));
  if (little32(bytes, 0) != version) {
    return;
  }
  auto const type = little16(bytes, 4) & 3U;
  FieldData fields(bytes);
  fields.skip(10);
  fields.ended_text();  // the name of its bookmark
  if (type == text_field) {
    flow.line(kind, fields.ended_text());
  } else {
    fields.skip(2);
  }
  fields.ended_text();  // the form of its numbers
  flow.line(kind, fields.ended_text());
  flow.line(kind, fields.ended_text());
  fields.ended_text();  // the macros that run on entry
  fields.ended_text();  // and on exit
  if (type == list_field) {
    read_list(fields, flow);
  }
}

}  // namespace morvakit
