#include "morvakit/text/text_source.h"

#include <algorithm>

namespace morvakit {

namespace {

constexpr std::int64_t sample_size = std::int64_t{1} << 20;
constexpr std::int64_t piece_size = std::int64_t{64} << 10;

/// False, with the context ended, when the bytes cannot be read; `piece` is empty at the end.
bool read_piece(Orlec::Reader const& reader, ReadContext& context, std::int64_t offset,
                std::int64_t size, std::string& piece) {
  piece.resize(static_cast<std::size_t>(size));
  auto const got = reader.ReadAt(offset, piece.data(), size);
  piece.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  return got >= 0 || context.end_unreadable(reader);
}

bool is_plain_ascii(std::string_view bytes) {
  return std::none_of(bytes.begin(), bytes.end(), [](char character) {
    return character == '\0' || static_cast<unsigned char>(character) >= 0x80;
  });
}

}  // namespace

morvabs::DetectedEncoding detect_text_encoding(Orlec::Reader const& reader, ReadContext& context) {
  std::string sample;
  for (std::int64_t offset = 0; offset < reader.GetSize() && context.keep_going();
       offset += sample_size) {
    if (!read_piece(reader, context, offset, sample_size, sample) || sample.empty()) {
      break;
    }
    if (!is_plain_ascii(sample)) {
      if (offset != 0) {
        // The piece may begin within a character; the next line does not.
        sample.erase(0, std::min(sample.find('\n'), sample.size()));
      }
      auto encoding = morvabs::detect_encoding(sample);
      encoding.mark_length = offset == 0 ? encoding.mark_length : 0;
      return encoding.name.empty() ? morvabs::DetectedEncoding{"UTF-8"} : encoding;
    }
  }
  return {"UTF-8"};
}

void read_decoded(Orlec::Reader const& reader, ReadContext& context,
                  morvabs::DetectedEncoding const& encoding, TextConsumer const& consumer) {
  morvabs::TextDecoder decoder(encoding.name);
  std::string bytes;
  std::string utf8;
  auto offset = static_cast<std::int64_t>(encoding.mark_length);
  for (bool last = false; !last && context.keep_going();) {
    if (!read_piece(reader, context, offset, piece_size, bytes)) {
      return;
    }
    offset += static_cast<std::int64_t>(bytes.size());
    last = bytes.empty();
    utf8.clear();
    decoder.decode(bytes, last, utf8);
    std::replace(utf8.begin(), utf8.end(), '\0', ' ');
    if (!consumer(utf8, last)) {
      return;
    }
  }
}

}  // namespace morvakit
