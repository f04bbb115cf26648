#include "agreement.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace {

using bench::Agreement;
using bench::compare_partitions;

TEST(Agreement, equal_partitions_agree_wholly_whatever_their_numbers) {
  Agreement const all = compare_partitions({0, 0, 1, 1, 2}, {7, 7, 3, 3, -1});
  EXPECT_DOUBLE_EQ(all.purity, 1.0);
  EXPECT_DOUBLE_EQ(all.adjusted_rand_index, 1.0);
  EXPECT_DOUBLE_EQ(all.normalised_mutual_information, 1.0);
}

// Clusters {a, a, b} and {b, b, a}: each has 2 of 3 right.
TEST(Agreement, purity_counts_the_most_frequent_label_of_each_cluster) {
  EXPECT_DOUBLE_EQ(compare_partitions({0, 0, 1, 1, 1, 0}, {0, 0, 0, 1, 1, 1}).purity, 4.0 / 6.0);
}

// Labels 3 + 3, clusters 3 + 3, cells 2, 1, 2, 1: 2 pairs agree, 6 * 6 / 15 = 2.4 are expected, at
// most 6 are possible.
TEST(Agreement, the_adjusted_rand_index_is_corrected_for_chance) {
  EXPECT_DOUBLE_EQ(compare_partitions({0, 0, 1, 1, 1, 0}, {0, 0, 0, 1, 1, 1}).adjusted_rand_index,
                   (2.0 - 2.4) / (6.0 - 2.4));
}

// The same cells: 2 * (2/6) ln(2*6/9) + 2 * (1/6) ln(1*6/9) over ln 2.
TEST(Agreement, mutual_information_is_taken_over_the_mean_entropy) {
  double const shared = 2.0 / 3.0 * std::log(4.0 / 3.0) + 1.0 / 3.0 * std::log(2.0 / 3.0);
  EXPECT_NEAR(
      compare_partitions({0, 0, 1, 1, 1, 0}, {0, 0, 0, 1, 1, 1}).normalised_mutual_information,
      shared / std::log(2.0), 1e-15);
}

// Labels 2 + 2 over clusters 1 + 3 with cells 1 / 1, 2: ln 2 - 3/4 of the entropy of (1/3, 2/3).
TEST(Agreement, mutual_information_of_unequal_entropies) {
  double const labels = std::log(2.0);
  double const clusters = 0.25 * std::log(4.0) + 0.75 * std::log(4.0 / 3.0);
  double const shared = 0.25 * std::log(1.0 * 4.0 / (1.0 * 2.0)) +
                        0.25 * std::log(1.0 * 4.0 / (3.0 * 2.0)) +
                        0.5 * std::log(2.0 * 4.0 / (3.0 * 2.0));
  EXPECT_NEAR(compare_partitions({0, 0, 1, 1}, {0, 1, 1, 1}).normalised_mutual_information,
              2.0 * shared / (labels + clusters), 1e-15);
}

TEST(Agreement, one_cluster_tells_nothing) {
  Agreement const one = compare_partitions({0, 0, 1, 1}, {5, 5, 5, 5});
  EXPECT_DOUBLE_EQ(one.purity, 0.5);
  EXPECT_DOUBLE_EQ(one.adjusted_rand_index, 0.0);
  EXPECT_DOUBLE_EQ(one.normalised_mutual_information, 0.0);
}

TEST(Agreement, single_items_are_pure_and_no_better_than_chance) {
  Agreement const single = compare_partitions({0, 0, 1, 1}, {0, 1, 2, 3});
  EXPECT_DOUBLE_EQ(single.purity, 1.0);
  EXPECT_DOUBLE_EQ(single.adjusted_rand_index, 0.0);
}

TEST(Agreement, equal_partitions_of_one_cluster_agree) {
  Agreement const one = compare_partitions({3, 3}, {0, 0});
  EXPECT_DOUBLE_EQ(one.adjusted_rand_index, 1.0);
  EXPECT_DOUBLE_EQ(one.normalised_mutual_information, 1.0);
}

TEST(Agreement, without_items_all_is_zero) {
  EXPECT_DOUBLE_EQ(compare_partitions({}, {}).purity, 0.0);
}

TEST(Partition, the_first_cluster_that_lists_an_item_has_it) {
  EXPECT_EQ(bench::partition_of({{0, 2}, {1, 2}}, 3), (std::vector<int>{0, 1, 0}));
}

TEST(Partition, items_that_no_cluster_lists_are_together) {
  EXPECT_EQ(bench::partition_of({{1}}, 4), (std::vector<int>{1, 0, 1, 1}));
}

}  // namespace
