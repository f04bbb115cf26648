#include "classes/decision.h"

#include <algorithm>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "terminal/columns.h"
#include "terminal/output.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

// What the classifiers add to a radius.
constexpr double tolerance = 0.000001;
constexpr std::size_t most_words = 10;

// The document and the weight lists of a box as points over the words of both, in their order.
class Space {
 public:
  Space(HFeatureNode const& document, std::vector<HString> const& box_words,
        std::vector<std::size_t> const& box_places)
      : box_words_(box_words), box_places_(box_places), places_(box_words.size()) {
    using Entry = std::pair<std::size_t, double>;
    std::vector<Entry> shared;
    std::vector<Entry> own;  // each stands before the box's word of that position
    for (auto const& [word, weight] : document.map_word_weight) {
      auto const found = std::lower_bound(box_words.begin(), box_words.end(), word);
      bool const is_shared = found != box_words.end() && *found == word;
      (is_shared ? shared : own)
          .emplace_back(static_cast<std::size_t>(found - box_words.begin()), weight);
    }
    std::size_t before = 0;
    for (std::size_t i = 0; i < places_.size(); ++i) {
      while (before < own.size() && own[before].first <= i) {
        ++before;
      }
      places_[i] = i + before;
    }
    document_.resize(static_cast<long long>(box_words.size() + own.size()));
    for (auto const& [position, weight] : shared) {
      document_.vt_data[places_[position]] = weight;
    }
    for (std::size_t i = 0; i < own.size(); ++i) {
      document_.vt_data[own[i].first + i] = own[i].second;
    }
  }

  // Of a list as long as the box has words; of a word that it has twice, the later weight counts.
  HPointN point(std::vector<double> const& weights) const {
    HPointN point(std::vector<double>(document_.vt_data.size()));
    for (std::size_t i = 0; i < weights.size(); ++i) {
      point.vt_data[places_[box_places_[i]]] = weights[i];
    }
    return point;
  }
  double distance(HPointN const& point) const { return HPointN::get_distance(document_, point); }

  std::vector<std::pair<HString, double>> shared_words(HPointN const& point) const {
    std::vector<std::pair<HString, double>> shared;
    for (std::size_t i = 0; i < places_.size(); ++i) {
      double const product = document_.vt_data[places_[i]] * point.vt_data[places_[i]];
      if (product > 0.0) {
        shared.emplace_back(box_words_[i], product);
      }
    }
    std::stable_sort(shared.begin(), shared.end(),
                     [](auto const& a, auto const& b) { return a.second > b.second; });
    shared.resize(std::min(shared.size(), most_words));
    return shared;
  }

 private:
  std::vector<HString> const& box_words_;
  std::vector<std::size_t> const& box_places_;
  std::vector<std::size_t> places_;
  HPointN document_;
};

}  // namespace

std::optional<HString> class_that_takes(HFeatureNode const& document,
                                        std::vector<HString> const& class_ids,
                                        HString const& box_id) {
  HFileMatchClassifyMgr const* const manager = HFileMatchClassifyMgr::pins();
  HString name;
  if (!manager->match(document, class_ids, box_id, name)) {
    return std::nullopt;
  }
  // It tells the name; the class is the first that says yes by itself.
  for (HString const& id : class_ids) {
    if (manager->match(document, id, box_id, name)) {
      return id;
    }
  }
  return std::nullopt;
}

bool is_by_fingerprint(QXPPolicyMorvaClustBox const& box) {
  return box.i_cluster_type == 0 && box.vt_kmeans_node.size() > 1 &&
         box.vt_kmeans_node.front().str_dna.not_empty();
}

Explainer::Explainer(HString const& box_id, QXPPolicyMorvaClustBox const& box)
    : box_id_(box_id), box_(box) {}

Decision Explainer::explain(HFeatureNode const& document, HString const& class_id) {
  Decision decision;
  decision.class_id = class_id;
  decision.box_id = box_id_;
  sort_words();
  auto const is_class = [&](auto const& node) { return node.str_class_id == class_id; };
  // Of several classes with one id, the last one with a center counts and the first one with files.
  if (box_.i_cluster_type == 0) {
    auto const& classes = box_.vt_kmeans_node;
    auto const found = std::find_if(classes.rbegin(), classes.rend(), is_class);
    if (found != classes.rend()) {
      measure_center(document, *found, decision);
    }
  } else {
    auto const& classes = box_.vt_dbscan_node;
    auto const found = std::find_if(classes.begin(), classes.end(), is_class);
    if (found != classes.end()) {
      measure_members(document, *found, decision);
    }
  }
  return decision;
}

void Explainer::sort_words() {
  if (!words_.empty()) {
    return;
  }
  words_ = box_.vt_words;
  std::sort(words_.begin(), words_.end());
  words_.erase(std::unique(words_.begin(), words_.end()), words_.end());
  places_.reserve(box_.vt_words.size());
  for (HString const& word : box_.vt_words) {
    places_.push_back(static_cast<std::size_t>(
        std::lower_bound(words_.begin(), words_.end(), word) - words_.begin()));
  }
}

void Explainer::measure_center(HFeatureNode const& document, QXPKMeansNode const& node,
                               Decision& decision) {
  decision.class_name = node.str_class_name;
  decision.radius = node.d_radius;
  if (is_by_fingerprint(box_)) {
    decision.distance =
        HPointN::get_distance(HFileDNA::get_pointn(document.str_file_id, document.str_dna),
                              HFileDNA::get_pointn(node.str_class_id, node.str_dna));
    return;
  }
  Space const space(document, words_, places_);
  HPointN const center = space.point(node.vt_weight);
  decision.distance = space.distance(center);
  decision.words = space.shared_words(center);
}

void Explainer::measure_members(HFeatureNode const& document, QXPDBScanNode const& node,
                                Decision& decision) {
  decision.class_name = node.str_class_name;
  Decision::Neighbours neighbours{{}, 0, node.d_eps, node.i_minpts};
  Space const space(document, words_, places_);
  QXPFeatureNode const* nearest = nullptr;
  for (QXPFeatureNode const& member : node.vt_file_node) {
    if (member.vt_weight.size() != box_.vt_words.size()) {
      continue;
    }
    double const distance = space.distance(space.point(member.vt_weight));
    neighbours.count += distance < node.d_eps + tolerance ? 1 : 0;
    if (nearest == nullptr || distance < decision.distance) {
      nearest = &member;
      decision.distance = distance;
    }
  }
  if (nearest != nullptr) {
    neighbours.nearest_file = nearest->str_file_id;
    decision.words = space.shared_words(space.point(nearest->vt_weight));
  }
  decision.neighbours = neighbours;
}

std::string Decision::as_text(HString const& path) const {
  std::string text = printable(path) + ": " + styled(Role::name, printable(class_name));
  std::string const place =
      fmt::format("(class {}, box {})", printable(class_id), printable(box_id));
  std::size_t const columns = columns_of(text) + 1 + columns_of(place);
  text += columns > output_screen().columns.value_or(columns) ? "\n  " : " ";
  text += styled(Role::faint, place) + fmt::format("\n  distance {:.6f}", distance);
  if (radius) {
    text += fmt::format(", radius {:.6f}\n", *radius);
  }
  if (neighbours) {
    text += fmt::format(" from {}, {} neighbours within eps {:.6f}, minpts {}\n",
                        printable(neighbours->nearest_file), neighbours->count, neighbours->eps,
                        neighbours->minpts);
  }
  if (!words.empty()) {
    std::vector<std::pair<std::string, double>> shown;
    for (auto const& [word, product] : words) {
      shown.emplace_back(printable(word), product);
    }
    text += "  " + weighted_words("words:", shown, 2);
  }
  return text;
}

std::string Decision::as_json(HString const& path) const {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["class"] = {{"name", utf8(class_name)}, {"id", utf8(class_id)}, {"box", utf8(box_id)}};
  object["distance"] = distance;
  if (radius) {
    object["radius"] = *radius;
  }
  if (neighbours) {
    object["nearest"] = utf8(neighbours->nearest_file);
    object["neighbours"] = neighbours->count;
    object["eps"] = neighbours->eps;
    object["minpts"] = neighbours->minpts;
  }
  object["words"] = nlohmann::ordered_json::array();
  for (auto const& [word, product] : words) {
    object["words"].push_back({{"word", utf8(word)}, {"product", product}});
  }
  return object.dump() + "\n";
}

}  // namespace tool
