#include "morvakit/mail/mime_lines.h"

#include <algorithm>

namespace morvakit {

namespace {

constexpr std::size_t window_size = std::size_t{64} << 10;

}  // namespace

std::string_view LineReader::Line::text() const {
  return bytes.substr(0, bytes.find_last_not_of("\r\n") + 1);
}

bool LineReader::next(Line& line) {
  if (!context_.keep_going()) {
    return false;
  }
  auto end = window_.find(line_end_, at_);
  if (end == std::string::npos && !is_at_end_) {
    if (!fill()) {
      return false;
    }
    end = window_.find(line_end_, at_);
  }
  if (at_ >= window_.size()) {
    return false;
  }
  auto const is_whole = end != std::string::npos;
  line.bytes = std::string_view(window_).substr(at_, is_whole ? end + 1 - at_ : end);
  line.offset = window_offset_ + static_cast<std::int64_t>(at_);
  line.begins = begins_;
  begins_ = is_whole;
  at_ += line.bytes.size();
  return true;
}

/// Drops what has been read and fills the window up again.
bool LineReader::fill() {
  window_.erase(0, at_);
  window_offset_ += static_cast<std::int64_t>(at_);
  at_ = 0;
  auto const kept = window_.size();
  if (kept >= window_size) {
    return true;
  }
  window_.resize(window_size);
  auto const offset = window_offset_ + static_cast<std::int64_t>(kept);
  auto const got =
      reader_.ReadAt(offset, window_.data() + kept, static_cast<std::int64_t>(window_size - kept));
  window_.resize(kept + static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  is_at_end_ = got <= 0;
  if (offset == 0 && window_.find('\n') == std::string::npos &&
      window_.find('\r') != std::string::npos) {
    line_end_ = '\r';
  }
  return got >= 0 || context_.end_unreadable(reader_);
}

}  // namespace morvakit
