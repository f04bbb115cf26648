#include "morvakit/office/xlsb_records.h"

#include <algorithm>
#include <bit>

#include "morvakit/sheet/sheet_text.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::uint32_t longest_record = std::uint32_t{1} << 20;
constexpr unsigned bits_per_byte = 7;
constexpr unsigned more_follows = 0x80;

}  // namespace

// Types take one byte or two, sizes up to four, seven bits in each.
void XlsbRecords::take_head(std::uint8_t byte) {
  bool const is_type = expected_ == Expected::type;
  auto& value = is_type ? type_ : size_;
  value = (shift_ == 0 ? 0 : value) | (byte & (more_follows - 1U)) << shift_;
  shift_ += bits_per_byte;
  unsigned const most_bits = is_type ? 2 * bits_per_byte : 4 * bits_per_byte;
  if ((byte & more_follows) != 0 && shift_ < most_bits) {
    return;
  }
  shift_ = 0;
  expected_ = is_type ? Expected::size : Expected::body;
  left_ = size_;
}

void XlsbRecords::take_body(std::string_view& bytes) {
  auto const piece = bytes.substr(0, left_);
  bytes.remove_prefix(piece.size());
  left_ -= static_cast<std::uint32_t>(piece.size());
  bool const is_whole = piece.size() == size_;
  if (!is_whole && size_ <= longest_record) {
    body_.append(piece);
  }
  if (left_ > 0) {
    return;
  }
  expected_ = Expected::type;
  if (size_ <= longest_record) {
    handler_(type_, is_whole ? piece : std::string_view(body_));
  } else {
    context_.note(Orlec::ParseOutcome::damaged, "a record of the workbook is too long");
  }
  body_.clear();
}

bool XlsbRecords::feed(std::string_view bytes) {
  // A record without a body ends with its head.
  while (!bytes.empty() || (expected_ == Expected::body && left_ == 0)) {
    if (!context_.keep_going()) {
      return false;
    }
    if (expected_ == Expected::body) {
      take_body(bytes);
    } else {
      take_head(static_cast<std::uint8_t>(bytes.front()));
      bytes.remove_prefix(1);
    }
  }
  return true;
}

void XlsbRecords::finish() {
  if (expected_ != Expected::type || shift_ > 0) {
    context_.note(Orlec::ParseOutcome::damaged, "a part of the workbook is cut short");
  }
}

std::string_view XlsbFields::take(std::size_t count) {
  auto const taken = rest_.substr(0, count);
  rest_.remove_prefix(taken.size());
  return taken;
}

void XlsbFields::skip(std::size_t count) {
  take(count);
}

std::uint8_t XlsbFields::byte() {
  auto const taken = take(1);
  return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
}

std::uint16_t XlsbFields::word() {
  return tessarine::little16(take(2), 0);
}

std::uint32_t XlsbFields::double_word() {
  return tessarine::little32(take(4), 0);
}

double XlsbFields::floating() {
  return std::bit_cast<double>(tessarine::little64(take(8), 0));
}

std::string XlsbFields::string() {
  std::string utf8;
  constexpr std::uint32_t none = 0xffffffff;
  if (auto const length = double_word(); length != none) {
    append_utf16(utf8, take(std::size_t{length} * 2));
  }
  return utf8;
}

std::string XlsbFields::rich_string() {
  skip(1);
  return string();
}

}  // namespace morvakit
