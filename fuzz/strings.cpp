#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "host/HString.h"

#include "fuzz/require.h"
#include "fuzz/wide_text.h"

// The text value: whatever it holds, numbers come back, pieces make up the whole and copies stay
// apart.

namespace {

using fuzz::require;

void check_numbers(HString const& text) {
  int const integer = text.to_int();
  require(HString(integer, false).to_int() == integer, "an integer comes back");
  double const number = text.to_double();
  require(std::isfinite(number), "a number is finite");
  require(std::bit_cast<std::uint64_t>(HString(number).to_double()) ==
              std::bit_cast<std::uint64_t>(number),
          "a number comes back to the last bit");
  require(!text.is_all_number() || text.is_all_good_0x(), "digits are hexadecimal digits");
  require(text.is_all_good_0x() || text.size() > 1 || text.to_int64_0x() == 0,
          "what is no hexadecimal number counts as 0");
}

void check_pieces(HString const& text, HString const& separator) {
  std::vector<HString> pieces{text, separator};
  text.get_vt_str_by_sep(pieces, separator);
  HString joined;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    joined += i == 0 ? pieces[i] : separator + pieces[i];
  }
  require(joined == text, "pieces make up the text");
  std::vector<HString> trimmed;
  text.get_vt_str_by_sep2(trimmed, separator);
  bool const ends_empty = pieces.size() > 1 && pieces.back().empty();
  require(trimmed.size() + (ends_empty ? 1 : 0) == pieces.size(), "only an empty end is dropped");
}

void check_cuts(HString const& text, int start, int count) {
  HString const first = text.get_first(count);
  HString rest = text;
  rest.cut_first(count);
  require(first + rest == text, "both sides of a cut make up the text");
  HString const last = text.get_last(count);
  rest = text;
  rest.cut_last(count);
  require(rest + last == text, "both sides of a cut from behind make up the text");
  HString const inner = text.substr(start, count);
  require(inner.size() <= static_cast<std::size_t>(std::max(count, 0)),
          "no more than was asked for");
  require(inner[0] == text[std::max(start, 0)] || inner.empty(), "a piece begins where it was cut");
}

void check_paths(HString const& text) {
  require(text.get_path(true) + text.get_short_name() == text, "directory and name make up a path");
  HString fitted = text;
  fitted.dir_fit(false).dir_fit(true).dir_fit(true);
  require(fitted.empty() == text.empty(), "a directory stays one");
  require(text.empty() || fitted[fitted.length() - 1] == L'/', "one separator stands behind it");
}

void check_values(HString const& a, HString const& b) {
  require((a < b ? 1 : 0) + (b < a ? 1 : 0) + (a == b ? 1 : 0) == 1, "one of three holds");
  HString copy = a;
  copy += copy;
  copy << b << copy;
  require(copy.size() == 4 * a.size() + 2 * b.size(), "a text can be added to itself");
  require(copy.get_first(a.length()) == a, "a copy that changes leaves the other alone");
  HString const md5 = a.get_md5_std_format(HString());
  require(md5.size() == 32 && md5.is_all_good_0x(), "an MD5 has 32 digits");
  std::wstring const text = a.get_ws();
  require(fuzz::string_of(text) == a && text_view(a) == text,
          "the characters are those of the text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  int const start = input.ConsumeIntegral<int>();
  int const count = input.ConsumeBool() ? input.ConsumeIntegral<int>()
                                        : input.ConsumeIntegralInRange<int>(-2, 40);
  HString const other = fuzz::any_string(input.ConsumeRandomLengthString(20));
  HString const text = fuzz::any_string(input.ConsumeRemainingBytesAsString());
  check_numbers(text);
  check_pieces(text, other);
  check_cuts(text, start, count);
  check_paths(text);
  check_values(text, other);
  return 0;
}
