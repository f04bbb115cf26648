#include "morvakit/sheet/number_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace morvakit {

namespace {

constexpr std::int64_t seconds_per_day = 86400;
/// The first day that date formats cannot show: 10000-01-01.
constexpr double first_day_too_late = 2958466.0;

/// The characters of a format code that stand for parts of dates and times.
struct DateMarks {
  bool day = false;
  bool month_or_minute = false;
  bool hour = false;
  bool elapsed = false;
};

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Length of what stands at the front of a code and is no format of its own: quoted text, an
/// escaped character, a filler. 0 where there is none.
std::size_t literal_length(std::string_view code) {
  switch (code.front()) {
    case '"':
      return std::min(code.find('"', 1), code.size() - 1) + 1;
    case '\\':
    case '_':
    case '*':
      return std::min<std::size_t>(2, code.size());
    default:
      return 0;
  }
}

void mark(DateMarks& marks, char letter) {
  marks.day = marks.day || letter == 'y' || letter == 'd';
  marks.month_or_minute = marks.month_or_minute || letter == 'm';
  marks.hour = marks.hour || letter == 'h' || letter == 's';
}

DateMarks find_marks(std::string_view code) {
  DateMarks marks;
  while (!code.empty() && code.front() != ';') {
    std::size_t length = literal_length(code);
    if (length == 0 && code.front() == '[') {
      length = std::min(code.find(']'), code.size() - 1) + 1;
      char const unit = length > 1 ? lower(code[1]) : '\0';
      char const behind = length > 2 ? lower(code[2]) : '\0';
      bool const is_unit =
          unit == 'h' || unit == 's' || (unit == 'm' && (behind == ']' || behind == 'm'));
      marks.elapsed = marks.elapsed || (is_unit && length <= 4);
    } else if (length == 0) {
      mark(marks, lower(code.front()));
      length = 1;
    }
    code.remove_prefix(length);
  }
  return marks;
}

bool is_general(std::string_view code) {
  constexpr std::string_view general = "general";
  return code.size() >= general.size() &&
         std::equal(general.begin(), general.end(), code.begin(),
                    [](char left, char right) { return left == lower(right); });
}

std::string two_digits(std::int64_t value) {
  auto const digits = std::to_string(value);
  return digits.size() < 2 ? "0" + digits : digits;
}

std::string clock_text(std::int64_t seconds) {
  return two_digits(seconds / 3600) + ":" + two_digits(seconds / 60 % 60) + ":" +
         two_digits(seconds % 60);
}

std::string calendar_text(std::int64_t day, bool from_1904) {
  using std::chrono::days;
  using std::chrono::sys_days;
  using std::chrono::year;
  // The older calendar has a 29th of February 1900; days behind it count from a day earlier.
  auto const origin = from_1904  ? sys_days(year(1904) / 1 / 1)
                      : day < 60 ? sys_days(year(1899) / 12 / 31)
                                 : sys_days(year(1899) / 12 / 30);
  std::chrono::year_month_day const date(origin + days(day));
  auto const number = std::to_string(static_cast<int>(date.year()));
  return std::string(4 - std::min<std::size_t>(4, number.size()), '0') + number + "-" +
         two_digits(static_cast<unsigned>(date.month())) + "-" +
         two_digits(static_cast<unsigned>(date.day()));
}

std::string date_text(double value, NumberKind kind, bool from_1904) {
  auto day = static_cast<std::int64_t>(value);
  auto second =
      std::llround((value - static_cast<double>(day)) * static_cast<double>(seconds_per_day));
  if (kind == NumberKind::elapsed) {
    return clock_text(day * seconds_per_day + second);
  }
  if (second == seconds_per_day) {
    second = 0;
    ++day;
  }
  if (kind == NumberKind::time) {
    return clock_text(second);
  }
  auto const date = calendar_text(day, from_1904);
  return kind == NumberKind::date ? date : date + " " + clock_text(second);
}

std::string shortest(double value) {
  constexpr double smallest_fixed = 1e-5;
  constexpr double largest_fixed = 1e15;
  double const size = std::fabs(value);
  bool const is_fixed = value == 0.0 || (size >= smallest_fixed && size < largest_fixed);
  std::array<char, 64> buffer{};
  auto const end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                    is_fixed ? std::chars_format::fixed : std::chars_format::scientific);
  return std::string(buffer.data(), end.ptr);
}

bool is_short_whole_number(std::string_view text) {
  return text.size() <= 15 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

NumberKind kind_of_format(std::string_view code) {
  if (is_general(code)) {
    return NumberKind::number;
  }
  auto const marks = find_marks(code);
  if (marks.elapsed) {
    return NumberKind::elapsed;
  }
  bool const has_date = marks.day || (marks.month_or_minute && !marks.hour);
  if (has_date) {
    return marks.hour ? NumberKind::date_time : NumberKind::date;
  }
  return marks.hour ? NumberKind::time : NumberKind::number;
}

NumberKind kind_of_builtin_format(int number) {
  if ((number >= 14 && number <= 17) || (number >= 27 && number <= 31) || number == 36 ||
      (number >= 50 && number <= 54) || number == 57 || number == 58) {
    return NumberKind::date;
  }
  if ((number >= 18 && number <= 21) || number == 45 || number == 47 ||
      (number >= 32 && number <= 35) || number == 55 || number == 56) {
    return NumberKind::time;
  }
  if (number == 22) {
    return NumberKind::date_time;
  }
  return number == 46 ? NumberKind::elapsed : NumberKind::number;
}

std::string format_number(std::string_view stored, NumberKind kind, bool from_1904) {
  if (kind == NumberKind::number && is_short_whole_number(stored)) {
    return std::string(stored);
  }
  double value = 0.0;
  auto const* const end = stored.data() + stored.size();
  auto const result = std::from_chars(stored.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) {
    return std::string(stored);
  }
  return format_number(value, kind, from_1904);
}

std::string format_number(double value, NumberKind kind, bool from_1904) {
  if (!std::isfinite(value)) {
    return {};
  }
  if (kind != NumberKind::number && value >= 0.0 && value < first_day_too_late) {
    return date_text(value, kind, from_1904);
  }
  return shortest(value);
}

}  // namespace morvakit
