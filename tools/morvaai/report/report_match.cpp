#include "report/report_match.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "report/report_data.h"

namespace tool {

namespace {

using Json = nlohmann::ordered_json;

std::vector<bool> asked_of(BoxMeasure const& measure, std::vector<HString> const& ids) {
  std::vector<bool> asked;
  for (BoxMeasure::Class const& one : measure.classes()) {
    asked.push_back(std::find(ids.begin(), ids.end(), one.id) != ids.end());
  }
  return asked;
}

// The class whose center is the nearest, the first of several.
std::size_t nearest_of(std::vector<ClassMeasure> const& measures) {
  auto const nearest = std::min_element(measures.begin(), measures.end(), [](auto& a, auto& b) {
    return a.nearest_distance < b.nearest_distance;
  });
  return static_cast<std::size_t>(nearest - measures.begin());
}

}  // namespace

MatchReport::MatchReport(std::vector<Asked> const& asked) {
  for (Asked const& each : asked) {
    BoxMeasure measure(*each.box);
    std::vector<bool> is_asked = asked_of(measure, each.class_ids);
    asked_ += static_cast<std::size_t>(std::count(is_asked.begin(), is_asked.end(), true));
    listed_boxes_.push_back({{"id", report_text(each.box_id)},
                             {"method", measure.is_by_members() ? "dbscan" : "kmeans"},
                             {"by", measure.is_by_fingerprint() ? "fingerprint" : "words"}});
    bytes_ += report_bytes(listed_boxes_.back());
    std::vector<std::optional<std::size_t>> numbers(is_asked.size());
    boxes_.push_back({each.box_id, std::move(measure), std::move(is_asked), std::move(numbers)});
  }
}

// The class that is missed by least stands first, before those that another one keeps from taking
// anything; of equal ones, as where all are out of reach, the nearest.
std::vector<MatchReport::Candidate> MatchReport::candidates_of(HFeatureNode const& document) {
  std::vector<Candidate> candidates;
  for (Box& box : boxes_) {
    std::vector<ClassMeasure> const measures = box.measure.measure(document);
    std::size_t const nearest = nearest_of(measures);
    for (ClassMeasure const& measure : measures) {
      if (!box.is_asked[measure.in_box]) {
        continue;
      }
      Candidate& candidate = candidates.emplace_back(Candidate{&box, measure, std::nullopt});
      if (!box.measure.is_by_members() && measure.in_box != nearest) {
        candidate.nearer = nearest;
      }
    }
  }
  std::stable_sort(candidates.begin(), candidates.end(), [](auto const& a, auto const& b) {
    return std::tuple(a.nearer.has_value(), a.measure.excess, a.measure.nearest_distance) <
           std::tuple(b.nearer.has_value(), b.measure.excess, b.measure.nearest_distance);
  });
  return candidates;
}

nlohmann::ordered_json MatchReport::candidate_json(Candidate const& candidate) {
  Box& box = *candidate.box;
  ClassMeasure const& measure = candidate.measure;
  Json object = {{"class", number_of(box, measure.in_box)},
                 {"distance", report_number(measure.distance)},
                 {"excess", report_number(measure.excess)}};
  if (candidate.nearer) {
    object["nearer"] = number_of(box, *candidate.nearer);
  }
  if (box.measure.is_by_members()) {
    object["nearest"] = report_text(box.measure.nearest_name(measure));
    object["nearest_distance"] = report_number(measure.nearest_distance);
    object["neighbours"] = measure.neighbours;
  }
  return object;
}

std::size_t MatchReport::number_of(HString const& word) {
  auto const [found, is_new] = numbers_.try_emplace(word, numbers_.size());
  if (is_new) {
    words_.push_back(report_text(word));
    bytes_ += report_bytes(words_.back());
  }
  return found->second;
}

std::size_t MatchReport::number_of(Box& box, std::size_t in_box) {
  std::optional<std::size_t>& number = box.numbers[in_box];
  if (number) {
    return *number;
  }
  BoxMeasure::Class const& one = box.measure.classes()[in_box];
  Json shown = {{"name", report_text(one.name)},
                {"id", report_text(one.id)},
                {"box", &box - boxes_.data()},
                {"limit", report_number(one.limit)},
                {"asked", bool(box.is_asked[in_box])}};
  if (one.minpts > 0) {
    shown["minpts"] = one.minpts;
    shown["size"] = one.row_count;
  }
  bytes_ += report_bytes(shown);
  number = classes_.size();
  classes_.push_back(std::move(shown));
  return *number;
}

nlohmann::ordered_json MatchReport::lone_json(std::vector<WordComparison::Lone> const& words) {
  Json list = Json::array();
  for (std::size_t i = 0; i < std::min(words.size(), report_limits::lone_words); ++i) {
    list.push_back({number_of(words[i].first), report_number(words[i].second)});
  }
  return list;
}

nlohmann::ordered_json MatchReport::words_json(WordComparison const& words) {
  Json shared = Json::array();
  for (std::size_t i = 0; i < std::min(words.shared.size(), report_limits::shared_words); ++i) {
    WordComparison::Shared const& word = words.shared[i];
    shared.push_back(
        {number_of(word.word), report_number(word.in_document), report_number(word.in_class)});
  }
  return {{"shared", std::move(shared)},
          {"document_only", lone_json(words.document_only)},
          {"class_only", lone_json(words.class_only)},
          {"counts", {words.shared.size(), words.document_only.size(), words.class_only.size()}},
          {"squares",
           {report_number(words.shared_square), report_number(words.document_square),
            report_number(words.class_square)}}};
}

nlohmann::ordered_json MatchReport::explained(HFeatureNode const& document,
                                              std::optional<Decision> const& decision) {
  std::vector<Candidate> candidates = candidates_of(document);
  if (decision) {
    auto const is_taker = [&](Candidate const& each) {
      return each.box->id == decision->box_id &&
             each.box->measure.classes()[each.measure.in_box].id == decision->class_id;
    };
    std::stable_partition(candidates.begin(), candidates.end(), is_taker);
  }
  Json about = {{"decision", decision ? "accepted" : "refused"}};
  about["classes"] = Json::array();
  std::size_t const shown = std::min(candidates.size(), report_limits::nearest_classes);
  for (std::size_t i = 0; i < shown; ++i) {
    about["classes"].push_back(candidate_json(candidates[i]));
  }
  if (!candidates.empty() && !candidates.front().box->measure.is_by_fingerprint()) {
    Candidate const& first = candidates.front();
    about["words"] = words_json(first.box->measure.compare(document, first.measure));
  }
  return about;
}

void MatchReport::keep(HString const& file, nlohmann::ordered_json about) {
  about["file"] = report_text(file);
  bytes_ += report_bytes(about);
  files_.push_back(std::move(about));
}

bool MatchReport::has_room() const {
  return files_.size() < report_limits::files && bytes_ < report_limits::bytes_of_files;
}

void MatchReport::add(HString const& file, HFeatureNode const& document,
                      std::optional<Decision> const& decision) {
  ++(decision ? accepted_ : refused_);
  if (has_room()) {
    keep(file, explained(document, decision));
  }
}

void MatchReport::add_failure(HString const& file, std::string const& reason) {
  ++failed_;
  if (has_room()) {
    keep(file, {{"decision", "failed"}, {"reason", report_text(reason)}});
  }
}

nlohmann::ordered_json MatchReport::as_json() const {
  Json object = {{"schema", 1}, {"kind", "match"}};
  object["counts"] = {{"files", accepted_ + refused_ + failed_},
                      {"accepted", accepted_},
                      {"refused", refused_},
                      {"failed", failed_},
                      {"classes", asked_}};
  object["boxes"] = listed_boxes_;
  object["classes"] = classes_;
  object["words"] = words_;
  object["files"] = files_;
  return object;
}

}  // namespace tool
