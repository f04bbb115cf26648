#include "morvabs/text_decoder.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>

#include "host/utf8.h"

namespace morvabs {

namespace {

constexpr char const* fallback = "windows-1252";

/// Letters and digits in lower case: "GB_2312-80" and "gb231280" are one name.
std::string plain_name(std::string_view name) {
  std::string plain;
  for (char const c : name) {
    if (c >= 'A' && c <= 'Z') {
      plain.push_back(static_cast<char>(c - 'A' + 'a'));
    } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
      plain.push_back(c);
    }
  }
  return plain;
}

std::string wider_name(std::string_view name) {
  static constexpr std::pair<std::string_view, char const*> wider[] = {
      {"gb2312", "gb18030"},      {"gb231280", "gb18030"},     {"xgb2312", "gb18030"},
      {"gbk", "gb18030"},         {"xgbk", "gb18030"},         {"cp936", "gb18030"},
      {"ms936", "gb18030"},       {"windows936", "gb18030"},   {"euccn", "gb18030"},
      {"csgb2312", "gb18030"},    {"isoir58", "gb18030"},      {"chinese", "gb18030"},
      {"iso88591", fallback},     {"latin1", fallback},        {"l1", fallback},
      {"usascii", fallback},      {"ascii", fallback},         {"cp1252", fallback},
      {"ansi", fallback},         {"shiftjis", "windows-31j"}, {"sjis", "windows-31j"},
      {"xsjis", "windows-31j"},   {"cp932", "windows-31j"},    {"ms932", "windows-31j"},
      {"mskanji", "windows-31j"}, {"euckr", "windows-949"},    {"ksc56011987", "windows-949"},
      {"ksc5601", "windows-949"}, {"cp949", "windows-949"},    {"uhc", "windows-949"},
      {"big5", "Big5-HKSCS"},     {"cp950", "Big5-HKSCS"},     {"xxbig5", "Big5-HKSCS"},
      {"big5eten", "Big5-HKSCS"}, {"eucjp", "EUC-JP"},         {"xeucjp", "EUC-JP"},
  };
  std::string const plain = plain_name(name);
  auto const* const found =
      std::find_if(std::begin(wider), std::end(wider),
                   [&plain](auto const& entry) { return entry.first == plain; });
  return found == std::end(wider) ? std::string(name) : found->second;
}

/// The package's own rule writes U+001A for some malformed bytes.
void replace_malformed(void const* /*context*/, UConverterToUnicodeArgs* arguments,
                       char const* /*bytes*/, int32_t /*length*/, UConverterCallbackReason reason,
                       UErrorCode* error) {
  if (reason > UCNV_IRREGULAR) {
    return;
  }
  *error = U_ZERO_ERROR;
  UChar const replacement = 0xFFFD;
  ucnv_cbToUWriteUChars(arguments, &replacement, 1, 0, error);
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};

using ConverterHandle = std::unique_ptr<UConverter, CloseConverter>;

ConverterHandle open_converter(std::string const& name) {
  // The package takes the empty name for the default of the process's locale.
  if (name.empty() || name.find('\0') != std::string::npos) {
    return nullptr;
  }
  UErrorCode error = U_ZERO_ERROR;
  ConverterHandle converter(ucnv_open(name.c_str(), &error));
  if (error == U_MEMORY_ALLOCATION_ERROR) {
    throw std::bad_alloc();
  }
  if (U_FAILURE(error) || !converter) {
    return nullptr;
  }
  ucnv_setToUCallBack(converter.get(), replace_malformed, nullptr, nullptr, nullptr, &error);
  return U_FAILURE(error) ? nullptr : std::move(converter);
}

bool is_high_surrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool is_low_surrogate(char16_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

struct TextDecoder::Converter {
  bool is_known = true;
  /// Null for UTF-8, which is only checked.
  ConverterHandle handle;
  /// A sequence of UTF-8 that the last piece cut.
  std::string rest;
  /// The first half of a pair at the end of the last buffer.
  char16_t high_surrogate = 0;

  void decode_utf8(std::string_view bytes, bool last, std::string& utf8);
  void decode_other(std::string_view bytes, bool last, std::string& utf8);
  void append_units(std::u16string_view units, std::string& utf8);
};

TextDecoder::TextDecoder(std::string_view encoding) : converter_(std::make_unique<Converter>()) {
  std::string const name = wider_name(encoding);
  if (plain_name(name) == "utf8") {
    return;
  }
  converter_->handle = open_converter(name);
  if (!converter_->handle) {
    converter_->is_known = false;
    converter_->handle = open_converter(fallback);
  }
}

TextDecoder::~TextDecoder() = default;

TextDecoder::TextDecoder(TextDecoder&&) noexcept = default;

TextDecoder& TextDecoder::operator=(TextDecoder&&) noexcept = default;

bool TextDecoder::is_known() const {
  return converter_->is_known;
}

void TextDecoder::decode(std::string_view bytes, bool last, std::string& utf8) {
  if (converter_->handle) {
    converter_->decode_other(bytes, last, utf8);
  } else {
    converter_->decode_utf8(bytes, last, utf8);
  }
}

void TextDecoder::Converter::decode_utf8(std::string_view bytes, bool last, std::string& utf8) {
  std::string joined;
  if (!rest.empty()) {
    joined = rest;
    joined += bytes;
    bytes = joined;
    rest.clear();
  }
  if (!last) {
    std::size_t const complete = complete_utf8_prefix(bytes);
    rest = bytes.substr(complete);
    bytes = bytes.substr(0, complete);
  }
  if (is_utf8(bytes)) {
    utf8 += bytes;
  } else {
    append_utf8(utf8, from_utf8(bytes));
  }
}

void TextDecoder::Converter::decode_other(std::string_view bytes, bool last, std::string& utf8) {
  std::array<char16_t, 4096> units;
  char const* source = bytes.data();
  char const* const end = source + bytes.size();
  UErrorCode error = U_BUFFER_OVERFLOW_ERROR;
  while (error == U_BUFFER_OVERFLOW_ERROR) {
    error = U_ZERO_ERROR;
    char16_t* target = units.data();
    ucnv_toUnicode(handle.get(), &target, units.data() + units.size(), &source, end, nullptr,
                   static_cast<UBool>(last), &error);
    append_units({units.data(), target}, utf8);
  }
  if (last) {
    if (std::exchange(high_surrogate, u'\0') != 0) {
      append_utf8(utf8, L"\xFFFD");
    }
    ucnv_resetToUnicode(handle.get());
  }
}

void TextDecoder::Converter::append_units(std::u16string_view units, std::string& utf8) {
  char bytes[4];
  for (char16_t const unit : units) {
    if (high_surrogate != 0 && is_low_surrogate(unit)) {
      char32_t const value =
          0x10000U + ((char32_t{high_surrogate} - 0xD800U) << 10U) + (char32_t{unit} - 0xDC00U);
      utf8.append(bytes, encode_utf8(value, bytes));
      high_surrogate = 0;
      continue;
    }
    if (high_surrogate != 0) {
      utf8.append(bytes, encode_utf8(std::exchange(high_surrogate, u'\0'), bytes));
    }
    if (is_high_surrogate(unit)) {
      high_surrogate = unit;
    } else {
      utf8.append(bytes, encode_utf8(unit, bytes));
    }
  }
}

}  // namespace morvabs
