#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/sparse_point.h"

namespace morva {

/// The points of a list by the columns that they have values in, called words here, and so laid out
/// that a search passes over most of it: points stand in bands of about the same length |x|, words
/// stand by falling number of points, and of each point it is known how long its part in the most
/// common words is. Words of one point only are left out, as no two points share them.
///
/// All is in single precision and in units of a common scale, a power of two, in which no point is
/// longer than 1. The points are tame and of one dimension. Costs time and memory in proportion to
/// their values: up to 17 bytes for each, and 60 for each point.
class InvertedIndex {
 public:
  /// Place of a point: by band, in a band by index.
  using Place = std::uint32_t;
  /// Place of a word: the more points have it the lower.
  using Rank = std::uint32_t;
  struct Posting {
    Place place;
    float weight;
  };
  struct Term {
    Rank rank;
    float weight;
  };
  static constexpr Rank no_rank = std::numeric_limits<Rank>::max();
  /// Numbers of most common words at which searches can stop.
  static constexpr std::size_t level_count = 8;
  static constexpr Rank common_at(std::size_t level) { return Rank{8} << level; }

  /// Whether most points are of such lengths that single precision in the common scale tells them
  /// apart, which it does not where a few are many times as long as they.
  static bool suits(std::span<SparsePoint const> points);

  /// Fewer than 2^32 points and values. In as many bands, at most 256, as suit the number of points
  /// where no number is given.
  explicit InvertedIndex(std::span<SparsePoint const> points,
                         std::optional<std::size_t> bands = {});

  std::size_t size() const { return places_.size(); }
  double scale() const { return scale_; }
  /// No value is below zero, so that no product is.
  bool is_positive() const { return is_positive_; }
  /// The most values that a point has.
  std::size_t longest() const { return longest_; }

  Place place_of(std::size_t index) const { return places_[index]; }
  std::uint32_t index_of(Place place) const { return indices_[place]; }
  /// Square of a length.
  double square(Place place) const { return squares_[place]; }
  /// Halves of the squares.
  std::span<float const> halves() const { return halves_; }

  std::size_t band_count() const { return band_begins_.size() - 1; }
  std::size_t band_of(Place place) const { return bands_[place]; }
  Place band_begin(std::size_t band) const { return band_begins_[band]; }
  Place band_end(std::size_t band) const { return band_begins_[band + 1]; }
  double least_square(std::size_t band) const { return least_squares_[band]; }
  double greatest_square(std::size_t band) const { return greatest_squares_[band]; }

  Rank rank_of(std::uint32_t column) const { return ranks_[column]; }
  /// Words below have their postings by place, those from there on by index.
  Rank banded_words() const { return banded_words_; }
  /// Number of the slice of a banded word and a band, and of that of all postings of another.
  std::size_t slice_of(Rank rank, std::size_t band) const {
    return std::size_t{rank} * band_count() + band;
  }
  std::size_t slice_of(Rank rank) const {
    return banded_words_ * band_count() + (rank - banded_words_);
  }
  /// Where the postings of each slice begin; one more entry for the end.
  std::span<std::uint32_t const> slice_begins() const { return slice_begins_; }
  std::span<Posting const> postings() const { return postings_; }

  /// The levels whose words are banded.
  std::size_t levels() const { return lengths_.size(); }
  /// By place, at least the length of a point's part in the words below `common_at(level)`.
  std::span<float const> lengths(std::size_t level) const { return lengths_[level]; }
  /// The greatest of them in a band.
  float greatest_length(std::size_t level, std::size_t band) const {
    return greatest_lengths_[level * band_count() + band];
  }
  /// A point's values in the words below those of the last level, by ascending rank.
  std::span<Term const> common_terms(Place place) const {
    return std::span(common_).subspan(common_begins_[place],
                                      common_begins_[place + 1] - common_begins_[place]);
  }

 private:
  void rank_words(std::span<SparsePoint const> points);
  void place_points(std::span<SparsePoint const> points, std::size_t bands);
  void list_postings(std::span<SparsePoint const> points);
  void list_common(std::span<SparsePoint const> points);
  void measure_lengths();

  double scale_ = 1.0;
  bool is_positive_ = true;
  std::size_t longest_ = 0;
  // By column; then by rank the number of points.
  std::vector<Rank> ranks_;
  std::vector<std::uint32_t> frequencies_;
  Rank banded_words_ = 0;
  // By index.
  std::vector<Place> places_;
  // By place.
  std::vector<std::uint32_t> indices_;
  std::vector<std::uint8_t> bands_;
  std::vector<double> squares_;
  std::vector<float> halves_;
  // By band.
  std::vector<Place> band_begins_;
  std::vector<double> least_squares_;
  std::vector<double> greatest_squares_;
  std::vector<std::uint32_t> slice_begins_;
  std::vector<Posting> postings_;
  std::vector<std::uint32_t> common_begins_;
  std::vector<Term> common_;
  // [level][place], [level][band]
  std::vector<std::vector<float>> lengths_;
  std::vector<float> greatest_lengths_;
};

}  // namespace morva
