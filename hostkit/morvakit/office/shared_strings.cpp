#include "morvakit/office/shared_strings.h"

#include <algorithm>

namespace morvakit {

namespace {

constexpr std::size_t most_bytes = std::size_t{96} << 20;

}  // namespace

void SharedStrings::expect(std::int64_t bytes) {
  // Only address space as long as nothing is written, so that the guess may be too high.
  texts_.reserve(std::min(static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0)), most_bytes));
}

bool SharedStrings::has_room(std::size_t bytes) {
  if (!full_ && texts_.size() + starts_.size() * sizeof(std::uint32_t) + bytes > most_bytes) {
    full_ = true;
    context_.note(Orlec::ParseOutcome::limit_reached,
                  "shared strings over " + std::to_string(most_bytes) + " bytes");
  }
  return !full_;
}

void SharedStrings::next() {
  if (has_room(sizeof(std::uint32_t))) {
    starts_.push_back(static_cast<std::uint32_t>(texts_.size()));
  }
}

void SharedStrings::append(std::string_view utf8) {
  if (!starts_.empty() && has_room(utf8.size())) {
    texts_.append(utf8);
  }
}

std::string_view SharedStrings::get(std::uint64_t number) const {
  if (number >= starts_.size()) {
    return {};
  }
  std::size_t const start = starts_[number];
  std::size_t const end = number + 1 < starts_.size() ? starts_[number + 1] : texts_.size();
  return std::string_view(texts_).substr(start, end - start);
}

}  // namespace morvakit
