#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "numeric/internal/index_set.h"
#include "numeric/internal/sparse_point.h"

namespace morva {

/// Means and medians of sparse points, each coordinate as over dense ones, bit for bit. Costs time
/// in proportion to the values of the members; one object keeps its working memory from call to
/// call.
class CenterFinder {
 public:
  /// Sum of the members in their order over `divisor`, in dimension `n`; a member of another
  /// dimension adds nothing. Not divided where the divisor is 0.0.
  SparsePoint mean(long long n, std::span<SparsePoint const* const> members, double divisor);
  /// The coordinate-wise median that `HClusterCenter` defines, in dimension `n`.
  SparsePoint median(long long n, std::span<SparsePoint const* const> members);

 private:
  void mark_columns(long long n, std::span<SparsePoint const* const> members);
  SparsePoint dense_mean(long long n, std::size_t column_count,
                         std::span<SparsePoint const* const> adding, double divisor);
  void group_values(std::span<SparsePoint const* const> members);

  // The columns of the members that are looked at.
  WideIndexSet marks_;
  std::vector<double> sums_;
  // The members' values by column, and where each column's values end.
  std::vector<std::size_t> ends_;
  std::vector<double> grouped_;
};

}  // namespace morva
