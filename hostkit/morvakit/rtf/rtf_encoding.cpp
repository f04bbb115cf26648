#include "morvakit/rtf/rtf_encoding.h"

#include <algorithm>
#include <utility>

#include "host/utf8.h"
#include "morvakit/text/code_page.h"

namespace morvakit {

namespace {

constexpr int western = 1252;
constexpr int symbol_charset = 2;
constexpr std::uint32_t replacement = 0xFFFD;

bool is_ascii(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

}  // namespace

bool is_double_byte(int code_page) {
  switch (code_page) {
    case 932:
    case 936:
    case 949:
    case 950:
    case 1361:
    case 10001:
    case 10002:
    case 10003:
    case 10008:
    case 20936:
    case 54936:
      return true;
    default:
      return false;
  }
}

void RtfFonts::set_default_code_page(int code_page) {
  default_code_page_ = is_stated_ ? default_code_page_ : code_page;
}

void RtfFonts::state_code_page(int code_page) {
  if (!code_page_name(code_page).empty()) {
    default_code_page_ = code_page;
    is_stated_ = true;
  }
}

bool RtfFonts::select(int font) {
  selected_ = font;
  return code_pages_.try_emplace(font, unknown).second;
}

void RtfFonts::set_charset(int charset) {
  // The default set is that of the document.
  constexpr int default_charset = 1;
  if (selected_ != default_font && charset != default_charset) {
    code_pages_[selected_] = charset == symbol_charset ? symbols : code_page_of_charset(charset);
  }
}

void RtfFonts::set_code_page(int code_page) {
  if (selected_ != default_font && !code_page_name(code_page).empty()) {
    code_pages_[selected_] = code_page;
  }
}

int RtfFonts::code_page(int font) const {
  auto const found = code_pages_.find(font == default_font ? default_font_ : font);
  return found == code_pages_.end() || found->second == unknown ? default_code_page_
                                                                : found->second;
}

void RtfDecoder::bytes(std::string_view text, int code_page, int default_code_page) {
  constexpr std::size_t gathered_size = 16 << 10;
  end_pair();
  if (code_page != code_page_ || default_code_page != default_code_page_) {
    decode(true);
    code_page_ = code_page;
    default_code_page_ = default_code_page;
  }
  bytes_ += text;
  if (bytes_.size() >= gathered_size) {
    decode(false);
  }
}

void RtfDecoder::decode(bool last) {
  if (bytes_.empty() && !is_begun_) {
    return;
  }
  if (!is_begun_ && std::all_of(bytes_.begin(), bytes_.end(), is_ascii)) {
    utf8_ += bytes_;
  } else if (code_page_ == RtfFonts::symbols) {
    std::transform(bytes_.begin(), bytes_.end(), std::back_inserter(utf8_),
                   [](char byte) { return is_ascii(byte) ? byte : ' '; });
  } else if (code_page_ == western && is_double_byte(default_code_page_)) {
    bytes_ = decode_mixed(last);
    return;
  } else {
    decoder(code_page_).decode(bytes_, last, utf8_);
    is_begun_ = !last;
  }
  bytes_.clear();
}

std::string RtfDecoder::decode_mixed(bool last) {
  std::string pairs;
  for (auto begin = bytes_.begin(); begin != bytes_.end();) {
    auto const high = std::find_if_not(begin, bytes_.end(), is_ascii);
    auto end = std::find_if(high, bytes_.end(), is_ascii);
    bool const goes_on = !last && end == bytes_.end() && (end - high) % 2 != 0;
    end -= goes_on ? 1 : 0;
    utf8_.append(begin, high);
    std::string_view const letters(&*bytes_.begin() + (high - bytes_.begin()),
                                   static_cast<std::size_t>(end - high));
    pairs.clear();
    decoder(default_code_page_).decode(letters, true, pairs);
    if (letters.size() % 2 == 0 && pairs.find("\xEF\xBF\xBD") == std::string::npos) {
      utf8_ += pairs;
    } else {
      decoder(western).decode(letters, true, utf8_);
    }
    if (goes_on) {
      return std::string(end, bytes_.end());
    }
    begin = end;
  }
  return {};
}

morvabs::TextDecoder& RtfDecoder::decoder(int code_page) {
  auto const found = decoders_.find(code_page);
  return found != decoders_.end()
             ? found->second
             : decoders_.emplace(code_page, morvabs::TextDecoder(code_page_name(code_page)))
                   .first->second;
}

void RtfDecoder::unit(std::uint32_t value) {
  constexpr std::uint32_t surrogate_bits = 0x3FF;
  decode(true);
  bool const is_low = value >= 0xDC00 && value <= 0xDFFF;
  if (is_low && high_surrogate_ != 0) {
    auto const high = std::exchange(high_surrogate_, 0);
    put(0x10000 + ((high & surrogate_bits) << 10U) + (value & surrogate_bits));
    return;
  }
  end_pair();
  if (value >= 0xD800 && value <= 0xDBFF) {
    high_surrogate_ = value;
  } else {
    put(value);
  }
}

void RtfDecoder::put(std::uint32_t value) {
  char bytes[4];
  utf8_.append(bytes, morvabs::encode_utf8(value, bytes));
}

void RtfDecoder::end_pair() {
  if (std::exchange(high_surrogate_, 0) != 0) {
    put(replacement);
  }
}

std::string RtfDecoder::take(bool last) {
  if (last) {
    decode(true);
    end_pair();
  }
  return std::exchange(utf8_, {});
}

}  // namespace morvakit
