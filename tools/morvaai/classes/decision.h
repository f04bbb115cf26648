#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "morvaai.h"

namespace tool {

/// The class that a document was found in, and what speaks for it.
struct Decision {
  HString class_name;
  HString class_id;
  HString box_id;
  /// From the center of the class, or from its nearest file.
  double distance = 0.0;
  /// Of a class with a center.
  std::optional<double> radius;
  /// Of a class that keeps its files.
  struct Neighbours {
    HString nearest_file;
    std::size_t count = 0;
    double eps = 0.0;
    int minpts = 0;
  };
  std::optional<Neighbours> neighbours;
  /// The heaviest of the words that the document shares with the center or the nearest file, with
  /// the products of their weights.
  std::vector<std::pair<HString, double>> words;

  /// Two or three lines. Where a terminal has no room for the first, it is two, and there are no
  /// more words than it has room for.
  std::string as_text(HString const& path) const;
  /// One object in one line.
  std::string as_json(HString const& path) const;
};

/// The first of the classes of a box of `HFileClusterBoxMgr` that takes the document.
std::optional<HString> class_that_takes(HFeatureNode const& document,
                                        std::vector<HString> const& class_ids,
                                        HString const& box_id);

/// Whether documents are compared with the classes of the box by their fingerprints.
bool is_by_fingerprint(QXPPolicyMorvaClustBox const& box);

/// Tells what spoke for the classes of a box.
class Explainer {
 public:
  /// The box must live as long.
  Explainer(HString const& box_id, QXPPolicyMorvaClustBox const& box);

  /// Measures how the document lies to the class that it was found in.
  Decision explain(HFeatureNode const& document, HString const& class_id);

 private:
  void measure_center(HFeatureNode const& document, QXPKMeansNode const& node, Decision& decision);
  void measure_members(HFeatureNode const& document, QXPDBScanNode const& node, Decision& decision);
  void sort_words();

  HString box_id_;
  QXPPolicyMorvaClustBox const& box_;
  /// The words of the box in order, each once, and the place of each word of the box among them;
  /// both from the first time on that they are needed.
  std::vector<HString> words_;
  std::vector<std::size_t> places_;
};

}  // namespace tool
