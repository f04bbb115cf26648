// How well the classes that the engines find in real texts agree with those that people made: a
// Markdown table for each set of texts below `text` in the folder that MORVA_CORPUS names.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/cluster_type.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterDistance.h"

#include "agreement.h"
#include "labelled_texts.h"

namespace {

/// Texts of each class that have versions made.
constexpr int versions_per_class = 4;
/// The neighbourhood that DBSCAN asks for, in every trial.
constexpr int minpts = 4;

using Clusters = std::vector<std::vector<int>>;
using Points = std::vector<HPointN>;

/// One line of the table: a method with its parameters, over points of one kind.
struct Trial {
  std::string points;
  std::string method;
  std::string parameters;
  Clusters clusters;
};

Trial try_kmeans(std::string const& kind, Points const& points, int type, int k, bool use_canopy) {
  Trial trial{kind,
              type == 0 ? "kmeans" : "kmedians",
              fmt::format("k {}{}", k, use_canopy ? ", canopy seeds" : ""),
              {}};
  gi_K_ClusterType = type;
  HClusterMgr::pins()->kmeans(points, k, trial.clusters, use_canopy);
  return trial;
}

Trial try_canopy(std::string const& kind, Points const& points, double share) {
  double const t2 = share * HClusterDistance::get_avg_distance(points);
  Trial trial{kind,
              "canopy",
              share == 1.0 ? std::string("T2 mean distance")
                           : fmt::format("T2 {:.3f} ({} of the mean)", t2, share),
              {}};
  HClusterMgr::pins()->canopy(points, t2, t2, trial.clusters);
  return trial;
}

Trial try_dbscan(std::string const& kind, Points const& points, double share) {
  double const eps = share * HParaPrefer::get_eps(points, minpts, true);
  Trial trial{kind,
              "dbscan",
              fmt::format("eps {:.3f} ({})", eps,
                          share == 1.0 ? std::string("auto") : fmt::format("{} of auto", share)),
              {}};
  HClusterMgr::pins()->dbscan(points, eps, minpts, false, trial.clusters);
  return trial;
}

Trial try_cosine(std::string const& kind, Points const& points, double threshold) {
  Trial trial{kind, "dbscan, cosine", fmt::format("above {}", threshold), {}};
  HClusterDBScan engine;
  engine.mb_use_similarity = true;
  engine.set_similarity(threshold);
  engine.set_min_ponits(minpts);
  HClusterMgr::pins()->cluster(&engine, points, trial.clusters);
  return trial;
}

/// Scales each point to length 1. The library never does; a host may.
void scale_to_unit_length(Points& points) {
  for (HPointN& point : points) {
    double sum = 0.0;
    for (double const value : point.vt_data) {
      sum += value * value;
    }
    for (double& value : point.vt_data) {
      value /= std::sqrt(sum);
    }
  }
}

/// Multiplies each coordinate by the logarithm of how rare its word is, then scales to length 1.
void weigh_by_rarity(Points& points) {
  std::vector<double> documents(points.front().vt_data.size());
  for (HPointN const& point : points) {
    for (std::size_t i = 0; i < documents.size(); ++i) {
      documents[i] += point.vt_data[i] != 0.0 ? 1.0 : 0.0;
    }
  }
  for (HPointN& point : points) {
    for (std::size_t i = 0; i < documents.size(); ++i) {
      point.vt_data[i] *= std::log(static_cast<double>(points.size()) / documents[i]);
    }
  }
  scale_to_unit_length(points);
}

void try_words(Points const& points, int classes, std::vector<Trial>& trials) {
  std::string const kind = "words";
  for (int const factor : {1, 4}) {
    trials.push_back(try_kmeans(kind, points, 0, factor * classes, false));
  }
  trials.push_back(try_kmeans(kind, points, 0, classes, true));
  trials.push_back(try_kmeans(kind, points, 1, classes, false));
  for (double const share : {1.0, 0.6}) {
    trials.push_back(try_canopy(kind, points, share));
  }
  for (double const share : {1.0, 0.8, 0.6}) {
    trials.push_back(try_dbscan(kind, points, share));
  }
  for (double const threshold : {0.2, 0.5}) {
    trials.push_back(try_cosine(kind, points, threshold));
  }
}

void try_scaled_words(std::string const& kind, Points const& points, int classes,
                      std::vector<Trial>& trials) {
  for (int const factor : {1, 2}) {
    trials.push_back(try_kmeans(kind, points, 0, factor * classes, false));
  }
  trials.push_back(try_dbscan(kind, points, 0.95));
}

void try_fingerprints(Points const& points, int classes, std::vector<Trial>& trials) {
  std::string const kind = "fingerprints";
  trials.push_back(try_kmeans(kind, points, 0, classes, false));
  trials.push_back(try_canopy(kind, points, 0.6));
  for (double const share : {1.0, 0.6}) {
    trials.push_back(try_dbscan(kind, points, share));
  }
  trials.push_back(try_cosine(kind, points, 0.6));
}

/// In percent of the texts.
double share_of(std::ptrdiff_t count, std::vector<int> const& partition) {
  return 100.0 * static_cast<double>(count) / static_cast<double>(partition.size());
}

/// Rounded to two digits, and never a zero with a sign.
double rounded(double value) {
  return std::round(value * 100.0) / 100.0 + 0.0;
}

void print_trial(Trial const& trial, bench::LabelledTexts const& set) {
  auto const partition = bench::partition_of(trial.clusters, set.labels.size());
  std::ptrdiff_t largest = 0;
  for (std::vector<int> const& members : trial.clusters) {
    largest = std::max(largest, std::ssize(members));
  }
  auto const unclassified =
      std::count(partition.begin(), partition.end(), static_cast<int>(trial.clusters.size()));
  bench::Agreement const agreement = bench::compare_partitions(set.labels, partition);
  fmt::print("| {} | {} | {} | {} | {:.0f} % | {:.0f} % | {:.2f} | {:.2f} | {:.2f} |\n",
             trial.points, trial.method, trial.parameters, trial.clusters.size(),
             share_of(largest, partition), share_of(unclassified, partition),
             rounded(agreement.purity), rounded(agreement.adjusted_rand_index),
             rounded(agreement.normalised_mutual_information));
}

void measure_set(bench::LabelledTexts const& set) {
  std::vector<Trial> trials;
  std::vector<HString> words;
  Points points;
  HClusterFileData::format_data(set.records, words, points, false);
  fmt::print("\n### {}: {} texts of {} classes, {} words{}\n\n", set.name, set.records.size(),
             set.class_count, words.size(),
             set.failed_count == 0 ? std::string()
                                   : fmt::format(" ({} more gave none)", set.failed_count));
  try_words(points, set.class_count, trials);
  Points scaled = points;
  scale_to_unit_length(scaled);
  try_scaled_words("words, length 1", scaled, set.class_count, trials);
  weigh_by_rarity(points);
  try_scaled_words("words by rarity, length 1", points, set.class_count, trials);
  HClusterFileData::format_data(set.records, words, points, true);
  try_fingerprints(points, set.class_count, trials);
  fmt::print(
      "| points | method | parameters | classes | largest | unclassified | purity | "
      "ARI | NMI |\n|---|---|---|---:|---:|---:|---:|---:|---:|\n");
  for (Trial const& trial : trials) {
    print_trial(trial, set);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int most_per_class = 1000;
  CLI::App app{"Agreement of clusters with labels, for the texts that MORVA_CORPUS names."};
  app.add_option("--per-class", most_per_class,
                 "Texts of each class, the first ones by name; 1000 if not given");
  CLI11_PARSE(app, argc, argv);
  auto const sets = bench::load_labelled_texts(most_per_class);
  if (sets.empty()) {
    std::fprintf(stderr, "MORVA_CORPUS names no folder with texts\n");
    return 1;
  }
  for (bench::LabelledTexts const& set : sets) {
    measure_set(set);
  }
  measure_set(bench::load_versions(versions_per_class));
  return 0;
}
