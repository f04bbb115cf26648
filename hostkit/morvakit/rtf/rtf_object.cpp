#include "morvakit/rtf/rtf_object.h"

#include <memory>
#include <string>

#include "morvakit/embedded.h"
#include "morvakit/ole/ole_object.h"
#include "morvakit/spool.h"
#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using tessarine::little32;
using tessarine::read_piece;

/// Puts the bytes that are written in hexadecimal, with anything between the digits, together.
class HexBytes {
 public:
  explicit HexBytes(Spool& spool) : spool_(spool) {}
  HexBytes(HexBytes const&) = delete;
  HexBytes& operator=(HexBytes const&) = delete;

  bool digits(std::string_view text) {
    bytes_.clear();
    for (char const character : text) {
      int const digit = rtf_digit(character);
      if (digit < 0) {
        continue;
      }
      if (high_ < 0) {
        high_ = digit;
      } else {
        bytes_ += static_cast<char>(high_ * 16 + digit);
        high_ = -1;
      }
    }
    return spool_.append(bytes_);
  }

  bool binary(std::string_view bytes) { return spool_.append(bytes); }

 private:
  Spool& spool_;
  std::string bytes_;
  int high_ = -1;
};

/// Groups within the data that a reader need not know hold none of them.
void collect(RtfTokens& tokens, ReadContext& context, Spool& spool) {
  HexBytes bytes(spool);
  std::int64_t depth = 0;
  std::int64_t left_out_from = 0;
  bool wanted = true;
  while (wanted && depth >= 0 && context.keep_going()) {
    auto const token = tokens.next();
    bool const is_left_out = left_out_from != 0;
    switch (token.type) {
      case RtfToken::Type::end:
        return;
      case RtfToken::Type::group_begin:
        ++depth;
        break;
      case RtfToken::Type::group_end:
        left_out_from = left_out_from == depth ? 0 : left_out_from;
        --depth;
        break;
      case RtfToken::Type::symbol:
        left_out_from = !is_left_out && token.text == "*" ? depth : left_out_from;
        break;
      case RtfToken::Type::text:
        wanted = is_left_out || bytes.digits(token.text);
        break;
      case RtfToken::Type::binary:
        wanted = is_left_out || bytes.binary(token.text);
        break;
      default:
        break;
    }
  }
}

/// The header that OLE has had since before compound files.
class ObjectHeader {
 public:
  explicit ObjectHeader(Orlec::Reader const& data) : data_(data) {
    constexpr std::int64_t version_size = 4;
    constexpr std::uint32_t linked = 1;
    constexpr std::uint32_t embedded = 2;
    at_ = version_size;
    auto const kind = number();
    is_linked_ = kind == linked;
    class_name_ = text();
    text();
    text();
    size_ = number();
    is_embedded_ = kind == embedded && is_sound_ && at_ < data.GetSize();
  }

  /// Whether the data only say where the object is.
  bool is_linked() const { return is_linked_; }

  /// Whether the data are those of an embedded object, and the object follows.
  bool is_embedded() const { return is_embedded_; }
  std::string const& class_name() const { return class_name_; }
  std::int64_t begin() const { return at_; }
  std::int64_t size() const { return size_; }

 private:
  std::uint32_t number() {
    auto const value = little32(read_piece(data_, at_, sizeof(std::uint32_t)), 0);
    at_ += static_cast<std::int64_t>(sizeof(std::uint32_t));
    return value;
  }

  /// A text with its length in front, which counts the zero byte behind it.
  std::string text() {
    constexpr std::uint32_t longest = 4096;
    auto const length = number();
    is_sound_ = is_sound_ && length <= longest;
    if (!is_sound_) {
      return {};
    }
    auto const bytes = read_piece(data_, at_, length);
    at_ += length;
    return bytes.substr(0, bytes.find('\0'));
  }

  Orlec::Reader const& data_;
  std::int64_t at_ = 0;
  std::int64_t size_ = 0;
  std::string class_name_;
  bool is_sound_ = true;
  bool is_linked_ = false;
  bool is_embedded_ = false;
};

}  // namespace

bool read_rtf_object(RtfTokens& tokens, ReadContext& context) {
  Spool data({}, context);
  collect(tokens, context, data);
  ObjectHeader const header(data);
  if (data.GetSize() == 0 || header.is_linked()) {
    return context.keep_going();
  }
  if (!header.is_embedded()) {
    return read_embedded(data, context);
  }
  auto const name = decode_code_page(header.class_name(), 0);
  ReaderSlice const native(data, name, header.begin(), header.size());
  auto const packaged =
      open_packaged_file(std::make_unique<ReaderSlice>(native, name, 0, native.GetSize()), 0, name);
  return packaged != nullptr ? read_embedded(*packaged, context) : read_embedded(native, context);
}

}  // namespace morvakit
