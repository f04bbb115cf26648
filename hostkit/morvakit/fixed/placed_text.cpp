#include "morvakit/fixed/placed_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

#include "host/utf8.h"

namespace morvakit {

namespace {

PagePoint between(PagePoint from, PagePoint to) {
  return {to.x - from.x, to.y - from.y};
}

/// Not `hypot`, whose last bit differs between machines.
double length(PagePoint vector) {
  return std::sqrt(vector.x * vector.x + vector.y * vector.y);
}

/// How far `vector` goes along `em` and, to the right of it, across, in parts of its length.
struct Way {
  double along = 0;
  double across = 0;
};

Way way(PagePoint vector, PagePoint em) {
  double const square = em.x * em.x + em.y * em.y;
  return {(vector.x * em.x + vector.y * em.y) / square,
          (vector.y * em.x - vector.x * em.y) / square};
}

bool is_blank(wchar_t code) {
  return code <= L' ' || code == 0xA0 || code == 0x3000 || (code >= 0x2000 && code <= 0x200B);
}

bool is_letter(wchar_t code) {
  return (code >= L'a' && code <= L'z') || (code >= L'A' && code <= L'Z');
}

/// Whether a character fills the square of its font, as Han does.
bool is_wide(wchar_t code) {
  return (code >= 0x2E80 && code < 0xD7B0) || (code >= 0xF900 && code < 0xFB00) ||
         (code >= 0xFE30 && code < 0xFE50) || (code >= 0xFF00 && code < 0xFF61) ||
         (code >= 0x20000 && code < 0x40000);
}

bool is_han(wchar_t code) {
  return code >= 0x3400 && code < 0xA000;
}

/// Where a letter stands in the table of its font.
std::size_t letter_index(wchar_t code) {
  return static_cast<char32_t>(code);
}

int rank(char separator) {
  return separator == '\n' ? 3 : separator == '\t' ? 2 : separator == ' ' ? 1 : 0;
}

bool is_narrow(wchar_t code) {
  constexpr std::wstring_view narrow = L"!'(),-./:;I[]`fijlrt{|}";
  return narrow.find(code) != std::wstring_view::npos;
}

/// The room that a character takes at most, in parts of the font's size.
double widest(wchar_t code) {
  constexpr std::wstring_view broad = L"%@MWmw";
  if (is_wide(code) || (code >= 0x2010 && code < 0x2E80)) {
    return 1;
  }
  if (is_narrow(code)) {
    return 0.5;
  }
  if (broad.find(code) != std::wstring_view::npos) {
    return 0.95;
  }
  return code >= L'A' && code <= L'Z' ? 0.75 : 0.6;
}

/// The room between two characters, in parts of the font's size, that is none.
double usual_room(wchar_t left, wchar_t right) {
  if (is_wide(left) && is_wide(right)) {
    return 0.5;
  }
  return is_wide(left) || is_wide(right) ? 0.3 : 0.2;
}

/// From this shift across the writing on, a character stands on another line.
constexpr double line_shift = 0.6;

}  // namespace

PagePoint PageMatrix::apply(PagePoint point) const {
  auto const turned = turn(point);
  return {turned.x + e, turned.y + f};
}

PagePoint PageMatrix::turn(PagePoint vector) const {
  return {a * vector.x + c * vector.y, b * vector.x + d * vector.y};
}

PageMatrix PageMatrix::within(PageMatrix const& outer) const {
  auto const x = outer.turn({a, b});
  auto const y = outer.turn({c, d});
  auto const origin = outer.apply({e, f});
  return {x.x, x.y, y.x, y.y, origin.x, origin.y};
}

double take_number(std::string_view& list) {
  constexpr std::string_view separators = " \t\r\n,+";
  constexpr double most = 1e7;
  list.remove_prefix(std::min(list.find_first_not_of(separators), list.size()));
  auto const item = list.substr(0, list.find_first_of(" \t\r\n,"));
  list.remove_prefix(item.size());
  double number = 0;
  auto const result = std::from_chars(item.data(), item.data() + item.size(), number);
  return result.ec == std::errc{} && std::abs(number) <= most ? number : 0;
}

PageMatrix read_matrix(std::string_view list) {
  if (list.empty()) {
    return {};
  }
  std::array<double, 6> numbers{};
  for (auto& number : numbers) {
    number = take_number(list);
  }
  return {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5]};
}

void PlacedText::choose_font(std::string_view font) {
  constexpr std::size_t most_fonts = 64;
  std::string name(font.substr(0, most_fonts));
  auto const found = fonts_.find(name);
  if (found != fonts_.end()) {
    widths_ = &found->second;
  } else if (fonts_.size() >= most_fonts) {
    widths_ = nullptr;
  } else {
    widths_ = &fonts_[std::move(name)];
    for (std::size_t code = 0; code < widths_->size(); ++code) {
      (*widths_)[code] = static_cast<float>(widest(static_cast<wchar_t>(code)));
    }
  }
}

double PlacedText::width(wchar_t code) const {
  auto const index = letter_index(code);
  return widths_ != nullptr && index < widths_->size() ? (*widths_)[index] : widest(code);
}

/// The room that a character is likely to take where the document leaves it to the font.
double PlacedText::guess_width(wchar_t code) const {
  constexpr double usual_share = 0.88;
  constexpr double narrow_width = 0.3;
  auto const likely = is_wide(code)                       ? 1.0
                      : is_narrow(code) || is_blank(code) ? narrow_width
                                                          : usual_share * widest(code);
  return std::min(width(code), likely);
}

bool PlacedText::repeats(std::span<Character const> run, RunStyle const& style) {
  constexpr double shadow = 0.15;
  auto const shift = length(between(run_start_, run.front().place));
  bool const is_same =
      has_last_ && run.front().is_placed && shift < shadow * length(style.em) &&
      std::equal(run.begin(), run.end(), run_.begin(), run_.end(),
                 [](Character const& left, wchar_t right) { return left.code == right; });
  run_.clear();
  for (auto const& character : run) {
    run_ += character.code;
  }
  run_start_ = run.front().place;
  return is_same;
}

PlacedText::Spacing PlacedText::spacing_of(std::span<Character const> run) const {
  Spacing spacing;
  double sum = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < run.size(); ++i) {
    spacing.has_blanks = spacing.has_blanks || is_blank(run[i].code);
    if (i > 0 && run[i].is_placed) {
      auto const along = way(between(run[i - 1].place, run[i].place), last_em_).along;
      sum += along > 0 ? along - width(run[i - 1].code) : 0;
      count += along > 0 ? 1 : 0;
    }
  }
  spacing.mean_gap = count > 0 ? std::max(sum / static_cast<double>(count), 0.0) : 0;
  return spacing;
}

/// Within a string that has blanks of its own, or is spaced out evenly, a gap means nothing.
char PlacedText::separator_within(Character const& next, Spacing const& spacing) const {
  auto const step = way(between(last_.place, next.place), last_em_);
  bool const is_next_line = step.along < -line_shift || std::abs(step.across) > line_shift;
  if (is_next_line) {
    return is_letter(last_.code) && is_letter(next.code) ? ' ' : '\0';
  }
  auto const room = usual_room(last_.code, next.code) + spacing.mean_gap;
  return !spacing.has_blanks && step.along - last_width_ > room ? ' ' : '\0';
}

char PlacedText::separator_between(Character const& next, PagePoint em, bool is_alone) const {
  constexpr double same_direction = 0.7;  // cosine
  constexpr double near = 0.8;
  constexpr double spread = 1.2;
  constexpr double column = 2;
  constexpr double error = 0.05;  // of a guess
  constexpr double worst_error = 0.2;
  auto const scale = std::max(length(em) / length(last_em_), 1.0);
  auto const step = way(between(last_.place, next.place), last_em_);
  auto const gap = (step.along - last_width_) / scale;
  auto const across = step.across / scale;
  if (way(em, last_em_).along * length(last_em_) / length(em) < same_direction) {
    return length({gap, across}) < near ? '\0' : '\n';
  }
  bool const are_lone_han = last_is_alone_ && is_alone && is_wide(last_.code) && is_wide(next.code);
  if (are_lone_han && std::abs(step.along) < 0.3 && across > near && across < column + 0.3) {
    return '\0';
  }
  if (std::abs(across) > line_shift) {
    return continues_paragraph(next, em) ? '\0' : '\n';
  }
  if (gap < -line_shift - worst_error * guessed_) {
    return '\n';
  }
  if (gap > column) {
    return '\t';
  }
  auto const room = last_is_alone_ && is_wide(last_.code) && is_wide(next.code)
                        ? spread
                        : usual_room(last_.code, next.code);
  return gap > room + error * guessed_ ? ' ' : '\0';
}

/// A line of Han that is full goes on with the next one, so that no word is torn.
bool PlacedText::continues_paragraph(Character const& next, PagePoint em) const {
  constexpr double shortest = 12;
  constexpr double indent = 2.6;
  auto const same_size = std::abs(length(em) / length(last_em_) - 1) < 0.1;
  auto const pitch = way(between(last_.place, next.place), last_em_).across;
  auto const line = way(between(line_start_, last_.place), last_em_).along;
  auto const start = way(between(line_start_, next.place), last_em_).along;
  return is_han(last_.code) && is_han(next.code) && same_size && pitch > 1 && pitch < 2.3 &&
         line > shortest && start < 0.5 && start > -indent;
}

void PlacedText::learn(Character const& next) {
  constexpr double least = 0.1;
  auto const index = letter_index(last_.code);
  if (widths_ == nullptr || index >= widths_->size()) {
    return;
  }
  auto const step = way(between(last_.place, next.place), last_em_);
  if (guessed_ == 0 && std::abs(step.across) < least && step.along > least) {
    (*widths_)[index] = std::min((*widths_)[index], static_cast<float>(step.along));
  }
}

void PlacedText::put(Character const& next, char separator) {
  constexpr std::size_t buffer_size = 4096;
  auto const stronger = rank(separator) > rank(pending_) ? separator : pending_;
  pending_ = '\0';
  if (stronger == '\n') {
    end_line();
  }
  if (!has_last_) {
    line_start_ = next.place;
  } else if (stronger != '\0') {
    out_ += stronger;
  }
  std::array<char, 4> utf8{};
  out_.append(utf8.data(), morvabs::encode_utf8(static_cast<char32_t>(next.code), utf8.data()));
  if (out_.size() >= buffer_size) {
    flow_.text(kind_, std::exchange(out_, {}));
  }
}

/// What stands in front of a string's first character.
char PlacedText::begin_run(Character const& first, RunStyle const& style, bool is_alone) {
  auto const separator = separator_between(first, style.em, is_alone);
  bool const is_next_line =
      std::abs(way(between(last_.place, first.place), last_em_).across) > line_shift;
  line_start_ = is_next_line ? first.place : line_start_;
  auto const* const former_widths = widths_;
  choose_font(style.font);
  if (last_is_alone_ && widths_ == former_widths) {
    learn(first);
  }
  return separator;
}

void PlacedText::add_shown(std::span<Character const> run, RunStyle const& style) {
  bool is_first = run.front().is_placed || !has_last_;
  auto previous = is_first ? run.front() : last_;
  auto spacing = is_first ? Spacing{} : spacing_of(run);
  for (auto character : run) {
    place_behind(previous, style.em, character);
    previous = character;
    if (is_blank(character.code)) {
      pending_ = rank(pending_) > 0 ? pending_ : ' ';
      continue;
    }
    char separator = '\0';
    if (is_first) {
      separator = has_last_ ? begin_run(character, style, run.size() == 1) : '\0';
      choose_font(style.font);
      last_em_ = style.em;
      spacing = spacing_of(run);
    } else {
      separator = separator_within(character, spacing);
      learn(character);
    }
    put(character, separator);
    has_last_ = true;
    is_first = false;
    last_ = character;
    last_width_ = character.is_placed ? width(character.code) : guess_width(character.code);
  }
  last_is_alone_ = run.size() == 1;
}

/// Gives a character without a place the one where the character before it is likely to end.
void PlacedText::place_behind(Character const& previous, PagePoint em, Character& character) {
  if (character.is_placed) {
    guessed_ = 0;
    return;
  }
  auto const on = guess_width(previous.code);
  guessed_ += on;
  character.place = {previous.place.x + on * em.x, previous.place.y + on * em.y};
}

void PlacedText::add(std::span<Character const> run, RunStyle const& style) {
  constexpr double least = 1e-6;
  bool const is_shown =
      std::any_of(run.begin(), run.end(), [](Character const& one) { return !is_blank(one.code); });
  if (!is_shown) {
    pending_ = run.empty() || rank(pending_) > 0 ? pending_ : ' ';
    return;
  }
  auto const whole = length(style.em) > least ? style : RunStyle{{1, 0}, style.font};
  if (!repeats(run, whole)) {
    add_shown(run, whole);
  }
}

void PlacedText::end_line() {
  flow_.text(kind_, std::exchange(out_, {}));
  flow_.separate(kind_, '\n');
  has_last_ = false;
  pending_ = '\0';
}

}  // namespace morvakit
