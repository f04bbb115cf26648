#include "morvakit/pdf/pdf_objects.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include <Stream.h>
#include <UTF.h>
#include <goo/GooString.h>
#include <goo/gmem.h>

#include "host/utf8.h"

namespace morvakit {

namespace {

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

std::string with_line_ends(std::wstring wide) {
  for (auto& character : wide) {
    character = character == L'\r' ? L'\n' : character == L'\0' ? L' ' : character;
  }
  return morvabs::to_utf8(wide);
}

std::string decode_text_string(std::string const& bytes) {
  if (bytes.starts_with(utf8_mark)) {
    return with_line_ends(morvabs::from_utf8(std::string_view(bytes).substr(utf8_mark.size())));
  }
  Unicode* characters = nullptr;
  auto const count = TextStringToUCS4(bytes, &characters);
  std::wstring wide;
  for (int i = 0; i < count; ++i) {
    wide += static_cast<wchar_t>(characters[i]);
  }
  gfree(characters);
  return with_line_ends(std::move(wide));
}

std::int64_t stated(Object const& parameters, char const* key) {
  auto const number = parameters.dictLookup(key);
  return number.isInt() ? number.getInt() : 1;
}

/// `parameters`: of one packing, or of several.
bool has_rows_of_a_picture(Object const& parameters) {
  constexpr std::int64_t longest = std::int64_t{16} << 20;
  for (int i = 0; parameters.isArray() && i < parameters.arrayGetLength(); ++i) {
    auto const one = parameters.arrayGet(i);
    if (one.isDict() && has_rows_of_a_picture(one)) {
      return true;
    }
  }
  if (!parameters.isDict()) {
    return false;
  }
  auto const columns = stated(parameters, "Columns");
  return columns > longest || columns * stated(parameters, "Colors") > longest;
}

}  // namespace

std::string to_text(GooString const* string) {
  return string == nullptr ? std::string{} : decode_text_string(string->toStr());
}

std::string to_text(Object const& object, PdfSink& sink) {
  constexpr std::size_t longest = std::size_t{1} << 20;
  if (object.isString()) {
    return to_text(object.getString());
  }
  std::string bytes;
  if (object.isStream()) {
    read_pdf_stream(object, [&](std::string_view piece) {
      if (bytes.size() >= longest) {
        sink.note(Orlec::ParseOutcome::limit_reached,
                  "a text in a stream over " + std::to_string(longest) + " bytes");
        return false;
      }
      bytes += piece;
      return true;
    });
  }
  return decode_text_string(bytes);
}

bool is_packed_as_picture(Object const& stream) {
  auto const& dictionary = *stream.streamGetDict();
  if (has_rows_of_a_picture(dictionary.lookup("DecodeParms")) ||
      has_rows_of_a_picture(dictionary.lookup("DP"))) {
    return true;
  }
  constexpr std::array pictures{strCCITTFax, strDCT, strJBIG2, strJPX};
  for (auto const* packing = stream.getStream(); packing != nullptr;
       packing = packing->getNextStream()) {
    if (std::find(pictures.begin(), pictures.end(), packing->getKind()) != pictures.end()) {
      return true;
    }
  }
  return false;
}

void read_pdf_stream(Object const& stream, std::function<bool(std::string_view)> const& take) {
  if (is_packed_as_picture(stream)) {
    return;
  }
  std::array<unsigned char, 16 << 10> piece{};
  auto* const source = stream.getStream();
  source->reset();
  while (true) {
    auto const size = source->doGetChars(static_cast<int>(piece.size()), piece.data());
    if (size <= 0 ||
        !take({reinterpret_cast<char const*>(piece.data()), static_cast<std::size_t>(size)})) {
      break;
    }
  }
  source->close();
}

std::int64_t packed_size(Object const& stream) {
  auto const length = stream.streamGetDict()->lookup("Length");
  return length.isIntOrInt64() ? std::max<std::int64_t>(length.getIntOrInt64(), 1) : 1;
}

bool PdfObjectsMet::is_new(Object const& object) {
  return !object.isRef() || met_.emplace(object.getRefNum(), object.getRefGen()).second;
}

}  // namespace morvakit
