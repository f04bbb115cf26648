#include "numeric/internal/inverted_index.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "numeric/internal/float_lanes.h"

namespace morva {

namespace {

// Bands are so large that what a search does for each is little beside what it does for its points,
// and so many that their points are about as long: measured, so many roots of the number of points.
constexpr double roots_in_band = 22.0;
constexpr double most_bands = 32.0;
// With fewer postings in a band on average, a word is walked whole.
constexpr std::size_t least_slice = 8;
// More than the roundings of a length in single precision.
constexpr double length_room = 1.0 + 0x1p-20;

std::size_t band_count_for(std::size_t points) {
  double const bands = std::sqrt(static_cast<double>(points)) / roots_in_band;
  return static_cast<std::size_t>(std::clamp(bands, 1.0, most_bands));
}

// Squares below, in the common scale, are lost in the room that bounds leave for roundings.
constexpr double least_told_square = 0x1p-60;

// From counts to where each begins; the last entry becomes the end.
void sum_up(std::vector<std::uint32_t>& counts) {
  std::exclusive_scan(counts.begin(), counts.end(), counts.begin(), std::uint32_t{0});
}

}  // namespace

bool InvertedIndex::suits(std::span<SparsePoint const> points) {
  double const scale = FloatLanes::scale_for(points);
  auto const lost = std::count_if(points.begin(), points.end(), [scale](SparsePoint const& point) {
    double const square = point.square_sum * scale * scale;
    return square > 0.0 && square < least_told_square;
  });
  return static_cast<std::size_t>(lost) <= points.size() / 2;
}

InvertedIndex::InvertedIndex(std::span<SparsePoint const> points, std::optional<std::size_t> bands)
    : scale_(FloatLanes::scale_for(points)) {
  rank_words(points);
  place_points(points, bands.value_or(band_count_for(points.size())));
  list_postings(points);
  list_common(points);
  measure_lengths();
}

void InvertedIndex::rank_words(std::span<SparsePoint const> points) {
  std::vector<std::uint32_t> counts(column_count(points));
  for (SparsePoint const& point : points) {
    longest_ = std::max(longest_, point.columns.size());
    for (std::uint32_t const column : point.columns) {
      ++counts[column];
    }
    is_positive_ = is_positive_ && std::all_of(point.values.begin(), point.values.end(),
                                               [](double value) { return value >= 0.0; });
  }
  std::vector<std::uint32_t> shared;
  for (std::uint32_t column = 0; column < counts.size(); ++column) {
    if (counts[column] > 1) {
      shared.push_back(column);
    }
  }
  std::sort(shared.begin(), shared.end(), [&counts](std::uint32_t a, std::uint32_t b) {
    return counts[a] > counts[b] || (counts[a] == counts[b] && a < b);
  });
  ranks_.assign(counts.size(), no_rank);
  for (Rank rank = 0; rank < shared.size(); ++rank) {
    ranks_[shared[rank]] = rank;
    frequencies_.push_back(counts[shared[rank]]);
  }
}

void InvertedIndex::place_points(std::span<SparsePoint const> points, std::size_t bands) {
  auto const square_of = [&](std::uint32_t index) {
    return points[index].square_sum * scale_ * scale_;
  };
  indices_.resize(points.size());
  std::iota(indices_.begin(), indices_.end(), 0);
  std::stable_sort(indices_.begin(), indices_.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return square_of(a) < square_of(b); });
  places_.resize(points.size());
  for (std::size_t band = 0; band < bands; ++band) {
    std::size_t const begin = points.size() * band / bands;
    std::size_t const end = points.size() * (band + 1) / bands;
    band_begins_.push_back(static_cast<Place>(begin));
    least_squares_.push_back(begin == end ? 0.0 : square_of(indices_[begin]));
    greatest_squares_.push_back(begin == end ? 0.0 : square_of(indices_[end - 1]));
    std::sort(indices_.begin() + static_cast<std::ptrdiff_t>(begin),
              indices_.begin() + static_cast<std::ptrdiff_t>(end));
    bands_.resize(end, static_cast<std::uint8_t>(band));
  }
  band_begins_.push_back(static_cast<Place>(points.size()));
  for (Place place = 0; place < indices_.size(); ++place) {
    places_[indices_[place]] = place;
    squares_.push_back(square_of(indices_[place]));
    halves_.push_back(static_cast<float>(0.5 * squares_.back()));
  }
}

void InvertedIndex::list_postings(std::span<SparsePoint const> points) {
  std::size_t const least = least_slice * band_count();
  auto const first_rare = std::partition_point(frequencies_.begin(), frequencies_.end(),
                                               [least](std::uint32_t n) { return n >= least; });
  banded_words_ = static_cast<Rank>(first_rare - frequencies_.begin());
  slice_begins_.resize(slice_of(static_cast<Rank>(frequencies_.size())) + 1);
  // Calls `take(slice, place, value)` for the values by place and for those by index, as wanted.
  auto const for_each_value = [&](bool banded, auto const& take) {
    for (std::size_t k = 0; k < points.size(); ++k) {
      Place const place = banded ? static_cast<Place>(k) : places_[k];
      SparsePoint const& point = points[indices_[place]];
      for (std::size_t i = 0; i < point.columns.size(); ++i) {
        Rank const rank = ranks_[point.columns[i]];
        if (rank != no_rank && (rank < banded_words_) == banded) {
          take(banded ? slice_of(rank, bands_[place]) : slice_of(rank), place, point.values[i]);
        }
      }
    }
  };
  auto const count = [&](std::size_t slice, Place /*place*/, double /*value*/) {
    ++slice_begins_[slice];
  };
  for_each_value(true, count);
  for_each_value(false, count);
  sum_up(slice_begins_);
  postings_.resize(slice_begins_.back());
  std::vector<std::uint32_t> next = slice_begins_;
  auto const put = [&](std::size_t slice, Place place, double value) {
    postings_[next[slice]++] = {place, static_cast<float>(value * scale_)};
  };
  for_each_value(true, put);
  for_each_value(false, put);
}

void InvertedIndex::list_common(std::span<SparsePoint const> points) {
  std::size_t levels = 0;
  while (levels < level_count && common_at(levels) <= banded_words_) {
    ++levels;
  }
  lengths_.resize(levels);
  Rank const end = levels == 0 ? 0 : common_at(levels - 1);
  common_begins_.push_back(0);
  for (std::uint32_t const index : indices_) {
    SparsePoint const& point = points[index];
    auto const begin = static_cast<std::ptrdiff_t>(common_.size());
    for (std::size_t i = 0; i < point.columns.size(); ++i) {
      Rank const rank = ranks_[point.columns[i]];
      if (rank < end) {
        common_.push_back({rank, static_cast<float>(point.values[i] * scale_)});
      }
    }
    std::sort(common_.begin() + begin, common_.end(),
              [](Term const& a, Term const& b) { return a.rank < b.rank; });
    common_begins_.push_back(static_cast<std::uint32_t>(common_.size()));
  }
}

void InvertedIndex::measure_lengths() {
  greatest_lengths_.resize(levels() * band_count());
  for (std::size_t level = 0; level < levels(); ++level) {
    lengths_[level].reserve(size());
    for (Place place = 0; place < size(); ++place) {
      double sum = 0.0;
      for (Term const& term : common_terms(place)) {
        double const weight = term.rank < common_at(level) ? term.weight : 0.0;
        sum += weight * weight;
      }
      // A value that vanishes in single precision counts as the greatest that does.
      auto const length = static_cast<float>(std::sqrt(sum) * length_room + 0x1p-100);
      lengths_[level].push_back(length);
      float& greatest = greatest_lengths_[level * band_count() + bands_[place]];
      greatest = std::max(greatest, length);
    }
  }
}

}  // namespace morva
