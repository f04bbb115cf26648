#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "morvaai.h"

#include "classes/class_report.h"
#include "report/report_rows.h"

namespace tool {

/// How much of what there is a page lists, so that it stays below 20 MB and opens in seconds. The
/// page tells what was left out.
namespace report_limits {
inline constexpr std::size_t classes = 200;
inline constexpr std::size_t words_of_class = 40;
inline constexpr std::size_t files = 20'000;
inline constexpr std::size_t failures = 1'000;
inline constexpr std::size_t points_on_map = 5'000;
inline constexpr std::size_t classes_of_distances = 60;
inline constexpr std::size_t values_of_curve = 2'000;
/// Of a document that is matched: shared words, and words of one side alone.
inline constexpr std::size_t shared_words = 20;
inline constexpr std::size_t lone_words = 12;
inline constexpr std::size_t nearest_classes = 5;
/// Characters of one text.
inline constexpr std::size_t characters = 200;
/// Bytes of the page for all that is listed of files, which of a match are boxes, classes and words
/// too; of classes; and of failures. No more are added once they take so much.
inline constexpr std::size_t bytes_of_files = 12'000'000;
inline constexpr std::size_t bytes_of_classes = 6'000'000;
inline constexpr std::size_t bytes_of_failures = 1'000'000;
}  // namespace report_limits

/// A text for a page: cut at `report_limits::characters`, with an ellipsis for what was left out.
std::string report_text(HString const& text);
std::string report_text(std::string const& text);
/// A number with six digits; null for what is no finite number.
nlohmann::ordered_json report_number(double number);
/// How much of a page it takes as one of a list.
std::size_t report_bytes(nlohmann::ordered_json const& listed);

/// The classes of a corpus or a box, as a page shows them.
struct ClassesReport {
  struct Class {
    HString id;
    HString name;
    /// How many files the class was made of; nothing where only its center is known.
    std::optional<std::size_t> size;
    std::optional<double> radius;
    /// Of a class that keeps its files.
    std::optional<double> eps;
    std::optional<int> minpts;
    ReportRow center;
    /// Positions among the files.
    std::vector<int> members;
  };
  struct File {
    HString name;
    ReportRow row;
  };
  /// The distances of files to their neighbours.
  struct Curve {
    double eps = 0.0;
    int minpts = 0;
    /// Ascending.
    std::vector<double> distances;
  };

  /// "learn" or "box".
  std::string kind;
  ClassReport::Box box;
  std::string method;
  std::vector<std::pair<std::string, ClassReport::Parameter>> parameters;
  std::vector<HString> words;
  std::vector<Class> classes;
  std::vector<File> files;
  std::optional<Curve> curve;
  std::vector<Corpus::Failure> failed;

  /// The data of the page, as docs/report.md describes them. The map is made of the files, or where
  /// none are known of the centers. Takes time for distances between `classes_of_distances` classes
  /// at most, else in proportion to the weights.
  nlohmann::ordered_json as_json() const;
};

}  // namespace tool
