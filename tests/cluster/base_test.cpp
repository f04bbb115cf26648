#include <bit>
#include <cstddef>
#include <limits>
#include <type_traits>

#include <gtest/gtest.h>

#include "cluster/HClusterBase.h"
#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/points.h"

#include "support/log_capture.h"

namespace {

using test::Clusters;
using test::line;
using test::Members;
using test::point;
using test::Points;
using Values = std::vector<double>;

constexpr double sentinel = 9223372036854775808.0;

// An engine that records how the frame calls it.
class RecordingEngine final : public HClusterBase {
 public:
  using HClusterBase::cluster;
  bool init() override {
    calls += "init ";
    return accepts;
  }
  bool cluster() override {
    calls += "cluster ";
    vt_result = {{0}};
    return finds;
  }

  std::string calls;
  bool accepts = true;
  bool finds = true;
};

// An engine with points, for the measures.
class Measures final : public HClusterBase {
 public:
  explicit Measures(Points const& points) { InitBase(points); }
  using HClusterBase::cluster;
  bool cluster() override { return true; }
};

// The slot of a virtual operation, as the common C++ ABI writes it into a pointer to member: twice
// the offset or the offset plus one, with the mark for "virtual" in one of the two words.
template <typename Member>
std::size_t slot_of(Member member) {
  struct Words {
    std::ptrdiff_t offset;
    std::ptrdiff_t adjustment;
  };
  static_assert(sizeof(Words) == sizeof member);
  auto const words = std::bit_cast<Words>(member);
  return static_cast<std::size_t>(words.offset) / sizeof(void*);
}

std::byte const* address(auto const& field) {
  return reinterpret_cast<std::byte const*>(&field);
}

TEST(HClusterBase, virtual_operations_keep_their_slots) {
  EXPECT_EQ(slot_of(static_cast<bool (HClusterBase::*)()>(&HClusterBase::cluster)), 0U);
  EXPECT_EQ(slot_of(&HClusterBase::init), 1U);
  EXPECT_EQ(slot_of(&HClusterBase::get_cluster_type), 2U);
}

TEST(HClusterBase, the_destructor_is_not_virtual) {
  EXPECT_FALSE(std::has_virtual_destructor_v<HClusterBase>);
  EXPECT_FALSE(std::has_virtual_destructor_v<HClusterCanopy>);
  EXPECT_FALSE(std::has_virtual_destructor_v<HClusterKMeans>);
  EXPECT_FALSE(std::has_virtual_destructor_v<HClusterDBScan>);
}

TEST(HClusterBase, fields_keep_their_order) {
  RecordingEngine const engine;
  EXPECT_LT(address(engine.mb_finish), address(engine.mi_count));
  EXPECT_LT(address(engine.mi_count), address(engine.vt_point));
  EXPECT_LT(address(engine.vt_point), address(engine.vt_index));
  EXPECT_LT(address(engine.vt_index), address(engine.vt_result));
  EXPECT_LT(address(engine.vt_result), address(engine.mi_n));
}

TEST(HClusterBase, fields_of_the_engines_keep_their_order) {
  HClusterCanopy const canopy;
  EXPECT_LT(address(canopy.mi_n), address(canopy.mi_k));
  EXPECT_LT(address(canopy.mi_k), address(canopy.md_T1));
  EXPECT_LT(address(canopy.md_T1), address(canopy.md_T2));
  HClusterKMeans const kmeans;
  EXPECT_LT(address(kmeans.mi_n), address(kmeans.vt_mean));
  EXPECT_LT(address(kmeans.vt_mean), address(kmeans.mi_k));
  EXPECT_LT(address(kmeans.mi_k), address(kmeans.mb_use_canopy));
  HClusterDBScan const dbscan;
  EXPECT_LT(address(dbscan.mi_n), address(dbscan.mb_use_similarity));
  EXPECT_LT(address(dbscan.mb_use_similarity), address(dbscan.mb_mark_kernel));
  EXPECT_LT(address(dbscan.mb_mark_kernel), address(dbscan.mb_mark_border));
  EXPECT_LT(address(dbscan.mb_mark_border), address(dbscan.mb_mark_noise));
  EXPECT_LT(address(dbscan.mb_mark_noise), address(dbscan.vt_kernel));
  EXPECT_LT(address(dbscan.vt_kernel), address(dbscan.vt_border));
  EXPECT_LT(address(dbscan.vt_border), address(dbscan.vt_noise));
  EXPECT_LT(address(dbscan.vt_noise), address(dbscan.md_eps));
  EXPECT_LT(address(dbscan.md_eps), address(dbscan.md_similarity));
  EXPECT_LT(address(dbscan.md_similarity), address(dbscan.mi_min_points));
}

TEST(HClusterBase, every_engine_has_its_type_code) {
  RecordingEngine const engine;
  EXPECT_EQ(engine.get_cluster_type(), -1);
  EXPECT_EQ(HClusterKMeans().get_cluster_type(), 0);
  EXPECT_EQ(HClusterDBScan().get_cluster_type(), 1);
  EXPECT_EQ(HClusterCanopy().get_cluster_type(), 2);
}

TEST(HClusterBase, is_constructed_empty) {
  RecordingEngine const engine;
  EXPECT_FALSE(engine.mb_finish);
  EXPECT_EQ(engine.mi_count, 0);
  EXPECT_EQ(engine.mi_n, 0);
  EXPECT_TRUE(engine.vt_point.empty());
  EXPECT_TRUE(engine.vt_index.empty());
  EXPECT_TRUE(engine.vt_result.empty());
}

TEST(HClusterBase, init_accepts_unless_an_engine_says_otherwise) {
  HClusterDBScan dbscan;
  EXPECT_TRUE(dbscan.init());
  Measures measures({});
  EXPECT_TRUE(measures.init());
}

TEST(HClusterBase, a_run_prepares_checks_and_clusters) {
  RecordingEngine engine;
  EXPECT_TRUE(engine.cluster(line({1, 2})));
  EXPECT_EQ(engine.calls, "init cluster ");
  EXPECT_EQ(engine.mi_count, 2);
}

TEST(HClusterBase, a_run_returns_what_the_engine_returns) {
  RecordingEngine engine;
  engine.finds = false;
  EXPECT_FALSE(engine.cluster(line({1})));
  EXPECT_EQ(engine.calls, "init cluster ");
}

TEST(HClusterBase, a_run_on_no_points_does_not_get_to_init) {
  RecordingEngine engine;
  EXPECT_FALSE(engine.cluster(Points{}));
  EXPECT_EQ(engine.calls, "");
}

TEST(HClusterBase, a_run_ends_where_init_refuses) {
  RecordingEngine engine;
  engine.accepts = false;
  EXPECT_FALSE(engine.cluster(line({1})));
  EXPECT_EQ(engine.calls, "init ");
}

TEST(HClusterBase, preparing_copies_the_points_and_numbers_them) {
  RecordingEngine engine;
  Points points{point({1, 2, 3}), point({4})};
  points[0].str_label = L"first";
  EXPECT_TRUE(engine.InitBase(points));
  EXPECT_EQ(engine.mi_count, 2);
  EXPECT_EQ(engine.mi_n, 3);
  EXPECT_EQ(engine.vt_index, (Members{0, 1}));
  ASSERT_EQ(engine.vt_point.size(), 2U);
  EXPECT_EQ(engine.vt_point[0].vt_data, (Values{1, 2, 3}));
  EXPECT_EQ(engine.vt_point[0].str_label, HString(L"first"));
  EXPECT_FALSE(engine.mb_finish);
}

TEST(HClusterBase, preparing_with_no_points_changes_nothing) {
  RecordingEngine engine;
  engine.InitBase(line({5, 6}));
  EXPECT_FALSE(engine.InitBase(Points{}));
  EXPECT_EQ(engine.mi_count, 2);
  EXPECT_EQ(engine.mi_n, 1);
  EXPECT_EQ(engine.vt_index, (Members{0, 1}));
  EXPECT_EQ(test::values_of(engine.vt_point), (Values{5, 6}));
}

TEST(HClusterBase, preparing_again_appends_the_indices) {
  RecordingEngine engine;
  engine.InitBase(line({5, 6}));
  EXPECT_TRUE(engine.InitBase(Points{point({1, 1}), point({2, 2}), point({3, 3})}));
  EXPECT_EQ(engine.vt_index, (Members{0, 1, 0, 1, 2}));
  EXPECT_EQ(engine.mi_count, 3);
  EXPECT_EQ(engine.mi_n, 2);
  EXPECT_EQ(engine.vt_point.size(), 3U);
}

TEST(HClusterBase, the_result_replaces_what_the_caller_had) {
  RecordingEngine engine;
  engine.vt_result = {{2, 1}, {}};
  Clusters out{{7}, {8}, {9}};
  engine.get_result(out);
  EXPECT_EQ(out, (Clusters{{2, 1}, {}}));
}

TEST(HClusterBase, centers_of_an_unfinished_run_are_none) {
  Measures engine(line({1, 3}));
  engine.vt_result = {{0, 1}};
  Points out{point({9})};
  engine.get_out_center_point(out);
  EXPECT_TRUE(out.empty());
}

TEST(HClusterBase, centers_without_clusters_are_none) {
  Measures engine(line({1, 3}));
  engine.mb_finish = true;
  Points out{point({9})};
  engine.get_out_center_point(out);
  EXPECT_TRUE(out.empty());
}

TEST(HClusterBase, centers_are_the_means_of_the_clusters_in_order) {
  Measures engine(Points{point({1, 0}), point({3, 8}), point({5, 5})});
  engine.vt_point[0].str_label = L"label";
  engine.mb_finish = true;
  engine.vt_result = {{2}, {1, 0}};
  Points out{point({9})};
  engine.get_out_center_point(out);
  ASSERT_EQ(out.size(), 2U);
  EXPECT_EQ(out[0].vt_data, (Values{5, 5}));
  EXPECT_EQ(out[1].vt_data, (Values{2, 4}));
  EXPECT_TRUE(out[1].str_label.empty());
}

TEST(HClusterBase, a_center_is_diluted_by_a_member_of_another_dimension) {
  Measures engine(Points{point({4}), point({8, 8})});
  engine.mb_finish = true;
  engine.vt_result = {{0, 1}, {1}};
  Points out;
  engine.get_out_center_point(out);
  ASSERT_EQ(out.size(), 2U);
  EXPECT_EQ(out[0].vt_data, (Values{2}));
  EXPECT_EQ(out[1].vt_data, (Values{0}));
}

TEST(HClusterBase, kmeans_and_dbscan_deliver_no_centers) {
  HClusterKMeans kmeans;
  kmeans.set_k(2);
  EXPECT_TRUE(kmeans.cluster(line({0, 1, 10})));
  EXPECT_FALSE(kmeans.mb_finish);
  Points out{point({9})};
  kmeans.get_out_center_point(out);
  EXPECT_TRUE(out.empty());
  HClusterDBScan dbscan;
  dbscan.set_eps(2);
  dbscan.set_min_ponits(1);
  EXPECT_TRUE(dbscan.cluster(line({0, 1, 10})));
  EXPECT_FALSE(dbscan.mb_finish);
  out = {point({9})};
  dbscan.get_out_center_point(out);
  EXPECT_TRUE(out.empty());
}

TEST(HClusterBase, empty_point_has_the_dimension_of_the_run) {
  Measures const engine(Points{point({1, 2}), point({3})});
  HPointN const made = engine.get_empty_point();
  EXPECT_EQ(made.vt_data, (Values{0, 0}));
  EXPECT_EQ(made.n, 2);
}

TEST(HClusterBase, centers_and_radius_are_over_its_points) {
  Measures const engine(line({0, 1, 2, 9}));
  EXPECT_EQ(engine.get_center_point({0, 1, 3, -1}).at(0), 10.0 / 3);
  EXPECT_EQ(engine.get_median_point({0, 1, 2, 3}).at(0), 5.5);
  EXPECT_EQ(engine.get_max_radius({0, 2, 7}), 1.0);
  EXPECT_EQ(engine.get_distance_sum(1, {0, 3, 8}), 9.0);
  EXPECT_EQ(engine.get_distance_sum(4, {0}), 0.0);
}

TEST(HClusterBase, pair_measures_are_over_its_points) {
  Measures const engine(line({0, 10, 4, 9}));
  EXPECT_EQ(engine.get_avg_distance(), 35.0 / 6);
  EXPECT_EQ(engine.get_min_distance(), 1.0);
  EXPECT_EQ(engine.get_max_distance(), 10.0);
  int i = -7;
  int j = -7;
  EXPECT_EQ(engine.get_min_distance(i, j), 1.0);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(j, 3);
  EXPECT_EQ(engine.get_max_distance(i, j), 10.0);
  EXPECT_EQ(i, 0);
  EXPECT_EQ(j, 1);
  HPointN a;
  HPointN b;
  EXPECT_EQ(engine.get_min_distance(a, b), 1.0);
  EXPECT_EQ(a.at(0), 10.0);
  EXPECT_EQ(b.at(0), 9.0);
  EXPECT_EQ(engine.get_max_distance(a, b), 10.0);
  EXPECT_EQ(a.at(0), 0.0);
  EXPECT_EQ(b.at(0), 10.0);
}

TEST(HClusterBase, pair_measures_without_a_pair_leave_the_indices) {
  Measures const engine(line({4}));
  int i = -7;
  int j = -9;
  EXPECT_EQ(engine.get_min_distance(i, j), sentinel);
  EXPECT_EQ(engine.get_max_distance(i, j), 0.0);
  EXPECT_EQ(i, -7);
  EXPECT_EQ(j, -9);
  EXPECT_EQ(engine.get_min_distance(), sentinel);
  EXPECT_EQ(engine.get_max_distance(), 0.0);
}

TEST(HClusterBase, distance_of_an_index_outside_the_run_is_zero) {
  Measures const engine(line({1, 5}));
  EXPECT_EQ(engine.get_distance(0, 1), 4.0);
  EXPECT_EQ(engine.get_distance(-1, 0), 0.0);
  EXPECT_EQ(engine.get_distance(0, -1), 0.0);
  EXPECT_EQ(engine.get_distance(2, 0), 0.0);
  EXPECT_EQ(engine.get_distance(0, 2), 0.0);
}

TEST(HClusterBase, distance_goes_by_the_count_of_the_run) {
  Measures engine(line({1, 5, 9}));
  engine.mi_count = 2;
  EXPECT_EQ(engine.get_distance(0, 2), 0.0);
}

TEST(HClusterBase, the_nearest_of_equals_is_the_last) {
  Measures const engine(line({0, 2}));
  EXPECT_EQ(engine.get_nearest_index(point({1})), 1);
  EXPECT_EQ(engine.get_nearest_index(point({0})), 0);
}

TEST(HClusterBase, nearest_without_points_is_0) {
  Measures const engine({});
  EXPECT_EQ(engine.get_nearest_index(point({1})), 0);
}

TEST(HClusterBase, a_point_of_another_dimension_still_takes_the_index) {
  Measures const engine(Points{point({1}), point({1, 1}), point({1, 2})});
  EXPECT_EQ(engine.get_nearest_index(point({0, 0, 0})), 2);
  EXPECT_EQ(engine.get_nearest_index(point({5})), 0);
}

TEST(HClusterBase, points_beyond_the_sentinel_are_not_near) {
  Measures const engine(line({1e300, 1e20, -1e300}));
  EXPECT_EQ(engine.get_nearest_index(point({0})), 0);
  EXPECT_EQ(engine.get_nearest_index(point({std::numeric_limits<double>::quiet_NaN()})), 0);
}

TEST(HClusterBase, measures_follow_points_that_are_changed_by_hand) {
  Measures engine(line({0, 4, 9}));
  EXPECT_EQ(engine.get_max_distance(), 9.0);
  EXPECT_EQ(engine.get_distance(0, 1), 4.0);
  engine.vt_point[1] = point({20});
  EXPECT_EQ(engine.get_max_distance(), 20.0);
  EXPECT_EQ(engine.get_distance(0, 1), 20.0);
  EXPECT_EQ(engine.get_nearest_index(point({20})), 1);
}

TEST(HClusterBase, measures_follow_points_that_are_changed_after_a_run) {
  HClusterCanopy engine;
  engine.cluster(line({0, 4, 9}));
  engine.vt_point[1] = point({20});
  EXPECT_EQ(engine.get_distance(0, 1), 20.0);
  EXPECT_EQ(engine.get_avg_distance(), 40.0 / 3);
  EXPECT_EQ(engine.get_min_distance(), 9.0);
  EXPECT_EQ(engine.get_nearest_index(point({20})), 1);
  EXPECT_EQ(engine.get_center_point({1}).at(0), 20.0);
}

TEST(HClusterBase, a_run_leaves_the_points_with_the_engine) {
  HClusterCanopy engine;
  engine.cluster(line({0, 4, 9}));
  EXPECT_EQ(test::values_of(engine.vt_point), (Values{0, 4, 9}));
  EXPECT_EQ(engine.vt_index, (Members{0, 1, 2}));
}

TEST(HClusterBase, a_copy_of_an_engine_stands_alone) {
  HClusterCanopy engine;
  engine.cluster(line({0, 4, 9}));
  HClusterCanopy copy = engine;
  copy.vt_point[0] = point({100});
  EXPECT_EQ(copy.get_distance(0, 1), 96.0);
  EXPECT_EQ(engine.get_distance(0, 1), 4.0);
}

TEST(HClusterBase, removing_takes_the_first_of_equal_elements) {
  Members list{7, 1, 7};
  HClusterBase::remove(7, list);
  EXPECT_EQ(list, (Members{1, 7}));
}

TEST(HClusterBase, removing_an_absent_element_changes_nothing) {
  Members list{1};
  HClusterBase::remove(9, list);
  EXPECT_EQ(list, (Members{1}));
  Members empty;
  HClusterBase::remove(9, empty);
  EXPECT_TRUE(empty.empty());
}

TEST(HClusterBase, nothing_is_logged) {
  test::LogCapture const log;
  RecordingEngine engine;
  engine.cluster(Points{});
  engine.accepts = false;
  engine.cluster(line({1}));
  Measures const measures(line({1}));
  measures.get_distance(-1, 5);
  Points out;
  measures.get_out_center_point(out);
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
