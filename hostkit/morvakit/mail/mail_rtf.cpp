#include "morvakit/mail/mail_rtf.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::int64_t header_size = 16;
constexpr std::uint32_t form_packed = 0x75465a4c;
constexpr std::uint32_t form_plain = 0x414c454d;
constexpr std::size_t piece_size = std::size_t{64} << 10;

/// What stands in the window before the first byte, by the format's rules.
constexpr std::string_view first_words =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern "
    "\\fscript \\fdecor MS Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0"
    "\\blue0\r\n\\par \\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";

constexpr std::array<std::uint32_t, 256> make_checksum_table() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    auto value = i;
    for (int bit = 0; bit < 8; ++bit) {
      value = (value & 1U) != 0 ? 0xedb88320U ^ value >> 1U : value >> 1U;
    }
    table[i] = value;
  }
  return table;
}

class Unpacker {
 public:
  Unpacker(Orlec::Reader const& packed, Spool& rtf, ReadContext& context)
      : packed_(packed), rtf_(rtf), context_(context) {
    std::copy(first_words.begin(), first_words.end(), window_.begin());
  }

  /// False when the stream ends before its end mark, or nothing more is wanted.
  bool run(std::int64_t end) {
    end_ = end;
    while (context_.keep_going()) {
      auto const flags = next();
      if (flags < 0) {
        return false;
      }
      for (int bit = 0; bit < 8; ++bit) {
        bool const is_reference = (flags >> bit & 1) != 0;
        if (is_reference ? !take_reference() : !take_byte()) {
          return flush() && is_at_mark_;
        }
      }
    }
    return false;
  }

  /// Of all bytes, those behind the end mark included.
  std::uint32_t checksum() {
    while (next() >= 0) {
    }
    return checksum_;
  }

 private:
  static constexpr std::size_t window_size = 4096;

  int next() {
    static constexpr auto table = make_checksum_table();
    if (at_ >= piece_.size()) {
      piece_ = tessarine::read_piece(
          packed_, offset_, std::min<std::int64_t>(std::int64_t{piece_size}, end_ - offset_));
      offset_ += static_cast<std::int64_t>(piece_.size());
      at_ = 0;
      if (piece_.empty()) {
        return -1;
      }
    }
    auto const byte = static_cast<unsigned char>(piece_[at_++]);
    checksum_ = table[(checksum_ ^ byte) & 0xffU] ^ checksum_ >> 8U;
    return byte;
  }

  bool take_byte() {
    auto const byte = next();
    return byte >= 0 && put(static_cast<char>(byte));
  }

  bool take_reference() {
    auto const high = next();
    auto const low = next();
    if (high < 0 || low < 0) {
      return false;
    }
    auto const word = static_cast<std::size_t>(high) << 8U | static_cast<std::size_t>(low);
    auto from = word >> 4U;
    auto const length = (word & 0xfU) + 2;
    is_at_mark_ = from == write_;
    for (std::size_t i = 0; i < length && !is_at_mark_; ++i) {
      if (!put(window_[from])) {
        return false;
      }
      from = (from + 1) % window_size;
    }
    return !is_at_mark_;
  }

  bool put(char byte) {
    window_[write_] = byte;
    write_ = (write_ + 1) % window_size;
    unpacked_ += byte;
    return unpacked_.size() < piece_size || flush();
  }

  bool flush() {
    total_ += static_cast<std::int64_t>(unpacked_.size());
    bool const goes_on = context_.charge_expansion(packed_.GetSize(), total_,
                                                   static_cast<std::int64_t>(unpacked_.size())) &&
                         rtf_.append(unpacked_);
    unpacked_.clear();
    return goes_on;
  }

  Orlec::Reader const& packed_;
  Spool& rtf_;
  ReadContext& context_;
  std::array<char, window_size> window_{};
  std::size_t write_ = first_words.size();
  std::string piece_;
  std::size_t at_ = 0;
  std::int64_t offset_ = header_size;
  std::int64_t end_ = 0;
  std::string unpacked_;
  std::int64_t total_ = 0;
  std::uint32_t checksum_ = 0;
  bool is_at_mark_ = false;
};

void copy_plain(Orlec::Reader const& packed, std::int64_t end, Spool& rtf) {
  for (auto offset = header_size; offset < end;) {
    auto const piece = tessarine::read_piece(
        packed, offset, std::min<std::int64_t>(std::int64_t{piece_size}, end - offset));
    if (piece.empty() || !rtf.append(piece)) {
      return;
    }
    offset += static_cast<std::int64_t>(piece.size());
  }
}

}  // namespace

void unpack_mail_rtf(Orlec::Reader const& packed, Spool& rtf, ReadContext& context) {
  constexpr std::int64_t size_behind_itself = 4;
  auto const header = tessarine::read_piece(packed, 0, header_size);
  auto const form = tessarine::little32(header, 8);
  auto const stated = std::int64_t{tessarine::little32(header, 0)} + size_behind_itself;
  auto const end = std::min(stated, packed.GetSize());
  if (form == form_plain) {
    copy_plain(packed, std::min(end, header_size + tessarine::little32(header, 4)), rtf);
  } else if (form == form_packed) {
    Unpacker unpacker(packed, rtf, context);
    bool const is_whole = unpacker.run(end);
    if (!context.ended() && (!is_whole || unpacker.checksum() != tessarine::little32(header, 12))) {
      context.note(Orlec::ParseOutcome::damaged, "the packed text of the message is broken");
    }
  } else {
    context.note(Orlec::ParseOutcome::damaged, "the packed text of the message has no header");
  }
}

}  // namespace morvakit
