#include "morvajieba/characters.h"

#include <algorithm>

namespace morvajieba {

wchar_t to_lower(wchar_t character) {
  std::uint32_t const code = code_point(character);
  if (code < 0x80)
    return code - 'A' <= 'Z' - 'A' ? static_cast<wchar_t>(character + 32) : character;
  if (is_han(character)) return character;
  LowerCase const* const end = lower_case_mappings + lower_case_count;
  LowerCase const* const found = std::lower_bound(
      lower_case_mappings, end, code,
      [](LowerCase const& mapping, std::uint32_t key) { return mapping.from < key; });
  return found != end && found->from == code ? static_cast<wchar_t>(found->to) : character;
}

}  // namespace morvajieba
