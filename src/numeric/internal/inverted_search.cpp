#include "numeric/internal/inverted_search.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/internal/ascending.h"
#include "numeric/internal/no_distance.h"

namespace morva {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
// No two points are farther from each other than 2, so that the square of any limit above says all.
constexpr double greatest_limit = 16.0;

}  // namespace

InvertedSearch::InvertedSearch(DistanceTable const& table, InvertedIndex const& index)
    : table_(table),
      index_(index),
      bands_(table.points(), index),
      marks_(table.size()),
      open_distances_(table) {}

InvertedSearch::Square InvertedSearch::square_of(double distance) const {
  double const scaled = std::min(distance * index_.scale(), greatest_limit);
  double const square = scaled * scaled;
  constexpr double room = BandSearch::least_room;
  return {square * (1.0 - root_slack) - room, square * (1.0 + root_slack) + room};
}

void InvertedSearch::mark_band(std::size_t band) {
  for (auto place = bands_.first_of(band); place < index_.band_end(band); ++place) {
    marks_.insert(index_.index_of(place));
  }
}

std::span<std::uint32_t const> InvertedSearch::neighbours(std::size_t i, double limit,
                                                          Border border) {
  marked_.clear();
  if (!DistanceTable::is_in(0.0, limit, border)) {
    return marked_;
  }
  Square const square = square_of(limit);
  open_.clear();
  auto const judge = [&](std::span<Near const> found) {
    for (Near const& near : found) {
      std::uint32_t const j = index_.index_of(near.place);
      if (near.high < square.low) {
        marks_.insert(j);
      } else {
        open_.push_back(j);
      }
    }
  };
  bands_.search_behind(i);
  bands_.begin(i);
  marks_.insert(i);
  for (std::size_t band = 0; band < index_.band_count(); ++band) {
    if (bands_.greatest_square(band) < square.low) {
      mark_band(band);
    } else {
      judge(bands_.search(band, square.high));
    }
  }
  judge(bands_.search_rest());
  open_distances_.measure(table_[i], i, open_, [&](std::uint32_t j, double measured) {
    if (DistanceTable::is_in(measured, limit, border)) {
      marks_.insert(j);
    }
  });
  marks_.take_each(i, [this](std::size_t j) { marked_.push_back(static_cast<std::uint32_t>(j)); });
  return marked_;
}

// The square below which the shortest `count` points, and one more, are.
double InvertedSearch::reach_of_shortest(std::size_t count) const {
  std::vector<double> squares;
  squares.reserve(index_.size());
  for (std::size_t place = 0; place < index_.size(); ++place) {
    squares.push_back(index_.square(static_cast<InvertedIndex::Place>(place)));
  }
  return select(squares, count);
}

// Keeps of what is found what may be among the nearest.
void InvertedSearch::keep_nearest(std::span<Near const> found, std::size_t i, std::size_t count) {
  for (Near const& near : found) {
    if (near.low > reach_ || index_.index_of(near.place) == i) {
      continue;
    }
    candidates_.push_back(near);
    if (nearest_.size() == count && near.high < nearest_.front()) {
      std::pop_heap(nearest_.begin(), nearest_.end());
      nearest_.back() = near.high;
      std::push_heap(nearest_.begin(), nearest_.end());
    } else if (nearest_.size() < count) {
      nearest_.push_back(near.high);
      std::push_heap(nearest_.begin(), nearest_.end());
    }
    if (nearest_.size() == count) {
      reach_ = std::min(reach_, nearest_.front());
    }
  }
}

// Opens the candidates that may have a square from one to another.
void InvertedSearch::open_candidates(double from, double to) {
  open_.clear();
  for (Near const& near : candidates_) {
    if (near.high >= from && near.low <= to) {
      open_.push_back(index_.index_of(near.place));
    }
  }
}

std::vector<double> InvertedSearch::smallest_of_row(std::size_t i, std::size_t count,
                                                    double shortest) {
  bands_.begin(i);
  candidates_.clear();
  nearest_.clear();
  reach_ = bands_.greatest_square_to(shortest);
  // Documents that are nearly the same are in one band, and the nearest of others often short.
  keep_nearest(bands_.search(bands_.own_band(), reach_), i, count);
  for (std::size_t band = 0; band < index_.band_count(); ++band) {
    if (band != bands_.own_band()) {
      keep_nearest(bands_.search(band, reach_), i, count);
    }
  }
  keep_nearest(bands_.search_rest(), i, count);
  open_candidates(-infinity, reach_);
  std::vector<double> distances;
  distances.reserve(open_.size());
  open_distances_.measure(table_[i], 0, open_, [&](std::uint32_t /*j*/, double measured) {
    distances.push_back(measured);
  });
  return smallest(count, std::move(distances));
}

std::vector<std::vector<double>> InvertedSearch::smallest_distances(Rows rows, std::size_t count) {
  std::vector<std::vector<double>> result;
  result.reserve(rows.size());
  bool const is_few = count > 0 && count < table_.size() / 8;
  double const shortest = is_few ? reach_of_shortest(count) : 0.0;
  bands_.search_all();
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    result.push_back(is_few ? smallest_of_row(i, count, shortest)
                            : table_.smallest_distances(i, count));
  }
  return result;
}

// Keeps of what is found what may be the farthest within the limit.
void InvertedSearch::keep_farthest(std::span<Near const> found, std::size_t i,
                                   Square const& limit) {
  for (Near const& near : found) {
    if (near.high < reach_ || index_.index_of(near.place) == i) {
      continue;
    }
    candidates_.push_back(near);
    if (near.high < limit.low) {
      reach_ = std::max(reach_, near.low);
    }
  }
}

double InvertedSearch::greatest_of_row(std::size_t i, double limit) {
  Square const square = square_of(limit);
  bands_.begin(i);
  candidates_.clear();
  reach_ = -infinity;
  // The first band that is not certainly within the limit has points near it, as most products are
  // small; few points of shorter ones are farther away.
  std::size_t const count = index_.band_count();
  std::size_t middle = 0;
  while (middle + 1 < count && bands_.greatest_square(middle) < square.low) {
    ++middle;
  }
  for (std::size_t band = middle; band < count; ++band) {
    keep_farthest(bands_.search(band, square.high), i, square);
  }
  for (std::size_t band = middle; band-- > 0;) {
    if (bands_.greatest_square(band) >= reach_) {
      keep_farthest(bands_.search(band, square.high), i, square);
    }
  }
  keep_farthest(bands_.search_rest(), i, square);
  open_candidates(reach_, square.high);
  double greatest = 0.0;
  open_distances_.measure(table_[i], 0, open_, [&](std::uint32_t /*j*/, double measured) {
    if (measured > greatest && measured <= limit) {
      greatest = measured;
    }
  });
  return greatest;
}

std::vector<double> InvertedSearch::greatest_within(Rows rows, double limit) {
  std::vector<double> result;
  result.reserve(rows.size());
  bands_.search_all();
  for (std::size_t i = rows.begin; i < rows.end; ++i) {
    result.push_back(limit >= 0.0 ? greatest_of_row(i, limit) : 0.0);
  }
  return result;
}

std::optional<FoundPair> InvertedSearch::closest_pair(Rows rows) {
  std::optional<FoundPair> result;
  double least = no_distance;
  reach_ = infinity;
  bands_.search_all();
  for (std::size_t i = rows.begin; i < rows.end && least > 0.0; ++i) {
    bands_.search_behind(i);
    bands_.begin(i);
    candidates_.clear();
    auto const keep = [this](std::span<Near const> found) {
      for (Near const& near : found) {
        candidates_.push_back(near);
        reach_ = std::min(reach_, near.high);
      }
    };
    keep(bands_.search(bands_.own_band(), reach_));
    for (std::size_t band = 0; band < index_.band_count(); ++band) {
      if (band != bands_.own_band()) {
        keep(bands_.search(band, reach_));
      }
    }
    keep(bands_.search_rest());
    open_candidates(-infinity, reach_);
    std::sort(open_.begin(), open_.end());
    open_distances_.measure(table_[i], i, open_, [&](std::uint32_t j, double measured) {
      if (measured < least) {
        least = measured;
        result = FoundPair{i, j, measured};
      }
    });
    reach_ = std::min(reach_, square_of(least).high);
  }
  return result;
}

}  // namespace morva
