#include "morvajieba/neighbour_counts.h"

#include <algorithm>
#include <utility>

namespace morvajieba {

/// How often each word was met around one word.
class NeighbourCounts::Tally {
 public:
  explicit Tally(std::size_t words) : counts_(words, 0), met_(words + 1) {}

  // Whether a word was met before is as good as random: no branch asks for it.
  void add(std::uint32_t word, std::uint32_t count) {
    met_[met_count_] = word;
    met_count_ += counts_[word] == 0 ? 1u : 0u;
    counts_[word] += count;
  }
  /// Writes what was met and starts anew; the position behind it comes back.
  Neighbour* take(Neighbour* out) {
    for (std::size_t i = 0; i < met_count_; ++i) {
      *out++ = {met_[i], std::exchange(counts_[met_[i]], 0u)};
    }
    met_count_ = 0;
    return out;
  }

 private:
  std::vector<std::uint32_t> counts_;
  std::vector<std::uint32_t> met_;
  std::size_t met_count_ = 0;
};

void NeighbourCounts::add(std::uint32_t word) {
  if (word >= last_.size()) last_.resize(std::size_t{word} + 1, nowhere);
  auto const place = static_cast<std::uint32_t>(places_.size());
  places_.push_back({word, std::exchange(last_[word], place)});
  // A batch is no small part of what was counted before, which is gone through with it.
  if (places_.size() - counted_ >= std::max(batch_, size() / 16)) count_waiting();
}

std::span<NeighbourCounts::Neighbour const> NeighbourCounts::of(std::uint32_t word) const {
  if (word >= ends_.size()) return {};
  std::size_t const begin = word == 0 ? 0 : ends_[word - 1];
  return {rows_.get() + begin, ends_[word] - begin};
}

void NeighbourCounts::count_waiting() {
  if (places_.size() == counted_) return;
  std::size_t const most = size() + (places_.size() - counted_) * 2 * reach;
  auto rows = std::make_unique_for_overwrite<Neighbour[]>(most);
  std::vector<std::size_t> ends(last_.size());
  Tally tally(last_.size());
  Neighbour* out = rows.get();
  for (std::uint32_t word = 0; word < last_.size(); ++word) {
    for (auto const& [neighbour, count] : of(word)) tally.add(neighbour, count);
    for (std::uint32_t place = last_[word]; place != nowhere; place = places_[place].before) {
      count_around(place, tally);
    }
    out = tally.take(out);
    ends[word] = static_cast<std::size_t>(out - rows.get());
  }
  rows_ = std::move(rows);
  ends_ = std::move(ends);
  keep_context();
}

void NeighbourCounts::count_around(std::uint32_t place, Tally& tally) const {
  std::size_t const first =
      place < counted_ ? counted_ : place - std::min<std::size_t>(place, reach);
  std::size_t const end = std::min(place + reach + 1, places_.size());
  for (std::size_t other = first; other < end; ++other) {
    if (other != place) tally.add(places_[other].word, 1);
  }
}

/// Drops the places that no word to come is near to.
void NeighbourCounts::keep_context() {
  counted_ = std::min(reach, places_.size());
  places_.erase(places_.begin(), places_.end() - static_cast<std::ptrdiff_t>(counted_));
  std::fill(last_.begin(), last_.end(), nowhere);
  for (std::uint32_t place = 0; place < counted_; ++place) {
    places_[place].before = std::exchange(last_[places_[place].word], place);
  }
}

}  // namespace morvajieba
