#include "numeric/internal/canopies.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/internal/sparse_point.h"
#include "numeric/sparse_tables.h"

#include "support/thread_group.h"

namespace {

using Clusters = std::vector<std::vector<int>>;

constexpr std::size_t no_limit = std::numeric_limits<std::size_t>::max();

Clusters plain_canopies(morva::DistanceTable const& table, double radius, std::size_t most) {
  Clusters result;
  std::vector<char> is_left(table.size(), 1);
  for (std::size_t i = 0; i < table.size() && result.size() < most; ++i) {
    if (is_left[i] == 0) {
      continue;
    }
    std::vector<int>& canopy = result.emplace_back(1, static_cast<int>(i));
    for (std::size_t j = i + 1; j < table.size(); ++j) {
      if (is_left[j] != 0 && morva::distance(table[i], table[j]) <= radius) {
        is_left[j] = 0;
        canopy.push_back(static_cast<int>(j));
      }
    }
  }
  return result;
}

// Radii at which points lie on the border, within which hardly any are, some, most, and all.
std::vector<double> radii_of(morva::DistanceTable const& table) {
  std::vector<double> distances = {0.0};
  for (std::size_t j = 1; j < table.size(); j += 3) {
    distances.push_back(morva::distance(table[0], table[j]));
  }
  std::sort(distances.begin(), distances.end());
  return {distances.front(), distances[distances.size() / 20], distances[distances.size() / 2],
          distances.back()};
}

TEST(Canopies, are_those_of_every_pair_measured) {
  test::for_tables([](morva::DistanceTable const& table) {
    for (double const radius : radii_of(table)) {
      ASSERT_EQ(morva::canopies(table, radius, no_limit), plain_canopies(table, radius, no_limit))
          << radius;
    }
  });
}

TEST(Canopies, end_where_there_are_as_many_as_wanted) {
  test::for_tables([](morva::DistanceTable const& table) {
    for (double const radius : radii_of(table)) {
      ASSERT_EQ(morva::canopies(table, radius, 5), plain_canopies(table, radius, 5)) << radius;
    }
  });
}

TEST(Canopies, are_each_points_own_where_the_radius_is_none) {
  morva::DistanceTable const table = test::table_of(test::kinds().front(), 20, 1);
  EXPECT_EQ(morva::canopies(table, std::numeric_limits<double>::quiet_NaN(), no_limit).size(), 20U);
}

TEST(Canopies, are_the_same_in_each_process_of_a_group) {
  for (test::Kind const& kind : test::kinds()) {
    morva::DistanceTable const alone = test::table_of(kind, 530, 7);
    for (double const radius : radii_of(alone)) {
      for (std::size_t const most : {no_limit, std::size_t{40}}) {
        Clusters const expected = plain_canopies(alone, radius, most);
        auto const all = test::in_group(3, [&](std::shared_ptr<HProcessGroup> const& group) {
          morva::DistanceTable const table(alone.points());
          table.set_group(group);
          return morva::canopies(table, radius, most);
        });
        for (Clusters const& found : all) {
          ASSERT_EQ(found, expected) << kind.name << ", " << radius << ", " << most;
        }
      }
    }
  }
}

}  // namespace
