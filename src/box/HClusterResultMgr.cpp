#include "box/HClusterResultMgr.h"

#include <cstddef>
#include <iterator>

#include "box/internal/class_texts.h"
#include "box/internal/weight_order.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"

namespace {

using Clusters = std::vector<std::vector<int>>;

constexpr int kmeans_type = 0;
constexpr int dbscan_type = 1;

template <typename Element>
bool is_position(int index, std::vector<Element> const& list) {
  return index >= 0 && static_cast<std::size_t>(index) < list.size();
}

HPointN sum_of(std::vector<HString> const& words, std::vector<HPointN> const& points,
               std::vector<int> const& members) {
  HPointN sum;
  sum.resize(static_cast<long long>(words.size()));
  for (int const member : members) {
    if (is_position(member, points)) {
      sum += points[static_cast<std::size_t>(member)];
    }
  }
  return sum;
}

// How often each point will be asked for.
std::vector<std::size_t> count_uses(Clusters const& clusters, std::vector<HPointN> const& points) {
  std::vector<std::size_t> uses(points.size());
  for (std::vector<int> const& members : clusters) {
    for (int const member : members) {
      if (is_position(member, points)) {
        ++uses[static_cast<std::size_t>(member)];
      }
    }
  }
  return uses;
}

// Gives class k the files of list k. The points' coordinates go into the files: a corpus of them is
// large, so the last file to ask for a point gets the original.
template <typename Class>
void hand_out_files(std::vector<HFeatureNode> const& features, Clusters const& clusters,
                    std::vector<HPointN> points, std::vector<Class>& classes) {
  std::vector<std::size_t> uses = count_uses(clusters, points);
  for (std::size_t k = 0; k < clusters.size(); ++k) {
    for (int const member : clusters[k]) {
      if (!is_position(member, points)) {
        continue;
      }
      auto const i = static_cast<std::size_t>(member);
      HClusterResultFeatureNode& file = classes[k].vt_file_node.emplace_back();
      file.str_file_id = features[i].str_file_id;
      file.str_file_name = features[i].str_file_name;
      if (--uses[i] == 0) {
        file.vt_data = std::move(points[i].vt_data);
      } else {
        points[i].get_vt_data(file.vt_data);
      }
    }
  }
}

// The part that all methods have in common; `complete(class, points, members)` adds the rest to
// each class.
template <typename Class, typename Complete>
bool append_classes(std::vector<HFeatureNode> const& features, Clusters const& clusters,
                    int cluster_type, HClusterResultNode& result, std::vector<Class>& classes,
                    Complete complete) {
  result.n_file_count = static_cast<std::int64_t>(features.size());
  result.i_cluster_type = cluster_type;
  std::vector<HPointN> points;
  HClusterFileData::format_data(features, result.vt_words, points, false);
  if (points.size() != features.size()) {
    return false;
  }
  std::vector<Class> made(clusters.size());
  for (std::size_t k = 0; k < made.size(); ++k) {
    HClusterResultMgr::get_cluster_base_result(&made[k], static_cast<int>(k), result.vt_words,
                                               points, clusters[k]);
    complete(made[k], points, clusters[k]);
  }
  hand_out_files(features, clusters, std::move(points), made);
  classes.insert(classes.end(), std::make_move_iterator(made.begin()),
                 std::make_move_iterator(made.end()));
  return true;
}

}  // namespace

HClusterResultMgr::HClusterResultMgr() = default;
HClusterResultMgr::~HClusterResultMgr() = default;

bool HClusterResultMgr::compare_word(std::pair<HString, double> const& a,
                                     std::pair<HString, double> const& b) {
  return !(a.second < b.second);
}

void HClusterResultMgr::sort_word_by_weight(std::vector<HString> const& vt_words,
                                            std::vector<HPointN> const& vt_point,
                                            std::vector<int> const& vt_member,
                                            std::vector<std::pair<HString, double>>& vt_sorted) {
  HPointN mean = sum_of(vt_words, vt_point, vt_member);
  mean /= static_cast<unsigned long>(vt_member.size());
  for (std::size_t i = 0; i < mean.vt_data.size(); ++i) {
    vt_sorted.emplace_back(vt_words[i], mean.vt_data[i]);
  }
  std::vector<double> weights;
  weights.reserve(vt_sorted.size());
  for (auto const& [word, weight] : vt_sorted) {
    weights.push_back(weight);
  }
  std::vector<std::pair<HString, double>> sorted;
  sorted.reserve(vt_sorted.size());
  for (std::size_t const i : morva::order_by_weight(weights)) {
    sorted.push_back(std::move(vt_sorted[i]));
  }
  vt_sorted = std::move(sorted);
}

HString HClusterResultMgr::get_class_desc(std::vector<HString> const& vt_words,
                                          std::vector<HPointN> const& vt_point,
                                          std::vector<int> const& vt_member) {
  return morva::ClassTexts(vt_words, sum_of(vt_words, vt_point, vt_member), vt_member.size())
      .description();
}

HString HClusterResultMgr::get_class_feature(std::vector<HString> const& vt_words,
                                             std::vector<HPointN> const& vt_point,
                                             std::vector<int> const& vt_member) {
  return morva::ClassTexts(vt_words, sum_of(vt_words, vt_point, vt_member), vt_member.size())
      .listing();
}

bool HClusterResultMgr::get_cluster_base_result(HClusterResultBase* node, int const& index,
                                                std::vector<HString>& vt_words,
                                                std::vector<HPointN> const& vt_point,
                                                std::vector<int> const& vt_member) {
  if (node == nullptr) {
    return false;
  }
  morva::fill_texts(*node, index, vt_words, sum_of(vt_words, vt_point, vt_member),
                    vt_member.size());
  return true;
}

bool HClusterResultMgr::get_kmeans_cluster_result_node(std::vector<HFeatureNode> const& vt_feature,
                                                       Clusters const& vt_cluster,
                                                       HClusterResultNode& result) {
  auto const complete = [](HClusterResultKMeansNode& node, std::vector<HPointN> const& points,
                           std::vector<int> const& members) {
    node.vt_center = HClusterCenter::get_center_point(points, members).vt_data;
    node.d_radius = HClusterDistance::get_max_radius(points, members);
  };
  return append_classes(vt_feature, vt_cluster, kmeans_type, result, result.vt_kmeans_node,
                        complete);
}

bool HClusterResultMgr::get_dbscan_cluster_result_node(std::vector<HFeatureNode> const& vt_feature,
                                                       Clusters const& vt_cluster,
                                                       double const& eps, int const& minpts,
                                                       HClusterResultNode& result) {
  auto const complete = [eps, minpts](HClusterResultDBScanNode& node,
                                      std::vector<HPointN> const& /*points*/,
                                      std::vector<int> const& /*members*/) {
    node.d_eps = eps;
    node.i_minpts = minpts;
  };
  return append_classes(vt_feature, vt_cluster, dbscan_type, result, result.vt_dbscan_node,
                        complete);
}
