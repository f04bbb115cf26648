#include "numeric/internal/canopies.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

#include "numeric/internal/division.h"
#include "numeric/internal/neighbourhoods.h"
#include "numeric/internal/told_neighbours.h"

namespace morva {

namespace {

// So many points a process, at most, for the memory that their neighbours take.
constexpr std::size_t most_ahead = 256;

class Canopies {
 public:
  explicit Canopies(std::size_t size) : is_left_(size, 1) {}

  std::size_t count() const { return canopies_.size(); }
  std::vector<std::vector<int>> take() { return std::move(canopies_); }

  // The first points that are left from `first` on.
  std::vector<std::size_t> left(std::size_t first, std::size_t most) const {
    std::vector<std::size_t> points;
    for (std::size_t i = first; i < is_left_.size() && points.size() < most; ++i) {
      if (is_left_[i] != 0) {
        points.push_back(i);
      }
    }
    return points;
  }

  // A point that is not left begins none.
  void begin(std::size_t seed, std::span<std::uint32_t const> near) {
    if (is_left_[seed] == 0) {
      return;
    }
    std::vector<int>& canopy = canopies_.emplace_back();
    auto const take = [&](std::size_t i) {
      if (std::exchange(is_left_[i], char{0}) != 0) {
        canopy.push_back(static_cast<int>(i));
      }
    };
    take(seed);
    std::for_each(near.begin(), near.end(), take);
  }

 private:
  std::vector<char> is_left_;
  std::vector<std::vector<int>> canopies_;
};

}  // namespace

std::vector<std::vector<int>> canopies(DistanceTable const& table, double radius,
                                       std::size_t most) {
  Division const division(table);
  Neighbourhoods near(table, radius, DistanceTable::Border::inside);
  ToldNeighbours told(table.size());
  Canopies canopies(table.size());
  std::size_t ahead = 1;
  std::size_t next = 0;
  while (canopies.count() < most) {
    std::size_t const together = division.is_alone() ? 1 : ahead * division.size();
    auto const seeds = canopies.left(next, std::min(together, most - canopies.count()));
    if (seeds.empty()) {
      break;
    }
    next = seeds.back() + 1;
    if (division.is_alone()) {
      canopies.begin(seeds.front(), near.of(seeds.front()));
      continue;
    }
    std::vector<std::uint32_t> mine;
    for (std::size_t k = division.rank(); k < seeds.size(); k += division.size()) {
      told.tell(seeds[k], near.of(seeds[k]), mine);
    }
    auto const all = division.gather(std::move(mine));
    std::vector<std::span<std::uint32_t const>> rest(all.begin(), all.end());
    std::size_t const before = canopies.count();
    for (std::size_t k = 0; k < seeds.size(); ++k) {
      canopies.begin(seeds[k], told.hear(seeds[k], rest[k % division.size()]));
    }
    Division::expect_same(
        std::all_of(rest.begin(), rest.end(), [](auto const& left) { return left.empty(); }));
    bool const are_most = (canopies.count() - before) * 2 > seeds.size();
    ahead = are_most ? std::min(ahead * 2, most_ahead) : std::max<std::size_t>(ahead / 2, 1);
  }
  return canopies.take();
}

}  // namespace morva
