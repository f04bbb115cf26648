#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "numeric/HPointN.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

constexpr double sentinel = 9223372036854775808.0;
using Values = std::vector<double>;

TEST(HPointN, is_empty_by_default) {
  HPointN const point;
  EXPECT_EQ(point.get_n(), 0);
  EXPECT_TRUE(point.vt_data.empty());
  EXPECT_TRUE(point.str_label.empty());
}

TEST(HPointN, takes_n_from_its_data) {
  EXPECT_EQ(HPointN(Values{1, 2, 3}).get_n(), 3);
  EXPECT_EQ(HPointN(L"label", Values{1, 2}).get_n(), 2);
  EXPECT_EQ(HPointN(L"label", Values{1, 2}).str_label, HString(L"label"));
}

TEST(HPointN, distance_of_unequal_sizes_is_the_sentinel) {
  EXPECT_EQ(HPointN(Values{1, 2, 3}).distance(HPointN(Values{1, 2, 3, 4})), sentinel);
}

TEST(HPointN, distance_of_empty_points_is_zero) {
  EXPECT_EQ(HPointN().distance(HPointN()), 0.0);
}

TEST(HPointN, distance_is_euclidean) {
  HPointN const a(Values{0, 0});
  HPointN const b(Values{3, 4});
  EXPECT_EQ(a.distance(b), 5.0);
  EXPECT_EQ(HPointN::get_distance(b, a), 5.0);
}

TEST(HPointN, distance_adds_the_squares_in_index_order) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> coordinate(-1e3, 1e3);
  for (int round = 0; round < 200; ++round) {
    Values a(static_cast<std::size_t>(round) + 1);
    Values b(a.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
      a[i] = coordinate(random);
      b[i] = coordinate(random);
      sum += (a[i] - b[i]) * (a[i] - b[i]);
    }
    EXPECT_EQ(HPointN(a).distance(HPointN(b)), std::sqrt(sum));
  }
}

TEST(HPointN, similarity_of_unequal_sizes_is_zero) {
  EXPECT_EQ(HPointN(Values{1, 2}).cos_similarity(HPointN(Values{1, 2, 3})), 0.0);
}

TEST(HPointN, one_dimension_has_no_similarity) {
  EXPECT_EQ(HPointN(Values{2}).cos_similarity(HPointN(Values{2})), 0.0);
}

TEST(HPointN, similarity_of_equal_points_is_one) {
  HPointN const point(Values{1, 2});
  EXPECT_NEAR(HPointN::get_cos_similarity(point, point), 1.0, 1e-15);
}

TEST(HPointN, similarity_with_a_zero_point_is_nan) {
  EXPECT_TRUE(std::isnan(HPointN(Values{0, 0}).cos_similarity(HPointN(Values{1, 2}))));
}

TEST(HPointN, equality_ignores_the_label) {
  HPointN a(L"a", Values{1, 2});
  HPointN const b(L"b", Values{1, 2});
  EXPECT_TRUE(a == b);
}

TEST(HPointN, equality_has_no_tolerance) {
  HPointN a(Values{0.0});
  HPointN const b(Values{1e-300});
  EXPECT_FALSE(a == b);
}

TEST(HPointN, a_nan_is_unlike_itself) {
  HPointN a(Values{std::numeric_limits<double>::quiet_NaN()});
  HPointN const& b = a;
  EXPECT_FALSE(a == b);
}

TEST(HPointN, points_of_different_size_are_unequal) {
  HPointN a(Values{1});
  HPointN const b(Values{1, 0});
  EXPECT_FALSE(a == b);
}

TEST(HPointN, addition_goes_by_coordinate) {
  HPointN a(Values{1, 2});
  a += HPointN(Values{10, 20});
  EXPECT_EQ(a.vt_data, (Values{11, 22}));
}

TEST(HPointN, addition_of_an_unequal_size_changes_and_logs_nothing) {
  test::LogCapture const log;
  HPointN a(Values{1, 2});
  a += HPointN(Values{1, 2, 3});
  EXPECT_EQ(a.vt_data, (Values{1, 2}));
  EXPECT_TRUE(log.records().empty());
}

TEST(HPointN, division_goes_by_coordinate) {
  HPointN a(Values{1, -3});
  a /= -2;
  EXPECT_EQ(a.vt_data, (Values{-0.5, 1.5}));
  a /= 4UL;
  EXPECT_EQ(a.vt_data, (Values{-0.125, 0.375}));
}

TEST(HPointN, division_by_zero_logs_and_leaves_the_values) {
  test::LogCapture const log;
  HPointN a(Values{1, 2});
  a /= 0;
  a /= 0UL;
  EXPECT_EQ(a.vt_data, (Values{1, 2}));
  test::LogCapture::Record const expected{1, L"../HPointN",
                                          L"HPointN::operator /= parameter can't be 0 !"};
  EXPECT_EQ(log.records(), (std::vector{expected, expected}));
}

TEST(HPointN, at_beyond_n_is_zero) {
  HPointN const a(Values{1, 2});
  EXPECT_EQ(a.at(2), 0.0);
  EXPECT_EQ(a.at(1), 2.0);
  EXPECT_EQ(a.at(-1), 0.0);
}

TEST(HPointN, indexing_refers_to_the_coordinate) {
  HPointN a(Values{1, 2});
  a[1] = 5;
  EXPECT_EQ(a.vt_data, (Values{1, 5}));
}

TEST(HPointN, resizing_keeps_what_fits) {
  HPointN a(Values{1, 2});
  a.resize(4);
  EXPECT_EQ(a.vt_data, (Values{1, 2, 0, 0}));
  EXPECT_EQ(a.n, 4);
  a.resize(1);
  EXPECT_EQ(a.vt_data, (Values{1}));
  EXPECT_EQ(a.n, 1);
}

TEST(HPointN, resizing_to_a_negative_size_leaves_no_data) {
  HPointN a(Values{1, 2});
  a.resize(-3);
  EXPECT_EQ(a.n, -3);
  EXPECT_TRUE(a.vt_data.empty());
}

TEST(HPointN, clearing_keeps_the_label) {
  HPointN a(L"label", Values{1, 2});
  a.clear();
  EXPECT_EQ(a.to_str(), HString(L"Label: label\nN: 0\n()\n"));
}

TEST(HPointN, text_form_has_three_lines) {
  EXPECT_EQ(HPointN(L"a b", Values{1, -0.5, 1e300}).to_str(),
            HString(L"Label: a b\nN: 3\n(1, -0.5, 1e+300)\n"));
}

TEST(HPointN, a_file_restores_label_size_and_coordinates) {
  test::TemporaryDirectory const directory;
  HPointN const a(L"标签", Values{0.1, -1.0 / 3.0, 1e-310, 5e300});
  a.to_file(directory / "point");
  HPointN b;
  b.from_file(directory / "point");
  EXPECT_EQ(b.str_label, a.str_label);
  EXPECT_EQ(b.n, 4);
  EXPECT_EQ(b.vt_data, a.vt_data);
}

TEST(HPointN, a_file_restores_a_point_without_coordinates) {
  test::TemporaryDirectory const directory;
  HPointN().to_file(directory / "point");
  HPointN point(L"old", Values{1});
  point.from_file(directory / "point");
  EXPECT_EQ(point.n, 0);
  EXPECT_TRUE(point.vt_data.empty());
  EXPECT_TRUE(point.str_label.empty());
}

TEST(HPointN, a_line_feed_in_the_label_makes_a_file_that_is_refused) {
  test::TemporaryDirectory const directory;
  HPointN(L"a\nb", Values{1, 2}).to_file(directory / "point");
  test::LogCapture const log;
  HPointN point(L"old", Values{9});
  point.from_file(directory / "point");
  EXPECT_EQ(point.str_label, HString(L"old"));
  EXPECT_EQ(point.vt_data, (Values{9}));
  EXPECT_TRUE(log.records().empty());
}

TEST(HPointN, a_missing_file_leaves_the_point) {
  HPointN point(L"old", Values{9});
  point.from_file(L"/nonexistent/point");
  EXPECT_EQ(point.vt_data, (Values{9}));
}

TEST(HPointN, a_file_may_state_more_dimensions_than_it_holds) {
  test::TemporaryDirectory const directory;
  HPointN read;
  read.from_file(directory.write("point", "Label: x\nN: 5\n(1, 2, 3)\n"));
  EXPECT_EQ(read.n, 5);
  EXPECT_EQ(read.vt_data, (Values{1, 2, 3}));
  EXPECT_EQ(read.at(3), 0.0);
  HPointN const copy(read);
  EXPECT_EQ(copy.n, 3);
  HPointN assigned;
  assigned = read;
  EXPECT_EQ(assigned.n, 5);
}

TEST(HPointN, measures_of_an_inconsistent_point_stay_within_its_data) {
  test::TemporaryDirectory const directory;
  HPointN huge;
  huge.from_file(directory.write("point", "Label: x\nN: 2147483647\n(3, 4)\n"));
  HPointN other;
  other.from_file(directory.write("other", "Label: y\nN: 2147483647\n(0)\n"));
  EXPECT_EQ(huge.distance(other), 5.0);
  EXPECT_EQ(other.distance(huge), 5.0);
  huge += other;
  other += huge;
  EXPECT_EQ(other.vt_data, (Values{3}));
  huge /= 2;
  EXPECT_EQ(huge.vt_data, (Values{1.5, 2}));
  HPointN const& same = other;
  EXPECT_FALSE(huge == same);
  EXPECT_EQ(huge.to_str(), HString(L"Label: x\nN: 2147483647\n(1.5, 2)\n"));
}

TEST(HPointN, text_that_is_no_number_reads_as_zero) {
  test::TemporaryDirectory const directory;
  HPointN point;
  point.from_file(directory.write("point", "Label: x\nN: many\n(a, 2)\n"));
  EXPECT_EQ(point.n, 0);
  EXPECT_EQ(point.vt_data, (Values{0, 2}));
}

}  // namespace
