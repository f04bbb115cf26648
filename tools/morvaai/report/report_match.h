#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "morvaai.h"

#include "classes/decision.h"
#include "report/report_measure.h"

namespace tool {

/// Why files were taken by classes or by none, word by word, as a page shows it. The classifiers
/// decide; this measures what they measure and tells it apart by words.
class MatchReport {
 public:
  /// A box and the classes of it that are asked; the box must live as long as the report.
  struct Asked {
    HString box_id;
    std::vector<HString> class_ids;
    QXPPolicyMorvaClustBox const* box = nullptr;
  };
  explicit MatchReport(std::vector<Asked> const& asked);

  /// A file, and the class that took it, if one did.
  void add(HString const& file, HFeatureNode const& document,
           std::optional<Decision> const& decision);
  void add_failure(HString const& file, std::string const& reason);

  /// The data of the page, as docs/report.md describes them.
  nlohmann::ordered_json as_json() const;

 private:
  struct Box {
    HString id;
    BoxMeasure measure;
    /// Of each class whether it is asked.
    std::vector<bool> is_asked;
    /// Of each class its number among those that files name, if any does.
    std::vector<std::optional<std::size_t>> numbers;
  };
  /// How a document lies to a class of one of the boxes.
  struct Candidate {
    Box* box;
    ClassMeasure measure;
    /// The class of the box with a nearer center, which alone could take the document.
    std::optional<std::size_t> nearer;
  };

  std::vector<Candidate> candidates_of(HFeatureNode const& document);
  nlohmann::ordered_json candidate_json(Candidate const& candidate);
  nlohmann::ordered_json words_json(WordComparison const& words);
  nlohmann::ordered_json lone_json(std::vector<WordComparison::Lone> const& words);
  nlohmann::ordered_json explained(HFeatureNode const& document,
                                   std::optional<Decision> const& decision);
  std::size_t number_of(HString const& word);
  std::size_t number_of(Box& box, std::size_t in_box);
  bool has_room() const;
  void keep(HString const& file, nlohmann::ordered_json about);

  std::vector<Box> boxes_;
  std::size_t accepted_ = 0;
  std::size_t refused_ = 0;
  std::size_t failed_ = 0;
  std::size_t asked_ = 0;
  /// Of all that is listed.
  std::size_t bytes_ = 0;
  nlohmann::ordered_json files_ = nlohmann::ordered_json::array();
  /// The classes that the files name, each once, by their numbers.
  nlohmann::ordered_json classes_ = nlohmann::ordered_json::array();
  nlohmann::ordered_json listed_boxes_ = nlohmann::ordered_json::array();
  /// The words that the files name, each once, by their numbers.
  std::map<HString, std::size_t> numbers_;
  nlohmann::ordered_json words_ = nlohmann::ordered_json::array();
};

}  // namespace tool
