// Time and memory of the clustering engines and the pair measures, beside their plain forms and
// scikit-learn, as Markdown tables and as results for the driver. Matrices are generated; with
// --real they are those of the texts that MORVA_CORPUS names. The engines run from the dense matrix
// and, where there is no room for one, only from compressed rows.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/HSparseClusterMgr.h"
#include "cluster/cluster_type.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterDistance.h"
#include "numeric/HSparsePoints.h"

#include "generated_corpus.h"
#include "labelled_texts.h"
#include "measured_run.h"
#include "reference/clustering.h"

namespace {

using bench::fingerprint_of;
using bench::MeasuredRuns;

constexpr int k = 20;
constexpr int minpts = 4;
constexpr double memory_limit = 6e9;

struct Options {
  std::vector<std::size_t> sizes{250, 500, 1000, 2000, 4000, 8000};
  std::size_t plain_up_to = 1000;
  std::size_t dense_up_to = 2000;
  double limit_seconds = 120.0;
  bool with_sklearn = true;
  bool only_words = false;
  bool only_dna = false;
  bool real = false;
  std::string json;
};

/// The points in both forms; `points` is empty where a dense matrix would be too large.
struct Matrix {
  std::vector<HPointN> points;
  std::vector<HSparsePoints::Row> rows;
  HSparsePoints sparse;
  std::size_t non_zero = 0;
  double eps = 0.0;
};

/// An operation by the name that it has in the tables, in the results and in the script. From
/// compressed rows, and in plain form, where there is one.
struct Operation {
  std::string name;
  std::function<std::uint64_t(Matrix const&)> engine;
  std::function<std::uint64_t(Matrix const&)> sparse;
  std::function<std::uint64_t(reference::Matrix const&, double eps)> plain;
};

/// What each candidate took.
using Row = std::map<std::string, MeasuredRuns>;

std::uint64_t run_kmeans(Matrix const& matrix, int type, bool use_canopy) {
  std::vector<std::vector<int>> clusters;
  gi_K_ClusterType = type;
  HClusterMgr::pins()->kmeans(matrix.points, k, clusters, use_canopy);
  return fingerprint_of(clusters);
}

std::uint64_t run_sparse_kmeans(Matrix const& matrix, int type, bool use_canopy) {
  std::vector<std::vector<int>> clusters;
  gi_K_ClusterType = type;
  HSparseClusterMgr::kmeans(matrix.sparse, k, clusters, use_canopy);
  return fingerprint_of(clusters);
}

std::uint64_t run_plain_kmeans(reference::Matrix const& points, int type, bool use_canopy) {
  reference::KMeans engine;
  engine.points = points;
  engine.k = k;
  engine.type = type;
  engine.use_canopy = use_canopy;
  engine.run();
  return fingerprint_of(engine.result);
}

std::vector<Operation> measures() {
  return {
      {"mean_distance",
       [](Matrix const& m) { return fingerprint_of(HClusterDistance::get_avg_distance(m.points)); },
       [](Matrix const& m) { return fingerprint_of(m.sparse.get_avg_distance()); },
       [](auto const& points, double) { return fingerprint_of(reference::mean_distance(points)); }},
      {"largest_distance",
       [](Matrix const& m) {
         int i = 0;
         int j = 0;
         return fingerprint_of(HClusterDistance::get_max_distance_index(m.points, i, j));
       },
       {},
       [](auto const& points, double) {
         return fingerprint_of(reference::farthest_pair(points).distance);
       }},
      {"eps",
       [](Matrix const& m) { return fingerprint_of(HParaPrefer::get_eps(m.points, minpts, true)); },
       [](Matrix const& m) {
         return fingerprint_of(HSparseClusterMgr::get_eps(m.sparse, minpts, true));
       },
       [](auto const& points, double) {
         return fingerprint_of(reference::eps_of(points, minpts, true));
       }},
  };
}

Operation kmeans_operation(std::string const& name, int type, bool use_canopy) {
  return {name, [=](Matrix const& m) { return run_kmeans(m, type, use_canopy); },
          [=](Matrix const& m) { return run_sparse_kmeans(m, type, use_canopy); },
          [=](auto const& points, double) { return run_plain_kmeans(points, type, use_canopy); }};
}

Operation canopy_operation() {
  return {"canopy",
          [](Matrix const& m) {
            std::vector<std::vector<int>> clusters;
            HClusterMgr::pins()->canopy(m.points, 0.0, 0.0, clusters);
            return fingerprint_of(clusters);
          },
          [](Matrix const& m) {
            std::vector<std::vector<int>> clusters;
            HSparseClusterMgr::canopy(m.sparse, 0.0, 0.0, clusters);
            return fingerprint_of(clusters);
          },
          [](auto const& points, double) {
            reference::Canopy engine;
            engine.points = points;
            engine.run();
            return fingerprint_of(engine.result);
          }};
}

Operation dbscan_operation() {
  return {"dbscan",
          [](Matrix const& m) {
            std::vector<std::vector<int>> clusters;
            HClusterMgr::pins()->dbscan(m.points, m.eps, minpts, false, clusters);
            return fingerprint_of(clusters);
          },
          [](Matrix const& m) {
            std::vector<std::vector<int>> clusters;
            HSparseClusterMgr::dbscan(m.sparse, m.eps, minpts, false, clusters);
            return fingerprint_of(clusters);
          },
          [](auto const& points, double eps) {
            reference::DbScan engine;
            engine.points = points;
            engine.eps = eps;
            engine.min_points = minpts;
            engine.run();
            return fingerprint_of(engine.result);
          }};
}

std::vector<Operation> const& operations() {
  static std::vector<Operation> const all = [] {
    std::vector<Operation> list = measures();
    list.push_back(canopy_operation());
    list.push_back(kmeans_operation("kmeans", 0, false));
    list.push_back(kmeans_operation("kmeans_canopy", 0, true));
    list.push_back(kmeans_operation("kmedians", 1, false));
    list.push_back(dbscan_operation());
    return list;
  }();
  return all;
}

Matrix make_matrix(std::vector<HSparsePoints::Row> rows, Options const& options) {
  Matrix matrix;
  for (HSparsePoints::Row const& row : rows) {
    matrix.non_zero += row.indices.size();
  }
  // Each list of its own: a list keeps what it needed to measure.
  matrix.eps = HSparseClusterMgr::get_eps(HSparsePoints(rows), minpts, true);
  matrix.sparse = HSparsePoints(rows);
  if (rows.size() <= options.dense_up_to) {
    matrix.points = bench::to_points(rows);
  }
  matrix.rows = std::move(rows);
  return matrix;
}

double matrix_bytes(Matrix const& matrix) {
  return 8.0 * static_cast<double>(matrix.rows.size()) * static_cast<double>(matrix.rows.front().n);
}

/// An 8-byte value and a 4-byte index for each coordinate that is not zero.
double non_zero_bytes(Matrix const& matrix) {
  return 12.0 * static_cast<double>(matrix.non_zero);
}

template <typename T>
void write_binary(std::filesystem::path const& path, std::vector<T> const& values) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<char const*>(values.data()),
            static_cast<std::streamsize>(values.size() * sizeof(T)));
}

void write_matrix(Matrix const& matrix, std::filesystem::path const& folder) {
  std::vector<double> values;
  std::vector<std::int32_t> columns;
  std::vector<std::int64_t> starts{0};
  for (HSparsePoints::Row const& row : matrix.rows) {
    values.insert(values.end(), row.values.begin(), row.values.end());
    columns.insert(columns.end(), row.indices.begin(), row.indices.end());
    starts.push_back(static_cast<std::int64_t>(values.size()));
  }
  HClusterKMeans seeds;
  seeds.set_k(k);
  std::vector<double> centers;
  if (seeds.InitBase(matrix.points) && seeds.init()) {
    for (HPointN const& mean : seeds.vt_mean) {
      centers.insert(centers.end(), mean.vt_data.begin(), mean.vt_data.end());
    }
  }
  write_binary(folder / "values.bin", values);
  write_binary(folder / "columns.bin", columns);
  write_binary(folder / "starts.bin", starts);
  write_binary(folder / "centers.bin", centers);
  nlohmann::json const meta{{"rows", matrix.rows.size()},
                            {"columns", matrix.rows.front().n},
                            {"eps", matrix.eps},
                            {"minpts", minpts},
                            {"memory_limit", matrix.points.empty() ? 0.0 : memory_limit}};
  std::ofstream(folder / "meta.json") << meta;
}

/// What the script prints; null where it could not run.
nlohmann::json run_sklearn(Matrix const& matrix) {
  std::string folder = (std::filesystem::temp_directory_path() / "clusteringXXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    return {};
  }
  write_matrix(matrix, folder);
  std::string const command = "/usr/bin/python3 '" SKLEARN_SCRIPT "' '" + folder + "'";
  std::string output;
  if (std::FILE* const pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr) {
      output += buffer;
    }
    pclose(pipe);
  }
  std::filesystem::remove_all(folder);
  return nlohmann::json::parse(output, nullptr, false);
}

/// The plain forms take the coordinates over while they run, so that there is one copy of them.
void measure_plain(Matrix& matrix, Options const& options, std::map<std::string, Row>& rows) {
  reference::Matrix points;
  for (HPointN& point : matrix.points) {
    points.push_back(std::move(point.vt_data));
  }
  for (Operation const& operation : operations()) {
    std::fprintf(stderr, "  plain: %s\n", operation.name.c_str());
    if (auto runs = bench::measure([&] { return operation.plain(points, matrix.eps); },
                                   options.limit_seconds)) {
      rows[operation.name]["plain"] = *runs;
    }
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    matrix.points[i].vt_data = std::move(points[i]);
  }
}

void measure_engines(Matrix const& matrix, Options const& options,
                     std::map<std::string, Row>& rows) {
  for (Operation const& operation : operations()) {
    std::fprintf(stderr, "  %s\n", operation.name.c_str());
    Row& row = rows[operation.name];
    auto const measure = [&](auto const& work, char const* candidate) {
      if (auto runs = bench::measure([&] { return work(matrix); }, options.limit_seconds)) {
        row[candidate] = *runs;
      }
    };
    if (!matrix.points.empty()) {
      measure(operation.engine, "morvaai");
    }
    if (operation.sparse) {
      measure(operation.sparse, "morvaai_sparse");
    }
  }
}

void measure_sklearn(Matrix const& matrix, std::map<std::string, Row>& rows,
                     nlohmann::json& sklearn) {
  std::fprintf(stderr, "  scikit-learn\n");
  sklearn = run_sklearn(matrix);
  for (auto const& [candidate, results] : sklearn.items()) {
    if (!results.is_object()) {
      continue;
    }
    for (auto const& [name, seconds] : results.items()) {
      MeasuredRuns& runs = rows[name][candidate];
      runs.seconds = seconds.get<std::vector<double>>();
      runs.best.seconds = *std::min_element(runs.seconds.begin(), runs.seconds.end());
    }
  }
}

std::map<std::string, Row> measure_all(Matrix& matrix, Options const& options,
                                       nlohmann::json& sklearn) {
  std::map<std::string, Row> rows;
  measure_engines(matrix, options, rows);
  if (!matrix.points.empty() && matrix.rows.size() <= options.plain_up_to) {
    measure_plain(matrix, options, rows);
  }
  if (options.with_sklearn) {
    measure_sklearn(matrix, rows, sklearn);
  }
  return rows;
}

/// One result a line: its name is `operation/candidate/documents`.
void write_results(std::map<std::string, Row> const& rows, std::string const& kind,
                   std::size_t documents, std::string const& path) {
  std::ofstream out(path, std::ios::app);
  for (auto const& [name, row] : rows) {
    for (auto const& [candidate, runs] : row) {
      nlohmann::json result{{"name", fmt::format("{}{}/{}/{}", name, kind, candidate, documents)},
                            {"seconds", runs.seconds}};
      if (!runs.peak_bytes.empty()) {
        result["peak_bytes"] = runs.peak_bytes;
      }
      out << result << '\n';
    }
  }
}

std::string milliseconds(std::optional<double> seconds) {
  if (!seconds) {
    return "";
  }
  return *seconds < 0.1 ? fmt::format("{:.2f}", *seconds * 1000.0)
                        : fmt::format("{:.0f}", *seconds * 1000.0);
}

std::optional<double> seconds(Row const& row, std::string const& candidate) {
  auto const found = row.find(candidate);
  return found == row.end() ? std::nullopt : std::optional(found->second.best.seconds);
}

std::string ratio(std::optional<double> other, std::optional<double> engine) {
  if (!other || !engine) {
    return "";
  }
  double const value = *other / *engine;
  return value < 10.0 ? fmt::format("{:.2g}", value) : fmt::format("{:.0f}", value);
}

std::string memory(Matrix const& matrix, Row const& row, std::string const& candidate) {
  auto const found = row.find(candidate);
  if (found == row.end()) {
    return " |";
  }
  double const bytes = found->second.best.peak_bytes;
  return fmt::format("{:.2f} | {:.2f}", bytes / 1e6, bytes / non_zero_bytes(matrix));
}

std::string table_row(Matrix const& matrix, Row const& row) {
  auto const engine = seconds(row, "morvaai");
  auto const sparse = seconds(row, "morvaai_sparse");
  std::string line = fmt::format("| {} | {} ", matrix.rows.size(), milliseconds(engine));
  for (char const* const other : {"plain", "sklearn", "sklearn_converted"}) {
    line += fmt::format("| {} | {} ", milliseconds(seconds(row, other)),
                        ratio(seconds(row, other), engine));
  }
  line += fmt::format("| {} | {} | {} | {} ", memory(matrix, row, "morvaai"), milliseconds(sparse),
                      milliseconds(seconds(row, "sklearn_csr")),
                      ratio(seconds(row, "sklearn_csr"), sparse));
  return line + fmt::format("| {} |", memory(matrix, row, "morvaai_sparse"));
}

/// Whether all forms of an operation gave the same.
bool is_same(Row const& row) {
  std::optional<std::uint64_t> result;
  for (auto const& [candidate, runs] : row) {
    if (candidate.starts_with("sklearn")) {
      continue;
    }
    if (result && *result != runs.best.result) {
      return false;
    }
    result = runs.best.result;
  }
  return true;
}

/// The tables of one kind of matrix, size by size.
class Table {
 public:
  /// Whether no engine differed from its plain form. `kind` stands behind the operation in results.
  bool add(Matrix matrix, Options const& options, std::string const& kind) {
    std::size_t const documents = matrix.rows.size();
    std::fprintf(stderr, "%zu documents\n", documents);
    nlohmann::json sklearn;
    auto const rows = measure_all(matrix, options, sklearn);
    if (!options.json.empty()) {
      write_results(rows, kind, documents, options.json);
    }
    bool all_same = true;
    for (auto const& [name, row] : rows) {
      lines_[name].push_back(table_row(matrix, row));
      if (!is_same(row)) {
        std::fprintf(stderr, "%s: the result differs from that of the plain form\n", name.c_str());
        all_same = false;
      }
    }
    sizes_ +=
        fmt::format("| {} | {} | {:.1f} | {:.2f} | {:.4f} |\n", documents, matrix.rows.front().n,
                    matrix_bytes(matrix) / 1e6, non_zero_bytes(matrix) / 1e6, matrix.eps);
    if (sklearn.is_object()) {
      sklearn_ =
          fmt::format("scikit-learn {} on {} processors", sklearn["version"].get<std::string>(),
                      sklearn["processors"].get<int>());
    }
    return all_same;
  }

  void print(std::string const& title) const {
    fmt::print("### {}\n\n", title);
    fmt::print("| documents | coordinates | matrix, MB | non-zero data, MB | eps of dbscan |\n");
    fmt::print("|---:|---:|---:|---:|---:|\n{}\n", sizes_);
    fmt::print("Engines on one processor; {}.\n\n",
               sklearn_.empty() ? "scikit-learn not measured" : sklearn_);
    fmt::print(
        "| operation | documents | engine, ms | plain, ms | times | sklearn dense, ms | times | "
        "sklearn made CSR, ms | times | memory, MB | of non-zero | engine from rows, ms | "
        "sklearn CSR, ms | times | memory, MB | of non-zero |\n"
        "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
    for (Operation const& operation : operations()) {
      for (std::string const& line : lines_.at(operation.name)) {
        fmt::print("| {} {}\n", operation.name, line);
      }
    }
    fmt::print("\n");
    std::fflush(stdout);
  }

 private:
  std::map<std::string, std::vector<std::string>> lines_;
  std::string sizes_;
  std::string sklearn_;
};

bool bench_generated(Options const& options) {
  bool is_same = true;
  Table words;
  Table dna;
  for (std::size_t const size : options.sizes) {
    bench::GeneratedCorpus corpus = bench::generate_corpus(size);
    if (!options.only_dna) {
      is_same = words.add(make_matrix(std::move(corpus.words), options), options, "") && is_same;
    }
    if (!options.only_words) {
      is_same =
          dna.add(make_matrix(bench::to_rows(corpus.dna), options), options, "_dna") && is_same;
    }
  }
  if (!options.only_dna) {
    words.print("Term weights");
  }
  if (!options.only_words) {
    dna.print("Fingerprints");
  }
  return is_same;
}

bool bench_real(Options const& options) {
  constexpr int all = 1'000'000;
  auto sets = bench::load_labelled_texts(all);
  if (sets.empty()) {
    std::fprintf(stderr, "MORVA_CORPUS names no folder with texts\n");
    return false;
  }
  std::vector<HFeatureNode> records;
  for (bench::LabelledTexts& set : sets) {
    std::move(set.records.begin(), set.records.end(), std::back_inserter(records));
  }
  // So that the first ones are of all kinds. The engine's steps are the same everywhere.
  std::mt19937 random(1);
  for (std::size_t i = records.size(); i > 1; --i) {
    std::swap(records[i - 1], records[random() % i]);
  }
  Table table;
  bool is_same = true;
  for (std::size_t const size : options.sizes) {
    std::vector<HFeatureNode> const some(
        records.begin(),
        records.begin() + static_cast<std::ptrdiff_t>(std::min(size, records.size())));
    std::vector<HString> words;
    std::vector<HPointN> points;
    HClusterFileData::format_data(some, words, points, options.only_dna);
    is_same = table.add(make_matrix(bench::to_rows(points), options), options,
                        options.only_dna ? "_real_dna" : "_real") &&
              is_same;
    if (size >= records.size()) {
      break;
    }
  }
  table.print(options.only_dna ? "Fingerprints of real texts" : "Term weights of real texts");
  return is_same;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app{"Time and memory of the clustering engines, as Markdown tables."};
  app.add_option("--sizes", options.sizes,
                 "Numbers of documents; 250,500,1000,2000,4000,8000 if not given")
      ->delimiter(',');
  app.add_option("--plain-up-to", options.plain_up_to,
                 "Documents up to which the plain forms are measured, 1000 if not given");
  app.add_option("--dense-up-to", options.dense_up_to,
                 "Documents up to which there is a dense matrix, 2000 if not given");
  app.add_option("--json", options.json, "File that gets the results too, one JSON object a line");
  app.add_option("--limit", options.limit_seconds,
                 "Seconds after which an operation is given up, 120 if not given");
  app.add_flag("!--no-sklearn", options.with_sklearn, "Without scikit-learn");
  app.add_flag("--words", options.only_words, "Term weights only");
  app.add_flag("--dna", options.only_dna, "Fingerprints only");
  app.add_flag("--real", options.real, "The texts that MORVA_CORPUS names");
  CLI11_PARSE(app, argc, argv);
  return (options.real ? bench_real(options) : bench_generated(options)) ? 0 : 1;
}
