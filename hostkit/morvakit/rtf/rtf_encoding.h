#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>

#include "morvabs/text_decoder.h"

namespace morvakit {

/// Whether some characters of the code page take two bytes.
bool is_double_byte(int code_page);

/// The fonts of an RTF document, as far as they say what code page the bytes shown in them are in.
class RtfFonts {
 public:
  /// Code page of the bytes of fonts for symbols, which are no text beyond ASCII.
  static constexpr int symbols = -1;
  /// Stand for a font's number: the font that the document names, and none, for text that is not
  /// shown.
  static constexpr int default_font = -1;
  static constexpr int document_font = -2;

  /// The code page of the document by its kind of character set, unless one is stated.
  void set_default_code_page(int code_page);
  void state_code_page(int code_page);
  void set_default_font(int font) { default_font_ = font; }

  /// The entry that what follows is about; true when it is a new one.
  bool select(int font);
  void set_charset(int charset);
  void set_code_page(int code_page);

  int code_page(int font) const;
  int default_code_page() const { return default_code_page_; }

 private:
  static constexpr int unknown = 0;

  std::unordered_map<int, int> code_pages_;
  int selected_ = default_font;
  int default_font_ = default_font;
  int default_code_page_ = 1252;
  bool is_stated_ = false;
};

/// Turns the bytes and characters of a text, in the order they come, into UTF-8. A character of two
/// bytes may come in pieces.
class RtfDecoder {
 public:
  /// `default_code_page`: that of the document. Bytes in a font of Western Europe that make whole
  /// characters there are taken as those, since many writers name no better font.
  void bytes(std::string_view text, int code_page, int default_code_page);
  /// A value of UTF-16, half a pair or a whole one. What is no character becomes U+FFFD.
  void unit(std::uint32_t value);

  /// How many bytes of UTF-8 are there for `take` with false.
  std::size_t size() const { return utf8_.size(); }
  /// Hands over what has been decoded; with `last`, all that is gathered is decoded first, and what
  /// follows does not go on with it.
  std::string take(bool last);

 private:
  void decode(bool last);
  /// The byte that may be half a character with what follows, unless that is the `last`.
  std::string decode_mixed(bool last);
  morvabs::TextDecoder& decoder(int code_page);
  void put(std::uint32_t value);
  void end_pair();

  std::map<int, morvabs::TextDecoder> decoders_;
  std::string utf8_;
  std::string bytes_;
  int code_page_ = 0;
  int default_code_page_ = 0;
  /// Whether the decoder may hold the first byte of a character.
  bool is_begun_ = false;
  std::uint32_t high_surrogate_ = 0;
};

}  // namespace morvakit
