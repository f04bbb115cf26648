// How time and memory of the engines grow, measured on generated documents as points, without files
// and without the program. Prints one JSON object a line: its name is
// `operation/candidate/documents`, and it has a number that tells results apart.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cluster/HSparseClusterMgr.h"
#include "cluster/cluster_type.h"
#include "numeric/HSparsePoints.h"

#include "generated_corpus.h"
#include "measured_run.h"

namespace {

using bench::fingerprint_of;

constexpr int minpts = 4;

struct Options {
  std::size_t documents = 0;
  std::vector<std::string> operations;
  std::string candidate = "morvaai";
  double eps = 0.0;
  double limit_seconds = 900.0;
};

struct Operation {
  std::string name;
  std::function<std::uint64_t(HSparsePoints const&, Options const&)> run;
};

std::uint64_t run_kmeans(HSparsePoints const& points, int k, bool use_canopy) {
  std::vector<std::vector<int>> clusters;
  gi_K_ClusterType = 0;
  HSparseClusterMgr::kmeans(points, k, clusters, use_canopy);
  return fingerprint_of(clusters);
}

// By the mean distance of all pairs where the radius is 0.0.
std::uint64_t run_canopy(HSparsePoints const& points, double t2) {
  std::vector<std::vector<int>> clusters;
  HSparseClusterMgr::canopy(points, t2, t2, clusters);
  return fingerprint_of(clusters);
}

std::uint64_t run_dbscan(HSparsePoints const& points, double eps) {
  std::vector<std::vector<int>> clusters;
  HSparseClusterMgr::dbscan(points, eps, minpts, false, clusters);
  return fingerprint_of(clusters);
}

double eps_of(HSparsePoints const& points) {
  return HSparseClusterMgr::get_eps(points, minpts, true);
}

std::vector<Operation> operations() {
  return {
      {"mean-distance",
       [](auto& points, auto&) { return fingerprint_of(points.get_avg_distance()); }},
      {"eps", [](auto& points, auto&) { return fingerprint_of(eps_of(points)); }},
      {"canopy", [](auto& points, auto&) { return run_canopy(points, 0.0); }},
      {"canopy-given", [](auto& points, auto& options) { return run_canopy(points, options.eps); }},
      {"kmeans-20", [](auto& points, auto&) { return run_kmeans(points, 20, false); }},
      {"kmeans-100", [](auto& points, auto&) { return run_kmeans(points, 100, false); }},
      {"dbscan-auto", [](auto& points, auto&) { return run_dbscan(points, eps_of(points)); }},
      {"dbscan-given", [](auto& points, auto& options) { return run_dbscan(points, options.eps); }},
  };
}

void print(nlohmann::json const& record) {
  fmt::print("{}\n", record.dump());
  std::fflush(stdout);
}

/// The result, where there is one.
std::optional<std::uint64_t> measure(Operation const& operation, HSparsePoints const& points,
                                     Options const& options) {
  std::string const name =
      fmt::format("{}/{}/{}", operation.name, options.candidate, options.documents);
  auto const runs =
      bench::measure([&] { return operation.run(points, options); }, options.limit_seconds);
  if (!runs) {
    print({{"name", name},
           {"missing", fmt::format("took longer than {:.0f} s", options.limit_seconds)}});
    return std::nullopt;
  }
  print({{"name", name},
         {"seconds", runs->seconds},
         {"cpu_seconds", runs->cpu_seconds},
         {"peak_bytes", runs->peak_bytes},
         {"result", fmt::format("{:016x}", runs->best.result)}});
  return runs->best.result;
}

// Of pairs of documents, the share that is within the radius, by documents at equal distances from
// each other in the order of numbers.
double share_within(std::vector<HSparsePoints::Row> const& rows, double radius) {
  constexpr std::size_t asked = 256;
  std::size_t const step = std::max<std::size_t>(1, rows.size() / asked);
  std::vector<double> dense(static_cast<std::size_t>(rows.front().n));
  std::size_t within = 0;
  std::size_t pairs = 0;
  for (std::size_t i = 0; i < rows.size(); i += step) {
    std::fill(dense.begin(), dense.end(), 0.0);
    double own = 0.0;
    for (std::size_t k = 0; k < rows[i].indices.size(); ++k) {
      dense[rows[i].indices[k]] = rows[i].values[k];
      own += rows[i].values[k] * rows[i].values[k];
    }
    for (std::size_t j = 0; j < rows.size(); ++j) {
      double square = own;
      for (std::size_t k = 0; k < rows[j].indices.size(); ++k) {
        double const value = rows[j].values[k];
        square += value * (value - 2.0 * dense[rows[j].indices[k]]);
      }
      within += i != j && square <= radius * radius ? 1 : 0;
      ++pairs;
    }
  }
  return static_cast<double>(within) / static_cast<double>(pairs);
}

// What the corpus is like, in numbers.
void print_corpus(std::vector<HSparsePoints::Row> const& rows) {
  std::size_t words = 0;
  for (HSparsePoints::Row const& row : rows) {
    words += row.indices.size();
  }
  print({{"corpus", rows.size()}, {"vocabulary", rows.front().n}, {"words", words}});
}

void print_neighbours(std::vector<HSparsePoints::Row> const& rows, char const* name, double eps) {
  double const neighbours = share_within(rows, eps) * static_cast<double>(rows.size());
  print({{"corpus", rows.size()},
         {fmt::format("eps_{}", name), eps},
         {fmt::format("neighbours_{}", name), neighbours}});
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app{"Time and memory of the engines on generated documents, as JSON lines."};
  app.add_option("--documents", options.documents, "How many")
      ->required()
      ->check(CLI::Range(std::size_t{2}, std::size_t{100'000'000}));
  app.add_option("--operations", options.operations, "Which, all if not given")->delimiter(',');
  app.add_option("--candidate", options.candidate, "What results are named after, if not morvaai");
  app.add_option("--eps", options.eps, "Radius of what is named after a given one")->required();
  app.add_option("--limit", options.limit_seconds,
                 "Seconds after which an operation is given up, 900 if not given");
  CLI11_PARSE(app, argc, argv);
  std::vector<HSparsePoints::Row> const rows = bench::generate_words(options.documents);
  print_corpus(rows);
  print_neighbours(rows, "given", options.eps);
  HSparsePoints const points(rows);
  for (Operation const& operation : operations()) {
    auto const& wanted = options.operations;
    if (!wanted.empty() &&
        std::find(wanted.begin(), wanted.end(), operation.name) == wanted.end()) {
      continue;
    }
    auto const result = measure(operation, points, options);
    if (result && operation.name == "eps") {
      print_neighbours(rows, "auto", std::bit_cast<double>(*result));
    }
  }
  return 0;
}
