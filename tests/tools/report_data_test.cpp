#include "report/report_data.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/corpus_map.h"
#include "report/report_classes.h"
#include "report/report_match.h"
#include "report/report_page.h"

namespace {

using nlohmann::ordered_json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using tool::BoxMeasure;
using tool::ClassesReport;
using tool::CorpusMap;
using tool::MatchReport;
using tool::ReportRow;

// Rows in which some words are shared and others are not.
std::vector<ReportRow> some_rows(int count) {
  std::vector<ReportRow> rows;
  for (int i = 0; i < count; ++i) {
    std::vector<double> weights(20);
    for (std::size_t k = 0; k < weights.size(); ++k) {
      weights[k] = static_cast<double>((i * 7 + static_cast<int>(k) * (i % 3 + 1)) % 5) / 4.0;
    }
    rows.push_back(tool::row_of(weights));
  }
  return rows;
}

std::vector<std::uint64_t> bits_of(CorpusMap const& map, std::vector<ReportRow> const& rows) {
  std::vector<std::uint64_t> bits;
  for (ReportRow const& row : rows) {
    for (double const x : map.place_of(row)) {
      bits.push_back(std::bit_cast<std::uint64_t>(x));
    }
  }
  return bits;
}

TEST(CorpusMap, gives_the_same_bits_again) {
  std::vector<ReportRow> const rows = some_rows(30);
  EXPECT_EQ(bits_of(CorpusMap(rows, 20), rows), bits_of(CorpusMap(rows, 20), rows));
}

TEST(CorpusMap, never_draws_rows_farther_apart_than_they_are) {
  std::vector<ReportRow> const rows = some_rows(30);
  CorpusMap const map(rows, 20);
  for (ReportRow const& a : rows) {
    for (ReportRow const& b : rows) {
      auto const [x, y] = map.place_of(a);
      auto const [u, v] = map.place_of(b);
      EXPECT_LE(std::hypot(x - u, y - v), tool::distance_of(a, b) + 1e-9);
    }
  }
}

TEST(CorpusMap, draws_a_plane_as_it_is) {
  std::vector<ReportRow> const rows{tool::row_of({4, 0, 0}), tool::row_of({0, 0, 1}),
                                    tool::row_of({4, 0, 1}), tool::row_of({1, 0, 0})};
  CorpusMap const map(rows, 3);
  auto const [x, y] = map.place_of(rows[0]);
  auto const [u, v] = map.place_of(rows[1]);
  EXPECT_NEAR(std::hypot(x - u, y - v), std::sqrt(17.0), 1e-9);
  EXPECT_NEAR(map.shares()[0] + map.shares()[1], 1.0, 1e-9);
}

TEST(CorpusMap, the_first_of_the_farthest_lies_on_the_positive_side) {
  std::vector<ReportRow> const rows{tool::row_of({0, 0}), tool::row_of({3, 4})};
  CorpusMap const map(rows, 2);
  EXPECT_NEAR(map.place_of(rows[0])[0], 2.5, 1e-9);
  EXPECT_NEAR(map.place_of(rows[1])[0], -2.5, 1e-9);
}

TEST(CorpusMap, of_nothing_one_row_or_equal_rows_has_no_extent) {
  for (std::vector<ReportRow> const& rows :
       {std::vector<ReportRow>(), some_rows(1), std::vector<ReportRow>(9, some_rows(1)[0])}) {
    CorpusMap const map(rows, 20);
    EXPECT_THAT(map.shares(), ElementsAre(0.0, 0.0)) << rows.size();
    EXPECT_THAT(map.place_of(some_rows(1)[0]), ElementsAre(0.0, 0.0)) << rows.size();
  }
}

TEST(ReportRow, keeps_what_is_a_number_and_not_zero) {
  ReportRow const row = tool::row_of({0.0, 2.0, std::numeric_limits<double>::quiet_NaN(),
                                      std::numeric_limits<double>::infinity(), -1.0});
  EXPECT_THAT(row.indices, ElementsAre(1, 4));
  EXPECT_THAT(row.values, ElementsAre(2.0, -1.0));
}

TEST(ReportNumber, that_is_none_is_null) {
  EXPECT_TRUE(tool::report_number(std::numeric_limits<double>::quiet_NaN()).is_null());
  EXPECT_EQ(tool::report_number(0.1 + 0.2), 0.3);
}

TEST(ReportText, is_cut) {
  std::string const text = tool::report_text(std::string(1000, 'a'));
  EXPECT_EQ(text, std::string(tool::report_limits::characters, 'a') + "…");
}

TEST(ReportText, is_unicode_whatever_stood_there) {
  wchar_t const lone[] = {L'a', static_cast<wchar_t>(0xD800), L'b', 0};
  EXPECT_EQ(tool::report_text(HString(lone)),
            "a\xEF\xBF\xBD"
            "b");
}

TEST(ScriptText, holds_nothing_that_html_reads) {
  std::string const text =
      tool::script_text({{"</script><!--", "&lt; \xE2\x80\xA8 \xE2\x80\xAE \x01 合同"}});
  EXPECT_THAT(text, Not(testing::ContainsRegex("[<>&]")));
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; }));
}

TEST(ScriptText, is_the_same_data) {
  ordered_json const data = {{"</script>", "&合同\xE2\x80\xA8"}};
  EXPECT_EQ(ordered_json::parse(tool::script_text(data)), data);
}

TEST(Template, takes_the_data_once) {
  EXPECT_EQ(tool::fill_template("a@REPORT_DATA@b", {{"@REPORT_DATA@", 1}}),
            "a{\"@REPORT_DATA@\":1}b");
  EXPECT_THAT(tool::fill_template("", {}), IsEmpty());
}

ClassesReport report_of(int files, int classes) {
  ClassesReport report;
  report.kind = "learn";
  report.words = {L"harbour", L"合同"};
  for (int i = 0; i < classes; ++i) {
    ClassesReport::Class& one = report.classes.emplace_back();
    one.center = tool::row_of({1.0, 2.0});
    one.radius = 1.0;
  }
  for (int i = 0; i < files; ++i) {
    report.files.push_back({L"a.txt", tool::row_of({1.0, static_cast<double>(i)})});
  }
  return report;
}

TEST(ClassesReport, of_nothing_is_empty) {
  ordered_json const data = report_of(0, 0).as_json();
  EXPECT_TRUE(data["files"].empty());
  EXPECT_TRUE(data["classes"].empty());
  EXPECT_TRUE(data["distances"].empty());
}

TEST(ClassesReport, of_one_file_has_it) {
  ClassesReport report = report_of(1, 1);
  report.classes[0].members = {0};
  EXPECT_EQ(report.as_json()["files"], (ordered_json::parse(R"([["a.txt",0,2.0,0.0,0.0]])")));
}

TEST(ClassesReport, a_file_in_no_class_has_none) {
  ordered_json const data = report_of(2, 0).as_json();
  EXPECT_EQ(data["counts"]["unclassified"], 2);
  EXPECT_EQ(data["files"][1][1], -1);
  EXPECT_TRUE(data["files"][1][2].is_null());
}

TEST(ClassesReport, the_heaviest_words_stand_first) {
  EXPECT_EQ(report_of(0, 1).as_json()["classes"][0]["words"],
            ordered_json::parse(R"([["合同",2.0],["harbour",1.0]])"));
}

TEST(ClassesReport, lists_so_much_and_counts_all) {
  ordered_json const data = report_of(20'001, 201).as_json();
  EXPECT_EQ(data["files"].size(), tool::report_limits::files);
  EXPECT_EQ(data["classes"].size(), tool::report_limits::classes);
  EXPECT_EQ(data["distances"].size(), tool::report_limits::classes_of_distances);
  EXPECT_EQ(data["counts"]["files"], 20'001);
  EXPECT_EQ(data["counts"]["classes"], 201);
  auto const on_map = std::count_if(data["files"].begin(), data["files"].end(),
                                    [](ordered_json const& file) { return file.size() == 5; });
  EXPECT_LE(static_cast<std::size_t>(on_map), tool::report_limits::points_on_map);
}

TEST(ClassesReport, a_curve_keeps_its_ends) {
  ClassesReport report = report_of(0, 0);
  report.curve = ClassesReport::Curve{1.0, 4, std::vector<double>(9999, 1.0)};
  report.curve->distances.back() = 2.0;
  ordered_json const curve = report.as_json()["curve"];
  EXPECT_EQ(curve["values"].size(), tool::report_limits::values_of_curve);
  EXPECT_EQ(curve["values"].front(), (ordered_json{1, 1.0}));
  EXPECT_EQ(curve["values"].back(), (ordered_json{9999, 2.0}));
}

TEST(BoxReport, leaves_out_files_whose_weights_do_not_go_with_the_words) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  box.vt_words = {L"a", L"b"};
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].vt_file_node.resize(2);
  box.vt_dbscan_node[0].vt_file_node[0].vt_weight = {1.0};
  box.vt_dbscan_node[0].vt_file_node[1].vt_weight = {1.0, 0.0};
  EXPECT_EQ(tool::report_of_box({}, box).files.size(), 1U);
}

// Two classes about one word each.
QXPPolicyMorvaClustBox box_of_centers() {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {L"harbour", L"kitchen", L"ship"};
  box.vt_kmeans_node.resize(2);
  box.vt_kmeans_node[0].str_class_id = L"h";
  box.vt_kmeans_node[0].d_radius = 0.5;
  box.vt_kmeans_node[0].vt_weight = {1.0, 0.0, 0.5};
  box.vt_kmeans_node[1].str_class_id = L"k";
  box.vt_kmeans_node[1].d_radius = 9.0;
  box.vt_kmeans_node[1].vt_weight = {0.0, 1.0, 0.0};
  return box;
}

HFeatureNode document() {
  HFeatureNode node;
  node.map_word_weight = {{L"harbour", 1.0}, {L"crane", 2.0}};
  return node;
}

TEST(BoxMeasure, tells_by_how_much_a_class_is_missed) {
  QXPPolicyMorvaClustBox const box = box_of_centers();
  auto const measures = BoxMeasure(box).measure(document());
  EXPECT_NEAR(measures[0].distance, std::sqrt(4.25), 1e-12);
  EXPECT_NEAR(measures[0].excess, std::sqrt(4.25) - 0.5, 1e-12);
}

TEST(BoxMeasure, a_center_whose_weights_do_not_go_with_the_words_is_out_of_reach) {
  QXPPolicyMorvaClustBox box = box_of_centers();
  box.vt_kmeans_node[0].vt_weight.resize(2'000'000, 1.0);
  BoxMeasure const measure(box);
  auto const measures = measure.measure(document());
  EXPECT_TRUE(std::isinf(measures[0].distance));
  EXPECT_THAT(measure.compare(document(), measures[0]).class_only, IsEmpty());
  EXPECT_TRUE(std::isfinite(measures[1].distance));
}

TEST(BoxMeasure, weights_too_large_to_be_squared_are_out_of_reach) {
  QXPPolicyMorvaClustBox box = box_of_centers();
  box.vt_kmeans_node[0].vt_weight[0] = 1e308;
  HFeatureNode heavy = document();
  heavy.map_word_weight[L"harbour"] = 1e308;
  auto const measures = BoxMeasure(box).measure(heavy);
  EXPECT_TRUE(std::isinf(measures[0].distance) && measures[0].distance > 0.0);
  EXPECT_FALSE(std::isnan(measures[0].excess));
}

TEST(BoxMeasure, tells_words_of_both_from_words_of_one) {
  QXPPolicyMorvaClustBox const box = box_of_centers();
  BoxMeasure const measure(box);
  auto const words = measure.compare(document(), measure.measure(document())[0]);
  ASSERT_EQ(words.shared.size(), 1U);
  EXPECT_EQ(words.shared[0].word, HString(L"harbour"));
  EXPECT_THAT(words.document_only, ElementsAre(std::pair(HString(L"crane"), 2.0)));
  EXPECT_THAT(words.class_only, ElementsAre(std::pair(HString(L"ship"), 0.5)));
  EXPECT_EQ(words.shared_square + words.document_square + words.class_square, 4.25);
}

TEST(BoxMeasure, tells_how_far_a_document_must_reach_for_enough_files) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  box.vt_words = {L"harbour"};
  QXPDBScanNode& node = box.vt_dbscan_node.emplace_back();
  node.d_eps = 1.5;
  node.i_minpts = 2;
  for (double const weight : {2.0, 4.0, 9.0}) {
    node.vt_file_node.emplace_back().vt_weight = {weight};
  }
  HFeatureNode one;
  one.map_word_weight = {{L"harbour", 1.0}};
  auto const measures = BoxMeasure(box).measure(one);
  EXPECT_EQ(measures[0].neighbours, 1U);
  EXPECT_EQ(measures[0].nearest_distance, 1.0);
  EXPECT_EQ(measures[0].distance, 3.0);
}

TEST(MatchReport, tells_which_class_is_nearer_than_one_that_would_reach_as_far) {
  QXPPolicyMorvaClustBox const box = box_of_centers();
  MatchReport report({{L"box", {L"h", L"k"}, &box}});
  report.add(L"a.txt", document(), std::nullopt);
  ordered_json const file = report.as_json()["files"][0];
  EXPECT_EQ(file["decision"], "refused");
  EXPECT_EQ(file["classes"][0]["class"], 0);
  EXPECT_FALSE(file["classes"][0].contains("nearer"));
  EXPECT_EQ(file["classes"][1]["nearer"], 0);
}

TEST(MatchReport, the_class_that_took_a_file_stands_first) {
  QXPPolicyMorvaClustBox const box = box_of_centers();
  MatchReport report({{L"box", {L"h", L"k"}, &box}});
  tool::Decision decision;
  decision.box_id = L"box";
  decision.class_id = L"k";
  report.add(L"a.txt", document(), decision);
  ordered_json const data = report.as_json();
  EXPECT_EQ(data["files"][0]["classes"][0]["class"], 0);
  EXPECT_EQ(data["classes"][0]["id"], "k");
}

TEST(MatchReport, lists_only_classes_that_a_file_names_and_counts_all) {
  QXPPolicyMorvaClustBox box = box_of_centers();
  QXPKMeansNode const far = box.vt_kmeans_node[1];
  std::vector<HString> ids;
  for (int i = 0; i < 3000; ++i) {
    QXPKMeansNode& node = box.vt_kmeans_node.emplace_back(far);
    node.str_class_id = HString(i, false);
    node.str_class_name = HString(std::wstring(2000, L'合').c_str());
    ids.push_back(node.str_class_id);
  }
  MatchReport report({{L"box", ids, &box}});
  report.add(L"a.txt", document(), std::nullopt);
  ordered_json const data = report.as_json();
  EXPECT_EQ(data["counts"]["classes"], 3000);
  // The nearest class was not asked.
  EXPECT_EQ(data["classes"].size(), tool::report_limits::nearest_classes + 1);
  EXPECT_EQ(data["classes"][data["files"][0]["classes"][0]["nearer"].get<std::size_t>()]["id"],
            "h");
}

TEST(MatchReport, is_bounded_by_what_it_takes_in_the_page) {
  MatchReport report({});
  HString const text(std::wstring(300, L'<').c_str());
  for (int i = 0; i < 6000; ++i) {
    report.add_failure(text, std::string(300, '&'));
  }
  ordered_json const data = report.as_json();
  EXPECT_LT(tool::script_text(data).size(), tool::report_limits::bytes_of_files + 10'000);
  EXPECT_EQ(data["counts"]["failed"], 6000);
}

TEST(ClassesReport, failures_are_bounded_by_what_they_take_in_the_page) {
  ClassesReport report = report_of(0, 0);
  report.failed.assign(1000, {HString(std::wstring(300, L'<').c_str()), "damaged"});
  EXPECT_LT(tool::script_text(report.as_json()["failed"]).size(),
            tool::report_limits::bytes_of_failures + 10'000);
}

// Boxes of either kind in which every list may be too short, too long or full of extremes.
class DamagedBoxes {
 public:
  QXPPolicyMorvaClustBox next() {
    QXPPolicyMorvaClustBox box;
    box.i_cluster_type = up_to(1);
    for (int i = up_to(3); i > 0; --i) {
      box.vt_words.push_back(up_to(1) == 0 ? HString(L"harbour") : HString(i, false));
    }
    for (int i = up_to(3); i > 0; --i) {
      QXPKMeansNode& center = box.vt_kmeans_node.emplace_back();
      center.str_class_id = HString(up_to(2), false);
      center.d_radius = number();
      center.str_dna = up_to(5) == 0 ? L"no fingerprint" : L"";
      center.vt_weight = weights(box.vt_words.size());
      QXPDBScanNode& files = box.vt_dbscan_node.emplace_back();
      files.str_class_id = center.str_class_id;
      files.d_eps = number();
      files.i_minpts = up_to(1) == 0 ? up_to(4) - 1 : std::numeric_limits<int>::max();
      for (int k = up_to(4); k > 0; --k) {
        files.vt_file_node.emplace_back().vt_weight = weights(box.vt_words.size());
      }
    }
    return box;
  }

 private:
  int up_to(int most) { return std::uniform_int_distribution(0, most)(random_); }
  double number() {
    constexpr std::array numbers{0.0,
                                 -1.0,
                                 0.5,
                                 1e308,
                                 -1e308,
                                 std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()};
    return numbers[static_cast<std::size_t>(up_to(static_cast<int>(numbers.size()) - 1))];
  }
  std::vector<double> weights(std::size_t whole) {
    std::vector<double> list(up_to(2) > 0 ? whole : static_cast<std::size_t>(up_to(3000)));
    std::generate(list.begin(), list.end(), [this] { return number(); });
    return list;
  }

  std::mt19937 random_{8};
};

TEST(MatchReport, of_damaged_boxes_names_only_classes_and_words_that_it_lists) {
  DamagedBoxes boxes;
  HFeatureNode heavy = document();
  heavy.map_word_weight[L"1"] = 1e308;
  for (int i = 0; i < 300; ++i) {
    QXPPolicyMorvaClustBox const box = boxes.next();
    MatchReport report({{L"box", {L"0", L"1"}, &box}});
    report.add(L"a.txt", document(), std::nullopt);
    report.add(L"b.txt", heavy, std::nullopt);
    ordered_json const data = report.as_json();
    for (ordered_json const& file : data["files"]) {
      for (ordered_json const& lies : file["classes"]) {
        EXPECT_LT(lies["class"], data["classes"].size());
        EXPECT_LT(lies.value("nearer", 0U), data["classes"].size());
      }
    }
    EXPECT_LE(data["words"].size(), box.vt_words.size() + heavy.map_word_weight.size());
    EXPECT_EQ(tool::report_of_box({}, box).as_json()["kind"], "box");
  }
}

TEST(MatchReport, counts_and_tells_what_failed) {
  QXPPolicyMorvaClustBox const box = box_of_centers();
  MatchReport report({{L"box", {L"h"}, &box}});
  report.add_failure(L"a.txt", "damaged");
  EXPECT_EQ(report.as_json()["counts"]["failed"], 1);
  EXPECT_EQ(report.as_json()["files"][0]["reason"], "damaged");
}

}  // namespace
