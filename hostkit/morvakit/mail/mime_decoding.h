#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace morvakit {

/// How the bytes of a part are written in a mail.
enum class Transfer {
  identity,
  base64,
  quoted_printable,
  uuencode,
  yenc,
};

/// The one of a Content-Transfer-Encoding's name; `identity` for an unknown one.
Transfer find_transfer(std::string_view name);

/// Decodes the content of a part piece by piece. What is no valid code is passed over, or taken as
/// it stands where the encoding leaves most bytes as they are.
class TransferDecoder {
 public:
  explicit TransferDecoder(Transfer transfer) : transfer_(transfer) {}

  /// Appends the bytes behind a piece of content to `out`.
  void decode(std::string_view bytes, std::string& out);
  /// Appends what a code that is cut at the end stands for.
  void finish(std::string& out);

 private:
  void decode_base64(std::string_view bytes, std::string& out);
  void decode_quoted(std::string_view bytes, std::string& out);
  void end_quoted(char character, std::string& out);
  void decode_lines(std::string_view bytes, std::string& out);
  void decode_line(std::string& out);
  void decode_uu_line(std::string& out) const;
  void decode_yenc_line(std::string& out) const;

  Transfer transfer_;
  std::uint32_t bits_ = 0;
  int digits_ = 0;
  /// An escape that is not complete, or a line.
  std::string kept_;
  bool is_inside_ = false;
};

}  // namespace morvakit
