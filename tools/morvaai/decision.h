#pragma once

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

  /// Two or three lines.
  std::string as_text(HString const& path) const;
  /// One object in one line.
  std::string as_json(HString const& path) const;
};

/// Whether documents are compared with the classes of the box by their fingerprints.
bool is_by_fingerprint(QXPPolicyMorvaClustBox const& box);

/// Measures how the document lies to a class of the box that it was found in.
Decision explain(HFeatureNode const& document, HString const& class_id, HString const& box_id,
                 QXPPolicyMorvaClustBox const& box);

}  // namespace tool
