#include "classify/internal/match_kmeans.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include "classify/internal/class_positions.h"
#include "classify/internal/comparison.h"
#include "cluster/cluster_type.h"
#include "dna/HFileDNA.h"
#include "host/internal/log_line.h"
#include "numeric/HPointN.h"
#include "numeric/internal/no_distance.h"

namespace morva {

namespace {

using Nearest = std::optional<DistanceTable::Found>;

constexpr wchar_t const* tag = L"../HFileMatchClassifyKMeans";
constexpr double tolerance = 0.000001;

void log_unequal(QXPKMeansNode const& node, QXPPolicyMorvaClustBox const& box) {
  log_line(1, tag, __LINE__, L"classNode.vt_words.size() : ", HString(box.vt_words.size()),
           L", classNode.vt_weight.size()", HString(node.vt_weight.size()));
}

void log_missing(HString const& class_id) {
  log_line(3, tag, __LINE__, L"not find : ", class_id);
}

// A single class is compared by words whatever it holds.
bool uses_dna(std::vector<QXPKMeansNode> const& classes) {
  return classes.size() > 1 && classes.front().str_dna.not_empty();
}

// `points` holds the document and the classes as far as there are points of them: a text that is no
// fingerprint is tried, and told in the log, at each question.
Nearest nearest_by_dna(HFeatureNode const& node, std::vector<QXPKMeansNode> const& classes,
                       std::vector<HPointN>& points) {
  points.resize(classes.size() + 1);
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (points[i].n == 0) {
      points[i] = i == 0 ? HFileDNA::get_pointn(node.str_file_id, node.str_dna)
                         : HFileDNA::get_pointn({}, classes[i - 1].str_dna);
    }
  }
  Nearest nearest;
  double least = no_distance;
  for (std::size_t i = 0; i < classes.size(); ++i) {
    double const distance = HPointN::get_distance(points[0], points[i + 1]);
    if (distance < least) {
      least = distance;
      nearest = {i, distance};
    }
  }
  return nearest;
}

bool is_accepted(std::size_t wanted, Nearest const& nearest, QXPKMeansNode const& node) {
  if (!nearest || nearest->index != wanted) {
    return false;
  }
  log_line(4, tag, __LINE__, L"radius : ", HString(node.d_radius), L",  distance : ",
           HString(nearest->distance));
  return node.d_radius + tolerance > nearest->distance;
}

}  // namespace

bool match_kmeans(HFeatureNode const& node, std::span<HString const> class_ids,
                  QXPPolicyMorvaClustBox const& box, WeightLists const* centers, HString& str_out) {
  auto const& classes = box.vt_kmeans_node;
  std::optional<WeightLists> own_centers;
  std::optional<Comparison> comparison;
  std::vector<HPointN> dna_points;
  auto const nearest_by_words = [&] {
    if (!comparison) {
      if (centers == nullptr) {
        centers = &own_centers.emplace(box.vt_words, lists_of(classes));
      }
      comparison.emplace(node, *centers);
    }
    return comparison->closest();
  };
  if (!classes.empty()) {
    gi_K_ClusterType = classes.front().str_dna.empty() ? 0 : 1;
  }
  auto const unequal = std::find_if(
      classes.begin(), classes.end(),
      [&box](QXPKMeansNode const& each) { return each.vt_weight.size() != box.vt_words.size(); });
  ClassPositions const positions(class_ids, classes, Occurrence::last);
  for (HString const& class_id : class_ids) {
    if (unequal != classes.end()) {
      log_unequal(*unequal, box);
      continue;
    }
    std::optional<std::size_t> const wanted = positions.of(class_id);
    if (!wanted) {
      log_missing(class_id);
      continue;
    }
    Nearest const nearest =
        uses_dna(classes) ? nearest_by_dna(node, classes, dna_points) : nearest_by_words();
    if (is_accepted(*wanted, nearest, classes[*wanted])) {
      str_out = classes[*wanted].str_class_name;
      return true;
    }
    str_out.clear();
  }
  return false;
}

}  // namespace morva
