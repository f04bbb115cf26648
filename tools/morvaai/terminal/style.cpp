#include "terminal/style.h"

#include <array>
#include <cstddef>

namespace tool {

namespace {

// U+FDD0 to U+FDEF stand for no characters. The first ends what any other begins.
constexpr char32_t end_mark = 0xFDD0;
constexpr char32_t last_mark = 0xFDEF;
constexpr std::string_view mark_lead = "\xEF\xB7";
constexpr char first_tail = '\x90';
constexpr char last_tail = '\xAF';
constexpr std::size_t mark_size = 3;

constexpr std::string_view reset = "\x1B[0m";
// In the order of the roles.
constexpr std::array<std::string_view, 7> colors = {"",         "\x1B[1m",  "\x1B[36m", "\x1B[2m",
                                                    "\x1B[32m", "\x1B[33m", "\x1B[31m"};

std::string mark(char tail) {
  return std::string(mark_lead) + tail;
}

bool is_mark_at(std::string_view text, std::size_t at) {
  return text.size() - at >= mark_size && text[at + 2] >= first_tail && text[at + 2] <= last_tail;
}

std::string_view color_of(char tail) {
  auto const number = static_cast<std::size_t>(tail - first_tail);
  return number == 0 ? reset : number <= colors.size() ? colors[number - 1] : std::string_view();
}

// The text, with what `replacement` gives for the last byte of each mark.
template <typename Replacement>
std::string replace_marks(std::string_view text, Replacement const& replacement) {
  std::string replaced;
  replaced.reserve(text.size());
  std::size_t done = 0;
  for (std::size_t at = text.find(mark_lead); at != std::string_view::npos;
       at = text.find(mark_lead, at + 1)) {
    if (is_mark_at(text, at)) {
      replaced.append(text, done, at - done).append(replacement(text[at + 2]));
      done = at + mark_size;
    }
  }
  return replaced.append(text, done);
}

}  // namespace

std::string styled(Role role, std::string_view text) {
  if (role == Role::plain || text.empty()) {
    return std::string(text);
  }
  return mark(static_cast<char>(first_tail + 1 + static_cast<int>(role)))
      .append(text)
      .append(mark(first_tail));
}

bool is_style_mark(char32_t c) {
  return c >= end_mark && c <= last_mark;
}

std::string with_colors(std::string_view text) {
  return replace_marks(text, &color_of);
}

std::string without_styles(std::string_view text) {
  return replace_marks(text, [](char) { return std::string_view(); });
}

}  // namespace tool
