#include "features/HClusterFileData.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "dna/HFileDNA.h"
#include "features/HFileFeature.h"
#include "features/HSparseFileData.h"
#include "host/HStdOutStream.h"

HClusterFileData::HClusterFileData() = default;
HClusterFileData::~HClusterFileData() = default;

void HClusterFileData::get_words(std::vector<HFeatureNode> const& vt_feature,
                                 std::vector<HString>& vt_words) {
  std::size_t count = 0;
  for (HFeatureNode const& node : vt_feature) {
    count += node.vt_words.size();
  }
  std::vector<HString> words;
  words.reserve(count);
  for (HFeatureNode const& node : vt_feature) {
    words.insert(words.end(), node.vt_words.begin(), node.vt_words.end());
  }
  std::sort(words.begin(), words.end());
  words.erase(std::unique(words.begin(), words.end()), words.end());
  // Repeated words are the rule, so most of the space is not needed any more.
  words.shrink_to_fit();
  vt_words = std::move(words);
}

void HClusterFileData::get_data(HFeatureNode const& node, std::vector<HString> const& vt_words,
                                HPointN& point, bool use_dna) {
  if (use_dna) {
    point = HFileDNA::get_pointn(node.str_file_id, node.str_dna);
    return;
  }
  point.resize(static_cast<long long>(vt_words.size()));
  for (std::size_t i = 0; i < vt_words.size(); ++i) {
    auto const found = node.map_word_weight.find(vt_words[i]);
    point.vt_data[i] = found == node.map_word_weight.end() ? 0.0 : found->second;
  }
}

void HClusterFileData::format_data(std::vector<HFeatureNode> const& vt_feature,
                                   std::vector<HString>& vt_words, std::vector<HPointN>& vt_point,
                                   bool use_dna) {
  HSparsePoints points;
  HSparseFileData::format_data(vt_feature, vt_words, points, use_dna);
  vt_point.resize(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    vt_point[i] = points.at(static_cast<int>(i));
  }
}

void HClusterFileData::get_data_from_files(std::vector<HString> const& vt_file,
                                           std::vector<HString>& vt_words,
                                           std::vector<HPointN>& vt_point, bool b_print) {
  auto const print = [b_print](wchar_t const* text) {
    if (b_print) {
      *HStdOutStream::ins() << text;
    }
  };
  print(L"Extract Feature: ");
  vt_words.clear();
  vt_point.clear();
  std::vector<HFeatureNode> features;
  for (HString const& path : vt_file) {
    HFeatureNode node;
    if (HFileFeature::get_file_feature(path, node, true)) {
      features.push_back(std::move(node));
      print(L".");
    } else {
      print(L"#");
    }
  }
  print(L"\n");
  format_data(features, vt_words, vt_point, false);
}
