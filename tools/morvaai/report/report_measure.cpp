#include "report/report_measure.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "classes/decision.h"

namespace tool {

namespace {

// What the classifiers add to a radius.
constexpr double tolerance = 0.000001;
constexpr double infinity = std::numeric_limits<double>::infinity();

// Weights that are too large to be squared give no number; what they belong to is out of reach.
double reach_of(double distance) {
  if (std::isnan(distance)) {
    return infinity;
  }
  return distance;
}

}  // namespace

BoxMeasure::BoxMeasure(QXPPolicyMorvaClustBox const& box)
    : box_(box), is_by_fingerprint_(tool::is_by_fingerprint(box)), postings_(box.vt_words.size()) {
  for (std::size_t i = 0; i < box.vt_words.size(); ++i) {
    places_[text_view(box.vt_words[i])] = static_cast<std::uint32_t>(i);
  }
  if (box.i_cluster_type == 0) {
    for (QXPKMeansNode const& node : box.vt_kmeans_node) {
      add_class({node.str_class_id, node.str_class_name, node.d_radius, 0, 0, 0});
      if (is_by_fingerprint_ || node.vt_weight.size() == box.vt_words.size()) {
        add_row({}, node.vt_weight);
      }
    }
    return;
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    add_class(
        {node.str_class_id, node.str_class_name, node.d_eps, std::max(node.i_minpts, 1), 0, 0});
    for (QXPFeatureNode const& member : node.vt_file_node) {
      if (member.vt_weight.size() == box.vt_words.size()) {
        add_row(member.str_file_id, member.vt_weight);
      }
    }
  }
}

void BoxMeasure::add_class(Class one) {
  one.first_row = rows_.size();
  classes_.push_back(std::move(one));
}

void BoxMeasure::add_row(HString const& name, std::vector<double> const& weights) {
  ReportRow row = row_of(weights);
  auto const number = static_cast<std::uint32_t>(rows_.size());
  for (std::size_t k = 0; k < row.indices.size(); ++k) {
    if (row.indices[k] < postings_.size()) {
      postings_[row.indices[k]].push_back({number, row.values[k]});
    }
  }
  squares_.push_back(square_of(row));
  rows_.push_back(std::move(row));
  row_names_.push_back(name);
  ++classes_.back().row_count;
}

std::vector<double> BoxMeasure::distances(HFeatureNode const& document) const {
  std::vector<double> result(rows_.size());
  if (is_by_fingerprint_) {
    HPointN const point = HFileDNA::get_pointn(document.str_file_id, document.str_dna);
    for (std::size_t i = 0; i < result.size(); ++i) {
      QXPKMeansNode const& node = box_.vt_kmeans_node[i];
      result[i] = reach_of(
          HPointN::get_distance(point, HFileDNA::get_pointn(node.str_class_id, node.str_dna)));
    }
    return result;
  }
  double square = 0.0;
  for (auto const& [word, weight] : document.map_word_weight) {
    square += weight * weight;
    if (auto const found = places_.find(text_view(word)); found != places_.end()) {
      for (Posting const& posting : postings_[found->second]) {
        result[posting.row] += weight * posting.weight;
      }
    }
  }
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = reach_of(std::sqrt(std::max(square + squares_[i] - 2.0 * result[i], 0.0)));
  }
  return result;
}

ClassMeasure BoxMeasure::measure_class(std::size_t index,
                                       std::vector<double> const& distances) const {
  Class const& one = classes_[index];
  ClassMeasure measure;
  measure.in_box = index;
  measure.distance = measure.nearest_distance = infinity;
  auto const first = distances.begin() + static_cast<std::ptrdiff_t>(one.first_row);
  std::vector<double> own(first, first + static_cast<std::ptrdiff_t>(one.row_count));
  if (!own.empty()) {
    auto const least = std::min_element(own.begin(), own.end());
    measure.nearest = &rows_[one.first_row + static_cast<std::size_t>(least - own.begin())];
    measure.nearest_distance = *least;
    measure.neighbours = static_cast<std::size_t>(
        std::count_if(own.begin(), own.end(), [&](double x) { return x < one.limit + tolerance; }));
    auto const needed = static_cast<std::size_t>(std::max(one.minpts, 1));
    // Whatever coincides with a file is taken.
    if (measure.nearest_distance < tolerance) {
      measure.distance = measure.nearest_distance;
    } else if (needed <= own.size()) {
      auto const reached = own.begin() + static_cast<std::ptrdiff_t>(needed - 1);
      std::nth_element(own.begin(), reached, own.end());
      measure.distance = *reached;
    }
  }
  measure.excess = reach_of(measure.distance - one.limit);
  return measure;
}

std::vector<ClassMeasure> BoxMeasure::measure(HFeatureNode const& document) const {
  std::vector<double> const all = distances(document);
  std::vector<ClassMeasure> measures;
  for (std::size_t i = 0; i < classes_.size(); ++i) {
    measures.push_back(measure_class(i, all));
  }
  return measures;
}

HString BoxMeasure::nearest_name(ClassMeasure const& measure) const {
  return measure.nearest == nullptr
             ? HString()
             : row_names_[static_cast<std::size_t>(measure.nearest - rows_.data())];
}

WordComparison BoxMeasure::compare(HFeatureNode const& document,
                                   ClassMeasure const& measure) const {
  WordComparison words;
  if (is_by_fingerprint_ || measure.nearest == nullptr) {
    return words;
  }
  ReportRow const& row = *measure.nearest;
  std::vector<bool> is_shared(row.indices.size());
  for (auto const& [word, weight] : document.map_word_weight) {
    auto const place = places_.find(text_view(word));
    auto const at = place == places_.end()
                        ? row.indices.end()
                        : std::lower_bound(row.indices.begin(), row.indices.end(), place->second);
    if (at == row.indices.end() || *at != place->second) {
      words.document_only.emplace_back(word, weight);
      words.document_square += weight * weight;
      continue;
    }
    auto const k = static_cast<std::size_t>(at - row.indices.begin());
    is_shared[k] = true;
    words.shared.push_back({word, weight, row.values[k]});
    words.shared_square += (weight - row.values[k]) * (weight - row.values[k]);
  }
  for (std::size_t k = 0; k < row.indices.size(); ++k) {
    if (!is_shared[k]) {
      words.class_only.emplace_back(box_.vt_words[row.indices[k]], row.values[k]);
      words.class_square += row.values[k] * row.values[k];
    }
  }
  auto const heavier = [](auto const& a, auto const& b) { return a.second > b.second; };
  std::stable_sort(words.document_only.begin(), words.document_only.end(), heavier);
  std::stable_sort(words.class_only.begin(), words.class_only.end(), heavier);
  std::stable_sort(words.shared.begin(), words.shared.end(), [](auto const& a, auto const& b) {
    return a.in_document * a.in_class > b.in_document * b.in_class;
  });
  return words;
}

}  // namespace tool
