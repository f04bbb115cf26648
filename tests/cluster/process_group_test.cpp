#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cluster/HSparseClusterMgr.h"
#include "cluster/random_cases.h"
#include "cluster/update_rule.h"

#include "reference/points.h"
#include "support/thread_group.h"

namespace {

using reference::is_same;
using reference::Matrix;
using reference::RandomMatrix;
using Clusters = std::vector<std::vector<int>>;

constexpr std::array group_sizes = {1, 2, 3, 5};

// Rows as those of documents: of many words few each, some words in most of them, and some rows
// that are equal.
Matrix documents(RandomMatrix& random, int count) {
  constexpr int words = 500;
  Matrix rows;
  for (int i = 0; i < count; ++i) {
    if (i > 0 && random.one_in(8)) {
      rows.push_back(random.pick(rows));
      continue;
    }
    reference::Point row = reference::zero_point(words);
    for (int w = random.integer(0, 24); w > 0; --w) {
      double const place = random.unit() * random.unit() * random.unit();
      row[static_cast<std::size_t>(words * place)] = random.one_in(4) ? 0.5 : random.unit();
    }
    rows.push_back(row);
  }
  return rows;
}

// Calls `check` for points of every kind, documents among them.
template <typename Check>
void for_all_points(std::uint64_t seed, Check const& check) {
  test::for_random_points(2, seed, check);
  RandomMatrix random(seed);
  for (int const count : {40, 150}) {
    check(documents(random, count), random);
  }
}

// What `work(points)` returns is the same in each process of each group as in one alone.
template <typename Work, typename IsSame>
void expect_same_in_groups(std::vector<HPointN> const& points, Work const& work,
                           IsSame const& is_same_result, std::span<int const> sizes = group_sizes) {
  auto const expected = work(HSparsePoints(points));
  for (int const size : sizes) {
    auto const results = test::in_group(size, [&](std::shared_ptr<HProcessGroup> const& group) {
      HSparsePoints shared(points);
      shared.share_work(group);
      return work(shared);
    });
    for (auto const& result : results) {
      ASSERT_TRUE(is_same_result(result, expected)) << "in a group of " << size;
    }
  }
}

template <typename Work>
void expect_same_clusters(std::vector<HPointN> const& points, Work const& work) {
  expect_same_in_groups(points, work, [](Clusters const& a, Clusters const& b) { return a == b; });
}

TEST(ProcessGroup, finds_the_canopies_that_one_process_finds) {
  for_all_points(50'000'000, [](Matrix const& rows, RandomMatrix& random) {
    double const t2 = random.one_in(3) ? 0.0 : random.radius(rows);
    expect_same_clusters(reference::to_points(rows), [&](HSparsePoints const& points) {
      Clusters found;
      HSparseClusterMgr::canopy(points, t2, t2, found);
      return found;
    });
  });
}

void expect_same_means(std::uint64_t seed, int rule, bool use_canopy) {
  test::UpdateRule const scope(rule);
  for_all_points(seed, [&](Matrix const& rows, RandomMatrix& random) {
    // With canopies another number is searched for in up to 2,000 passes.
    int const k = use_canopy && !random.one_in(4)
                      ? 0
                      : random.integer(0, std::min(12, reference::count_of(rows) + 1));
    expect_same_clusters(reference::to_points(rows), [&](HSparsePoints const& points) {
      Clusters found;
      HSparseClusterMgr::kmeans(points, k, found, use_canopy);
      return found;
    });
  });
}

TEST(ProcessGroup, finds_the_means_that_one_process_finds) {
  expect_same_means(51'000'000, 0, false);
}

TEST(ProcessGroup, finds_the_medians_that_one_process_finds) {
  expect_same_means(52'000'000, 1, false);
}

TEST(ProcessGroup, begins_with_the_canopies_that_one_process_begins_with) {
  expect_same_means(53'000'000, 0, true);
}

TEST(ProcessGroup, finds_the_dense_groups_that_one_process_finds) {
  for_all_points(54'000'000, [](Matrix const& rows, RandomMatrix& random) {
    double const eps = random.radius(rows);
    bool const use_similarity = random.one_in(4);
    int const min_points = random.integer(-1, 5);
    expect_same_clusters(reference::to_points(rows), [&](HSparsePoints const& points) {
      Clusters found;
      HSparseClusterMgr::dbscan(points, eps, min_points, use_similarity, found);
      return found;
    });
  });
}

TEST(ProcessGroup, estimates_the_radius_that_one_process_estimates) {
  for_all_points(55'000'000, [](Matrix const& rows, RandomMatrix& random) {
    int const min_points = random.integer(0, 12);
    bool const use_distance = !random.one_in(4);
    expect_same_in_groups(
        reference::to_points(rows),
        [&](HSparsePoints const& points) {
          return HSparseClusterMgr::get_eps(points, min_points, use_distance);
        },
        [](double a, double b) { return is_same(a, b); });
  });
}

// So many that neighbours are searched for by an index, and told in more than one turn.
std::vector<HPointN> many_documents() {
  RandomMatrix random(57'000'000);
  return reference::to_points(documents(random, 600));
}

constexpr std::array one_group_size = {3};

TEST(ProcessGroup, finds_the_dense_groups_of_many_documents_that_one_process_finds) {
  // Few are near, and then all.
  for (double const eps : {1.0, 100.0}) {
    expect_same_in_groups(
        many_documents(),
        [eps](HSparsePoints const& points) {
          Clusters found;
          HSparseClusterMgr::dbscan(points, eps, 2, false, found);
          return found;
        },
        std::equal_to<Clusters>(), one_group_size);
  }
}

TEST(ProcessGroup, estimates_the_radius_of_many_documents_that_one_process_estimates) {
  expect_same_in_groups(
      many_documents(),
      [](HSparsePoints const& points) { return HSparseClusterMgr::get_eps(points, 4, true); },
      [](double a, double b) { return is_same(a, b); }, one_group_size);
}

TEST(ProcessGroup, has_the_mean_distance_that_one_process_has) {
  for_all_points(56'000'000, [](Matrix const& rows, RandomMatrix& /*random*/) {
    expect_same_in_groups(
        reference::to_points(rows),
        [](HSparsePoints const& points) { return points.get_avg_distance(); },
        [](double a, double b) { return is_same(a, b); });
  });
}

TEST(ProcessGroup, refuses_points_that_are_not_the_same_in_all_processes) {
  auto const results = test::in_group(3, [](std::shared_ptr<HProcessGroup> const& group) {
    HSparsePoints points({HPointN({1.0}), HPointN({group->rank() == 2 ? 2.5 : 2.0})});
    return points.share_work(group);
  });
  EXPECT_EQ(results, std::deque<bool>(3, false));
}

TEST(ProcessGroup, shares_the_work_on_no_points) {
  auto const results = test::in_group(2, [](std::shared_ptr<HProcessGroup> const& group) {
    HSparsePoints points;
    return points.share_work(group);
  });
  EXPECT_EQ(results, std::deque<bool>(2, true));
}

// The first of two processes, of which the other brings what `lie` makes of what this one brings.
class LyingGroup : public HProcessGroup {
 public:
  using Lie = std::function<std::string(std::string)>;
  explicit LyingGroup(Lie lie) : lie_(std::move(lie)) {}

  int rank() const override { return 0; }
  int size() const override { return 2; }
  std::vector<std::string> all_gather(std::string const& mine) override {
    return {mine, lie_(mine)};
  }

 private:
  Lie lie_;
};

// `work(points)` ends with an exception whatever another process brings that cannot be.
template <typename Work>
void expect_refusal_of_lies(Work const& work) {
  struct Case {
    char const* name;
    LyingGroup::Lie lie;
  };
  std::array const cases = {
      Case{"one number less",
           [](std::string mine) { return mine.substr(std::min<std::size_t>(mine.size(), 8)); }},
      Case{"a piece of a number", [](std::string mine) { return mine + '\1'; }},
      Case{"the greatest numbers",
           [](std::string mine) { return std::string(mine.size() + 64, '\xFF'); }},
      Case{"great numbers", [](std::string mine) { return std::string(mine.size() + 64, '\x7F'); }},
      Case{"zeros behind", [](std::string mine) { return mine + std::string(64, '\0'); }},
  };
  RandomMatrix random(58'000'000);
  std::vector<HPointN> const points = reference::to_points(documents(random, 150));
  for (Case const& each : cases) {
    bool is_agreed = false;
    HSparsePoints shared(points);
    ASSERT_TRUE(shared.share_work(std::make_shared<LyingGroup>([&](std::string mine) {
      return std::exchange(is_agreed, true) ? each.lie(std::move(mine)) : mine;
    })));
    EXPECT_THROW(work(shared), std::runtime_error) << each.name;
  }
}

TEST(ProcessGroup, ends_the_search_for_dense_groups_where_a_process_brings_what_cannot_be) {
  expect_refusal_of_lies([](HSparsePoints const& points) {
    Clusters found;
    HSparseClusterMgr::dbscan(points, 3.0, 2, false, found);
  });
}

TEST(ProcessGroup, ends_the_search_for_canopies_where_a_process_brings_what_cannot_be) {
  expect_refusal_of_lies([](HSparsePoints const& points) {
    Clusters found;
    HSparseClusterMgr::canopy(points, 1.0, 1.0, found);
  });
}

TEST(ProcessGroup, ends_the_search_for_means_where_a_process_brings_what_cannot_be) {
  expect_refusal_of_lies([](HSparsePoints const& points) {
    Clusters found;
    HSparseClusterMgr::kmeans(points, 4, found, false);
  });
}

TEST(ProcessGroup, ends_the_estimate_of_a_radius_where_a_process_brings_what_cannot_be) {
  expect_refusal_of_lies(
      [](HSparsePoints const& points) { HSparseClusterMgr::get_eps(points, 4, true); });
}

// Keeps what another group's processes bring.
class RecordingGroup : public HProcessGroup {
 public:
  explicit RecordingGroup(std::shared_ptr<HProcessGroup> group) : group_(std::move(group)) {}

  int rank() const override { return group_->rank(); }
  int size() const override { return group_->size(); }
  std::vector<std::string> all_gather(std::string const& mine) override {
    meetings.push_back(group_->all_gather(mine));
    return meetings.back();
  }

  std::vector<std::vector<std::string>> meetings;

 private:
  std::shared_ptr<HProcessGroup> group_;
};

TEST(ProcessGroup, ends_the_search_for_means_at_the_first_thing_that_cannot_be) {
  RandomMatrix random(59'000'000);
  std::vector<HPointN> const points = reference::to_points(documents(random, 150));
  auto const search = [&points](std::shared_ptr<HProcessGroup> const& group) {
    HSparsePoints shared(points);
    Clusters found;
    shared.share_work(group);
    HSparseClusterMgr::kmeans(shared, 4, found, false);
  };
  auto const meetings = test::in_group(2, [&search](std::shared_ptr<HProcessGroup> const& group) {
                          auto const recording = std::make_shared<RecordingGroup>(group);
                          search(recording);
                          return recording->meetings;
                        }).front();
  int meant = 0;
  int told = 0;
  for (std::size_t lie = 1; lie < meetings.size(); ++lie) {
    if (meetings[lie][1].empty()) {
      continue;
    }
    ++meant;
    std::size_t meeting = 0;
    auto const other = [&](std::string const& /*mine*/) {
      std::string const& truth = meetings[meeting][1];
      bool const is_lie = meeting++ == lie;
      told += is_lie ? 1 : 0;
      return is_lie ? std::string(truth.size(), '\xFF') : truth;
    };
    EXPECT_THROW(search(std::make_shared<LyingGroup>(other)), std::runtime_error) << lie;
  }
  EXPECT_GE(meant, 6);
  EXPECT_EQ(told, meant);
}

}  // namespace
