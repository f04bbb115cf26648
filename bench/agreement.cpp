#include "agreement.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace bench {

namespace {

using Counts = std::map<int, double>;

// How many items have each label, each cluster, and each of both together.
struct Contingency {
  Contingency(std::vector<int> const& items_labels, std::vector<int> const& items_clusters)
      : total(static_cast<double>(items_labels.size())) {
    for (std::size_t i = 0; i < items_labels.size(); ++i) {
      labels[items_labels[i]] += 1.0;
      clusters[items_clusters[i]] += 1.0;
      cells[{items_clusters[i], items_labels[i]}] += 1.0;
    }
  }

  double total;
  Counts labels;
  Counts clusters;
  std::map<std::pair<int, int>, double> cells;
};

double pairs(double count) {
  return count * (count - 1.0) / 2.0;
}

template <typename Map>
double pairs_within(Map const& counts) {
  double sum = 0.0;
  for (auto const& entry : counts) {
    sum += pairs(entry.second);
  }
  return sum;
}

double purity(Contingency const& table) {
  Counts most;
  for (auto const& [cell, count] : table.cells) {
    most[cell.first] = std::max(most[cell.first], count);
  }
  double sum = 0.0;
  for (auto const& entry : most) {
    sum += entry.second;
  }
  return sum / table.total;
}

double adjusted_rand_index(Contingency const& table) {
  double const in_labels = pairs_within(table.labels);
  double const in_clusters = pairs_within(table.clusters);
  double const expected = table.total < 2.0 ? 0.0 : in_labels * in_clusters / pairs(table.total);
  double const most = (in_labels + in_clusters) / 2.0;
  // Only where both partitions are one cluster, or both are all single items.
  return most == expected ? 1.0 : (pairs_within(table.cells) - expected) / (most - expected);
}

double entropy(Counts const& counts, double total) {
  double sum = 0.0;
  for (auto const& entry : counts) {
    sum -= entry.second / total * std::log(entry.second / total);
  }
  return sum;
}

double normalised_mutual_information(Contingency const& table) {
  double shared = 0.0;
  for (auto const& [cell, count] : table.cells) {
    double const by_chance = table.clusters.at(cell.first) * table.labels.at(cell.second);
    shared += count / table.total * std::log(count * table.total / by_chance);
  }
  double const both = entropy(table.labels, table.total) + entropy(table.clusters, table.total);
  return both == 0.0 ? 1.0 : 2.0 * shared / both;
}

}  // namespace

Agreement compare_partitions(std::vector<int> const& labels, std::vector<int> const& clusters) {
  if (labels.empty()) {
    return {};
  }
  Contingency const table(labels, clusters);
  return {purity(table), adjusted_rand_index(table), normalised_mutual_information(table)};
}

std::vector<int> partition_of(std::vector<std::vector<int>> const& clusters, std::size_t count) {
  std::vector<int> partition(count, static_cast<int>(clusters.size()));
  for (std::size_t i = clusters.size(); i-- > 0;) {
    for (int const item : clusters[i]) {
      partition[static_cast<std::size_t>(item)] = static_cast<int>(i);
    }
  }
  return partition;
}

}  // namespace bench
