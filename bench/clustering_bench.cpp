// Time and memory of the clustering engines and the pair measures, beside their plain forms and
// scikit-learn, as Markdown tables. Matrices are generated; with --real they are those of the texts
// that MORVA_CORPUS names.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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
#include "cluster/cluster_type.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterDistance.h"

#include "generated_corpus.h"
#include "labelled_texts.h"
#include "measured_run.h"
#include "reference/clustering.h"

namespace {

using bench::fingerprint_of;
using bench::Measured;

constexpr int k = 20;
constexpr int minpts = 4;
constexpr double memory_limit = 6e9;

struct Options {
  std::vector<std::size_t> sizes{250, 500, 1000, 2000};
  std::size_t plain_up_to = 1000;
  double limit_seconds = 120.0;
  bool with_sklearn = true;
  bool only_words = false;
  bool only_dna = false;
  bool real = false;
};

struct Matrix {
  std::vector<HPointN> points;
  std::size_t non_zero = 0;
  double eps = 0.0;
};

/// An operation by the name that it has in the table and in the script.
struct Operation {
  std::string name;
  std::function<std::uint64_t(Matrix const&)> engine;
  std::function<std::uint64_t(reference::Matrix const&, double eps)> plain;
};

struct Row {
  std::optional<Measured> engine;
  std::optional<Measured> plain;
  std::optional<double> dense;
  std::optional<double> compressed;
};

std::uint64_t run_kmeans(Matrix const& matrix, int type, bool use_canopy) {
  std::vector<std::vector<int>> clusters;
  gi_K_ClusterType = type;
  HClusterMgr::pins()->kmeans(matrix.points, k, clusters, use_canopy);
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

std::vector<Operation> const& operations() {
  static std::vector<Operation> const all = {
      {"mean distance",
       [](Matrix const& m) { return fingerprint_of(HClusterDistance::get_avg_distance(m.points)); },
       [](auto const& points, double) { return fingerprint_of(reference::mean_distance(points)); }},
      {"largest distance",
       [](Matrix const& m) {
         int i = 0;
         int j = 0;
         return fingerprint_of(HClusterDistance::get_max_distance_index(m.points, i, j));
       },
       [](auto const& points, double) {
         return fingerprint_of(reference::farthest_pair(points).distance);
       }},
      {"radius estimate",
       [](Matrix const& m) { return fingerprint_of(HParaPrefer::get_eps(m.points, minpts, true)); },
       [](auto const& points, double) {
         return fingerprint_of(reference::eps_of(points, minpts, true));
       }},
      {"canopy",
       [](Matrix const& m) {
         std::vector<std::vector<int>> clusters;
         HClusterMgr::pins()->canopy(m.points, 0.0, 0.0, clusters);
         return fingerprint_of(clusters);
       },
       [](auto const& points, double) {
         reference::Canopy engine;
         engine.points = points;
         engine.run();
         return fingerprint_of(engine.result);
       }},
      {"kmeans", [](Matrix const& m) { return run_kmeans(m, 0, false); },
       [](auto const& points, double) { return run_plain_kmeans(points, 0, false); }},
      {"kmeans, canopy seeds", [](Matrix const& m) { return run_kmeans(m, 0, true); },
       [](auto const& points, double) { return run_plain_kmeans(points, 0, true); }},
      {"kmedians", [](Matrix const& m) { return run_kmeans(m, 1, false); },
       [](auto const& points, double) { return run_plain_kmeans(points, 1, false); }},
      {"dbscan",
       [](Matrix const& m) {
         std::vector<std::vector<int>> clusters;
         HClusterMgr::pins()->dbscan(m.points, m.eps, minpts, false, clusters);
         return fingerprint_of(clusters);
       },
       [](auto const& points, double eps) {
         reference::DbScan engine;
         engine.points = points;
         engine.eps = eps;
         engine.min_points = minpts;
         engine.run();
         return fingerprint_of(engine.result);
       }},
  };
  return all;
}

Matrix make_matrix(std::vector<HPointN> points) {
  Matrix matrix;
  matrix.points = std::move(points);
  for (HPointN const& point : matrix.points) {
    matrix.non_zero += static_cast<std::size_t>(std::count_if(
        point.vt_data.begin(), point.vt_data.end(), [](double value) { return value != 0.0; }));
  }
  matrix.eps = HParaPrefer::get_eps(matrix.points, minpts, true);
  return matrix;
}

double matrix_bytes(Matrix const& matrix) {
  return 8.0 * static_cast<double>(matrix.points.size() * matrix.points.front().vt_data.size());
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
  for (HPointN const& point : matrix.points) {
    for (std::size_t i = 0; i < point.vt_data.size(); ++i) {
      if (point.vt_data[i] != 0.0) {
        values.push_back(point.vt_data[i]);
        columns.push_back(static_cast<std::int32_t>(i));
      }
    }
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
  nlohmann::json const meta{{"rows", matrix.points.size()},
                            {"columns", matrix.points.front().vt_data.size()},
                            {"eps", matrix.eps},
                            {"minpts", minpts},
                            {"memory_limit", memory_limit}};
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
    rows[operation.name].plain =
        bench::measure([&] { return operation.plain(points, matrix.eps); }, options.limit_seconds);
  }
  for (std::size_t i = 0; i < points.size(); ++i) {
    matrix.points[i].vt_data = std::move(points[i]);
  }
}

std::map<std::string, Row> measure_all(Matrix& matrix, Options const& options,
                                       nlohmann::json& sklearn) {
  std::map<std::string, Row> rows;
  for (Operation const& operation : operations()) {
    std::fprintf(stderr, "  %s\n", operation.name.c_str());
    rows[operation.name].engine =
        bench::measure([&] { return operation.engine(matrix); }, options.limit_seconds);
  }
  if (matrix.points.size() <= options.plain_up_to) {
    measure_plain(matrix, options, rows);
  }
  if (options.with_sklearn) {
    std::fprintf(stderr, "  scikit-learn\n");
    sklearn = run_sklearn(matrix);
    for (auto& [name, row] : rows) {
      if (sklearn.is_object() && sklearn.contains("dense") && sklearn["dense"].contains(name)) {
        row.dense = sklearn["dense"][name].get<double>();
      }
      if (sklearn.is_object() && sklearn["compressed"].contains(name)) {
        row.compressed = sklearn["compressed"][name].get<double>();
      }
    }
  }
  return rows;
}

std::string milliseconds(std::optional<double> seconds) {
  if (!seconds) {
    return "";
  }
  return *seconds < 0.1 ? fmt::format("{:.2f}", *seconds * 1000.0)
                        : fmt::format("{:.0f}", *seconds * 1000.0);
}

std::string ratio(std::optional<double> other, std::optional<Measured> const& engine) {
  if (!other || !engine) {
    return "";
  }
  double const value = *other / engine->seconds;
  return value < 10.0 ? fmt::format("{:.2g}", value) : fmt::format("{:.0f}", value);
}

std::optional<double> seconds(std::optional<Measured> const& measured) {
  return measured ? std::optional(measured->seconds) : std::nullopt;
}

std::string table_row(std::size_t documents, Matrix const& matrix, Row const& row) {
  std::string line = fmt::format(
      "| {} | {} | {} | {} | {} | {} | {} | {} |", documents, milliseconds(seconds(row.engine)),
      milliseconds(seconds(row.plain)), ratio(seconds(row.plain), row.engine),
      milliseconds(row.dense), ratio(row.dense, row.engine), milliseconds(row.compressed),
      ratio(row.compressed, row.engine));
  if (row.engine) {
    line += fmt::format(" {:.2f} | {:.2f} |", row.engine->peak_bytes / 1e6,
                        row.engine->peak_bytes / non_zero_bytes(matrix));
  } else {
    line += " | |";
  }
  return line;
}

/// The tables of one kind of matrix, size by size.
class Table {
 public:
  /// Whether no engine differed from its plain form.
  bool add(Matrix matrix, Options const& options) {
    std::size_t const documents = matrix.points.size();
    std::fprintf(stderr, "%zu documents\n", documents);
    nlohmann::json sklearn;
    auto const rows = measure_all(matrix, options, sklearn);
    bool is_same = true;
    for (auto const& [name, row] : rows) {
      lines_[name].push_back(table_row(documents, matrix, row));
      if (row.engine && row.plain && row.engine->result != row.plain->result) {
        std::fprintf(stderr, "%s: the result differs from that of the plain form\n", name.c_str());
        is_same = false;
      }
    }
    sizes_ += fmt::format("| {} | {} | {:.1f} | {:.2f} | {:.4f} |\n", documents,
                          matrix.points.front().vt_data.size(), matrix_bytes(matrix) / 1e6,
                          non_zero_bytes(matrix) / 1e6, matrix.eps);
    if (sklearn.is_object()) {
      sklearn_ =
          fmt::format("scikit-learn {} on {} processors", sklearn["version"].get<std::string>(),
                      sklearn["processors"].get<int>());
    }
    return is_same;
  }

  void print(std::string const& title) const {
    fmt::print("### {}\n\n", title);
    fmt::print("| documents | coordinates | matrix, MB | non-zero data, MB | eps of dbscan |\n");
    fmt::print("|---:|---:|---:|---:|---:|\n{}\n", sizes_);
    fmt::print("Engines on one processor; {}.\n\n",
               sklearn_.empty() ? "scikit-learn not measured" : sklearn_);
    fmt::print(
        "| operation | documents | engine, ms | plain, ms | times | sklearn dense, ms | times | "
        "sklearn CSR, ms | times | memory, MB | of non-zero |\n"
        "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|\n");
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
      is_same = words.add(make_matrix(std::move(corpus.words)), options) && is_same;
    }
    if (!options.only_words) {
      is_same = dna.add(make_matrix(std::move(corpus.dna)), options) && is_same;
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
    is_same = table.add(make_matrix(std::move(points)), options) && is_same;
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
  app.add_option("--sizes", options.sizes, "Numbers of documents; 250,500,1000,2000 if not given")
      ->delimiter(',');
  app.add_option("--plain-up-to", options.plain_up_to,
                 "Documents up to which the plain forms are measured, 1000 if not given");
  app.add_option("--limit", options.limit_seconds,
                 "Seconds after which an operation is given up, 120 if not given");
  app.add_flag("!--no-sklearn", options.with_sklearn, "Without scikit-learn");
  app.add_flag("--words", options.only_words, "Term weights only");
  app.add_flag("--dna", options.only_dna, "Fingerprints only");
  app.add_flag("--real", options.real, "The texts that MORVA_CORPUS names");
  CLI11_PARSE(app, argc, argv);
  return (options.real ? bench_real(options) : bench_generated(options)) ? 0 : 1;
}
