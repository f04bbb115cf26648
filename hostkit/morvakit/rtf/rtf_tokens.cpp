#include "morvakit/rtf/rtf_tokens.h"

#include <algorithm>
#include <limits>

namespace morvakit {

namespace {

constexpr std::size_t piece_size = std::size_t{64} << 10;

bool is_letter(int byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}

bool is_number_digit(int byte) {
  return byte >= '0' && byte <= '9';
}

constexpr std::array<bool, 256> make_text_table() {
  std::array<bool, 256> table{};
  table.fill(true);
  for (char const special : {'\\', '{', '}', '\r', '\n', '\0'}) {
    table[static_cast<unsigned char>(special)] = false;
  }
  return table;
}

bool is_text(char byte) {
  static constexpr auto table = make_text_table();
  return table[static_cast<unsigned char>(byte)];
}

}  // namespace

int rtf_digit(char character) {
  if (is_number_digit(character)) {
    return character - '0';
  }
  auto const lower = static_cast<char>(character | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::int64_t RtfTokens::offset() const {
  return piece_offset_ + static_cast<std::int64_t>(at_);
}

void RtfTokens::seek(std::int64_t offset) {
  auto const end = piece_offset_ + static_cast<std::int64_t>(piece_.size());
  if (offset < piece_offset_ || offset >= end) {
    piece_.clear();
    piece_offset_ = offset;
  }
  at_ = static_cast<std::size_t>(offset - piece_offset_);
  binary_left_ = 0;
}

/// False at the end; else there is at least one byte to be taken. The one before it stays, so that
/// it can be given back.
bool RtfTokens::fill() {
  if (at_ < piece_.size()) {
    return true;
  }
  auto const kept = std::min<std::size_t>(piece_.size(), 1);
  piece_offset_ += static_cast<std::int64_t>(piece_.size() - kept);
  at_ = kept;
  piece_.resize(piece_size);
  auto const got = reader_.ReadAt(piece_offset_, piece_.data(), piece_size);
  has_failed_ = has_failed_ || got < 0;
  piece_.resize(std::max(kept, static_cast<std::size_t>(std::max<std::int64_t>(got, 0))));
  return at_ < piece_.size();
}

int RtfTokens::peek() {
  return fill() ? static_cast<unsigned char>(piece_[at_]) : no_byte;
}

int RtfTokens::take() {
  int const byte = peek();
  at_ += byte == no_byte ? 0 : 1;
  return byte;
}

RtfToken RtfTokens::next() {
  if (binary_left_ > 0) {
    return binary();
  }
  while (fill()) {
    if (is_text(piece_[at_])) {
      return run();
    }
    switch (piece_[at_++]) {
      case '{':
        return {RtfToken::Type::group_begin};
      case '}':
        return {RtfToken::Type::group_end};
      case '\\':
        return control();
      default:
        break;
    }
  }
  return {};
}

RtfToken RtfTokens::run() {
  auto const begin = piece_.begin() + static_cast<std::ptrdiff_t>(at_);
  auto const end = std::find_if_not(begin, piece_.end(), is_text);
  auto const length = static_cast<std::size_t>(end - begin);
  std::string_view const text(piece_.data() + at_, length);
  at_ += length;
  return {RtfToken::Type::text, text};
}

RtfToken RtfTokens::binary() {
  if (!fill()) {
    return {};
  }
  auto const length = static_cast<std::size_t>(
      std::min(binary_left_, static_cast<std::int64_t>(piece_.size() - at_)));
  std::string_view const bytes(piece_.data() + at_, length);
  at_ += length;
  binary_left_ -= static_cast<std::int64_t>(length);
  return {RtfToken::Type::binary, bytes};
}

RtfToken RtfTokens::control() {
  int const byte = take();
  if (byte == no_byte) {
    return {};
  }
  character_ = static_cast<char>(byte);
  if (is_letter(byte)) {
    return word(character_);
  }
  return character_ == '\'' ? hexadecimal() : RtfToken{RtfToken::Type::symbol, {&character_, 1}};
}

RtfToken RtfTokens::hexadecimal() {
  int value = 0;
  for (int digits = 0; digits < 2; ++digits) {
    int const byte = peek();
    int const digit = byte == no_byte ? -1 : rtf_digit(static_cast<char>(byte));
    if (digit < 0) {
      return {RtfToken::Type::symbol, {&character_, 1}};
    }
    value = value * 16 + digit;
    ++at_;
  }
  character_ = static_cast<char>(value);
  return {RtfToken::Type::byte, {&character_, 1}};
}

RtfToken RtfTokens::word(char first) {
  std::size_t length = 1;
  name_[0] = first;
  for (; is_letter(peek()); ++length) {
    auto const letter = static_cast<char>(take());
    if (length < name_.size()) {
      name_[length] = letter;
    }
  }
  RtfToken token{RtfToken::Type::word, {name_.data(), length <= name_.size() ? length : 0}};
  read_parameter(token);
  if (peek() == ' ') {
    ++at_;
  }
  if (token.text == "bin" && token.parameter > 0) {
    binary_left_ = token.parameter;
  }
  return token;
}

void RtfTokens::read_parameter(RtfToken& token) {
  bool const is_negative = peek() == '-';
  if (is_negative) {
    ++at_;
    if (!is_number_digit(peek())) {
      --at_;
      return;
    }
  }
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  std::int64_t value = 0;
  while (is_number_digit(peek())) {
    token.has_parameter = true;
    value = std::min(most, value * 10 + (take() - '0'));
  }
  token.parameter = static_cast<std::int32_t>(is_negative ? -value : value);
}

}  // namespace morvakit
