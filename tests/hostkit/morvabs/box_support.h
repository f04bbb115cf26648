#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/QXPPolicyMorvaClustBox.h"

namespace test {

/// Writes records down so that two of them give one text only when they are the same bit for bit.
class BoxText {
 public:
  static std::string of(QXPPolicyMorvaClustBox const& box) {
    BoxText text;
    text.add(box.i_box_value);
    text.add(box.vt_words);
    text.add(box.vt_reserved);
    text.add(box.vt_kmeans_node);
    text.add(box.vt_dbscan_node);
    text.add(box.i_cluster_type);
    return text.text_;
  }

 private:
  void add(std::int64_t number) { text_ += std::to_string(number) + ";"; }
  void add(std::int32_t number) { add(std::int64_t{number}); }
  void add(double number) { text_ += std::to_string(std::bit_cast<std::uint64_t>(number)) + "b;"; }
  void add(HString const& text) {
    text_ += "'";
    for (wchar_t const c : text.get_ws()) {
      add(static_cast<std::int64_t>(static_cast<std::uint32_t>(c)));
    }
    text_ += "'";
  }
  void add(QXPFeatureNode const& node) {
    add(node.str_file_id);
    add(node.vt_weight);
  }
  void add(QXPKMeansNode const& node) {
    add(node.str_class_id);
    add(node.str_class_name);
    add(node.d_radius);
    add(node.vt_words);
    add(node.vt_weight);
    add(node.str_dna);
    add(node.i_reserve);
  }
  void add(QXPDBScanNode const& node) {
    add(node.str_class_id);
    add(node.str_class_name);
    add(node.d_eps);
    add(node.i_minpts);
    add(node.vt_file_node);
  }
  template <typename T>
  void add(std::vector<T> const& list) {
    text_ += "[";
    for (T const& element : list) {
      add(element);
    }
    text_ += "]";
  }

  std::string text_;
};

/// A box with a value of its own in every field.
inline QXPPolicyMorvaClustBox full_box() {
  QXPPolicyMorvaClustBox box;
  box.i_box_value = -7;
  box.vt_words = {L"word", L"", L"中文词", L"last"};
  box.vt_reserved = {1, -2, std::numeric_limits<std::int32_t>::min()};
  box.vt_kmeans_node.resize(2);
  box.vt_kmeans_node[0].str_class_id = L"k1";
  box.vt_kmeans_node[0].str_class_name = L"分类0";
  box.vt_kmeans_node[0].d_radius = -0.0;
  box.vt_kmeans_node[0].vt_words.resize(4);
  box.vt_kmeans_node[0].vt_weight = {0.5, 0.25, -1.0, 1e300};
  box.vt_kmeans_node[0].str_dna = L"0123456789ABCDEF";
  box.vt_kmeans_node[0].i_reserve = std::numeric_limits<std::int64_t>::min();
  box.vt_kmeans_node[1].str_class_id = L"k2";
  box.vt_kmeans_node[1].vt_words = {L"a", L"b"};
  box.vt_kmeans_node[1].vt_weight.resize(200);
  box.vt_kmeans_node[1].vt_weight[17] = 3.5;
  box.vt_kmeans_node[1].vt_weight[199] = -0.0;
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].str_class_id = L"d1";
  box.vt_dbscan_node[0].str_class_name = L"分类1";
  box.vt_dbscan_node[0].d_eps = 0.75;
  box.vt_dbscan_node[0].i_minpts = 4;
  box.vt_dbscan_node[0].vt_file_node.resize(2);
  box.vt_dbscan_node[0].vt_file_node[0].str_file_id = L"f1";
  box.vt_dbscan_node[0].vt_file_node[0].vt_weight = {0.0, 1.0, 0.0, 0.0};
  box.vt_dbscan_node[0].vt_file_node[1].str_file_id = L"f2";
  box.i_cluster_type = 1;
  return box;
}

}  // namespace test
