#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"

namespace morvakit {

/// One piece of the syntax of RTF.
struct RtfToken {
  enum class Type {
    end,          ///< of the file, or the file cannot be read
    group_begin,  ///< "{"
    group_end,    ///< "}"
    word,         ///< a control word, named by `text`; empty for one that is too long to be any
    symbol,       ///< a control symbol, the one character in `text`
    byte,         ///< a byte written in hexadecimal, the one character in `text`
    text,         ///< bytes of text as they stand, line ends left out
    binary,       ///< a piece of the binary data behind the control word "bin"
  };

  Type type = Type::end;
  /// Valid until the next token.
  std::string_view text = {};
  bool has_parameter = false;
  /// Of a control word, cut to the range of the type.
  std::int32_t parameter = 0;
};

/// Splits a file, read in pieces, into tokens: any bytes are some sequence of tokens.
class RtfTokens {
 public:
  explicit RtfTokens(Orlec::Reader const& reader) : reader_(reader) {}

  RtfToken next();

  /// Where the next token begins.
  std::int64_t offset() const;
  /// Goes on at such a place.
  void seek(std::int64_t offset);
  /// Whether the end came within binary data, which were to be longer than the file.
  bool is_binary_cut() const { return binary_left_ > 0; }
  bool has_failed() const { return has_failed_; }
  Orlec::Reader const& reader() const { return reader_; }

 private:
  static constexpr int no_byte = -1;

  bool fill();
  int peek();
  int take();
  RtfToken control();
  RtfToken word(char first);
  RtfToken hexadecimal();
  RtfToken run();
  RtfToken binary();
  void read_parameter(RtfToken& token);

  Orlec::Reader const& reader_;
  std::int64_t piece_offset_ = 0;
  std::string piece_;
  std::size_t at_ = 0;
  std::int64_t binary_left_ = 0;
  bool has_failed_ = false;
  std::array<char, 32> name_{};
  char character_ = '\0';
};

/// The value of a hexadecimal digit, -1 for another character.
int rtf_digit(char character);

}  // namespace morvakit
