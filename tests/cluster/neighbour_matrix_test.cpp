#include "cluster/internal/neighbour_matrix.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cluster/HClusterDBScan.h"
#include "cluster/internal/kernel_groups.h"
#include "cluster/random_cases.h"

#include "reference/clustering.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

namespace {

using morva::IndexSet;
using morva::NeighbourMatrix;
using morva::NeighbourRows;
using reference::Clusters;
using reference::Members;
using reference::RandomMatrix;

// Which of some points are neighbours, told for each two of them.
struct Graph {
  std::vector<std::vector<bool>> joined;

  explicit Graph(int count)
      : joined(static_cast<std::size_t>(count),
               std::vector<bool>(static_cast<std::size_t>(count))) {}

  std::size_t size() const { return joined.size(); }
  void join(int i, int j) {
    joined[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = true;
    joined[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)] = true;
  }
  bool are_joined(int i, int j) const {
    return joined[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
  }

  NeighbourMatrix matrix(NeighbourRows::Form form) const {
    NeighbourRows rows(size(), form);
    for (std::size_t i = 0; i < size(); ++i) {
      std::vector<std::uint32_t> row;
      for (std::size_t j = i; j < size(); ++j) {
        if (joined[i][j]) {
          row.push_back(static_cast<std::uint32_t>(j));
        }
      }
      rows.append(row);
    }
    return NeighbourMatrix(std::move(rows));
  }
};

// Points in a chain of random order, at the places of a line with ties, or joined at random: no
// two, few, many or all. Some are no neighbours of themselves.
Graph random_graph(RandomMatrix& random) {
  int const count = random.one_in(4) ? random.integer(100, 200) : random.integer(1, 70);
  Graph graph(count);
  int const kind = random.integer(0, 5);
  int const rarity = random.pick(std::vector<int>{1, 2, 10, count, 10 * count});
  std::vector<int> places;
  for (int i = 0; i < count; ++i) {
    places.push_back(random.integer(0, random.one_in(2) ? count : 4 * count));
  }
  for (int i = 0; i < count; ++i) {
    for (int j = i; j < count; ++j) {
      int const apart =
          std::abs(places[static_cast<std::size_t>(i)] - places[static_cast<std::size_t>(j)]);
      if (kind == 0 ? random.one_in(rarity) : kind != 1 && apart < kind) {
        graph.join(i, j);
      }
    }
  }
  return graph;
}

// Calls `check(graph, matrix, random)` for random graphs, whose matrix is kept in every form.
template <typename Check>
void for_random_graphs(std::uint64_t seed, Check check) {
  for (int round = 0; round * test::share_of_rounds < 60; ++round) {
    std::uint64_t const seed_of_case = seed + static_cast<std::uint64_t>(round);
    for (auto const form :
         {NeighbourRows::Form::smaller, NeighbourRows::Form::lists, NeighbourRows::Form::bits}) {
      RandomMatrix random(seed_of_case);
      SCOPED_TRACE("seed " + std::to_string(seed_of_case) + ", form " +
                   std::to_string(static_cast<int>(form)));
      Graph const graph = random_graph(random);
      check(graph, graph.matrix(form), random);
      if (testing::Test::HasFailure()) {
        return;
      }
    }
  }
}

// Ascending, each point with the same chance.
Members random_points(std::size_t count, RandomMatrix& random) {
  int const rarity = random.integer(1, 4);
  Members points;
  for (std::size_t i = 0; i < count; ++i) {
    if (random.one_in(rarity)) {
      points.push_back(static_cast<int>(i));
    }
  }
  return points;
}

Clusters merged_plainly(Graph const& graph, Members const& kernels) {
  Clusters groups;
  for (std::size_t a = 0; a < kernels.size(); ++a) {
    groups.push_back({kernels[a]});
    for (std::size_t b = a + 1; b < kernels.size(); ++b) {
      if (graph.are_joined(kernels[a], kernels[b])) {
        groups.back().push_back(kernels[b]);
      }
    }
  }
  reference::DbScan::merge(groups);
  return groups;
}

TEST(NeighbourMatrix, neighbours_are_those_that_rows_say) {
  for_random_graphs(1'000, [](Graph const& graph, NeighbourMatrix const& matrix, RandomMatrix&) {
    auto const count = static_cast<int>(graph.size());
    for (int i = 0; i < count; ++i) {
      std::vector<std::size_t> expected;
      for (int j = 0; j < count; ++j) {
        EXPECT_EQ(matrix.are_neighbours(i, j), graph.are_joined(i, j)) << i << " and " << j;
        if (graph.are_joined(i, j)) {
          expected.push_back(static_cast<std::size_t>(j));
        }
      }
      std::vector<std::size_t> visited;
      matrix.for_each(static_cast<std::size_t>(i), [&](std::size_t j) { visited.push_back(j); });
      EXPECT_EQ(visited, expected);
    }
  });
}

TEST(NeighbourMatrix, counts_are_of_the_neighbours_below_an_end) {
  for_random_graphs(2'000, [](Graph const& graph, NeighbourMatrix const& matrix,
                              RandomMatrix& random) {
    for (std::size_t i = 0; i < graph.size(); ++i) {
      auto const end = static_cast<std::size_t>(random.integer(0, static_cast<int>(graph.size())));
      auto const row = graph.joined[i].begin();
      EXPECT_EQ(matrix.count_below(i, end),
                std::count(row, row + static_cast<std::ptrdiff_t>(end), true));
    }
  });
}

TEST(NeighbourMatrix, a_set_is_met_where_a_neighbour_is_in_it) {
  for_random_graphs(
      3'000, [](Graph const& graph, NeighbourMatrix const& matrix, RandomMatrix& random) {
        Members const members = random_points(graph.size(), random);
        IndexSet set(graph.size());
        for (int const member : members) {
          set.insert(static_cast<std::size_t>(member));
        }
        for (std::size_t i = 0; i < graph.size(); ++i) {
          bool const expected = std::any_of(members.begin(), members.end(), [&](int member) {
            return graph.are_joined(static_cast<int>(i), member);
          });
          EXPECT_EQ(matrix.has_neighbour_in(i, set), expected) << i;
        }
      });
}

TEST(NeighbourMatrix, what_is_no_point_has_no_neighbours) {
  Graph graph(2);
  graph.join(0, 1);
  NeighbourMatrix const matrix = graph.matrix(NeighbourRows::Form::smaller);
  EXPECT_FALSE(matrix.are_neighbours(-1, 0));
  EXPECT_FALSE(matrix.are_neighbours(0, 2));
}

TEST(KernelGroups, ascending_kernel_points_merge_as_group_by_group) {
  for_random_graphs(
      4'000, [](Graph const& graph, NeighbourMatrix const& matrix, RandomMatrix& random) {
        Members const kernels = random_points(graph.size(), random);
        EXPECT_EQ(morva::merge_kernel_groups(matrix, kernels), merged_plainly(graph, kernels));
      });
}

TEST(KernelGroups, kernel_points_in_any_order_merge_as_group_by_group) {
  for_random_graphs(
      5'000, [](Graph const& graph, NeighbourMatrix const& matrix, RandomMatrix& random) {
        Members kernels;
        for (std::size_t i = 0; i < graph.size() / 4; ++i) {
          kernels.push_back(random.integer(0, static_cast<int>(graph.size()) - 1));
        }
        EXPECT_EQ(morva::merge_kernel_groups(matrix, kernels), merged_plainly(graph, kernels));
      });
}

TEST(KernelGroups, a_run_over_many_points_is_the_plain_one) {
  for (std::uint64_t seed = 6'000; seed < 6'020; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomMatrix random(seed);
    reference::DbScan plain;
    for (int i = 0; i < 250; ++i) {
      plain.points.push_back({static_cast<double>(random.integer(0, 600))});
    }
    plain.eps = random.integer(1, 8);
    plain.min_points = random.pick(std::vector<int>{-1, 0, 1, 2, 3, 5, 1000});
    HClusterDBScan engine;
    engine.set_eps(plain.eps);
    engine.set_min_ponits(plain.min_points);
    EXPECT_EQ(engine.cluster(reference::to_points(plain.points)), plain.run());
    EXPECT_EQ(engine.vt_kernel, plain.kernel);
    EXPECT_EQ(engine.vt_border, plain.border);
    EXPECT_EQ(engine.vt_noise, plain.noise);
    EXPECT_EQ(engine.vt_result, plain.result);
  }
}

}  // namespace
