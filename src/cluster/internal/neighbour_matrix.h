#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "cluster/internal/neighbour_rows.h"

namespace morva {

/// Which points are neighbours of which, from either side: of each point those before it, and those
/// from itself on. Takes the memory of `NeighbourRows` for both sides.
class NeighbourMatrix {
 public:
  /// The rows of all points.
  explicit NeighbourMatrix(NeighbourRows from_itself)
      : from_itself_(std::move(from_itself)), before_(from_itself_.before()) {}

  /// Number of the points.
  std::size_t size() const { return from_itself_.size(); }
  bool has_point(int i) const { return i >= 0 && static_cast<std::size_t>(i) < size(); }
  NeighbourRows const& from_itself() const { return from_itself_; }
  NeighbourRows const& before() const { return before_; }

  /// Whether both are points and neighbours.
  bool are_neighbours(int i, int j) const {
    if (!has_point(i) || !has_point(j)) {
      return false;
    }
    return from_itself_.contains(static_cast<std::size_t>(std::min(i, j)),
                                 static_cast<std::size_t>(std::max(i, j)));
  }
  /// Number of the neighbours of i that are below `end`.
  std::size_t count_below(std::size_t i, std::size_t end) const {
    return before_.count_below(i, end) + from_itself_.count_below(i, end);
  }
  /// Calls `visit(j)` for each neighbour of i, ascending.
  template <typename Visit>
  void for_each(std::size_t i, Visit const& visit) const {
    before_.for_each(i, visit);
    from_itself_.for_each(i, visit);
  }
  /// Whether a neighbour of i is in the set.
  bool has_neighbour_in(std::size_t i, IndexSet const& set) const {
    return before_.meets(i, set) || from_itself_.meets(i, set);
  }

 private:
  NeighbourRows from_itself_;
  NeighbourRows before_;
};

}  // namespace morva
