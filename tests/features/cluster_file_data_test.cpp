#include <algorithm>
#include <bit>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

#include "features/HClusterFileData.h"
#include "features/HFileFeature.h"
#include "features/random_features.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Words = std::vector<HString>;
using Values = std::vector<double>;
using Record = test::LogCapture::Record;
using test::RandomFeatures;

HFeatureNode document(std::vector<std::pair<HString, double>> const& words) {
  HFeatureNode node;
  for (auto const& [word, weight] : words) {
    node.vt_words.push_back(word);
    node.vt_counts.push_back(1);
    node.vt_weight.push_back(weight);
    node.map_word_weight[word] = weight;
  }
  return node;
}

HString wide_dna() {
  HString text;
  for (int i = 0; i < 128; ++i) {
    text << L"7FFFFFFF";
  }
  return text;
}

TEST(ClusterFileData, the_vocabulary_is_sorted_and_has_each_word_once) {
  Words words{L"old"};
  HClusterFileData::get_words({document({{L"b", 1}, {L"a", 1}}), document({{L"c", 1}, {L"b", 1}})},
                              words);
  EXPECT_EQ(words, (Words{L"a", L"b", L"c"}));
}

TEST(ClusterFileData, a_word_repeated_in_one_record_is_in_the_vocabulary_once) {
  Words words;
  HClusterFileData::get_words({document({{L"a", 1}, {L"a", 2}})}, words);
  EXPECT_EQ(words, (Words{L"a"}));
}

TEST(ClusterFileData, the_vocabulary_looks_only_at_the_word_list) {
  HFeatureNode node;
  node.vt_words = {L"listed"};
  node.map_word_weight[L"mapped"] = 1.0;
  Words words;
  HClusterFileData::get_words({node}, words);
  EXPECT_EQ(words, (Words{L"listed"}));
}

TEST(ClusterFileData, no_records_give_an_empty_vocabulary) {
  Words words{L"old"};
  HClusterFileData::get_words({}, words);
  EXPECT_TRUE(words.empty());
}

TEST(ClusterFileData, a_point_has_the_weight_of_each_word_and_zero_for_a_missing_one) {
  HPointN point;
  HClusterFileData::get_data(document({{L"a", 0.5}, {L"c", 0.25}}), {L"a", L"b", L"c"}, point,
                             false);
  EXPECT_EQ(point.vt_data, (Values{0.5, 0.0, 0.25}));
  EXPECT_EQ(point.n, 3);
}

TEST(ClusterFileData, a_point_follows_any_word_list) {
  HPointN point;
  HClusterFileData::get_data(document({{L"a", 0.5}, {L"c", 0.25}}), {L"c", L"x", L"a", L"c"}, point,
                             false);
  EXPECT_EQ(point.vt_data, (Values{0.25, 0.0, 0.5, 0.25}));
}

TEST(ClusterFileData, a_point_loses_its_old_coordinates_and_keeps_its_label) {
  HPointN point(L"label", Values{1, 2, 3, 4});
  HClusterFileData::get_data(document({{L"a", 0.5}}), {L"a", L"b"}, point, false);
  EXPECT_EQ(point.vt_data, (Values{0.5, 0.0}));
  EXPECT_EQ(point.n, 2);
  EXPECT_EQ(point.str_label, HString(L"label"));
}

TEST(ClusterFileData, a_listed_word_without_entry_in_the_map_yields_zero) {
  HFeatureNode node = document({{L"a", 0.5}, {L"b", 0.25}});
  node.map_word_weight.erase(L"a");
  Words words;
  std::vector<HPointN> points;
  HClusterFileData::format_data({node}, words, points, false);
  EXPECT_EQ(words, (Words{L"a", L"b"}));
  EXPECT_EQ(points.at(0).vt_data, (Values{0.0, 0.25}));
}

TEST(ClusterFileData, documents_without_a_common_word_are_zero_where_the_other_is_not) {
  Words words;
  std::vector<HPointN> points;
  HClusterFileData::format_data(
      {document({{L"b", 1}, {L"d", 2}}), document({{L"a", 3}, {L"c", 4}})}, words, points, false);
  EXPECT_EQ(points.at(0).vt_data, (Values{0, 1, 0, 2}));
  EXPECT_EQ(points.at(1).vt_data, (Values{3, 0, 4, 0}));
}

TEST(ClusterFileData, old_points_give_way_to_one_for_each_record) {
  for (std::size_t const old_size : {0U, 1U, 5U}) {
    Words words{L"old"};
    std::vector<HPointN> points(old_size, HPointN(L"old", Values{7, 7, 7}));
    HClusterFileData::format_data({document({{L"a", 1}}), document({{L"a", 2}})}, words, points,
                                  false);
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points[0].vt_data, (Values{1}));
    EXPECT_EQ(points[1].vt_data, (Values{2}));
    EXPECT_EQ(points[0].n, 1);
    EXPECT_TRUE(points[0].str_label.empty());
  }
}

TEST(ClusterFileData, no_records_leave_neither_words_nor_points) {
  Words words{L"old"};
  std::vector<HPointN> points(3);
  HClusterFileData::format_data({}, words, points, false);
  EXPECT_TRUE(words.empty());
  EXPECT_TRUE(points.empty());
}

TEST(ClusterFileData, a_fingerprint_gives_its_point_labelled_with_the_file_id) {
  HFeatureNode node = document({{L"a", 1}});
  node.str_file_id = L"id";
  node.str_dna = wide_dna();
  HPointN point;
  HClusterFileData::get_data(node, {L"a"}, point, true);
  EXPECT_EQ(point.vt_data, Values(128, 0.0));
  EXPECT_EQ(point.n, 128);
  EXPECT_EQ(point.str_label, HString(L"id"));
}

TEST(ClusterFileData, an_empty_fingerprint_gives_an_empty_point_and_a_line) {
  HFeatureNode node = document({{L"a", 1}});
  HPointN point(L"old", Values{1, 2});
  test::LogCapture const log;
  HClusterFileData::get_data(node, {L"a"}, point, true);
  EXPECT_EQ(point.get_n(), 0);
  EXPECT_TRUE(point.vt_data.empty());
  EXPECT_TRUE(point.str_label.empty());
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{1, L"../HFileDNA", L"dna leng not is 1024, str_dna.length:0"}}));
}

TEST(ClusterFileData, fingerprints_of_a_list_come_with_the_vocabulary_of_its_words) {
  HFeatureNode first = document({{L"b", 1}});
  first.str_file_id = L"first";
  first.str_dna = wide_dna();
  HFeatureNode second = document({{L"a", 1}});
  second.str_file_id = L"second";
  second.str_dna = wide_dna();
  Words words;
  std::vector<HPointN> points;
  HClusterFileData::format_data({first, second}, words, points, true);
  EXPECT_EQ(words, (Words{L"a", L"b"}));
  ASSERT_EQ(points.size(), 2U);
  EXPECT_EQ(points[1].str_label, HString(L"second"));
  EXPECT_EQ(points[1].get_n(), 128);
}

bool same_bits(Values const& a, Values const& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
    return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  });
}

TEST(ClusterFileData, the_vocabulary_is_the_ordered_set_of_random_words) {
  for (unsigned int seed = 0; seed < 2000; ++seed) {
    std::vector<HFeatureNode> const features = RandomFeatures(seed).make();
    std::set<HString> expected;
    for (HFeatureNode const& node : features) {
      expected.insert(node.vt_words.begin(), node.vt_words.end());
    }
    Words words;
    HClusterFileData::get_words(features, words);
    ASSERT_EQ(words, Words(expected.begin(), expected.end())) << seed;
  }
}

TEST(ClusterFileData, the_points_of_a_list_are_those_of_the_single_records) {
  for (unsigned int seed = 0; seed < 2000; ++seed) {
    std::vector<HFeatureNode> const features = RandomFeatures(seed).make();
    Words words;
    std::vector<HPointN> points;
    HClusterFileData::format_data(features, words, points, false);
    ASSERT_EQ(points.size(), features.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
      HPointN expected;
      HClusterFileData::get_data(features[i], words, expected, false);
      ASSERT_TRUE(same_bits(points[i].vt_data, expected.vt_data)) << seed;
      ASSERT_EQ(points[i].n, expected.n);
      ASSERT_TRUE(points[i].str_label.empty());
    }
  }
}

class ClusterFiles : public testing::Test {
 protected:
  std::string extract(std::vector<HString> const& files, bool b_print) {
    testing::internal::CaptureStdout();
    HClusterFileData::get_data_from_files(files, words, points, b_print);
    return testing::internal::GetCapturedStdout();
  }

  test::TemporaryDirectory directory;
  Words words{L"old"};
  std::vector<HPointN> points = std::vector<HPointN>(4);
};

TEST_F(ClusterFiles, no_files_give_nothing_but_the_frame_of_the_progress) {
  EXPECT_EQ(extract({}, true), "Extract Feature: \n");
  EXPECT_TRUE(words.empty());
  EXPECT_TRUE(points.empty());
}

TEST_F(ClusterFiles, files_give_the_points_of_their_features) {
  HString const first = directory.write("a.txt", "Revenue grew in the northern region.");
  HString const second = directory.write("b.txt", "Costs fell in the southern region.");
  extract({first, second}, false);
  std::vector<HFeatureNode> features(2);
  ASSERT_TRUE(HFileFeature::get_file_feature(first, features[0], true));
  ASSERT_TRUE(HFileFeature::get_file_feature(second, features[1], true));
  Words expected_words;
  std::vector<HPointN> expected_points;
  HClusterFileData::format_data(features, expected_words, expected_points, false);
  EXPECT_EQ(words, expected_words);
  ASSERT_EQ(points.size(), 2U);
  EXPECT_TRUE(same_bits(points[0].vt_data, expected_points[0].vt_data));
  EXPECT_TRUE(same_bits(points[1].vt_data, expected_points[1].vt_data));
}

TEST_F(ClusterFiles, a_file_that_fails_shows_and_later_points_move_down) {
  HString const first = directory.write("a.txt", "northern region");
  HString const second = directory.write("c.txt", "southern costs");
  EXPECT_EQ(extract({first, directory / "missing.txt", second}, true), "Extract Feature: .#.\n");
  ASSERT_EQ(points.size(), 2U);
  auto const southern = std::find(words.begin(), words.end(), HString(L"southern"));
  ASSERT_NE(southern, words.end());
  auto const i = static_cast<int>(southern - words.begin());
  EXPECT_EQ(points[0].at(i), 0.0);
  EXPECT_GT(points[1].at(i), 0.0);
}

TEST_F(ClusterFiles, nothing_is_printed_unless_asked_for) {
  EXPECT_EQ(
      extract({directory.write("a.txt", "northern region"), directory / "missing.txt"}, false), "");
}

}  // namespace
