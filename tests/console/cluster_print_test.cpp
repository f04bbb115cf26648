#include <filesystem>
#include <limits>

#include <gtest/gtest.h>

#include "console/HClusterTest.h"

#include "support/temporary_directory.h"

namespace {

using Values = std::vector<double>;
using Files = std::vector<HString>;
using Points = std::vector<HPointN>;
using Clusters = std::vector<std::vector<int>>;

class ClusterPrint : public testing::Test {
 protected:
  std::string print(Clusters const& clusters, HString const& str_dir) {
    testing::internal::CaptureStdout();
    HClusterTest::cluster_print(files, clusters, str_dir);
    return testing::internal::GetCapturedStdout();
  }
  std::string print(Points const& points, Clusters const& clusters, HString const& str_dir) {
    testing::internal::CaptureStdout();
    HClusterTest::cluster_print(files, points, clusters, str_dir);
    return testing::internal::GetCapturedStdout();
  }
  HString path() const { return directory.path().c_str(); }

  test::TemporaryDirectory directory;
  Files files{L"a.txt", L"文档.txt", L"c.txt"};
  Points three_points{HPointN(Values{0}), HPointN(Values{1}), HPointN(Values{10})};
};

TEST_F(ClusterPrint, shows_number_size_and_names_of_each_class) {
  EXPECT_EQ(print({{2, 0}, {1}}, HString()),
            "==========================Cluster Print==========================\n"
            "==============Cluster: 0==============\n"
            "count: 2\n"
            "c.txt\n"
            "a.txt\n"
            "\n\n"
            "==============Cluster: 1==============\n"
            "count: 1\n"
            "文档.txt\n"
            "\n\n"
            "\n\n\n\n");
}

TEST_F(ClusterPrint, without_classes_the_frame_remains) {
  EXPECT_EQ(print(Clusters(), HString()),
            "==========================Cluster Print==========================\n\n\n\n\n");
}

TEST_F(ClusterPrint, an_empty_class_has_no_names) {
  EXPECT_EQ(print({{}}, HString()),
            "==========================Cluster Print==========================\n"
            "==============Cluster: 0==============\n"
            "count: 0\n"
            "\n\n"
            "\n\n\n\n");
}

TEST_F(ClusterPrint, points_show_the_radius_before_the_names) {
  EXPECT_EQ(print(three_points, {{0, 1}}, HString()),
            "==========================Cluster Print==========================\n"
            "==============Cluster: 0==============\n"
            "count: 2\n"
            "radio: 0.5\n"
            "a.txt\n"
            "文档.txt\n"
            "\n\n"
            "\n\n\n\n");
}

TEST_F(ClusterPrint, members_without_a_name_are_passed_over) {
  EXPECT_EQ(print({{-1, 0, 3, std::numeric_limits<int>::max()}}, path()),
            "==========================Cluster Print==========================\n"
            "==============Cluster: 0==============\n"
            "count: 4\n"
            "a.txt\n"
            "\n\n"
            "\n\n\n\n");
  EXPECT_EQ(directory.read("0"), "a.txt\n");
}

TEST_F(ClusterPrint, writes_a_list_file_for_each_class) {
  print({{2, 0}, {1}}, path());
  EXPECT_EQ(directory.read("0"), "c.txt\na.txt\n");
  EXPECT_EQ(directory.read("1"), "文档.txt\n");
}

TEST_F(ClusterPrint, a_separator_behind_the_directory_makes_no_difference) {
  print({{0}}, path() + L"/");
  EXPECT_EQ(directory.read("0"), "a.txt\n");
}

TEST_F(ClusterPrint, list_files_tell_the_radius_of_points) {
  print(three_points, {{0, 1}, {2}}, path());
  EXPECT_EQ(directory.read("0"), "radio: 0.5\na.txt\n文档.txt\n");
  EXPECT_EQ(directory.read("1"), "radio: 0\nc.txt\n");
}

TEST_F(ClusterPrint, list_files_are_appended_to) {
  print({{0}}, path());
  print(three_points, {{1}}, path());
  EXPECT_EQ(directory.read("0"), "a.txt\nradio: 0\n文档.txt\n");
}

TEST_F(ClusterPrint, a_class_without_lines_makes_no_list_file) {
  print({{}, {0}}, path());
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "0"));
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "1"));
}

TEST_F(ClusterPrint, writes_nothing_to_a_directory_that_does_not_exist) {
  print({{0}}, directory / "missing");
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST_F(ClusterPrint, writes_nothing_without_a_directory) {
  std::filesystem::path const old = std::filesystem::current_path();
  std::filesystem::current_path(directory.path());
  print({{0}}, HString());
  std::filesystem::current_path(old);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

}  // namespace
