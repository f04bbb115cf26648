#pragma once

#include <cstddef>
#include <vector>

namespace bench {

/// How far a partition of items agrees with one that a person made.
struct Agreement {
  /// Share of the items that are of the most frequent label in their cluster.
  double purity = 0.0;
  /// Pairs of items that both partitions treat alike, corrected for chance: 1 for equal
  /// partitions, about 0 for independent ones, and below 0 for less than chance gives.
  double adjusted_rand_index = 0.0;
  /// Information that the two share, over the mean of their entropies: 1 for equal partitions, 0
  /// for independent ones.
  double normalised_mutual_information = 0.0;
};

/// Compares the labels with the clusters of the same items; any numbers will do. Two partitions of
/// one cluster each agree wholly. Without items all is 0.
///
/// Purity and mutual information after Manning, Raghavan, Schütze, "Introduction to Information
/// Retrieval", 2008, chapter 16.3; the adjusted index after Hubert and Arabie, "Comparing
/// partitions", Journal of Classification 2, 1985.
Agreement compare_partitions(std::vector<int> const& labels, std::vector<int> const& clusters);

/// The cluster of each of `count` items: the first that lists it, and one behind all of them for
/// the items that none lists.
std::vector<int> partition_of(std::vector<std::vector<int>> const& clusters, std::size_t count);

}  // namespace bench
