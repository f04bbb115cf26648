#include "console/HClusterTest.h"

#include <cstddef>
#include <cstdio>
#include <utility>

#include "cluster/HClusterMgr.h"
#include "cluster/cluster_type.h"
#include "console/HClusterDirSnapCallback.h"
#include "features/HClusterFileData.h"
#include "host/HDirSnap.h"
#include "host/HFile.h"
#include "host/HStdOutStream.h"
#include "numeric/HClusterDistance.h"

namespace {

using Clusters = std::vector<std::vector<int>>;

constexpr int means_type = 0;

template <typename... Pieces>
void print_line(Pieces const&... pieces) {
  HStdOutStream const& console = *HStdOutStream::ins();
  (console << ... << HString(pieces)) << L"\n";
}

HString ask(HString const& prompt) {
  HString answer;
  answer.input(prompt);
  return answer;
}

void print_begin() {
  print_line(L"==========================Cluster Begin==========================");
}

void print_end() {
  print_line(L"==========================Cluster End==========================");
}

HString ask_output_directory() {
  print_line(L"input outdir:");
  return ask(L"");
}

HString ask_yes_or_no(HString const& question) {
  for (;;) {
    HString answer = ask(question);
    if (answer.is_match_me(L"Y", false) || answer.is_match_me(L"N", false)) {
      return answer;
    }
    // An answer alone cannot tell the end of input from an empty line, which asks again.
    if (answer.empty() && (std::feof(stdin) != 0 || std::ferror(stdin) != 0)) {
      return L"N";
    }
  }
}

HString without_quotes(HString text) {
  HString const quote(L"\"");
  if (text.get_first(1) == quote) {
    text.cut_first(1);
  }
  if (text.get_last(1) == quote) {
    text.cut_last(1);
  }
  return text;
}

std::vector<HPointN> extract_points(std::vector<HString> const& files) {
  std::vector<HString> words;
  std::vector<HPointN> points;
  HClusterFileData::get_data_from_files(files, words, points, true);
  return points;
}

// Radius and names of a class, as console and list file show them.
std::vector<HString> class_pieces(std::vector<HString> const& files,
                                  std::vector<HPointN> const& points,
                                  std::vector<int> const& members) {
  std::vector<HString> pieces;
  if (!points.empty()) {
    pieces.insert(pieces.end(),
                  {L"radio: ", HClusterDistance::get_max_radius(points, members), L"\n"});
  }
  for (int const member : members) {
    if (member >= 0 && static_cast<std::size_t>(member) < files.size()) {
      pieces.insert(pieces.end(), {files[static_cast<std::size_t>(member)], L"\n"});
    }
  }
  return pieces;
}

void append_list_file(HString const& path, std::vector<HString> const& pieces) {
  if (pieces.empty()) {
    return;
  }
  HString text;
  for (HString const& piece : pieces) {
    text << piece;
  }
  HFile::write_to_file(path, text, false, true);
}

}  // namespace

HClusterTest::HClusterTest() = default;
HClusterTest::~HClusterTest() = default;

void HClusterTest::cluster_config(std::vector<HString>& vt_file) {
  print_line(L"==========================Cluster Config==========================");
  HString const directory = without_quotes(ask(L"cluster dir"));
  if (!HFile::IsFileExistDir(directory)) {
    print_line(L"Error: not exist dir, ", directory);
  }
  HClusterDirSnapCallback callback;
  HDirSnap walk;
  walk.mb_recursive = true;
  walk.set_callback(&callback, true);
  walk.set_file(directory);
  walk.snap();
  vt_file = std::move(callback.vt_files);
  print_line(L"File: ", vt_file.size());
}

void HClusterTest::test_canopy() {
  std::vector<HString> files;
  Clusters clusters;
  cluster_config(files);
  test_canopy(files, clusters);
  cluster_print(files, clusters, HString());
}

void HClusterTest::test_kmeans(int type) {
  gi_K_ClusterType = type;
  std::vector<HString> files;
  Clusters clusters;
  cluster_config(files);
  HString const directory = ask_output_directory();
  test_kmeans(files, clusters);
  cluster_print(files, clusters, directory);
}

void HClusterTest::test_dbscan() {
  std::vector<HString> files;
  Clusters clusters;
  cluster_config(files);
  HString const directory = ask_output_directory();
  test_dbscan(files, clusters);
  cluster_print(files, clusters, directory);
}

void HClusterTest::test_canopy(std::vector<HString> const& vt_file, Clusters& vt_cluster) {
  test_canopy(extract_points(vt_file), vt_cluster);
}

void HClusterTest::test_kmeans(std::vector<HString> const& vt_file, Clusters& vt_cluster) {
  test_kmeans(extract_points(vt_file), vt_cluster, means_type);
}

void HClusterTest::test_dbscan(std::vector<HString> const& vt_file, Clusters& vt_cluster) {
  test_dbscan(extract_points(vt_file), vt_cluster);
}

void HClusterTest::test_canopy(std::vector<HPointN> const& vt_point, Clusters& vt_cluster) {
  print_line(L"Tips: T1 must be greater than T2.");
  double const t1 = ask(L"set T1").to_double();
  double const t2 = ask(L"set T2").to_double();
  print_begin();
  print_line(L"T1: ", t1, L",  T2: ", t2);
  HClusterMgr::pins()->canopy(vt_point, t1, t2, vt_cluster);
  print_end();
}

void HClusterTest::test_kmeans(std::vector<HPointN> const& vt_point, Clusters& vt_cluster,
                               int type) {
  int const k = ask(L"set K").to_int();
  HString const answer = ask_yes_or_no(L"Do you want to use canopy? (Y/N)");
  gi_K_ClusterType = type;
  print_begin();
  print_line(L"K: ", HString(k, false));
  print_line(L"Canopy: ", answer);
  HClusterMgr::pins()->kmeans(vt_point, k, vt_cluster, answer.is_match_me(L"Y", false));
  print_end();
}

void HClusterTest::test_dbscan(std::vector<HPointN> const& vt_point, Clusters& vt_cluster) {
  double const eps = ask(L"set eps").to_double();
  int const min_points = ask(L"set minpts").to_int();
  print_begin();
  print_line(L"eps: ", eps, L", minpts: ", HString(min_points, false));
  HClusterMgr::pins()->dbscan(vt_point, eps, min_points, false, vt_cluster);
  print_end();
}

void HClusterTest::cluster_print(std::vector<HString> const& vt_file, Clusters const& vt_cluster,
                                 HString str_dir) {
  cluster_print(vt_file, std::vector<HPointN>(), vt_cluster, std::move(str_dir));
}

void HClusterTest::cluster_print(std::vector<HString> const& vt_file,
                                 std::vector<HPointN> const& vt_point, Clusters const& vt_cluster,
                                 HString str_dir) {
  HStdOutStream const& console = *HStdOutStream::ins();
  std::vector<std::vector<HString>> pieces;
  print_line(L"==========================Cluster Print==========================");
  for (std::vector<int> const& members : vt_cluster) {
    print_line(L"==============Cluster: ", pieces.size(), L"==============");
    print_line(L"count: ", members.size());
    for (HString const& piece : pieces.emplace_back(class_pieces(vt_file, vt_point, members))) {
      console << piece;
    }
    console << L"\n" << L"\n";
  }
  console << L"\n" << L"\n" << L"\n" << L"\n";
  if (!HFile::IsFileExistDir(str_dir)) {
    return;
  }
  HString const prefix = str_dir.dir_fit(true);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    append_list_file(prefix + HString(i), pieces[i]);
  }
}
