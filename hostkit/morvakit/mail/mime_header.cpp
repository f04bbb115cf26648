#include "morvakit/mail/mime_header.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>

#include "host/utf8.h"
#include "morvabs/text_decoder.h"
#include "morvakit/mail/mime_decoding.h"
#include "morvakit/text/html_encoding.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool is_beyond_ascii(char character) {
  return static_cast<signed char>(character) < 0;
}

std::string_view trim(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Sets that give each byte a meaning, so that a wrong declaration does not show.
bool takes_any_bytes(std::string_view encoding) {
  constexpr std::array<std::string_view, 9> prefixes{"iso-8859", "iso8859",     "iso_8859",
                                                     "latin",    "windows-125", "cp125",
                                                     "us-ascii", "ascii",       "ansi"};
  auto const lower = tessarine::ascii_lower(encoding);
  return std::any_of(prefixes.begin(), prefixes.end(),
                     [&lower](std::string_view prefix) { return lower.starts_with(prefix); });
}

/// The encoding that a declaration and the bytes agree on; empty where the look of the bytes has to
/// tell.
std::string agreed_encoding(std::string_view sample, std::string_view declared) {
  bool const is_ascii = std::none_of(sample.begin(), sample.end(), is_beyond_ascii);
  if (is_ascii && (declared.empty() || takes_any_bytes(declared))) {
    return "UTF-8";
  }
  auto const is_valid =
      !is_ascii && morvabs::is_utf8(sample.substr(0, morvabs::complete_utf8_prefix(sample)));
  if (is_valid && (declared.empty() || takes_any_bytes(declared))) {
    return "UTF-8";
  }
  auto const says_nothing =
      declared.empty() || tessarine::ascii_lower(declared).find("ascii") != std::string::npos;
  bool const agrees = !says_nothing && agrees_with_encoding(sample, std::string(declared));
  return agrees ? std::string(declared) : std::string{};
}

std::string encoding_by_look(std::string_view sample) {
  auto const detected = morvabs::detect_encoding(sample).name;
  return detected.empty() ? "windows-1252" : detected;
}

/// Decodes the pieces of one field. Telling an encoding by its look takes long, so that it is done
/// once for all pieces that need it.
class FieldDecoder {
 public:
  /// `sample`: what tells the look, where it was not told by an earlier piece.
  std::string decode(std::string_view bytes, std::string_view declared, std::string_view sample) {
    auto encoding = agreed_encoding(bytes, declared);
    if (encoding.empty()) {
      look_ = look_.empty() ? encoding_by_look(sample) : look_;
      encoding = look_;
    }
    std::string utf8;
    morvabs::TextDecoder(encoding).decode(bytes, true, utf8);
    return utf8;
  }

 private:
  std::string look_;
};

/// One "=?charset?encoding?text?=".
struct EncodedWord {
  std::string_view charset;
  std::string bytes;
  /// Length of the whole word as it stands.
  std::size_t length = 0;
};

/// Finds encoded words in a field from its beginning to its end.
class EncodedWords {
 public:
  explicit EncodedWords(std::string_view field) : field_(field) {}

  /// The word that begins with the "=?" at that place.
  std::optional<EncodedWord> at(std::size_t place) {
    constexpr std::size_t longest_charset = 80;
    auto const head = field_.substr(place, longest_charset);
    auto const charset_end = head.find('?', 2);
    if (charset_end == std::string_view::npos || charset_end + 3 > head.size() ||
        head[charset_end + 2] != '?') {
      return std::nullopt;
    }
    char const encoding = head[charset_end + 1];
    bool const is_base64 = encoding == 'b' || encoding == 'B';
    auto const begin = place + charset_end + 3;
    auto const end = next_end(begin);
    auto const charset = head.substr(2, charset_end - 2);
    bool const has_room = charset.find_first_of(blanks) == std::string_view::npos;
    if ((!is_base64 && encoding != 'q' && encoding != 'Q') || end == std::string_view::npos ||
        !has_room) {
      return std::nullopt;
    }
    return EncodedWord{charset.substr(0, charset.find('*')),
                       decode(field_.substr(begin, end - begin), is_base64), end + 2 - place};
  }

 private:
  static std::string decode(std::string_view text, bool is_base64) {
    std::string word(text);
    if (!is_base64) {
      std::replace(word.begin(), word.end(), '_', ' ');
    }
    std::string bytes;
    TransferDecoder decoder(is_base64 ? Transfer::base64 : Transfer::quoted_printable);
    decoder.decode(word, bytes);
    decoder.finish(bytes);
    return bytes;
  }

  /// The first "?=" at or behind a place; places do not go back, so that a field is searched once.
  std::size_t next_end(std::size_t place) {
    if (!is_searched_ || end_ < place) {
      end_ = field_.find("?=", place);
      is_searched_ = true;
    }
    return end_;
  }

  std::string_view field_;
  std::size_t end_ = 0;
  bool is_searched_ = false;
};

/// Decodes a field's value piece by piece, keeping the bytes of encoded words that follow each
/// other in one character set.
class HeaderText {
 public:
  HeaderText(std::string_view field, FieldDecoder& decoder) : field_(field), decoder_(decoder) {}

  void add_word(EncodedWord const& word) {
    if (!bytes_.empty() && tessarine::ascii_lower(word.charset) != charset_) {
      end_words();
    }
    charset_ = tessarine::ascii_lower(word.charset);
    bytes_ += word.bytes;
  }

  void add_raw(std::string_view raw) {
    end_words();
    bool const is_japanese = raw.find("\x1b$") != std::string_view::npos;
    bool const is_ascii = std::none_of(raw.begin(), raw.end(), is_beyond_ascii);
    text_ += is_ascii && !is_japanese
                 ? std::string(raw)
                 : decoder_.decode(raw, is_japanese ? "ISO-2022-JP" : "", field_);
  }

  std::string take() {
    end_words();
    std::replace(text_.begin(), text_.end(), '\0', ' ');
    return std::move(text_);
  }

 private:
  void end_words() {
    text_ += bytes_.empty() ? std::string() : decoder_.decode(bytes_, charset_, bytes_);
    bytes_.clear();
  }

  std::string_view field_;
  FieldDecoder& decoder_;
  std::string text_;
  std::string charset_;
  std::string bytes_;
};

std::string decode_field(std::string_view field, FieldDecoder& decoder) {
  field = trim(field);
  EncodedWords words(field);
  HeaderText text(field, decoder);
  bool follows_word = false;
  for (std::size_t at = 0; at < field.size();) {
    auto const begin = std::min(field.find("=?", at), field.size());
    auto const word = words.at(begin);
    auto const end = word ? begin : std::min(begin + 2, field.size());
    auto const raw = field.substr(at, end - at);
    // White space between two encoded words belongs to neither.
    bool const is_between = word && follows_word && trim(raw).empty();
    if (!is_between && !raw.empty()) {
      text.add_raw(raw);
    }
    if (word) {
      text.add_word(*word);
    }
    follows_word = word.has_value();
    at = end + (word ? word->length : 0);
  }
  return text.take();
}

std::string decode_percent(std::string_view text) {
  std::string quoted(text);
  std::replace(quoted.begin(), quoted.end(), '%', '=');
  std::string bytes;
  TransferDecoder decoder(Transfer::quoted_printable);
  decoder.decode(quoted, bytes);
  decoder.finish(bytes);
  return bytes;
}

/// Takes the next parameter's value, quoted or not, off the front of `rest`, up to its semicolon.
std::string take_value(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
  std::string value;
  if (rest.starts_with('"')) {
    std::size_t at = 1;
    while (at < rest.size() && rest[at] != '"') {
      at += rest[at] == '\\' && at + 1 < rest.size() ? 1U : 0U;
      value += rest[at++];
    }
    rest.remove_prefix(std::min(at + 1, rest.size()));
    auto const behind = trim(rest.substr(0, rest.find(';')));
    value += behind;
  } else {
    value = trim(rest.substr(0, rest.find(';')));
  }
  auto const end = rest.find(';');
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return value;
}

/// The parameters as they come, those in pieces by the number of the piece.
class Parameters {
 public:
  void add(std::string const& name, std::string value) {
    auto const star = name.find('*');
    if (star == std::string::npos) {
      plain_.emplace_back(name, decode_field(value, decoder_));
      return;
    }
    auto const number = name.substr(star + 1);
    bool const is_encoded = number.empty() || number.back() == '*';
    std::size_t place = 0;
    for (char const digit : number.substr(0, max_digits)) {
      place =
          digit >= '0' && digit <= '9' ? place * 10 + static_cast<std::size_t>(digit - '0') : place;
    }
    divided_[name.substr(0, star)].emplace(place, Piece{std::move(value), is_encoded});
  }

  /// A divided form stands in front: where there are both, it is the better one.
  std::vector<std::pair<std::string, std::string>> take() {
    std::vector<std::pair<std::string, std::string>> all;
    for (auto const& [name, pieces] : divided_) {
      all.emplace_back(name, join(pieces));
    }
    all.insert(all.end(), std::make_move_iterator(plain_.begin()),
               std::make_move_iterator(plain_.end()));
    return all;
  }

 private:
  static constexpr std::size_t max_digits = 6;

  struct Piece {
    std::string value;
    bool is_encoded = false;
  };

  std::string join(std::map<std::size_t, Piece> const& pieces) {
    std::string bytes;
    std::string charset;
    bool is_first = true;
    for (auto const& [place, piece] : pieces) {
      std::string_view value = piece.value;
      if (is_first && piece.is_encoded) {
        auto const first = value.find('\'');
        auto const second = first == std::string_view::npos ? first : value.find('\'', first + 1);
        if (second != std::string_view::npos) {
          charset = value.substr(0, first);
          value.remove_prefix(second + 1);
        }
      }
      is_first = false;
      bytes += piece.is_encoded ? decode_percent(value) : std::string(value);
    }
    return decoder_.decode(bytes, charset, bytes);
  }

  FieldDecoder decoder_;
  std::vector<std::pair<std::string, std::string>> plain_;
  std::map<std::string, std::map<std::size_t, Piece>> divided_;
};

}  // namespace

std::string_view MimeValue::parameter(std::string_view name) const {
  auto const found =
      std::find_if(parameters.begin(), parameters.end(),
                   [name](auto const& parameter) { return parameter.first == name; });
  return found == parameters.end() ? std::string_view{} : std::string_view(found->second);
}

MimeValue parse_mime_value(std::string_view field) {
  MimeValue parsed;
  auto const end = std::min(field.find(';'), field.size());
  parsed.value = tessarine::ascii_lower(trim(field.substr(0, end)));
  // A comment, or whatever else follows the value.
  parsed.value.resize(std::min(parsed.value.find_first_of(" \t("), parsed.value.size()));
  auto rest = field.substr(std::min(end + 1, field.size()));
  Parameters parameters;
  while (!rest.empty()) {
    auto const stop = rest.find_first_of("=;");
    if (stop == std::string_view::npos) {
      break;
    }
    auto const name = tessarine::ascii_lower(trim(rest.substr(0, stop)));
    bool const has_value = rest[stop] == '=';
    rest.remove_prefix(stop + 1);
    if (has_value) {
      parameters.add(name, take_value(rest));
    }
  }
  parsed.parameters = parameters.take();
  return parsed;
}

std::string decode_header(std::string_view field) {
  FieldDecoder decoder;
  return decode_field(field, decoder);
}

std::string choose_encoding(std::string_view sample, std::string_view declared) {
  auto const agreed = agreed_encoding(sample, declared);
  return agreed.empty() ? encoding_by_look(sample) : agreed;
}

}  // namespace morvakit
