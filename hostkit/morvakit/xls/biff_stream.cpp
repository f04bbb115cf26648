#include "morvakit/xls/biff_stream.h"

#include <algorithm>
#include <bit>

#include "morvakit/sheet/sheet_text.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::size_t header_size = 4;
/// What is read at once; a record may be longer.
constexpr std::size_t usual_read = std::size_t{32} << 10;

}  // namespace

void BiffStream::fill(std::int64_t position, std::size_t size) {
  auto const left =
      static_cast<std::size_t>(std::clamp<std::int64_t>(stream_.GetSize() - position, 0, 1 << 30));
  buffer_.resize(std::min(std::max(size, usual_read), left));
  buffer_begin_ = position;
  std::size_t filled = 0;
  while (filled < buffer_.size()) {
    auto const got =
        stream_.ReadAt(position + static_cast<std::int64_t>(filled), buffer_.data() + filled,
                       static_cast<std::int64_t>(buffer_.size() - filled));
    if (got <= 0) {
      break;
    }
    filled += static_cast<std::size_t>(got);
  }
  buffer_.resize(filled);
}

std::string_view BiffStream::bytes(std::int64_t position, std::size_t size) {
  auto const is_there = [&] {
    return position >= buffer_begin_ &&
           position + static_cast<std::int64_t>(size) <=
               buffer_begin_ + static_cast<std::int64_t>(buffer_.size());
  };
  if (!is_there()) {
    fill(position, size);
  }
  auto const begin = static_cast<std::size_t>(position - buffer_begin_);
  return std::string_view(buffer_).substr(std::min(begin, buffer_.size()), size);
}

void BiffStream::seek(std::int64_t position) {
  next_ = std::clamp<std::int64_t>(position, 0, stream_.GetSize());
  type_ = 0;
  body_ = {};
}

void BiffStream::note_cut() {
  context_.note(Orlec::ParseOutcome::damaged, "the workbook's stream is cut short");
}

bool BiffStream::next() {
  if (!context_.keep_going() || at_end()) {
    return false;
  }
  auto const header = bytes(next_, header_size);
  if (header.size() < header_size) {
    next_ = stream_.GetSize();
    note_cut();
    return false;
  }
  type_ = tessarine::little16(header, 0);
  std::size_t const size = tessarine::little16(header, 2);
  body_ = bytes(next_, header_size + size).substr(header_size);
  next_ += static_cast<std::int64_t>(header_size + size);
  if (body_.size() < size) {
    next_ = stream_.GetSize();
    note_cut();
  }
  return true;
}

bool BiffStream::next_continuation() {
  auto const header = bytes(next_, header_size);
  return header.size() == header_size && tessarine::little16(header, 0) == biff::continuation &&
         next();
}

bool BiffCursor::refill() {
  while (rest_.empty()) {
    if (!records_.next_continuation()) {
      return false;
    }
    rest_ = records_.body();
  }
  return true;
}

bool BiffCursor::at_end() {
  return !refill();
}

std::string_view BiffCursor::take(std::size_t most) {
  auto const taken = rest_.substr(0, most);
  rest_.remove_prefix(taken.size());
  return taken;
}

std::uint8_t BiffCursor::byte() {
  if (!refill()) {
    short_ = true;
    return 0;
  }
  return static_cast<std::uint8_t>(take(1).front());
}

std::uint16_t BiffCursor::word() {
  if (rest_.size() >= 2) {
    return tessarine::little16(take(2), 0);
  }
  unsigned const low = byte();
  unsigned const high = byte();
  return static_cast<std::uint16_t>(low | high << 8U);
}

std::uint32_t BiffCursor::double_word() {
  std::uint32_t const low = word();
  std::uint32_t const high = word();
  return low | high << 16U;
}

double BiffCursor::floating() {
  std::uint64_t const low = double_word();
  std::uint64_t const high = double_word();
  return std::bit_cast<double>(low | high << 32U);
}

void BiffCursor::skip(std::uint64_t count) {
  while (count > 0) {
    if (!refill()) {
      short_ = true;
      return;
    }
    count -= take(static_cast<std::size_t>(std::min<std::uint64_t>(count, rest_.size()))).size();
  }
}

void BiffCursor::append_bytes(std::size_t count, std::string& bytes) {
  while (count > 0) {
    if (!refill()) {
      short_ = true;
      return;
    }
    auto const piece = take(count);
    bytes.append(piece);
    count -= piece.size();
  }
}

void BiffCursor::append_characters(std::size_t count, bool wide, std::string& utf8) {
  if (!wide && rest_.size() >= count) {
    append_low_bytes(utf8, take(count));
    return;
  }
  wide_.clear();
  while (count > 0) {
    if (rest_.empty()) {
      if (!refill()) {
        short_ = true;
        break;
      }
      wide = (byte() & 1U) != 0;
      continue;
    }
    if (wide) {
      auto const piece = take(count * 2);
      wide_.append(piece.substr(0, piece.size() & ~std::size_t{1}));
      count -= (piece.size() + 1) / 2;
      continue;
    }
    auto const piece = take(count);
    for (auto const character : piece) {
      wide_ += character;
      wide_ += '\0';
    }
    count -= piece.size();
  }
  append_utf16(utf8, wide_);
}

}  // namespace morvakit
