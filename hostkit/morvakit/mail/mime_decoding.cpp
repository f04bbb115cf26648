#include "morvakit/mail/mime_decoding.h"

#include <algorithm>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

/// Lines of encoded data have some hundred characters; longer ones are taken in pieces.
constexpr std::size_t longest_line = 4096;

constexpr std::array<signed char, 256> make_base64_values() {
  std::array<signed char, 256> values{};
  values.fill(-1);
  constexpr std::string_view alphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (std::size_t i = 0; i < alphabet.size(); ++i) {
    values[static_cast<unsigned char>(alphabet[i])] = static_cast<signed char>(i);
  }
  return values;
}

int hex_value(char digit) {
  if (digit >= '0' && digit <= '9') {
    return digit - '0';
  }
  char const lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::uint32_t uu_value(char character) {
  return (static_cast<unsigned char>(character) - 0x20U) & 0x3fU;
}

}  // namespace

Transfer find_transfer(std::string_view name) {
  auto const lower = tessarine::ascii_lower(name);
  if (lower == "base64") {
    return Transfer::base64;
  }
  if (lower == "quoted-printable") {
    return Transfer::quoted_printable;
  }
  if (lower == "x-uuencode" || lower == "uuencode" || lower == "x-uue") {
    return Transfer::uuencode;
  }
  return lower == "x-yenc" || lower == "yenc" ? Transfer::yenc : Transfer::identity;
}

void TransferDecoder::decode(std::string_view bytes, std::string& out) {
  switch (transfer_) {
    case Transfer::identity:
      out += bytes;
      break;
    case Transfer::base64:
      decode_base64(bytes, out);
      break;
    case Transfer::quoted_printable:
      decode_quoted(bytes, out);
      break;
    case Transfer::uuencode:
    case Transfer::yenc:
      decode_lines(bytes, out);
      break;
  }
}

void TransferDecoder::finish(std::string& out) {
  if (transfer_ == Transfer::base64) {
    decode_base64("=", out);
  } else if (transfer_ == Transfer::quoted_printable) {
    // A line that ends in the middle of an escape: "=" alone is a soft line end.
    out += kept_ == "=" ? std::string_view{} : std::string_view(kept_);
    kept_.clear();
  } else if (!kept_.empty()) {
    decode_line(out);
  }
}

void TransferDecoder::decode_base64(std::string_view bytes, std::string& out) {
  static constexpr auto values = make_base64_values();
  for (char const character : bytes) {
    auto const value = values[static_cast<unsigned char>(character)];
    if (value >= 0) {
      bits_ = bits_ << 6U | static_cast<std::uint32_t>(value);
      if (++digits_ == 4) {
        out += static_cast<char>(bits_ >> 16U & 0xffU);
        out += static_cast<char>(bits_ >> 8U & 0xffU);
        out += static_cast<char>(bits_ & 0xffU);
        digits_ = 0;
      }
    } else if (character == '=') {
      // Padding: other data may follow it, as where two encoded files were put together.
      if (digits_ >= 2) {
        out += static_cast<char>(bits_ >> (digits_ == 3 ? 10U : 4U) & 0xffU);
      }
      if (digits_ == 3) {
        out += static_cast<char>(bits_ >> 2U & 0xffU);
      }
      digits_ = 0;
    }
  }
}

void TransferDecoder::decode_quoted(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    if (!kept_.empty()) {
      end_quoted(bytes.front(), out);
      bytes.remove_prefix(1);
      continue;
    }
    auto const plain = std::min(bytes.find('='), bytes.size());
    out += bytes.substr(0, plain);
    bytes.remove_prefix(plain);
    if (!bytes.empty()) {
      kept_ = "=";
      bytes.remove_prefix(1);
    }
  }
}

/// One more character of an escape: two digits, or blanks and the end of the line.
void TransferDecoder::end_quoted(char character, std::string& out) {
  kept_ += character;
  bool const is_blank = character == ' ' || character == '\t' || character == '\r';
  if (character == '\n' && kept_.find_first_not_of("= \t\r\n") == std::string::npos) {
    kept_.clear();
  } else if (kept_.size() == 3 && hex_value(kept_[1]) >= 0 && hex_value(kept_[2]) >= 0) {
    out += static_cast<char>(hex_value(kept_[1]) * 16 + hex_value(kept_[2]));
    kept_.clear();
  } else if (kept_.size() >= longest_line ||
             (!is_blank && !(kept_.size() == 2 && hex_value(character) >= 0))) {
    // No escape: the sign stands for itself, and another one begins anew.
    bool const begins_anew = character == '=';
    out.append(kept_, 0, kept_.size() - (begins_anew ? 1U : 0U));
    kept_ = begins_anew ? "=" : "";
  }
}

void TransferDecoder::decode_lines(std::string_view bytes, std::string& out) {
  while (!bytes.empty()) {
    auto const end = std::min(bytes.find('\n'), bytes.size());
    auto const taken = std::min(end, longest_line - kept_.size());
    kept_ += bytes.substr(0, taken);
    bytes.remove_prefix(taken);
    bool const is_end = !bytes.empty() && bytes.front() == '\n';
    if (is_end) {
      bytes.remove_prefix(1);
    }
    if (is_end || kept_.size() >= longest_line) {
      decode_line(out);
    }
  }
}

void TransferDecoder::decode_line(std::string& out) {
  if (kept_.ends_with('\r')) {
    kept_.pop_back();
  }
  auto const line = std::string_view(kept_);
  bool const is_yenc = transfer_ == Transfer::yenc;
  if (line.starts_with(is_yenc ? "=ybegin " : "begin ")) {
    is_inside_ = true;
  } else if (line.starts_with(is_yenc ? "=yend" : "end")) {
    is_inside_ = false;
  } else if (is_inside_ && is_yenc && !line.starts_with("=ypart ")) {
    decode_yenc_line(out);
  } else if (is_inside_ && !is_yenc) {
    decode_uu_line(out);
  }
  kept_.clear();
}

void TransferDecoder::decode_uu_line(std::string& out) const {
  std::size_t left = kept_.empty() ? 0 : uu_value(kept_.front());
  for (std::size_t at = 1; left > 0 && at < kept_.size(); at += 4) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      bits = bits << 6U | (at + i < kept_.size() ? uu_value(kept_[at + i]) : 0U);
    }
    for (auto const shift : {16U, 8U, 0U}) {
      if (left > 0) {
        out += static_cast<char>(bits >> shift & 0xffU);
        --left;
      }
    }
  }
}

void TransferDecoder::decode_yenc_line(std::string& out) const {
  for (std::size_t at = 0; at < kept_.size(); ++at) {
    bool const is_escaped = kept_[at] == '=' && at + 1 < kept_.size();
    at += is_escaped ? 1U : 0U;
    out += static_cast<char>(static_cast<unsigned char>(kept_[at]) - (is_escaped ? 106U : 42U));
  }
}

}  // namespace morvakit
