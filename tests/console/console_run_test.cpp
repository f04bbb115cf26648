#include <filesystem>

#include <gtest/gtest.h>

#include "cluster/cluster_type.h"
#include "console/HClusterDirSnapCallback.h"
#include "console/HClusterFileExtractor.h"
#include "console/HClusterTest.h"
#include "console_session.h"

#include "support/temporary_directory.h"

namespace {

using Values = std::vector<double>;
using Files = std::vector<HString>;
using Points = std::vector<HPointN>;
using Clusters = std::vector<std::vector<int>>;
using test::console_session;

std::string const config_line =
    "==========================Cluster Config==========================\n";
std::string const begin_line =
    "==========================Cluster Begin==========================\n";
std::string const end_line = "==========================Cluster End==========================\n";
std::string const print_line =
    "==========================Cluster Print==========================\n";
std::string const canopy_question = "Do you want to use canopy? (Y/N)";

class ConsoleRun : public testing::Test {
 protected:
  ~ConsoleRun() override { gi_K_ClusterType = old_type; }

  std::string config(std::string const& typed) {
    return console_session(typed, [this] { HClusterTest::cluster_config(files); });
  }
  std::string kmeans(std::string const& typed, int type = 0) {
    return console_session(typed,
                           [this, type] { HClusterTest::test_kmeans(points, clusters, type); });
  }
  std::string path(char const* name = "") const { return directory.path() / name; }
  // Two documents of one kind and one of another, in a folder and its subfolder.
  void write_documents() {
    std::filesystem::create_directories(directory.path() / "in" / "sub");
    directory.write("in/a.txt", "apple orchard apple");
    directory.write("in/b.txt", "apple orchard apple");
    directory.write("in/sub/c.txt", "granite quarry granite");
  }

  int old_type = gi_K_ClusterType;
  test::TemporaryDirectory directory;
  Files files{L"old"};
  Points points{HPointN(Values{0}), HPointN(Values{1}), HPointN(Values{10}), HPointN(Values{11})};
  Clusters clusters;
};

TEST_F(ConsoleRun, gathers_the_files_of_a_directory_and_its_subdirectories) {
  write_documents();
  EXPECT_EQ(config(path("in") + "\n"), config_line + "cluster dirFile: 3\n");
  EXPECT_EQ(files,
            (Files{directory / "in/a.txt", directory / "in/b.txt", directory / "in/sub/c.txt"}));
}

TEST_F(ConsoleRun, takes_quotes_off_the_directory) {
  write_documents();
  for (std::string const& typed : {'"' + path("in") + '"', '"' + path("in"), path("in") + '"'}) {
    EXPECT_EQ(config(typed + "\n"), config_line + "cluster dirFile: 3\n") << typed;
  }
}

TEST_F(ConsoleRun, takes_one_quote_off_each_side) {
  std::string const quoted = "\"\"" + path("x") + "\"\"";
  EXPECT_EQ(config(quoted + "\n"),
            config_line + "cluster dirError: not exist dir, \"" + path("x") + "\"\nFile: 0\n");
}

TEST_F(ConsoleRun, a_lone_quote_is_an_empty_directory) {
  EXPECT_EQ(config("\"\n"), config_line + "cluster dirError: not exist dir, \nFile: 0\n");
}

TEST_F(ConsoleRun, tells_of_a_directory_that_does_not_exist) {
  EXPECT_EQ(config(path("missing") + "\n"),
            config_line + "cluster dirError: not exist dir, " + path("missing") + "\nFile: 0\n");
  EXPECT_TRUE(files.empty());
}

TEST_F(ConsoleRun, canopy_asks_for_both_radii) {
  std::string const shown =
      console_session("30\n2.5\n", [this] { HClusterTest::test_canopy(points, clusters); });
  EXPECT_EQ(shown, "Tips: T1 must be greater than T2.\nset T1set T2" + begin_line +
                       "T1: 30,  T2: 2.5\n" + end_line);
  EXPECT_EQ(clusters, (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(ConsoleRun, canopy_does_not_check_its_tip) {
  std::string const shown =
      console_session("1\n2\n", [this] { HClusterTest::test_canopy(points, clusters); });
  EXPECT_NE(shown.find("T1: 1,  T2: 2\n" + end_line), std::string::npos);
  EXPECT_TRUE(clusters.empty());
}

TEST_F(ConsoleRun, kmeans_asks_for_the_number_and_for_canopy_seeds) {
  EXPECT_EQ(kmeans("2\nN\n"),
            "set K" + canopy_question + begin_line + "K: 2\nCanopy: N\n" + end_line);
  EXPECT_EQ(clusters, (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(ConsoleRun, kmeans_shows_the_answer_for_canopy_seeds) {
  EXPECT_EQ(kmeans("2\nY\n"),
            "set K" + canopy_question + begin_line + "K: 2\nCanopy: Y\n" + end_line);
  EXPECT_EQ(clusters, (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(ConsoleRun, other_answers_repeat_the_question) {
  EXPECT_EQ(kmeans("2\ny\n\nYes\n N\nN\n"),
            "set K" + canopy_question + canopy_question + canopy_question + canopy_question +
                canopy_question + begin_line + "K: 2\nCanopy: N\n" + end_line);
}

TEST_F(ConsoleRun, the_end_of_input_counts_as_no) {
  EXPECT_EQ(kmeans("2\n"), "set K" + canopy_question + begin_line + "K: 2\nCanopy: N\n" + end_line);
}

TEST_F(ConsoleRun, an_answer_at_the_end_of_input_counts) {
  EXPECT_EQ(kmeans("2\nY"),
            "set K" + canopy_question + begin_line + "K: 2\nCanopy: Y\n" + end_line);
}

TEST_F(ConsoleRun, a_wrong_answer_at_the_end_of_input_repeats_the_question_once) {
  EXPECT_EQ(kmeans("2\nmaybe"), "set K" + canopy_question + canopy_question + begin_line +
                                    "K: 2\nCanopy: N\n" + end_line);
}

TEST_F(ConsoleRun, an_input_that_cannot_be_read_counts_as_no) {
  test::StandardInput const input(std::fopen("/", "r"));
  testing::internal::CaptureStdout();
  HClusterTest::test_kmeans(points, clusters, 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "set K" + canopy_question + begin_line + "K: 0\nCanopy: N\n" + end_line);
}

TEST_F(ConsoleRun, an_answer_that_is_no_number_counts_as_zero) {
  EXPECT_EQ(kmeans("two\nN\n"),
            "set K" + canopy_question + begin_line + "K: 0\nCanopy: N\n" + end_line);
  EXPECT_TRUE(clusters.empty());
}

TEST_F(ConsoleRun, kmeans_over_points_sets_the_type) {
  kmeans("2\nN\n", 1);
  EXPECT_EQ(gi_K_ClusterType, 1);
  kmeans("2\nN\n", 0);
  EXPECT_EQ(gi_K_ClusterType, 0);
}

TEST_F(ConsoleRun, dbscan_asks_for_radius_and_count) {
  std::string const shown =
      console_session("1.5\n2\n", [this] { HClusterTest::test_dbscan(points, clusters); });
  EXPECT_EQ(shown, "set epsset minpts" + begin_line + "eps: 1.5, minpts: 2\n" + end_line);
  EXPECT_EQ(clusters, (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(ConsoleRun, dbscan_goes_by_distance) {
  // All have the same direction: by similarity they would be one class.
  points = {HPointN(Values{1, 1}), HPointN(Values{1, 1}), HPointN(Values{9, 9}),
            HPointN(Values{9, 9})};
  console_session("1.5\n2\n", [this] { HClusterTest::test_dbscan(points, clusters); });
  EXPECT_EQ(clusters, (Clusters{{0, 1}, {2, 3}}));
}

TEST_F(ConsoleRun, a_canopy_run_prints_the_classes_of_the_files) {
  write_documents();
  std::string const shown =
      console_session(path("in") + "\n30\n0.5\n", [] { HClusterTest::test_canopy(); });
  EXPECT_EQ(shown, config_line + "cluster dirFile: 3\n" + "Extract Feature: ...\n" +
                       "Tips: T1 must be greater than T2.\nset T1set T2" + begin_line +
                       "T1: 30,  T2: 0.5\n" + end_line + print_line +
                       "==============Cluster: 0==============\ncount: 2\n" + path("in/a.txt") +
                       "\n" + path("in/b.txt") + "\n\n\n" +
                       "==============Cluster: 1==============\ncount: 1\n" + path("in/sub/c.txt") +
                       "\n\n\n\n\n\n\n");
}

TEST_F(ConsoleRun, a_kmeans_run_asks_for_a_directory_and_writes_the_lists) {
  write_documents();
  std::filesystem::create_directory(directory.path() / "out");
  std::string const shown = console_session(path("in") + "\n" + path("out") + "\n2\nN\n",
                                            [] { HClusterTest::test_kmeans(0); });
  EXPECT_EQ(shown.substr(0, shown.find(print_line)),
            config_line + "cluster dirFile: 3\ninput outdir:\nExtract Feature: ...\nset K" +
                canopy_question + begin_line + "K: 2\nCanopy: N\n" + end_line);
  EXPECT_EQ(directory.read("out/0"), path("in/a.txt") + "\n" + path("in/b.txt") + "\n");
  EXPECT_EQ(directory.read("out/1"), path("in/sub/c.txt") + "\n");
}

TEST_F(ConsoleRun, a_kmeans_run_ends_up_with_means_whatever_the_type) {
  write_documents();
  console_session(path("in") + "\n\n2\nN\n", [] { HClusterTest::test_kmeans(1); });
  EXPECT_EQ(gi_K_ClusterType, 0);
}

TEST_F(ConsoleRun, a_dbscan_run_asks_for_a_directory_and_writes_the_lists) {
  write_documents();
  std::filesystem::create_directory(directory.path() / "out");
  std::string const shown = console_session(path("in") + "\n" + path("out") + "\n0.5\n2\n",
                                            [] { HClusterTest::test_dbscan(); });
  EXPECT_EQ(shown.substr(0, shown.find(print_line)),
            config_line + "cluster dirFile: 3\ninput outdir:\nExtract Feature: ...\n" +
                "set epsset minpts" + begin_line + "eps: 0.5, minpts: 2\n" + end_line);
  EXPECT_EQ(directory.read("out/0"), path("in/a.txt") + "\n" + path("in/b.txt") + "\n");
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "out" / "1"));
}

TEST_F(ConsoleRun, a_run_shows_no_radius) {
  write_documents();
  std::string const shown =
      console_session(path("in") + "\n\n2\nN\n", [] { HClusterTest::test_kmeans(0); });
  EXPECT_EQ(shown.find("radio"), std::string::npos);
}

TEST_F(ConsoleRun, a_run_over_no_files_goes_to_the_end) {
  std::string const shown =
      console_session(path("missing") + "\n1\n1\n", [] { HClusterTest::test_canopy(); });
  EXPECT_NE(shown.find("File: 0\nExtract Feature: \n"), std::string::npos);
  EXPECT_TRUE(shown.ends_with(end_line + print_line + "\n\n\n\n"));
}

TEST_F(ConsoleRun, a_run_without_any_input_ends) {
  std::string const shown = console_session("", [] { HClusterTest::test_kmeans(0); });
  EXPECT_TRUE(shown.ends_with("Canopy: N\n" + end_line + print_line + "\n\n\n\n"));
}

HDirSnapEntry entry(HString const& path, bool is_skipped = false) {
  HDirSnapEntry found;
  found.str_path = path;
  found.mb_skip = is_skipped;
  return found;
}

TEST_F(ConsoleRun, walk_callback_takes_regular_files_only) {
  HClusterDirSnapCallback callback;
  HString const file = directory.write("a.txt", "");
  EXPECT_EQ(callback.on_snap_file(entry(file)), 0);
  EXPECT_EQ(callback.on_snap_file(entry(path().c_str())), 0);
  EXPECT_EQ(callback.on_snap_file(entry(directory / "missing")), 0);
  EXPECT_EQ(callback.vt_files, (Files{file}));
}

TEST_F(ConsoleRun, walk_callback_passes_over_entries_marked_so) {
  HClusterDirSnapCallback callback;
  EXPECT_EQ(callback.on_snap_file(entry(directory.write("a.txt", ""), true)), 0);
  EXPECT_TRUE(callback.vt_files.empty());
}

TEST(FileExtractor, is_made_once) {
  HClusterFileExtractor* const extractor = HClusterFileExtractor::pins();
  ASSERT_NE(extractor, nullptr);
  EXPECT_EQ(HClusterFileExtractor::pins(), extractor);
  EXPECT_EQ(HClusterFileExtractor::pext, extractor);
}

TEST(FileExtractor, starts_the_segmenter) {
  EXPECT_TRUE(HClusterFileExtractor::pins()->init_jieba());
}

}  // namespace
