#include <algorithm>
#include <array>
#include <bitset>
#include <memory>
#include <optional>

#include <uchardet.h>

#include "host/utf8.h"
#include "morvabs/text_decoder.h"

namespace morvabs {

namespace {

constexpr std::size_t sample_size = std::size_t{1} << 20;
/// Enough to tell the encodings of one language apart with certainty.
constexpr std::size_t measured_size = std::size_t{1} << 16;

/// How well a text of nothing but full-width digits and punctuation fits.
constexpr double symbols_only = 0.05;
constexpr std::size_t long_text = 20;

using CharacterSet = std::bitset<0x10000>;

struct Mark {
  std::string_view bytes;
  char const* encoding;
};

// The longer marks first: that of UTF-16 begins that of UTF-32.
constexpr Mark byte_order_marks[] = {
    {{"\xFF\xFE\x00\x00", 4}, "UTF-32LE"}, {{"\x00\x00\xFE\xFF", 4}, "UTF-32BE"},
    {{"\x84\x31\x95\x33", 4}, "GB18030"},  {{"\xEF\xBB\xBF", 3}, "UTF-8"},
    {{"\xFF\xFE", 2}, "UTF-16LE"},         {{"\xFE\xFF", 2}, "UTF-16BE"},
};

/// A double-byte encoding, and how its language shows in it. The usual characters are a whole block
/// of the standard (the first level of the ideographs, in order of use), the common ones are so
/// frequent that they make up a good part of any text.
struct Candidate {
  char const* encoding;
  unsigned char first_usual_lead;
  unsigned char last_usual_lead;
  wchar_t const* common;
};

constexpr wchar_t chinese[] =
    L"的一是不了在人有我他这这中大来上国个到说们为子和你地出道也时年得就那要下以生会自着去之过家学"
    L"对可里后小"
    L"么心多天而能好都然没日于起还发成事只作当想看文无开手十用主行方又如前所本见经头面公同三己老从"
    L"动两长"
    L"這個來國說們為時會著過學對裡裏後麼沒於還發當無開經頭動兩長與業產電機關現問題們書車門間東";
constexpr wchar_t japanese[] =
    L"ぁあいうえおかがきぎくけげこごさざしじすずせそただちっつてでとどなにねのはばひびふへべほまみ"
    L"むめもやゆよ"
    L"らりるれろわをんアイウエオカキクケコサシスセソタチツテトナニネノハヒフヘホマミムメモヤユヨラ"
    L"リルレロワンー"
    L"日本人年大月見行一出";
constexpr wchar_t korean[] =
    L"이다는을의에가고하한지로사은를도기시인대서자리아일나스정들어부그해으게수전있면보라주니상원제"
    L"만장여"
    L"과안것요조선유공성소구동우민신국경연화와비문내위적무교회";

constexpr Candidate candidates[] = {
    {"GB18030", 0xB0, 0xD7, chinese},    {"Big5", 0xA4, 0xC6, chinese},
    {"Shift_JIS", 0x82, 0x97, japanese}, {"EUC-JP", 0xA4, 0xCF, japanese},
    {"EUC-KR", 0xB0, 0xC8, korean},
};

std::string decode_with(std::string_view encoding, std::string_view bytes, bool last) {
  std::string utf8;
  TextDecoder(encoding).decode(bytes, last, utf8);
  return utf8;
}

void add_characters(CharacterSet& set, std::wstring_view characters) {
  for (wchar_t const c : characters) {
    auto const value = static_cast<char32_t>(c);
    if (value >= 0x80 && value < set.size()) {
      set.set(value);
    }
  }
}

struct Language {
  CharacterSet usual;
  CharacterSet common;
};

Language make_language(Candidate const& candidate) {
  auto language = Language();
  // In the encodings of the EUC family and in GB2312 the second byte is a high one too.
  bool const has_low_trails = candidate.encoding[0] == 'B' || candidate.encoding[0] == 'S';
  std::string pairs;
  for (unsigned lead = candidate.first_usual_lead; lead <= candidate.last_usual_lead; ++lead) {
    for (unsigned trail = has_low_trails ? 0x40 : 0xA1; trail <= 0xFE; ++trail) {
      // The line end keeps what follows a pair that does not exist in step.
      pairs += {static_cast<char>(lead), static_cast<char>(trail), '\n'};
    }
  }
  add_characters(language.usual, from_utf8(decode_with(candidate.encoding, pairs, true)));
  language.usual.reset(0xFFFD);
  add_characters(language.common, candidate.common);
  return language;
}

/// A control character that has nothing to do with the layout of a text.
bool is_control(wchar_t c) {
  bool const is_layout = (c >= L'\t' && c <= L'\r') || c == 0x1B;
  return (static_cast<char32_t>(c) < 0x20 && !is_layout) || c == 0x7F;
}

/// How well a text fits a language, 0 where it does not at all.
double fit(Language const& language, std::wstring_view text) {
  std::size_t symbols = 0;
  std::size_t total = 0;
  std::size_t malformed = 0;
  std::size_t usual = 0;
  std::size_t common = 0;
  for (wchar_t const c : text) {
    auto const value = static_cast<char32_t>(c);
    bool const is_symbol =
        (value >= 0x2000 && value < 0x3040) || (value >= 0xFF00 && value < 0xFF60);
    symbols += is_symbol ? 1U : 0U;
    if (value < 0x80 || is_symbol) {
      continue;
    }
    ++total;
    malformed += value == 0xFFFD ? 1U : 0U;
    if (value < language.usual.size()) {
      usual += language.usual.test(value) ? 1U : 0U;
      common += language.common.test(value) ? 1U : 0U;
    }
  }
  if (total == 0) {
    return symbols >= 4 ? symbols_only : 0;
  }
  // A few bytes may be damaged; in a text of another encoding far more do not fit.
  if (malformed * 50 > total || usual * 5 < total * 3) {
    return 0;
  }
  // No longer text does without the words that hold a language together.
  if (total >= long_text && common * 20 < total) {
    return 0;
  }
  auto const share = [total](std::size_t count) {
    return static_cast<double>(count) / static_cast<double>(total);
  };
  return share(common) + share(usual) / 2;
}

/// The part of a text that tells its encoding: from a little before its first byte above ASCII on.
std::string_view telling_part(std::string_view bytes) {
  auto const first = std::find_if(bytes.begin(), bytes.end(),
                                  [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
  return bytes.substr(static_cast<std::size_t>(first - bytes.begin()), measured_size);
}

using Languages = std::array<Language, std::size(candidates)>;

/// The languages of the candidates, in their order.
Languages const& all_languages() {
  static auto const* const languages = [] {
    auto* const made = new Languages;
    std::transform(std::begin(candidates), std::end(candidates), made->begin(), make_language);
    return made;
  }();
  return *languages;
}

/// An encoding, and how well a text fits it; no encoding fits less than 0.
struct Fit {
  char const* encoding = nullptr;
  double degree = 0;

  void improve(char const* other, double other_degree) {
    if (other_degree > degree) {
      encoding = other;
      degree = other_degree;
    }
  }
};

Fit find_double_byte(std::string_view bytes) {
  Fit best;
  for (std::size_t i = 0; i < std::size(candidates); ++i) {
    std::wstring const text = from_utf8(decode_with(candidates[i].encoding, bytes, false));
    best.improve(candidates[i].encoding, fit(all_languages()[i], text));
  }
  return best;
}

/// UTF-16 without a mark by its East Asian characters: the wrong order of bytes, or bytes that are
/// something else, give characters from all over the plane, few of which are in use.
Fit find_east_asian_units(std::string_view bytes) {
  Fit best;
  for (char const* const encoding : {"UTF-16LE", "UTF-16BE"}) {
    std::wstring const text = from_utf8(decode_with(encoding, bytes, false));
    if (std::any_of(text.begin(), text.end(), is_control)) {
      continue;
    }
    for (Language const& language : all_languages()) {
      best.improve(encoding, fit(language, text));
    }
  }
  return best.degree > symbols_only ? best : Fit();
}

bool fits_without_fault(std::string_view encoding, std::string_view bytes) {
  TextDecoder decoder(encoding);
  std::string utf8;
  decoder.decode(bytes, false, utf8);
  return decoder.is_known() && from_utf8(utf8).find(L'\xFFFD') == std::wstring::npos;
}

std::string find_by_statistics(std::string_view bytes) {
  std::unique_ptr<uchardet, void (*)(uchardet*)> const detector(uchardet_new(), uchardet_delete);
  uchardet_handle_data(detector.get(), bytes.data(), bytes.size());
  uchardet_data_end(detector.get());
  std::string const name = uchardet_get_charset(detector.get());
  bool const is_usable = !name.empty() && name != "ASCII" && !name.starts_with("MAC-") &&
                         fits_without_fault(name, bytes);
  return is_usable ? name : "windows-1252";
}

bool is_cyrillic(wchar_t c) {
  return (c >= 0x410 && c < 0x450) || c == 0x401 || c == 0x451;
}

bool is_small_cyrillic(wchar_t c) {
  return c >= 0x430 && is_cyrillic(c);
}

/// Whether the bytes are Russian words in KOI8-R, whose small letters make pairs of ideographs in
/// use: nothing else above ASCII, small letters in the main, and no capital behind one. Four
/// ideographs pass for that in one of some hundred texts, more of them hardly ever.
bool is_russian_koi8(std::string_view bytes) {
  constexpr std::size_t fewest_letters = 7;
  std::size_t letters = 0;
  std::size_t small = 0;
  wchar_t before = L' ';
  for (wchar_t const c : from_utf8(decode_with("KOI8-R", bytes, true))) {
    bool const is_letter = is_cyrillic(c);
    bool const is_torn = is_letter && !is_small_cyrillic(c) && is_small_cyrillic(before);
    if ((c >= 0x80 && !is_letter) || is_torn) {
      return false;
    }
    letters += is_letter ? 1U : 0U;
    small += is_small_cyrillic(c) ? 1U : 0U;
    before = c;
  }
  return letters >= fewest_letters && small * 3 > letters * 2;
}

std::string find_legacy(std::string_view bytes) {
  std::string_view const telling = telling_part(bytes);
  Fit const found = find_double_byte(telling);
  // The words that hold a language together are no accident.
  constexpr double certain = 0.75;
  if (found.encoding != nullptr && found.degree < certain && is_russian_koi8(telling)) {
    return "KOI8-R";
  }
  return found.encoding == nullptr ? find_by_statistics(telling) : found.encoding;
}

/// Share of the characters that ordinary text is made of, counting ASCII twice: the characters that
/// the wrong order of bytes makes of ASCII look ordinary too.
double ordinary_share(std::wstring_view text) {
  std::size_t score = 0;
  for (wchar_t const c : text) {
    bool const is_ascii = (c >= 0x20 && c < 0x7F) || (c >= L'\t' && c <= L'\r');
    bool const is_letter = (c >= 0xA0 && c < 0x700) || (c >= 0xE00 && c < 0xE80);
    bool const is_east_asian =
        (c >= 0x3000 && c < 0x3100) || (c >= 0x4E00 && c < 0xA000) || (c >= 0xAC00 && c < 0xD7A4);
    bool const is_symbol =
        (c >= 0x2000 && c < 0x2070) || (c >= 0xFF00 && c < 0xFFF0) || (c >= 0x1F000 && c < 0x30000);
    score += is_ascii ? 2 : (is_letter || is_east_asian || is_symbol ? 1 : 0);
  }
  return text.empty() ? 0 : static_cast<double>(score) / static_cast<double>(text.size());
}

/// Whether the zero bytes of what was read as UTF-16 come from the characters that they come from
/// in text: ASCII and Latin, and the few frequent ones at the beginning of a row of 256.
bool has_textual_zeros(std::wstring_view text) {
  constexpr wchar_t ideographic_space = 0x3000;
  constexpr wchar_t ideograph_one = 0x4E00;
  std::size_t zeros = 0;
  std::size_t textual = 0;
  for (wchar_t const c : text) {
    bool const is_latin = c < 0x100;
    zeros += is_latin || c % 0x100 == 0 ? 1U : 0U;
    textual += is_latin || c == ideographic_space || c == ideograph_one ? 1U : 0U;
  }
  return textual * 10 >= zeros * 9;
}

/// Whether at least half of the text are characters below U+10000, as in any language.
bool is_of_first_plane(std::wstring_view text) {
  auto const count = std::count_if(text.begin(), text.end(), [](wchar_t c) { return c < 0x10000; });
  return static_cast<std::size_t>(count) * 2 >= text.size();
}

/// Text of wide units without a mark: only its zero bytes give it away.
std::optional<std::string> find_wide_units(std::string_view bytes) {
  std::optional<std::string> best;
  double best_share = 0.95;
  for (char const* const encoding : {"UTF-32LE", "UTF-32BE", "UTF-16LE", "UTF-16BE"}) {
    std::size_t const unit = encoding[4] == '3' ? 4 : 2;
    std::string_view const whole_units = bytes.substr(0, bytes.size() - bytes.size() % unit);
    std::wstring const text = from_utf8(decode_with(encoding, whole_units, false));
    bool const is_malformed = text.find(L'\xFFFD') != std::wstring::npos;
    bool const has_null = text.find(L'\0') != std::wstring::npos;
    bool const is_text = !is_malformed && !has_null &&
                         (unit == 4 ? is_of_first_plane(text) : has_textual_zeros(text));
    double const share = is_text ? ordinary_share(text) : 0;
    if (share > best_share) {
      best_share = share;
      best = encoding;
    }
  }
  return best;
}

/// Bytes that are no text at all. A few NULs may stand in what is valid UTF-8 otherwise.
bool is_binary(std::string_view bytes) {
  auto const controls = std::count_if(bytes.begin(), bytes.end(), [](char c) {
    return is_control(static_cast<wchar_t>(static_cast<unsigned char>(c)));
  });
  auto const nulls = std::count(bytes.begin(), bytes.end(), '\0');
  bool const has_stray_nulls = nulls > 0 &&
                               static_cast<std::size_t>(controls) * 10 <= bytes.size() &&
                               is_utf8(bytes.substr(0, complete_utf8_prefix(bytes)));
  return (nulls > 0 && !has_stray_nulls) ||
         static_cast<std::size_t>(controls) > 2 + bytes.size() / 100;
}

/// UTF-8, also with a sequence cut at the end or with some damage. Text in another encoding may
/// hold sequences that look well-formed, but never many times as many as others.
bool is_mostly_utf8(std::string_view bytes) {
  constexpr std::size_t least_cut_sample = 4096;
  std::size_t const complete = complete_utf8_prefix(bytes);
  bool const is_valid = is_utf8(bytes.substr(0, complete));
  if (is_valid && (complete == bytes.size() || bytes.size() >= least_cut_sample)) {
    return true;
  }
  std::wstring const text = from_utf8(bytes.substr(0, complete));
  auto const is_wide = [](wchar_t c) { return c >= 0x80 && c != 0xFFFD; };
  auto const sequences = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), is_wide));
  if (is_valid) {
    return sequences > 0;
  }
  auto const malformed = static_cast<std::size_t>(std::count(text.begin(), text.end(), L'\xFFFD'));
  return sequences >= 10 * malformed;
}

DetectedEncoding find_mark(std::string_view bytes) {
  for (Mark const& mark : byte_order_marks) {
    if (bytes.starts_with(mark.bytes)) {
      return {mark.encoding, mark.bytes.size()};
    }
  }
  return {};
}

/// UTF-16 or UTF-32 without a mark.
std::optional<std::string> find_wide(std::string_view bytes) {
  std::string_view const part = bytes.substr(0, measured_size);
  auto const nulls = static_cast<std::size_t>(std::count(part.begin(), part.end(), '\0'));
  bool const is_whole = bytes.size() <= measured_size;
  if (is_whole && bytes.size() % 2 != 0) {
    return std::nullopt;
  }
  // In UTF-16 every other byte of a Cyrillic, Greek or Arabic text is the same control character.
  auto const controls = static_cast<std::size_t>(
      std::count_if(part.begin(), part.end(), [](char c) { return c != '\0' && is_control(c); }));
  bool const is_plain = nulls * 4 < part.size() && controls * 4 < part.size();
  if (is_plain && is_utf8(part.substr(0, complete_utf8_prefix(part)))) {
    return std::nullopt;
  }
  if (auto by_zeros = nulls > 0 ? find_wide_units(part) : std::nullopt) {
    return by_zeros;
  }
  Fit const found = find_east_asian_units(part);
  bool const is_better =
      found.encoding != nullptr && found.degree > find_double_byte(telling_part(part)).degree;
  return is_better ? std::optional<std::string>(found.encoding) : std::nullopt;
}

/// The encoding of a whole text, which is not UTF-8 all through and has no mark.
std::string find_other(std::string_view bytes) {
  std::string_view const sample = bytes.substr(0, sample_size);
  std::string name = detect_encoding(sample).name;
  if (name.empty()) {
    return find_legacy(sample);
  }
  std::size_t const valid = valid_utf8_prefix(bytes);
  bool const is_ascii_so_far = name == "UTF-8" && telling_part(bytes.substr(0, valid)).empty();
  return is_ascii_so_far ? find_legacy(bytes.substr(valid, sample_size)) : name;
}

DetectedEncoding find_whole(std::string_view bytes) {
  DetectedEncoding found = find_mark(bytes);
  if (found.mark_length > 0) {
    return found;
  }
  if (auto const wide = find_wide(bytes)) {
    return {*wide, 0};
  }
  return {is_utf8(bytes) ? "UTF-8" : find_other(bytes), 0};
}

}  // namespace

DetectedEncoding detect_encoding(std::string_view sample) {
  DetectedEncoding found = find_mark(sample);
  if (found.mark_length > 0) {
    return found;
  }
  if (auto const wide = find_wide(sample)) {
    return {*wide, 0};
  }
  if (is_binary(sample)) {
    return {};
  }
  return {is_mostly_utf8(sample) ? "UTF-8" : find_legacy(sample), 0};
}

std::string decode_text(std::string_view bytes) {
  DetectedEncoding const found = find_whole(bytes);
  return decode_with(found.name, bytes.substr(found.mark_length), true);
}

std::wstring decode_wide_text(std::string_view bytes) {
  DetectedEncoding const found = find_whole(bytes);
  bytes.remove_prefix(found.mark_length);
  if (found.name == "UTF-8") {
    return from_utf8(bytes);
  }
  TextDecoder decoder(found.name);
  std::wstring text;
  std::string utf8;
  bool last = false;
  while (!last) {
    std::string_view const piece = bytes.substr(0, sample_size);
    bytes.remove_prefix(piece.size());
    last = bytes.empty();
    utf8.clear();
    decoder.decode(piece, last, utf8);
    append_wide(text, utf8);
  }
  return text;
}

}  // namespace morvabs
