#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "morvaai.h"

#include "report/report_rows.h"

namespace tool {

/// How a document lies to a class.
struct ClassMeasure {
  /// Position among the classes of the box.
  std::size_t in_box = 0;
  /// From the center; for a class that keeps its files how far the document must reach for as many
  /// of them as are needed. Infinite where it has not so many.
  double distance = 0.0;
  /// By which that is over the limit; below 0 where it is not.
  double excess = 0.0;
  /// The center, or the nearest file; nothing for a class without either.
  ReportRow const* nearest = nullptr;
  double nearest_distance = 0.0;
  /// Files of the class within the limit.
  std::size_t neighbours = 0;
};

/// What a document and the center or nearest file of a class have in common, and what not. The
/// squares that each list adds to the squared distance stand beside it.
struct WordComparison {
  struct Shared {
    HString word;
    double in_document = 0.0;
    double in_class = 0.0;
  };
  using Lone = std::pair<HString, double>;

  /// The greatest product of both weights first.
  std::vector<Shared> shared;
  double shared_square = 0.0;
  /// The heaviest first.
  std::vector<Lone> document_only;
  double document_square = 0.0;
  std::vector<Lone> class_only;
  double class_square = 0.0;
};

/// Measures documents against all classes of a box.
class BoxMeasure {
 public:
  /// A class of the box.
  struct Class {
    HString id;
    HString name;
    /// Radius, or eps.
    double limit = 0.0;
    /// How many files within the limit are needed; 0 for a class with a center.
    int minpts = 0;
    /// Its center or files among the rows.
    std::size_t first_row = 0;
    std::size_t row_count = 0;
  };

  /// The box must live as long, unchanged.
  explicit BoxMeasure(QXPPolicyMorvaClustBox const& box);

  bool is_by_fingerprint() const { return is_by_fingerprint_; }
  bool is_by_members() const { return box_.i_cluster_type != 0; }
  std::vector<Class> const& classes() const { return classes_; }

  /// One for each class. Time in proportion to the weights of the box for words of the document,
  /// and to the number of its centers or files.
  std::vector<ClassMeasure> measure(HFeatureNode const& document) const;

  /// The words of both; none where fingerprints are compared.
  WordComparison compare(HFeatureNode const& document, ClassMeasure const& measure) const;
  /// Name of the file that the document is nearest to; empty for a center.
  HString nearest_name(ClassMeasure const& measure) const;

 private:
  struct Posting {
    std::uint32_t row;
    double weight;
  };

  void add_row(HString const& name, std::vector<double> const& weights);
  void add_class(Class one);
  std::vector<double> distances(HFeatureNode const& document) const;
  ClassMeasure measure_class(std::size_t index, std::vector<double> const& distances) const;

  QXPPolicyMorvaClustBox const& box_;
  bool is_by_fingerprint_;
  std::vector<Class> classes_;
  std::vector<HString> row_names_;
  std::vector<ReportRow> rows_;
  std::vector<double> squares_;
  /// The place of each word, the last of several.
  std::unordered_map<std::wstring_view, std::uint32_t> places_;
  std::vector<std::vector<Posting>> postings_;
};

}  // namespace tool
