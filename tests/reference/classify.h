#pragma once

#include <cstddef>
#include <set>
#include <vector>

#include "box/HFileClusterBoxMgr.h"
#include "cluster/cluster_type.h"
#include "dna/HFileDNA.h"
#include "features/HFeatureNode.h"
#include "host/HFileLog.h"
#include "host/HString.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "numeric/HPointN.h"

#include "reference/measures.h"

/// Classification in its plainest form: a feature record for each class or member, one vocabulary
/// of them all, a dense point for each, and a copy of the box.
namespace reference {

inline constexpr double match_tolerance = 0.000001;

inline void log_text(int level, wchar_t const* tag, HString const& text) {
  HStringForLog& record = HFileLog::ins()->get(level, tag, __LINE__);
  record << text;
  HFileLog::ins()->log(record);
}

inline HFeatureNode feature_record(HString const& name, std::vector<HString> const& words,
                                   std::vector<double> const& weights) {
  HFeatureNode record;
  record.str_file_name = name;
  record.vt_words = words;
  record.vt_weight = weights;
  for (std::size_t i = 0; i < words.size() && i < weights.size(); ++i) {
    record.map_word_weight[words[i]] = weights[i];
  }
  return record;
}

inline std::vector<HPointN> dense_points(std::vector<HFeatureNode> const& records, bool use_dna) {
  std::set<HString> words;
  for (HFeatureNode const& record : records) {
    words.insert(record.vt_words.begin(), record.vt_words.end());
  }
  std::vector<HPointN> points;
  for (HFeatureNode const& record : records) {
    if (use_dna) {
      points.push_back(HFileDNA::get_pointn(record.str_file_id, record.str_dna));
      continue;
    }
    std::vector<double> data;
    for (HString const& word : words) {
      auto const found = record.map_word_weight.find(word);
      data.push_back(found == record.map_word_weight.end() ? 0.0 : found->second);
    }
    points.emplace_back(data);
  }
  return points;
}

inline bool match_kmeans(HFeatureNode const& node, HString const& class_id,
                         QXPPolicyMorvaClustBox const& box, HString& out) {
  constexpr wchar_t const* tag = L"../HFileMatchClassifyKMeans";
  std::vector<HFeatureNode> records{node};
  double radius = 0.0;
  std::size_t target = 0;
  for (std::size_t i = 0; i < box.vt_kmeans_node.size(); ++i) {
    QXPKMeansNode const& each = box.vt_kmeans_node[i];
    if (i == 0) {
      gi_K_ClusterType = each.str_dna.empty() ? 0 : 1;
    }
    HFeatureNode record = feature_record(each.str_class_name, box.vt_words, each.vt_weight);
    record.str_dna = each.str_dna;
    if (record.vt_words.size() != record.vt_weight.size()) {
      log_text(1, tag,
               HString(L"classNode.vt_words.size() : ") + HString(record.vt_words.size()) +
                   L", classNode.vt_weight.size()" + HString(record.vt_weight.size()));
      return false;
    }
    records.push_back(record);
    if (each.str_class_id == class_id) {
      radius = each.d_radius;
      target = i + 1;
    }
  }
  if (target == 0) {
    log_text(3, tag, HString(L"not find : ") + class_id);
    return false;
  }
  bool const use_dna = records.size() > 2 && !records[1].str_dna.empty();
  std::vector<HPointN> const points = dense_points(records, use_dna);
  double best = no_distance;
  std::size_t best_position = 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    double const distance = HPointN::get_distance(points[0], points[i]);
    if (distance < best) {
      out = records[i].str_file_name;
      best = distance;
      best_position = i;
    }
  }
  if (best_position != target) {
    out.clear();
    return false;
  }
  log_text(4, tag, HString(L"radius : ") + HString(radius) + L",  distance : " + HString(best));
  if (radius + match_tolerance > best) {
    return true;
  }
  out.clear();
  return false;
}

inline bool match_dbscan(HFeatureNode const& node, HString const& class_id,
                         QXPPolicyMorvaClustBox const& box, HString& out) {
  constexpr wchar_t const* tag = L"../HFileMatchClassifyDBScan";
  log_text(3, tag, HString(L"dbscan node size : ") + HString(box.vt_dbscan_node.size()));
  QXPDBScanNode const* found = nullptr;
  for (QXPDBScanNode const& each : box.vt_dbscan_node) {
    if (each.str_class_id == class_id) {
      found = &each;
      break;
    }
  }
  if (found == nullptr || found->vt_file_node.empty()) {
    log_text(3, tag, HString(L"not find : ") + class_id);
    return false;
  }
  std::vector<HFeatureNode> records{node};
  for (QXPFeatureNode const& member : found->vt_file_node) {
    if (member.vt_weight.size() == box.vt_words.size()) {
      records.push_back(feature_record(found->str_class_name, box.vt_words, member.vt_weight));
    }
  }
  std::vector<HPointN> const points = dense_points(records, false);
  int neighbours = 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    double const distance = HPointN::get_distance(points[0], points[i]);
    if (distance < match_tolerance) {
      out = records[i].str_file_name;
      return true;
    }
    if (distance < found->d_eps + match_tolerance) {
      ++neighbours;
    }
    if (neighbours >= found->i_minpts) {
      out = records[i].str_file_name;
      return true;
    }
  }
  return false;
}

/// These classes in this box, out of the boxes of that manager.
inline bool match(HFileClusterBoxMgr& boxes, HFeatureNode const& node,
                  std::vector<HString> const& class_ids, HString const& box_id, HString& out) {
  std::vector<HString> kept;
  for (HString const& class_id : class_ids) {
    if (boxes.is_in_box(class_id, box_id)) {
      kept.push_back(class_id);
    }
  }
  if (kept.empty()) {
    return false;
  }
  QXPPolicyMorvaClustBox box;
  boxes.get_box(box_id, box);
  if (box.i_cluster_type != 0 && box.i_cluster_type != 1) {
    return false;
  }
  std::set<HString> const words(box.vt_words.begin(), box.vt_words.end());
  bool shares_word = false;
  for (HString const& word : node.vt_words) {
    shares_word = shares_word || words.count(word) != 0;
  }
  if (!shares_word) {
    return false;
  }
  for (HString const& class_id : kept) {
    if (box.i_cluster_type == 0 ? match_kmeans(node, class_id, box, out)
                                : match_dbscan(node, class_id, box, out)) {
      return true;
    }
  }
  return false;
}

}  // namespace reference
