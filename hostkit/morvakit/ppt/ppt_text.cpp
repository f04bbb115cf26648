#include "morvakit/ppt/ppt_text.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "host/utf8.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::int64_t piece_size = 64 << 10;

bool is_high_half(char32_t unit) {
  return unit >= 0xd800 && unit <= 0xdbff;
}

bool is_low_half(char32_t unit) {
  return unit >= 0xdc00 && unit <= 0xdfff;
}

/// Makes UTF-8 of UTF-16, unit by unit.
class Utf8Line {
 public:
  std::string& bytes() { return bytes_; }

  void append(char32_t unit) {
    bool const is_plain = unit >= ' ' && unit < 0x80 && high_ == 0;
    if (is_plain) {
      bytes_ += static_cast<char>(unit);
      return;
    }
    auto const high = std::exchange(high_, 0);
    if (is_high_half(unit)) {
      append_whole(high);
      high_ = unit;
    } else if (high != 0 && is_low_half(unit)) {
      append_whole(0x10000 + ((high - 0xd800) << 10U) + (unit - 0xdc00));
    } else {
      append_whole(high);
      append_whole(unit);
    }
  }
  void finish() { append_whole(std::exchange(high_, 0)); }

 private:
  void append_whole(char32_t value) {
    // Tabs separate words; all other control characters mark something that is not text.
    if (value >= ' ' || value == '\t') {
      char buffer[4];
      bytes_.append(buffer, morvabs::encode_utf8(value, buffer));
    }
  }

  std::string bytes_;
  char32_t high_ = 0;
};

/// Takes a piece of a line, and whether the line ends with it.
using LineConsumer = std::function<void(std::string_view utf8, bool is_end)>;

void for_each_line(PptStream& stream, PptText const& text, LineConsumer const& consumer) {
  constexpr char32_t paragraph_end = 0x0d;
  constexpr char32_t line_end = 0x0b;
  std::int64_t const width = text.record.type == ppt::text_bytes ? 1 : 2;
  Utf8Line line;
  auto field = text.fields.begin();
  std::uint32_t index = 0;
  auto const give = [&](bool is_end) {
    consumer(line.bytes(), is_end);
    line.bytes().clear();
  };
  for (std::int64_t begin = 0; stream.context().keep_going(); begin += piece_size) {
    auto const piece = stream.content(text.record, begin, piece_size);
    for (std::size_t i = 0; i + static_cast<std::size_t>(width) <= piece.size();
         i += static_cast<std::size_t>(width), ++index) {
      char32_t const unit =
          width == 1 ? static_cast<unsigned char>(piece[i]) : tessarine::little16(piece, i);
      for (; field != text.fields.end() && *field < index; ++field) {
      }
      if (unit == paragraph_end || unit == line_end) {
        line.finish();
        give(true);
      } else if (field == text.fields.end() || *field != index) {
        line.append(unit);
      }
    }
    if (static_cast<std::int64_t>(piece.size()) < piece_size) {
      line.finish();
      give(true);
      return;
    }
    give(false);
  }
}

/// Adds a piece to a digest. Pieces are cut at the same places whenever the text is the same.
void mix(std::size_t& digest, std::string_view piece) {
  constexpr std::size_t odd = 0x9e3779b97f4a7c15;
  digest = (digest ^ std::hash<std::string_view>{}(piece)) * odd;
}

}  // namespace

void PptTextCollector::take(PptRecord const& record) {
  switch (record.type) {
    case ppt::text_header:
      if (stream_.context().charge_memory(sizeof(PptText))) {
        texts_.push_back({});
      }
      break;
    case ppt::text_characters:
    case ppt::text_bytes:
      if ((texts_.empty() || texts_.back().record.size != 0) &&
          stream_.context().charge_memory(sizeof(PptText))) {
        texts_.push_back({});
      }
      if (!texts_.empty()) {
        texts_.back().record = record;
      }
      break;
    case ppt::slide_number_field:
    case ppt::formatted_date_field:
      if (!texts_.empty() && stream_.context().charge_memory(sizeof(std::uint32_t))) {
        texts_.back().fields.push_back(stream_.number(record, 0));
      }
      break;
    default:
      if (record.type >= ppt::date_field && record.type <= ppt::footer_field && !texts_.empty() &&
          stream_.context().charge_memory(sizeof(std::uint32_t))) {
        texts_.back().fields.push_back(stream_.number(record, 0));
      }
      break;
  }
}

std::size_t deliver_text(PptStream& stream, PptText const& text, Orlec::ParseTextType kind,
                         TextFlow& flow) {
  std::size_t digest = 0;
  for_each_line(stream, text, [&](std::string_view utf8, bool is_end) {
    mix(digest, utf8);
    flow.text(kind, utf8);
    if (is_end) {
      flow.separate(kind, '\n');
    }
  });
  return digest;
}

std::size_t text_digest(PptStream& stream, PptText const& text) {
  std::size_t digest = 0;
  for_each_line(stream, text, [&digest](std::string_view utf8, bool) { mix(digest, utf8); });
  return digest;
}

std::string short_text(std::string_view utf16) {
  Utf8Line line;
  for (std::size_t i = 0; i + 2 <= utf16.size() && tessarine::little16(utf16, i) != 0; i += 2) {
    line.append(tessarine::little16(utf16, i));
  }
  line.finish();
  return std::move(line.bytes());
}

}  // namespace morvakit
