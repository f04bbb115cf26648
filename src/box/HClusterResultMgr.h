#pragma once

#include <utility>
#include <vector>

#include "box/HClusterResultBase.h"
#include "box/HClusterResultNode.h"
#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"
#include "numeric/HPointN.h"

/// Turns the member lists of a clustering run into readable class records: an identifier, a label,
/// the strongest words, a listing of the words with their weights, and the member files.
///
/// The weight of a word in a class is its coordinate in the sum of the members' points, over the
/// number of entries in the member list. A member that is not below the number of points, or
/// negative, adds nothing but counts; without members all weights are 0 and each sorted list made
/// of them logs the line of `HPointN::operator/=`, nothing else is logged. Words stand by
/// descending weight, equal ones in vocabulary order. A word whose weight is not a number keeps its
/// place, and no other word passes it. An empty vocabulary gives empty texts.
class MORVA_EXPORT HClusterResultMgr {
 public:
  HClusterResultMgr();
  ~HClusterResultMgr();

  /// True unless the weight of `a` is less than that of `b`.
  static bool compare_word(std::pair<HString, double> const& a,
                           std::pair<HString, double> const& b);
  /// Appends the words with their weights to `vt_sorted` and sorts all that it then holds.
  /// n log n in the number of entries.
  static void sort_word_by_weight(std::vector<HString> const& vt_words,
                                  std::vector<HPointN> const& vt_point,
                                  std::vector<int> const& vt_member,
                                  std::vector<std::pair<HString, double>>& vt_sorted);
  /// All words of weight 0.9 and more; where there is none, the ten heaviest. A blank behind each.
  static HString get_class_desc(std::vector<HString> const& vt_words,
                                std::vector<HPointN> const& vt_point,
                                std::vector<int> const& vt_member);
  /// The 100 heaviest words, each as a line "word(weight)" with a line feed behind it.
  static HString get_class_feature(std::vector<HString> const& vt_words,
                                   std::vector<HPointN> const& vt_point,
                                   std::vector<int> const& vt_member);
  /// Fills the four texts of the record, with a new identifier and `index` in the label. Both word
  /// texts come from one sort. False for a null `node`.
  static bool get_cluster_base_result(HClusterResultBase* node, int const& index,
                                      std::vector<HString>& vt_words,
                                      std::vector<HPointN> const& vt_point,
                                      std::vector<int> const& vt_member);
  /// Fills `result` from a K-means run over `vt_feature`: `vt_cluster` lists the members of each
  /// class by position in `vt_feature`. One class for each list, appended to the classes that
  /// `result` holds; a member outside `vt_feature` gives no file. The result is true. Takes the
  /// memory of the files' coordinates once, and that of a dense point for each class.
  static bool get_kmeans_cluster_result_node(std::vector<HFeatureNode> const& vt_feature,
                                             std::vector<std::vector<int>> const& vt_cluster,
                                             HClusterResultNode& result);
  /// The same from a DBSCAN run; points that are in no list appear nowhere.
  static bool get_dbscan_cluster_result_node(std::vector<HFeatureNode> const& vt_feature,
                                             std::vector<std::vector<int>> const& vt_cluster,
                                             double const& eps, int const& minpts,
                                             HClusterResultNode& result);
};
