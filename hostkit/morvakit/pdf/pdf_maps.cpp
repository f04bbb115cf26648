#include "morvakit/pdf/pdf_maps.h"

#include <algorithm>
#include <cstdint>

namespace morvakit {

namespace {

constexpr std::string_view spaces{" \t\r\n\f\0", 6};
/// These end a word too.
constexpr std::string_view specials{" \t\r\n\f\0()<>[]{}/%", 16};

class MapTokens {
 public:
  explicit MapTokens(std::string_view text) : left_(text) {}

  /// Empty at the end.
  std::string_view next() {
    skip_blanks();
    if (left_.empty()) {
      return {};
    }
    switch (left_.front()) {
      case '<':
        return take(left_.find('>'), 1);
      case '(':
        return take(end_of_string(), 1);
      case '[':
      case ']':
        return take(1, 0);
      default:
        return take(left_.find_first_of(specials, 1), 0);
    }
  }

 private:
  void skip_blanks() {
    while (true) {
      left_.remove_prefix(std::min(left_.find_first_not_of(spaces), left_.size()));
      if (!left_.starts_with('%')) {
        return;
      }
      left_.remove_prefix(std::min(left_.find_first_of("\r\n"), left_.size()));
    }
  }

  std::size_t end_of_string() const {
    auto end = left_.find_first_of("\\)", 1);
    while (end != std::string_view::npos && left_[end] == '\\') {
      end = left_.find_first_of("\\)", std::min(end + 2, left_.size()));
    }
    return end;
  }

  std::string_view take(std::size_t end, std::size_t behind) {
    auto const size = end == std::string_view::npos ? left_.size() : end + behind;
    auto const token = left_.substr(0, size);
    left_.remove_prefix(token.size());
    return token;
  }

  std::string_view left_;
};

/// More than all codes.
constexpr std::uint64_t unbounded = std::uint64_t{1} << 40U;
/// The library does not find the end of a range of a font's codes that ends behind it.
constexpr std::uint64_t highest_code = 0xfffffeff;

/// The code in angle brackets; unbounded where there is anything in them but digits.
std::uint64_t code_of(std::string_view token) {
  constexpr std::string_view digits = "0123456789abcdefABCDEF";
  std::uint64_t code = 0;
  for (char const character : token.substr(1, token.size() - 2)) {
    auto const digit = digits.find(character);
    if (digit != std::string_view::npos) {
      code = std::min(code << 4U | (digit < 16 ? digit : digit - 6), unbounded);
    } else if (spaces.find(character) == std::string_view::npos) {
      return unbounded;
    }
  }
  return code;
}

bool is_code(std::string_view token) {
  return token.size() > 2 && token.starts_with('<') && token.ends_with('>');
}

/// What the ranges up to the end of a section cost, where `step` codes cost one.
std::uint64_t cost_of_ranges(MapTokens& tokens, std::string_view end, std::uint64_t step) {
  std::uint64_t cost = 0;
  while (true) {
    auto const first = tokens.next();
    auto const last = first == end ? first : tokens.next();
    auto target = last == end ? last : tokens.next();
    if (target.empty() || target == end) {
      return cost;
    }
    if (is_code(first) && is_code(last)) {
      auto const from = code_of(first);
      auto const to = code_of(last);
      bool const has_end = std::max(from, to) <= highest_code;
      cost += !has_end ? unbounded : to < from ? 1 : (to - from) / step + 1;
    }
    for (bool const is_list = target == "["; is_list && !target.empty() && target != "]";) {
      target = tokens.next();
    }
  }
}

/// The same of single codes.
std::uint64_t cost_of_codes(MapTokens& tokens, std::string_view end) {
  std::uint64_t cost = 0;
  for (auto token = tokens.next(); !token.empty() && token != end; token = tokens.next()) {
    cost += !is_code(token) ? 0 : code_of(token) <= highest_code ? 1 : unbounded;
  }
  return cost;
}

}  // namespace

bool is_character_map_sound(std::string_view map) {
  // A table of 256 codes takes 4 KB, a code in the map to Unicode up to 40 bytes.
  constexpr std::uint64_t most_tables = 100000;
  constexpr std::uint64_t most_codes = 4000000;
  std::uint64_t tables = 0;
  std::uint64_t codes = 0;
  MapTokens tokens(map);
  for (auto token = tokens.next(); !token.empty(); token = tokens.next()) {
    if (token == "begincidrange") {
      tables += cost_of_ranges(tokens, "endcidrange", 256);
    } else if (token == "beginbfrange") {
      codes += cost_of_ranges(tokens, "endbfrange", 1);
    } else if (token == "begincidchar") {
      tables += cost_of_codes(tokens, "endcidchar");
    }
  }
  return tables <= most_tables && codes <= most_codes;
}

}  // namespace morvakit
