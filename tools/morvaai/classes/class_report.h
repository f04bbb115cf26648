#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "morvaai.h"

#include "classes/corpus.h"

namespace tool {

/// What a clustering run gave, as it is shown.
struct ClassReport {
  struct Class {
    /// Empty for a class that no box holds.
    HString id;
    HString label;
    /// The strongest words, blanks between them; empty for a class without files.
    HString description;
    double radius = 0.0;
    std::vector<HString> files;
  };

  std::string method;
  /// By name, in the order in which they are shown.
  using Parameter = std::variant<int, double, std::string>;
  std::vector<std::pair<std::string, Parameter>> parameters;
  bool is_by_dna = false;
  std::size_t file_count = 0;
  std::size_t word_count = 0;
  std::vector<Class> classes;
  std::vector<HString> unclassified;
  std::vector<Corpus::Failure> failed;
  /// The list files that were written, where some were asked for.
  std::optional<std::vector<HString>> lists;
  /// The box that the classes were learnt into.
  struct Box {
    HString id;
    HString file;
  };
  std::optional<Box> box;
  /// The page that was written about it.
  std::optional<HString> page;

  std::string as_text() const;
  /// One object in one line.
  std::string as_json() const;
};

}  // namespace tool
