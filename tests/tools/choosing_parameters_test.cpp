// What `morvaai suggest` is made of: distances, silhouettes, sweeps and files that are held out.

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "classes/distance_rows.h"
#include "classes/neighbour_distances.h"
#include "classes/samples.h"
#include "suggest/held_out.h"
#include "suggest/parameter_sweep.h"
#include "suggest/silhouette.h"

namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using tool::DistanceMatrix;
using tool::HeldOut;
using tool::HeldOutFiles;
using tool::Samples;
using tool::Sweep;

constexpr double nearly = 1e-9;

HSparsePoints points_of(std::vector<std::vector<double>> const& rows) {
  return HSparsePoints(std::vector<HPointN>(rows.begin(), rows.end()));
}

// So many points around each center, of which no two are at one place.
std::vector<std::vector<double>> groups(std::initializer_list<double> centers, int of_each) {
  std::vector<std::vector<double>> rows;
  for (double const center : centers) {
    for (int i = 0; i < of_each; ++i) {
      rows.push_back({center, 0.01 * i * i});
    }
  }
  return rows;
}

void no_note(std::size_t /*done*/, std::size_t /*all*/) {}

double silhouette(DistanceMatrix const& distances, std::vector<std::vector<int>> const& classes) {
  return tool::mean_silhouette(tool::silhouettes(distances, classes));
}

// A trial with these silhouettes.
tool::Trial trial_with(std::vector<double> silhouettes) {
  tool::Trial trial;
  trial.silhouette = tool::mean_silhouette(silhouettes);
  trial.silhouettes = std::move(silhouettes);
  return trial;
}

TEST(DistanceRows, are_the_distances_of_the_points) {
  HSparsePoints const points = points_of({{0, 3, 0}, {4, 0, 0}, {0, 3, 1e-7}, {0, 0, 0}});
  tool::DistanceRows const rows(points);
  for (int i = 0; i < 4; ++i) {
    std::vector<double> row;
    rows.measure(static_cast<std::size_t>(i), row);
    for (int j = 0; j < 4; ++j) {
      EXPECT_THAT(row[static_cast<std::size_t>(j)],
                  DoubleNear(HPointN::get_distance(points.at(i), points.at(j)), 1e-12));
    }
  }
}

TEST(Directions, are_the_same_however_long_points_are) {
  DistanceMatrix const apart = tool::directions_of(points_of({{3, 0}, {1, 0}, {2, 2}, {0, 0}}));
  EXPECT_EQ(apart[0][1], 0.0);
  EXPECT_THAT(apart[0][2], DoubleNear(1.0 - std::sqrt(0.5), nearly));
  EXPECT_EQ(apart[0][3], 1.0);
}

TEST(NeighbourDistances, ascend_to_the_neighbour_of_that_count) {
  HSparsePoints const points = points_of({{0}, {1}, {3}, {7}});
  EXPECT_THAT(tool::neighbour_distances(points, 1), ElementsAre(1, 1, 2, 4));
  EXPECT_THAT(tool::neighbour_distances(points, 3), ElementsAre(4, 6, 7, 7));
}

TEST(NeighbourDistances, are_none_where_there_are_fewer_others) {
  EXPECT_THAT(tool::neighbour_distances(points_of({{0}, {1}}), 2), IsEmpty());
  EXPECT_THAT(tool::neighbour_distances(points_of({{0}}), 1), IsEmpty());
  EXPECT_THAT(tool::neighbour_distances({}, 1), IsEmpty());
  EXPECT_THAT(tool::neighbour_distances(points_of({{0}, {1}}), 0), IsEmpty());
}

TEST(NeighbourDistances, are_0_between_equal_points) {
  EXPECT_THAT(tool::neighbour_distances(points_of({{0.3, 0.7}, {0.3, 0.7}, {0.3, 0.7}}), 2),
              ElementsAre(0, 0, 0));
}

TEST(Silhouette, is_that_of_rousseeuw) {
  DistanceMatrix const distances = tool::distances_of(points_of({{0}, {1}, {10}, {12}}));
  // (10.5 - 1) / 11, (10 - 1) / 10 and so on, by hand.
  double const expected = (10.0 / 11 + 9.0 / 10 + 7.5 / 9.5 + 9.5 / 11.5) / 4;
  EXPECT_THAT(silhouette(distances, {{0, 1}, {2, 3}}), DoubleNear(expected, nearly));
}

TEST(Silhouette, is_0_for_what_is_alone_or_in_no_class) {
  DistanceMatrix const distances = tool::distances_of(points_of({{0}, {1}, {10}, {11}}));
  EXPECT_THAT(silhouette(distances, {{0, 1}, {2}}), DoubleNear((9.0 / 10 + 8.0 / 9) / 4, nearly));
}

TEST(Silhouette, is_0_without_two_classes_or_any_distance) {
  DistanceMatrix const distances = tool::distances_of(points_of({{1}, {1}, {1}, {1}}));
  EXPECT_EQ(silhouette(distances, {{0, 1, 2, 3}}), 0.0);
  EXPECT_EQ(silhouette(distances, {{0, 1}, {2, 3}}), 0.0);
  EXPECT_EQ(silhouette({}, {}), 0.0);
}

TEST(SweepOfK, finds_the_number_of_groups) {
  HSparsePoints const points = points_of(groups({0, 10, 20, 40}, 5));
  Sweep const sweep = tool::sweep_k(points, tool::distances_of(points), no_note);
  ASSERT_TRUE(sweep.best);
  EXPECT_EQ(sweep.trials[*sweep.best].k, 4);
  EXPECT_EQ(sweep.trials.size(), 9U);  // 2 to 10: half of the points
}

TEST(SweepOfK, tries_nothing_with_less_than_four_points) {
  for (std::size_t const count : {0U, 1U, 2U, 3U}) {
    HSparsePoints const points = points_of(std::vector<std::vector<double>>(count, {1.0}));
    EXPECT_THAT(tool::sweep_k(points, tool::distances_of(points), no_note).trials, IsEmpty());
  }
}

TEST(SweepOfK, prefers_nothing_among_equal_points) {
  HSparsePoints const points = points_of(std::vector<std::vector<double>>(8, {1.0}));
  EXPECT_FALSE(tool::sweep_k(points, tool::distances_of(points), no_note).best);
}

TEST(FirstAsGood, is_the_first_that_chance_may_part_from_the_greatest) {
  // What half of the files gain, the others lose: 0.01 with a standard error of 0.03.
  std::vector<tool::Trial> const trials = {trial_with({0.1, 0.1, 0.1, 0.1}),
                                           trial_with({0.45, 0.55, 0.45, 0.55}),
                                           trial_with({0.51, 0.51, 0.51, 0.51})};
  EXPECT_EQ(tool::first_as_good(trials, 2), 1U);
}

TEST(FirstAsGood, is_the_greatest_where_all_files_gain_the_same) {
  EXPECT_EQ(tool::first_as_good({trial_with({0.25, 0.5, 0.75}), trial_with({0.5, 0.75, 1.0})}, 1),
            1U);
}

TEST(FirstAsGood, is_none_that_parts_nothing) {
  EXPECT_EQ(tool::first_as_good({trial_with({-0.5, 0.5, 0.0}), trial_with({0.5, -0.5, 0.1})}, 1),
            1U);
}

TEST(RadiiToTry, are_few_and_round) {
  std::vector<double> const radii = tool::radii_to_try(points_of(groups({0, 10}, 6)));
  ASSERT_THAT(radii, testing::Not(IsEmpty()));
  EXPECT_LE(radii.size(), 14U);
  EXPECT_TRUE(std::is_sorted(radii.begin(), radii.end()));
  EXPECT_EQ(radii.front(), 0.05);
}

TEST(RadiiToTry, are_above_0_for_equal_points_and_none_for_one) {
  EXPECT_THAT(tool::radii_to_try(points_of({{1}, {1}, {1}})), ElementsAre(0.05));
  EXPECT_THAT(tool::radii_to_try(points_of({{1}})), IsEmpty());
}

TEST(SweepOfNeighbourhoods, finds_the_groups) {
  HSparsePoints const points = points_of(groups({0, 10, 20}, 5));
  Sweep const sweep = tool::sweep_neighbourhoods(points, tool::distances_of(points),
                                                 tool::radii_to_try(points), no_note);
  ASSERT_TRUE(sweep.best);
  EXPECT_THAT(sweep.trials[*sweep.best].classes, SizeIs(3));
  EXPECT_EQ(sweep.trials[*sweep.best].unclassified, 0.0);
}

Samples samples_of(std::initializer_list<int> sizes) {
  Samples samples;
  for (int const size : sizes) {
    samples.class_of_file.insert(samples.class_of_file.end(), static_cast<std::size_t>(size),
                                 samples.class_names.size());
    samples.class_names.emplace_back(static_cast<int>(samples.class_names.size()), false);
  }
  for (std::size_t i = 0; i < samples.class_of_file.size(); ++i) {
    samples.files.emplace_back(static_cast<int>(i), false);
  }
  return samples;
}

TEST(SomeOf, leaves_small_classes_whole_and_spaces_large_ones) {
  Samples const some = tool::some_of(samples_of({2, 10}), 7);
  EXPECT_THAT(some.class_of_file, ElementsAre(0, 0, 1, 1, 1, 1, 1));
  EXPECT_EQ(some.files[2], HString(2, false));
  EXPECT_EQ(some.files[3], HString(4, false));
}

TEST(SomeOf, is_all_where_there_are_no_more) {
  EXPECT_THAT(tool::some_of(samples_of({2, 3}), 5).files, SizeIs(5));
  EXPECT_THAT(tool::some_of(samples_of({}), 5).files, IsEmpty());
}

// Files of which each has the words of its class, and one of its own.
tool::Corpus corpus_of(std::vector<std::wstring> const& classes) {
  tool::Corpus corpus;
  for (std::size_t i = 0; i < classes.size(); ++i) {
    HFeatureNode record;
    record.vt_words = {HString((classes[i] + L"-a").c_str()), HString((classes[i] + L"-b").c_str()),
                       HString(static_cast<int>(i), false)};
    record.vt_counts = {3, 2, 1};
    record.vt_weight = {1.0, 0.8, 0.2};
    for (std::size_t w = 0; w < 3; ++w) {
      record.map_word_weight[record.vt_words[w]] = record.vt_weight[w];
    }
    corpus.files.emplace_back(static_cast<int>(i), false);
    corpus.data.add(record);
    corpus.records.push_back(record);
  }
  return corpus;
}

TEST(HeldOutFiles, decide_each_file_once_among_its_own_and_once_as_a_stranger) {
  tool::Corpus const corpus = corpus_of({L"x", L"x", L"x", L"x", L"y", L"y"});
  HeldOutFiles const files(corpus, {{0, 1, 2, 3}, {4, 5}});
  std::vector<int> members;
  std::vector<int> strangers;
  for (HeldOutFiles::Round const& round : files.rounds()) {
    members.insert(members.end(), round.members.begin(), round.members.end());
    strangers.insert(strangers.end(), round.strangers.begin(), round.strangers.end());
  }
  std::sort(members.begin(), members.end());
  EXPECT_THAT(members, ElementsAre(0, 1, 2, 3, 4, 5));
  EXPECT_THAT(strangers, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(HeldOutFiles, learn_the_only_file_of_a_class_always) {
  tool::Corpus const corpus = corpus_of({L"x", L"x", L"y"});
  HeldOutFiles const files(corpus, {{0, 1}, {2}});
  EXPECT_EQ(files.single_file_classes(), 1U);
  for (std::size_t r = 0; r < 3; ++r) {
    EXPECT_THAT(files.rounds()[r].learnt[1], ElementsAre(2));
  }
}

TEST(HeldOutFiles, leave_out_many_classes_in_twelve_rounds) {
  std::vector<std::vector<int>> classes;
  for (int i = 0; i < 30; ++i) {
    classes.push_back({i});
  }
  tool::Corpus const corpus = corpus_of(std::vector<std::wstring>(30, L"x"));
  HeldOutFiles const files(corpus, classes);
  EXPECT_THAT(files.rounds(), SizeIs(3 + 12));
}

TEST(HeldOutFiles, count_a_file_of_two_classes_in_the_first) {
  tool::Corpus const corpus = corpus_of({L"x", L"x", L"x"});
  HeldOutFiles const files(corpus, {{0, 1}, {1, 2}});
  EXPECT_EQ(files.single_file_classes(), 1U);
}

TEST(HeldOutFiles, are_right_where_classes_are_apart) {
  tool::Corpus const corpus = corpus_of({L"x", L"x", L"x", L"y", L"y", L"y"});
  HeldOutFiles const files(corpus, {{0, 1, 2}, {3, 4, 5}});
  auto const no_round = [](std::size_t) {};
  HeldOut const by_members = files.by_members({{0.5, 1}}, no_round).front();
  EXPECT_EQ(by_members.right, 6U);
  EXPECT_EQ(by_members.strangers, 6U);
  EXPECT_EQ(by_members.accepted, 0U);
  EXPECT_EQ(by_members.f_measure(), 1.0);
  HeldOut const by_centers = files.by_centers(no_round).value();
  EXPECT_EQ(by_centers.decided(), 6U);
  EXPECT_EQ(by_centers.wrong, 0U);
}

TEST(HeldOutFiles, are_not_learnt_into_boxes_that_would_be_too_large) {
  constexpr int count = 12000;
  std::vector<std::vector<int>> classes;
  for (int i = 0; i < count; ++i) {
    classes.push_back({i});
  }
  tool::Corpus const corpus = corpus_of(std::vector<std::wstring>(count, L"x"));
  HeldOutFiles const files(corpus, classes);
  auto const no_round = [](std::size_t) { FAIL(); };
  EXPECT_FALSE(files.by_centers(no_round));
  EXPECT_THAT(files.by_members({{0.5, 1}}, no_round), IsEmpty());
}

TEST(HeldOutFiles, are_estimated_as_they_are_decided) {
  tool::Corpus const corpus = corpus_of({L"x", L"x", L"x", L"y", L"y", L"y", L"z", L"z"});
  HeldOutFiles const files(corpus, {{0, 1, 2}, {3, 4, 6}, {5, 7}});
  std::vector<HString> words;
  HSparsePoints points;
  corpus.data.format_data(words, points);
  DistanceMatrix const distances = tool::distances_of(points);
  for (tool::Neighbourhood const& tried : {tool::Neighbourhood{0.5, 1}, {0.5, 2}, {1.5, 1}}) {
    HeldOut const decided = files.by_members({tried}, [](std::size_t) {}).front();
    HeldOut const estimated = files.estimate_by_members(tried, distances);
    EXPECT_EQ(estimated.right, decided.right);
    EXPECT_EQ(estimated.wrong, decided.wrong);
    EXPECT_EQ(estimated.accepted, decided.accepted);
  }
}

TEST(HeldOut, measures_precision_with_as_many_strangers_as_members) {
  HeldOut outcome;
  outcome.right = 6;
  outcome.wrong = 2;
  outcome.refused = 2;
  outcome.strangers = 100;
  outcome.accepted = 20;
  EXPECT_DOUBLE_EQ(outcome.recall(), 0.6);
  EXPECT_DOUBLE_EQ(outcome.precision(), 0.6);
  EXPECT_DOUBLE_EQ(outcome.f_measure(), 0.6);
  EXPECT_EQ(HeldOut().precision(), 0.0);
  EXPECT_EQ(HeldOut().f_measure(), 0.0);
}

}  // namespace
