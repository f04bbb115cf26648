#include "host/HString.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <limits>
#include <utility>

#include "host/HStdOutStream.h"
#include "host/utf8.h"
#include "morvabs/md5.h"
#include "morvabs/uuid.h"

namespace {

constexpr wchar_t replacement_character = 0xFFFD;
constexpr wchar_t list_separator = L'|';
constexpr std::size_t longest_input_line = std::size_t{1} << 20;

bool is_blank(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

bool is_digit(wchar_t c) {
  return c >= L'0' && c <= L'9';
}

bool is_hex_digit(wchar_t c) {
  return is_digit(c) || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

std::wstring_view trimmed(std::wstring_view text) {
  while (!text.empty() && is_blank(text.front())) {
    text.remove_prefix(1);
  }
  while (!text.empty() && is_blank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
}

std::wstring_view without_sign(std::wstring_view text) {
  if (!text.empty() && (text.front() == L'+' || text.front() == L'-')) {
    text.remove_prefix(1);
  }
  return text;
}

std::size_t leading_digits(std::wstring_view text) {
  auto const end = std::find_if_not(text.begin(), text.end(), is_digit);
  return static_cast<std::size_t>(end - text.begin());
}

bool is_integer(std::wstring_view text) {
  std::wstring_view const digits = without_sign(text);
  return !digits.empty() && leading_digits(digits) == digits.size();
}

/// An optional sign, digits with at most one point among them, an optional exponent.
bool is_decimal_number(std::wstring_view text) {
  std::wstring_view rest = without_sign(text);
  std::size_t digits = leading_digits(rest);
  rest.remove_prefix(digits);
  if (!rest.empty() && rest.front() == L'.') {
    rest.remove_prefix(1);
    std::size_t const fraction = leading_digits(rest);
    rest.remove_prefix(fraction);
    digits += fraction;
  }
  if (digits == 0) {
    return false;
  }
  return rest.empty() ||
         ((rest.front() == L'e' || rest.front() == L'E') && is_integer(rest.substr(1)));
}

/// A number whose form has been checked already: all its characters are ASCII.
template <typename Number, typename... Format>
Number parse_number(std::wstring_view text, Format... format) {
  if (!text.empty() && text.front() == L'+') {
    text.remove_prefix(1);
  }
  std::string const narrow(text.begin(), text.end());
  Number value{};
  auto const [end, error] =
      std::from_chars(narrow.data(), narrow.data() + narrow.size(), value, format...);
  return error == std::errc() && end == narrow.data() + narrow.size() ? value : Number{};
}

template <typename Number>
std::wstring number_text(Number value) {
  std::array<char, 32> digits{};
  auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  return {digits.data(), result.ptr};
}

bool is_text_of(std::wstring_view text, bool (*predicate)(wchar_t)) {
  return !text.empty() && std::all_of(text.begin(), text.end(), predicate);
}

/// The part of a path behind its last separator begins here.
std::size_t name_start(std::wstring_view path) {
  std::size_t const slash = path.rfind(L'/');
  return slash == std::wstring_view::npos ? 0 : slash + 1;
}

/// Calls `take` with each piece between two separators.
template <typename Take>
void split(std::wstring_view text, std::wstring_view separator, Take take) {
  if (text.empty()) {
    return;
  }
  std::size_t end = separator.empty() ? std::wstring_view::npos : text.find(separator);
  while (end != std::wstring_view::npos) {
    take(text.substr(0, end));
    text.remove_prefix(end + separator.size());
    end = text.find(separator);
  }
  take(text);
}

std::size_t clamped(int value, std::size_t limit) {
  return value <= 0 ? 0 : std::min(static_cast<std::size_t>(value), limit);
}

std::string read_input_line() {
  std::string line;
  int c = std::getc(stdin);
  while (c != EOF && c != '\n') {
    if (line.size() < longest_input_line) {
      line.push_back(static_cast<char>(c));
    }
    c = std::getc(stdin);
  }
  if (line.ends_with('\r')) {
    line.pop_back();
  }
  return line;
}

}  // namespace

HString::HString() = default;

HString::HString(HString const& other) = default;

HString::HString(HString&& other) noexcept = default;

HString::HString(wchar_t const* text) {
  if (text != nullptr && *text != 0) {
    text_ = std::make_shared<std::wstring>(text);
  }
}

HString::HString(wchar_t const* text, int length) {
  if (text != nullptr && length > 0) {
    text_ = std::make_shared<std::wstring>(text, static_cast<std::size_t>(length));
  }
}

HString::HString(char const* text) {
  if (text != nullptr && *text != 0) {
    text_ = std::make_shared<std::wstring>(morvabs::from_utf8(text));
  }
}

HString::HString(char character)
    : HString(static_cast<unsigned char>(character) < 0x80 ? static_cast<wchar_t>(character)
                                                           : replacement_character) {}

HString::HString(wchar_t character) : text_(std::make_shared<std::wstring>(1, character)) {}

HString::HString(int value, bool /*reserved*/) : HString(from_text(number_text(value))) {}

HString::HString(long long value, bool /*reserved*/) : HString(from_text(number_text(value))) {}

HString::HString(unsigned long value) : HString(from_text(number_text(value))) {}

// Which sign a NaN has that comes out of a computation is up to the machine.
HString::HString(double value)
    : HString(std::isnan(value) ? HString(L"nan") : from_text(number_text(value))) {}

HString::HString(bool value) : HString(value ? L"true" : L"false") {}

HString::HString(std::vector<HString> const& elements) {
  std::wstring joined;
  for (HString const& element : elements) {
    if (&element != elements.data()) {
      joined += list_separator;
    }
    joined += element.text();
  }
  *this = from_text(std::move(joined));
}

HString::~HString() = default;

HString& HString::operator=(HString const& other) = default;

HString& HString::operator=(HString&& other) noexcept = default;

HString& HString::operator+=(HString const& text) {
  if (!text_) {
    text_ = text.text_;
  } else if (!text.empty()) {
    // Keeps the addition alive where it is this text itself.
    auto const addition = text.text_;
    writable_text() += *addition;
  }
  return *this;
}

HString& HString::operator<<(HString const& text) {
  return *this += text;
}

HString operator+(HString const& left, HString const& right) {
  if (left.empty()) {
    return right;
  }
  if (right.empty()) {
    return left;
  }
  std::wstring joined;
  joined.reserve(left.size() + right.size());
  joined += left.text();
  joined += right.text();
  return HString::from_text(std::move(joined));
}

bool operator==(HString const& left, HString const& right) {
  return left.text_ == right.text_ || left.text() == right.text();
}

bool HString::operator==(wchar_t const* text) const {
  return this->text() == std::wstring_view(text == nullptr ? L"" : text);
}

bool operator<(HString const& left, HString const& right) {
  if (left.text_ == right.text_) {
    return false;
  }
  std::wstring_view const a = left.text();
  std::wstring_view const b = right.text();
  // wchar_t is signed on one platform and unsigned on another.
  return std::lexicographical_compare(
      a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
        return static_cast<std::uint32_t>(x) < static_cast<std::uint32_t>(y);
      });
}

wchar_t HString::operator[](int index) const {
  return index >= 0 && static_cast<std::size_t>(index) < size()
             ? text()[static_cast<std::size_t>(index)]
             : L'\0';
}

void HString::clear() {
  text_.reset();
}

bool HString::empty() const {
  return text().empty();
}

bool HString::not_empty() const {
  return !empty();
}

int HString::length() const {
  return static_cast<int>(std::min<std::size_t>(size(), std::numeric_limits<int>::max()));
}

std::size_t HString::size() const {
  return text().size();
}

std::wstring HString::get_ws() const {
  return std::wstring(text());
}

int HString::to_int() const {
  std::wstring_view const number = trimmed(text());
  return is_integer(number) ? parse_number<int>(number) : 0;
}

double HString::to_double() const {
  std::wstring_view const number = trimmed(text());
  return is_decimal_number(number) ? parse_number<double>(number, std::chars_format::general) : 0.0;
}

long long HString::to_int64_0x() const {
  constexpr std::size_t most_digits = 16;
  std::wstring_view const number = trimmed(text());
  if (number.size() > most_digits || !is_text_of(number, is_hex_digit)) {
    return 0;
  }
  return static_cast<long long>(parse_number<unsigned long long>(number, 16));
}

bool HString::is_all_number() const {
  return is_text_of(text(), is_digit);
}

bool HString::is_like_double() const {
  std::wstring_view const number = without_sign(text());
  std::size_t const point = number.find(L'.');
  if (point == std::wstring_view::npos || number.size() == 1) {
    return false;
  }
  std::wstring_view const fraction = number.substr(point + 1);
  return leading_digits(number) == point && leading_digits(fraction) == fraction.size();
}

bool HString::is_all_good_0x() const {
  return is_text_of(text(), is_hex_digit);
}

HString HString::substr(int start, int count) const {
  std::size_t const from = clamped(start, size());
  std::size_t const taken = clamped(count, size() - from);
  return taken == size() ? *this : HString(text().data() + from, static_cast<int>(taken));
}

HString HString::get_first(int count) const {
  return substr(0, count);
}

HString HString::get_last(int count) const {
  std::size_t const taken = clamped(count, size());
  return substr(static_cast<int>(size() - taken), count);
}

void HString::cut_first(int count) {
  if (count > 0 && text_) {
    writable_text().erase(0, static_cast<std::size_t>(count));
  }
}

void HString::cut_last(int count) {
  if (count > 0 && text_) {
    writable_text().resize(size() - clamped(count, size()));
  }
}

void HString::get_vt_str_by_sep(std::vector<HString>& pieces, HString const& separator) const {
  // The target may hold this text or the separator.
  std::vector<HString> found;
  std::size_t count = 0;
  split(text(), separator.text(), [&count](std::wstring_view /*piece*/) { ++count; });
  // A text of nothing but separators must not cost more than its pieces.
  found.reserve(count);
  split(text(), separator.text(), [&found](std::wstring_view piece) {
    found.emplace_back(piece.data(), static_cast<int>(piece.size()));
  });
  pieces = std::move(found);
}

void HString::get_vt_str_by_sep2(std::vector<HString>& pieces, HString const& separator) const {
  get_vt_str_by_sep(pieces, separator);
  if (pieces.size() > 1 && pieces.back().empty()) {
    pieces.pop_back();
  }
}

HString HString::get_short_name() const {
  return from_text(std::wstring(text().substr(name_start(text()))));
}

HString HString::get_short_name_no_suffix() const {
  std::wstring_view name = text().substr(name_start(text()));
  std::size_t const point = name.rfind(L'.');
  // Points in front are part of the name: ".profile", "..".
  if (point != std::wstring_view::npos && name.find_first_not_of(L'.') < point) {
    name = name.substr(0, point);
  }
  return from_text(std::wstring(name));
}

HString HString::get_path(bool with_separator) const {
  HString directory = from_text(std::wstring(text().substr(0, name_start(text()))));
  directory.dir_fit(with_separator);
  return directory;
}

HString& HString::dir_fit(bool with_separator) {
  if (empty()) {
    return *this;
  }
  if (with_separator) {
    if (text().back() != L'/') {
      writable_text() += L'/';
    }
    return *this;
  }
  std::size_t const last = text().find_last_not_of(L'/');
  std::size_t const kept = last == std::wstring_view::npos ? 1 : last + 1;
  if (kept < size()) {
    writable_text().resize(kept);
  }
  return *this;
}

HString HString::get_md5_std_format(HString const& /*reserved*/) const {
  morvabs::Md5 md5;
  std::array<char, 512> bytes;
  std::size_t used = 0;
  for (wchar_t const c : text()) {
    if (used + 4 > bytes.size()) {
      md5.update(bytes.data(), used);
      used = 0;
    }
    used += morvabs::encode_utf8(static_cast<char32_t>(c), bytes.data() + used);
  }
  md5.update(bytes.data(), used);
  auto const digits = md5.digits();
  return {digits.data(), static_cast<int>(digits.size())};
}

HString HString::generateUUID() {
  return morvabs::make_uuid().c_str();
}

HString HString::generateUUID2() {
  return morvabs::make_short_uuid().c_str();
}

bool HString::is_match_me(HString const& text, bool /*reserved*/) const {
  return *this == text;
}

void HString::input(HString const& prompt) {
  *HStdOutStream::ins() << prompt;
  *this = from_text(morvabs::from_utf8(read_input_line()));
}

HString HString::from_text(std::wstring text) {
  HString result;
  if (!text.empty()) {
    result.text_ = std::make_shared<std::wstring>(std::move(text));
  }
  return result;
}

std::wstring& HString::writable_text() {
  if (!text_) {
    text_ = std::make_shared<std::wstring>();
  } else if (text_.use_count() > 1) {
    text_ = std::make_shared<std::wstring>(*text_);
  } else {
    // Reads of the text through a copy that another thread has just let go happen before our
    // change.
    std::atomic_thread_fence(std::memory_order_acquire);
  }
  return *text_;
}
