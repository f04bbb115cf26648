#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// What a cell's number stands for, as its number format says.
enum class NumberKind { number, date, time, date_time, elapsed };

/// The kind behind a format code, as "yyyy-mm-dd"; its first section decides.
NumberKind kind_of_format(std::string_view code);
/// The kind behind one of the built-in formats, which have numbers in place of codes.
NumberKind kind_of_builtin_format(int number);

/// A cell's number, as it is stored, in a form to be read: dates and times as "2024-06-24
/// 20:42:03", of which the format's kind decides the half or halves; elapsed times in hours; other
/// numbers in the shortest form that gives the same value. A text that is no number is given back
/// as it is. `from_1904`: days are counted from 1904 in place of 1900.
std::string format_number(std::string_view stored, NumberKind kind, bool from_1904);
/// The same for a number as binary workbooks store it; empty for one that is not finite.
std::string format_number(double value, NumberKind kind, bool from_1904);

}  // namespace morvakit
