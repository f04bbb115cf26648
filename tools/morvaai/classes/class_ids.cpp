#include "classes/class_ids.h"

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "terminal/output.h"

namespace tool {

HString class_id(HString const& box_id, ClassReport::Class const& one) {
  HString content = box_id + L"\n" + one.label + L"\n" + one.description + L"\n";
  content << HString(fmt::format("{}\n", std::bit_cast<std::uint64_t>(one.radius)).c_str());
  for (HString const& file : one.files) {
    content << file << L"\n";
  }
  std::string digits = utf8(content.get_md5_std_format(HString()));
  // Lower case: the bit that tells cases apart is set in decimal digits anyway.
  for (char& digit : digits) {
    digit = static_cast<char>(digit | 0x20);
  }
  constexpr std::string_view variants = "89ab";
  digits[12] = '3';
  digits[16] = variants[static_cast<std::size_t>(digits[16]) % variants.size()];
  for (std::size_t const place : {8U, 13U, 18U, 23U}) {
    digits.insert(place, 1, '-');
  }
  return HString(digits.c_str());
}

}  // namespace tool
