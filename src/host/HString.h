#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"

/// The wide text value on which the whole system runs, and the key of all its ordered maps.
///
/// Copies share one text until one of them is changed (copy on write, atomic count), so copying
/// costs a pointer, and copies of one text may be used and destroyed on different threads. A single
/// object is not safe for use by two threads when one of them changes it. A character is a 32-bit
/// `wchar_t`, as a rule a Unicode code point; any other 32-bit value is kept as it is. No operation
/// throws on bad input, and every position and count is clamped to the text.
class MORVA_EXPORT HString {
 public:
  /// The empty text.
  HString();
  /// Shares the text with `other`.
  HString(HString const& other);
  /// Leaves `other` empty.
  HString(HString&& other) noexcept;
  /// Text up to the terminator; a null pointer gives the empty text.
  HString(wchar_t const* text);
  /// `length` characters of a buffer that need not be terminated; a length below 1 or a null
  /// pointer gives the empty text.
  HString(wchar_t const* text, int length);
  /// UTF-8, widened; each byte that is no part of a well-formed sequence becomes U+FFFD. A null
  /// pointer gives the empty text.
  HString(char const* text);
  /// One character; a byte above 0x7F becomes U+FFFD.
  HString(char character);
  /// One character, whatever its value; also NUL.
  HString(wchar_t character);
  /// Decimal text. The second argument is reserved and is to be false.
  HString(int value, bool reserved);
  /// The same for 64 bits.
  HString(long long value, bool reserved);
  /// Decimal text of a size.
  HString(unsigned long value);
  /// The shortest decimal text that `to_double` reads back as the same value. Infinities are
  /// written "inf" and "-inf", NaN of either sign "nan"; `to_double` does not read those.
  HString(double value);
  /// "true" or "false".
  HString(bool value);
  /// The elements joined by "|". `get_vt_str_by_sep` with "|" gives them back as long as none of
  /// them holds the bar itself and the list is not the one empty element.
  HString(std::vector<HString> const& elements);
  virtual ~HString();

  /// Shares the text with `other`.
  HString& operator=(HString const& other);
  /// Leaves `other` empty.
  HString& operator=(HString&& other) noexcept;
  /// Appends in place and returns this string, so that both chain.
  HString& operator+=(HString const& text);
  /// The same as `+=`.
  HString& operator<<(HString const& text);

  /// New text, `left` followed by `right`.
  friend MORVA_EXPORT HString operator+(HString const& left, HString const& right);
  /// Exact equality, character by character.
  friend MORVA_EXPORT bool operator==(HString const& left, HString const& right);
  /// Exact equality with a text up to its terminator; a null pointer is the empty text.
  bool operator==(wchar_t const* text) const;
  /// Order of the code points as unsigned values, a proper prefix first; the same on every
  /// platform.
  friend MORVA_EXPORT bool operator<(HString const& left, HString const& right);
  /// The characters themselves, without a copy; good until this string is changed or destroyed.
  friend std::wstring_view text_view(HString const& of) { return of.text(); }

  /// The character at `index`; 0 outside the text.
  wchar_t operator[](int index) const;

  /// Makes the text empty.
  void clear();
  /// Whether the text has no character.
  bool empty() const;
  /// Whether the text has a character.
  bool not_empty() const;
  /// Number of characters.
  int length() const;
  /// Number of characters, of any text.
  std::size_t size() const;
  /// A copy of the characters.
  std::wstring get_ws() const;

  /// The whole text, ASCII white space around it trimmed, as a decimal number; 0 for any other text
  /// and for a value out of range. `to_int` takes an optional sign and digits; `to_double` also a
  /// point and an exponent.
  int to_int() const;
  /// The same with a point and an exponent; independent of the locale.
  double to_double() const;
  /// The whole text, blanks around it trimmed, as an unsigned hexadecimal number of at most 16
  /// digits in either case, without prefix; 0 for any other text.
  long long to_int64_0x() const;
  /// All characters are 0 to 9; false for the empty text.
  bool is_all_number() const;
  /// An optional sign, then digits with exactly one point among them, before or behind them
  /// included.
  bool is_like_double() const;
  /// All characters are hexadecimal digits of either case, no prefix; false for the empty text.
  bool is_all_good_0x() const;

  /// `count` characters from position `start` on, as far as there are so many.
  HString substr(int start, int count) const;
  /// The first `count` characters.
  HString get_first(int count) const;
  /// The last `count` characters.
  HString get_last(int count) const;
  /// Removes the first `count` characters.
  void cut_first(int count);
  /// Removes the last `count` characters.
  void cut_last(int count);

  /// Replaces `pieces` by what stands between the occurrences of `separator`. The empty text gives
  /// no piece; an empty separator gives the whole text as the one piece.
  void get_vt_str_by_sep(std::vector<HString>& pieces, HString const& separator) const;
  /// The same, but a separator at the very end of the text yields no empty last piece.
  void get_vt_str_by_sep2(std::vector<HString>& pieces, HString const& separator) const;

  /// What stands behind the last "/".
  HString get_short_name() const;
  /// The short name without its last suffix: "a.b.docx" gives "a.b"; ".profile" stays as it is.
  HString get_short_name_no_suffix() const;
  /// What stands before the last "/", with that separator when `with_separator` is true; empty
  /// where the path has no directory. The root directory is "/" in both cases.
  HString get_path(bool with_separator) const;
  /// With true: appends "/" to a text that is not empty and does not end in one. With false:
  /// removes separators at the end, but leaves "/". Returns this string.
  HString& dir_fit(bool with_separator);

  /// MD5 of the text in UTF-8 as 32 upper-case hexadecimal digits. The argument is reserved and is
  /// to be empty. A character that UTF-8 cannot hold is hashed as U+FFFD.
  HString get_md5_std_format(HString const& reserved) const;
  /// A new random (version 4) UUID, lower case: 36 characters with hyphens, and 32 without.
  static HString generateUUID();
  /// The same without hyphens: 32 characters.
  static HString generateUUID2();
  /// True when both texts are equal. The second argument is reserved and is to be false.
  bool is_match_me(HString const& text, bool reserved) const;
  /// Writes exactly `prompt` to standard output and reads one line of standard input into this
  /// string, as UTF-8 and without its line end; at the end of input the text is empty. Of a line
  /// longer than a MiB, the rest is dropped.
  void input(HString const& prompt);

 private:
  friend class HFile;  // hands over the texts that it reads, which may be large

  static HString from_text(std::wstring text);
  std::wstring_view text() const { return text_ ? std::wstring_view(*text_) : L""; }
  std::wstring& writable_text();

  std::shared_ptr<std::wstring> text_;  // null stands for the empty text
};
