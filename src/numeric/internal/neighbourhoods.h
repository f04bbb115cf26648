#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/float_search.h"
#include "numeric/internal/inverted_search.h"

namespace morva {

/// The points within a limit of one point after the other, by the engine that suits the points.
class Neighbourhoods {
 public:
  /// Refers to the table.
  Neighbourhoods(DistanceTable const& table, double limit, DistanceTable::Border border);

  /// The indices, ascending, of those points from i on of which `DistanceTable::within` says 1. No
  /// i is below that of the call before; good until the next call.
  std::span<std::uint32_t const> of(std::size_t i);

 private:
  DistanceTable const& table_;
  double limit_;
  DistanceTable::Border border_;
  // One of both, or none.
  std::optional<FloatSearch> floats_;
  std::optional<InvertedSearch> inverted_;
  std::vector<char> states_;
  std::vector<std::uint32_t> near_;
};

}  // namespace morva
