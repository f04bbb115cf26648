#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "morvaai.h"

#include "classes/class_report.h"
#include "classes/corpus.h"

namespace tool {

/// The method by which files are clustered, and its parameters.
struct MethodOptions {
  /// "kmeans", "kmedians", "canopy" or "dbscan".
  std::string method;
  std::optional<int> k;
  bool canopy_seeds = false;
  std::optional<double> t1;
  std::optional<double> t2;
  /// A number, or "auto".
  std::optional<std::string> eps;
  std::optional<int> minpts;
};

inline constexpr int default_minpts = 4;

/// Which parameters belong to another method; empty where none do.
std::string misplaced_parameter(MethodOptions const& options);
/// Why a clustering cannot be run with the parameters; empty where it can.
std::string contradiction(MethodOptions const& options);

/// What DBSCAN takes for a neighbourhood.
struct Neighbourhood {
  double eps = 0.0;
  int minpts = 0;

  bool operator==(Neighbourhood const& other) const = default;
};

/// A run of a method: its points, the parameters that it had, and what came of it.
struct Clustering {
  std::vector<HString> words;
  HSparsePoints points;
  std::vector<std::pair<std::string, ClassReport::Parameter>> parameters;
  Neighbourhood neighbourhood;
  /// Positions in the points.
  std::vector<std::vector<int>> clusters;
  /// Why the method could not be run; empty where it could.
  std::string failure;
};

/// Makes the files of the corpus points over its words; the processes of its group share the work
/// on these from here on. Notes a failure where they hold other files.
void make_points(Corpus const& corpus, Clustering& run);

/// Clusters the points; leaves a run that has failed as it is.
void cluster_points(MethodOptions const& options, Clustering& run);

/// Sets the neighbourhood that the options name, with a radius estimated from the points where none
/// is given, and notes it among the parameters; or tells why there is no radius.
void choose_neighbourhood(MethodOptions const& options, Clustering& run);

/// Whether the classes that the method makes are kept as all their files, and not as centers.
bool is_by_members(MethodOptions const& options);

/// Why the classes cannot be kept in a box, which holds a weight for each of its words and each
/// center, or each file of a class; empty where they can.
std::string too_large_for_box(MethodOptions const& options, Clustering const& run);

/// The files of the corpus that are in no class.
std::vector<HString> unclassified_of(Corpus const& corpus, Clustering const& run);

/// A class as it is shown, by its record and the positions of its files in the corpus.
ClassReport::Class shown_class(HClusterResultBase const& record, HSparsePoints const& points,
                               std::vector<int> const& members, Corpus const& corpus);

}  // namespace tool
