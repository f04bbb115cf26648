#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "morvakit/read_context.h"

namespace morvakit {

/// Takes a part of a binary workbook (XLSB) apart into its records, as it comes in pieces.
class XlsbRecords {
 public:
  /// The body is valid during the call. Of a record that is longer than any text in a cell can make
  /// it, nothing is passed on; that is noted as damage.
  using Handler = std::function<void(std::uint32_t type, std::string_view body)>;

  XlsbRecords(ReadContext& context, Handler handler)
      : context_(context), handler_(std::move(handler)) {}

  /// The next piece; false when no more of the part is wanted.
  bool feed(std::string_view bytes);
  /// All pieces have come: notes a record that is cut short.
  void finish();

 private:
  enum class Expected { type, size, body };

  void take_head(std::uint8_t byte);
  void take_body(std::string_view& bytes);

  ReadContext& context_;
  Handler handler_;
  Expected expected_ = Expected::type;
  unsigned shift_ = 0;
  std::uint32_t type_ = 0;
  std::uint32_t size_ = 0;
  /// Bytes of the body that are still to come.
  std::uint32_t left_ = 0;
  std::string body_;
};

/// Takes values out of a record's body, one behind the other; 0 or empty behind its end.
class XlsbFields {
 public:
  explicit XlsbFields(std::string_view body) : rest_(body) {}

  bool at_end() const { return rest_.empty(); }
  void skip(std::size_t count);
  std::uint8_t byte();
  std::uint16_t word();
  std::uint32_t double_word();
  double floating();
  /// A string behind its length; one of a length that stands for "none" is empty.
  std::string string();
  /// A string that may be formatted; only its text is taken.
  std::string rich_string();

 private:
  std::string_view take(std::size_t count);

  std::string_view rest_;
};

}  // namespace morvakit
