#pragma once

#include <vector>

#include "host/HString.h"
#include "host/export.h"
#include "numeric/HPointN.h"

/// The interactive clustering tool: asks on the console for a directory and the parameters of a
/// method, clusters the files of the directory and its subdirectories, prints the classes and can
/// write one list file for each. For one thread at a time; every question waits for the console.
///
/// An answer that is no number counts as 0. Members of a class are told by position in the file
/// list, but come from the points, which leave out files without features: behind such a file, the
/// names printed are those of the files before the right ones.
class MORVA_EXPORT HClusterTest {
 public:
  HClusterTest();
  ~HClusterTest();

  /// Asks for the directory, with or without quotes around it, and replaces `vt_file` by the files
  /// in it. A directory that does not exist is told of and gives what the walk of it gives.
  static void cluster_config(std::vector<HString>& vt_file);

  /// A whole run: asks for directory and parameters, clusters by canopies, prints the classes.
  static void test_canopy();
  /// The same by K-means, always with arithmetic means: `type` shows in `gi_K_ClusterType` only
  /// until the method starts. Asks for a folder for the lists too, as does the next.
  static void test_kmeans(int type);
  /// The same by DBSCAN.
  static void test_dbscan();

  /// Extracts the features of the files, shows the progress, and goes on with the points.
  static void test_canopy(std::vector<HString> const& vt_file,
                          std::vector<std::vector<int>>& vt_cluster);
  /// The same by K-means, with arithmetic means.
  static void test_kmeans(std::vector<HString> const& vt_file,
                          std::vector<std::vector<int>>& vt_cluster);
  /// The same by DBSCAN.
  static void test_dbscan(std::vector<HString> const& vt_file,
                          std::vector<std::vector<int>>& vt_cluster);

  /// Asks for T1 and T2, and replaces `vt_cluster` by the clusters of `HClusterMgr::canopy`.
  static void test_canopy(std::vector<HPointN> const& vt_point,
                          std::vector<std::vector<int>>& vt_cluster);
  /// The same for K-means: stores `type` in `gi_K_ClusterType`, and asks for k and for canopy
  /// seeds. The latter is asked until the answer is "Y" or "N"; at the end of standard input, known
  /// by the end-of-file or error mark of `stdin` behind an empty answer, it counts as "N".
  static void test_kmeans(std::vector<HPointN> const& vt_point,
                          std::vector<std::vector<int>>& vt_cluster, int type);
  /// The same for DBSCAN: asks for eps and minpts.
  static void test_dbscan(std::vector<HPointN> const& vt_point,
                          std::vector<std::vector<int>>& vt_cluster);

  /// Prints the classes: number, size, and the names of the files. Where `str_dir` is a directory,
  /// the names are also appended to a file in it for each class, named by its number. A member
  /// outside `vt_file` has no name and is passed over.
  static void cluster_print(std::vector<HString> const& vt_file,
                            std::vector<std::vector<int>> const& vt_cluster, HString str_dir);
  /// The same with the radius of each class in front of the names, unless there are no points.
  static void cluster_print(std::vector<HString> const& vt_file,
                            std::vector<HPointN> const& vt_point,
                            std::vector<std::vector<int>> const& vt_cluster, HString str_dir);
};
