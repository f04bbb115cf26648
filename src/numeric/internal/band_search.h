#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "numeric/internal/inverted_index.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// Bounds the squares of the distances of one point, the row, and those of a band, in units of the
/// index, for the points that may be within a limit; the others are passed over.
///
/// The products of the rarer words are added up first, and those of the most common ones, which
/// most of the work would go into, only for points that can still reach what the limit asks for:
/// |x'| |y'| of the parts in these words bounds what is missing. Bounds have room for all
/// roundings, those of the exact measure and its root included: of two distances whose bounds are
/// apart, the greater is certain.
class BandSearch {
 public:
  using Place = InvertedIndex::Place;
  struct Near {
    Place place;
    double low;
    double high;
  };

  /// Room that each bound has in any case: far above what underflows on the way, far below what
  /// matters.
  static constexpr double least_room = 0x1p-90;

  /// The index is that of the points.
  BandSearch(std::span<SparsePoint const> points, InvertedIndex const& index);

  /// All points are searched, or those behind point `index`, which is no lower than at the call
  /// before, counted from the last `search_all`.
  void search_all();
  void search_behind(std::size_t index);
  /// Makes a point the row.
  void begin(std::size_t index);
  std::size_t own_band() const { return index_.band_of(row_.place); }
  /// The points of the band that are searched, from this place on.
  Place first_of(std::size_t band) const { return firsts_[band]; }

  /// Bounds on the squares to all points of a band, from the lengths alone.
  double least_square(std::size_t band) const;
  double greatest_square(std::size_t band) const;
  /// At least that to a point whose square is not above this one.
  double greatest_square_to(double square) const;

  /// The points of a band whose low bound is not above the limit; the row itself may be among them.
  /// Points that share only rare words with the row may be left to `search_rest`. Each band once
  /// for a row; good until the next call.
  std::span<Near const> search(std::size_t band, double limit);
  /// Those of all bands that were left out. To be called for each row in the end.
  std::span<Near const> search_rest();

 private:
  using Rank = InvertedIndex::Rank;
  using Term = InvertedIndex::Term;
  using Posting = InvertedIndex::Posting;

  struct Row {
    Place place = 0;
    double square = 0.0;
    double length = 0.0;
    /// Room for all roundings, as a share of |x|^2 + |y|^2.
    double room = 0.0;
    bool has_walked_rare = false;
  };
  /// How the points of a band are told apart: by the sum of the products in the words from `first`
  /// on, and a factor for the lengths of the parts in the others.
  struct Plan {
    Rank first = 0;
    float factor = 0.0F;
    std::span<float const> lengths;
    double limit = 0.0;
    float bound = 0.0F;
    /// None is within the limit without a word among those.
    bool needs_word = false;
    /// Points that share only rare words are not yet looked at.
    bool has_rest = false;
  };
  /// Postings and what they are multiplied by.
  struct Walk {
    std::span<Posting const> postings;
    float weight;
  };

  Plan plan_for(std::size_t band, double limit) const;
  void walk_rare();
  void ask_for(Posting const* next, std::size_t count) const;
  std::size_t walk(std::size_t band, Plan const& plan);
  void add_products(Walk const& walk);
  void take_touched(Plan const& plan, Walk const& walk);
  void take(Plan const& plan, Place place, float sum);
  std::span<Posting const> postings_of(std::size_t slice) const;

  std::span<SparsePoint const> points_;
  InvertedIndex const& index_;
  // What is searched of each slice, and of each band.
  std::vector<std::uint32_t> heads_;
  std::vector<Place> firsts_;
  std::size_t passed_ = 0;

  Row row_;
  // Its values in the words of the levels by rank, in other banded words, and in the rare ones.
  std::vector<float> weights_;
  std::vector<Term> banded_terms_;
  std::vector<Term> rare_terms_;
  std::vector<Walk> walks_;
  std::vector<Walk> rare_walks_;
  // By place; between rows all are zero.
  std::vector<float> sums_;
  std::vector<Plan> plans_;
  std::vector<Posting> reached_;
  std::vector<Near> near_;
};

}  // namespace morva
