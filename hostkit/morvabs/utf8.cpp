#include "host/utf8.h"

#include <cstdint>
#include <cstring>

namespace morvabs {

namespace {

constexpr char32_t replacement_character = 0xFFFD;

bool is_scalar(char32_t value) {
  return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

unsigned byte_at(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

bool is_continuation(unsigned byte) {
  return (byte & 0xC0U) == 0x80U;
}

/// Length that a lead byte announces; 0 for a byte that leads nothing.
std::size_t sequence_length(unsigned lead) {
  if (lead < 0x80) {
    return 1;
  }
  if (lead < 0xC2) {
    return 0;
  }
  if (lead < 0xE0) {
    return 2;
  }
  if (lead < 0xF0) {
    return 3;
  }
  return lead < 0xF5 ? 4 : 0;
}

/// Whether a second byte may follow that lead: this is where overlong forms, surrogates and values
/// above U+10FFFF show.
bool is_second(unsigned lead, unsigned second) {
  switch (lead) {
    case 0xE0:
      return second >= 0xA0 && second <= 0xBF;
    case 0xED:
      return second >= 0x80 && second <= 0x9F;
    case 0xF0:
      return second >= 0x90 && second <= 0xBF;
    case 0xF4:
      return second >= 0x80 && second <= 0x8F;
    default:
      return is_continuation(second);
  }
}

/// Number of bytes from `at` on that belong to one sequence, well-formed as far as it goes;
/// `complete` tells whether the sequence is whole.
std::size_t match_sequence(std::string_view bytes, std::size_t at, bool& complete) {
  unsigned const lead = byte_at(bytes, at);
  std::size_t const length = sequence_length(lead);
  std::size_t matched = length == 0 ? 0 : 1;
  while (matched < length && at + matched < bytes.size()) {
    unsigned const next = byte_at(bytes, at + matched);
    if (matched == 1 ? !is_second(lead, next) : !is_continuation(next)) {
      break;
    }
    ++matched;
  }
  complete = length != 0 && matched == length;
  return matched;
}

char32_t value_of(std::string_view bytes, std::size_t at, std::size_t length) {
  unsigned const lead = byte_at(bytes, at);
  if (length == 1) {
    return lead;
  }
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    value = (value << 6U) | (byte_at(bytes, at + i) & 0x3FU);
  }
  return value;
}

/// Length of the run of ASCII bytes from `at` on, eight at a time: most text is mostly ASCII or not
/// at all.
std::size_t skip_ascii(std::string_view bytes, std::size_t at) {
  std::size_t const start = at;
  while (at + 8 <= bytes.size()) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + at, sizeof word);
    if ((word & 0x8080808080808080ULL) != 0) {
      break;
    }
    at += 8;
  }
  while (at < bytes.size() && byte_at(bytes, at) < 0x80) {
    ++at;
  }
  return at - start;
}

}  // namespace

std::size_t encode_utf8(char32_t value, char* out) {
  char32_t const c = is_scalar(value) ? value : replacement_character;
  auto const tail = [c](unsigned shift) {
    return static_cast<char>(0x80U | ((c >> shift) & 0x3FU));
  };
  if (c < 0x80) {
    out[0] = static_cast<char>(c);
    return 1;
  }
  if (c < 0x800) {
    out[0] = static_cast<char>(0xC0U | (c >> 6U));
    out[1] = tail(0);
    return 2;
  }
  if (c < 0x10000) {
    out[0] = static_cast<char>(0xE0U | (c >> 12U));
    out[1] = tail(6);
    out[2] = tail(0);
    return 3;
  }
  out[0] = static_cast<char>(0xF0U | (c >> 18U));
  out[1] = tail(12);
  out[2] = tail(6);
  out[3] = tail(0);
  return 4;
}

void append_utf8(std::string& out, std::wstring_view text) {
  char bytes[4];
  for (wchar_t const c : text) {
    out.append(bytes, encode_utf8(static_cast<char32_t>(c), bytes));
  }
}

std::string to_utf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  append_utf8(out, text);
  return out;
}

void append_wide(std::wstring& out, std::string_view utf8, InvalidByte invalid) {
  std::size_t at = 0;
  while (at < utf8.size()) {
    std::size_t const ascii = skip_ascii(utf8, at);
    std::size_t const old_size = out.size();
    out.resize(old_size + ascii);
    for (std::size_t i = 0; i < ascii; ++i) {
      out[old_size + i] = static_cast<wchar_t>(utf8[at + i]);
    }
    at += ascii;
    while (at < utf8.size() && byte_at(utf8, at) >= 0x80) {
      bool complete = false;
      std::size_t const length = match_sequence(utf8, at, complete);
      if (complete) {
        out.push_back(static_cast<wchar_t>(value_of(utf8, at, length)));
        at += length;
      } else {
        out.push_back(static_cast<wchar_t>(invalid == InvalidByte::replaced
                                               ? replacement_character
                                               : 0xDC00U + byte_at(utf8, at)));
        ++at;
      }
    }
  }
}

void append_wide(std::wstring& out, std::string_view utf8) {
  append_wide(out, utf8, InvalidByte::replaced);
}

std::wstring from_utf8(std::string_view utf8) {
  std::wstring out;
  append_wide(out, utf8);
  return out;
}

std::size_t valid_utf8_prefix(std::string_view bytes) {
  std::size_t at = 0;
  while (true) {
    at += skip_ascii(bytes, at);
    if (at == bytes.size()) {
      return at;
    }
    bool complete = false;
    std::size_t const length = match_sequence(bytes, at, complete);
    if (!complete) {
      return at;
    }
    at += length;
  }
}

bool is_utf8(std::string_view bytes) {
  return valid_utf8_prefix(bytes) == bytes.size();
}

std::size_t complete_utf8_prefix(std::string_view bytes) {
  std::size_t const first = bytes.size() > 3 ? bytes.size() - 3 : 0;
  for (std::size_t at = bytes.size(); at > first; --at) {
    unsigned const byte = byte_at(bytes, at - 1);
    if (is_continuation(byte)) {
      continue;
    }
    bool complete = false;
    std::size_t const length = match_sequence(bytes, at - 1, complete);
    bool const cut = !complete && length != 0 && at - 1 + length == bytes.size();
    return cut ? at - 1 : bytes.size();
  }
  return bytes.size();
}

}  // namespace morvabs
