#include "classes/method.h"

#include <cstddef>
#include <cstdint>

#include <fmt/format.h>

namespace tool {

namespace {

bool is_by_k(MethodOptions const& options) {
  return options.method == "kmeans" || options.method == "kmedians";
}

void run_kmeans(MethodOptions const& options, Clustering& run) {
  gi_K_ClusterType = options.method == "kmeans" ? 0 : 1;
  HSparseClusterMgr::kmeans(run.points, options.k.value_or(0), run.clusters, options.canopy_seeds);
  run.parameters = {{"k", options.k.value_or(static_cast<int>(run.clusters.size()))},
                    {"seeds", std::string(options.canopy_seeds ? "canopy" : "farthest")}};
  if (run.clusters.empty()) {
    run.failure = options.canopy_seeds
                      ? "no canopies as many as -k asks for: try another -k, or none"
                      : "too few of the files differ to be seeds of that many classes";
  }
}

void run_canopy(MethodOptions const& options, Clustering& run) {
  // Without radii the engine takes these itself; taken here, they can be shown.
  double const mean = options.t2 ? 0.0 : run.points.get_avg_distance();
  double const t2 = options.t2.value_or(mean);
  double const t1 = options.t1.value_or(options.t2 ? t2 : 3 * mean);
  HSparseClusterMgr::canopy(run.points, t1, t2, run.clusters);
  run.parameters = {{"t1", t1}, {"t2", t2}};
}

void run_dbscan(MethodOptions const& options, Clustering& run) {
  choose_neighbourhood(options, run);
  auto const [eps, minpts] = run.neighbourhood;
  if (run.failure.empty()) {
    HSparseClusterMgr::dbscan(run.points, eps, minpts, false, run.clusters);
  }
}

}  // namespace

std::string misplaced_parameter(MethodOptions const& options) {
  if (!is_by_k(options) && (options.k || options.canopy_seeds)) {
    return "-k and --canopy-seeds are for --method kmeans and kmedians";
  }
  if (options.method != "canopy" && (options.t1 || options.t2)) {
    return "--t1 and --t2 are for --method canopy";
  }
  if (options.method != "dbscan" && (options.eps || options.minpts)) {
    return "--eps and --minpts are for --method dbscan";
  }
  return {};
}

std::string contradiction(MethodOptions const& options) {
  if (std::string misplaced = misplaced_parameter(options); !misplaced.empty()) {
    return misplaced;
  }
  if (is_by_k(options) && !options.k && !options.canopy_seeds) {
    return fmt::format(
        "--method {} needs -k, the number of classes, or --canopy-seeds, which finds one; morvaai "
        "suggest proposes a number",
        options.method);
  }
  if (options.t1 && !options.t2) {
    return "--t1 needs --t2";
  }
  if (options.t1 && *options.t1 < *options.t2) {
    return "--t1 must not be below --t2";
  }
  return {};
}

void make_points(Corpus const& corpus, Clustering& run) {
  corpus.data.format_data(run.words, run.points);
  if (!run.points.share_work(corpus.group)) {
    run.failure = "the processes of this run have read different files: give all the same";
  }
}

void cluster_points(MethodOptions const& options, Clustering& run) {
  if (!run.failure.empty()) {
    return;
  }
  if (is_by_k(options)) {
    run_kmeans(options, run);
  } else if (options.method == "canopy") {
    run_canopy(options, run);
  } else {
    run_dbscan(options, run);
  }
}

void choose_neighbourhood(MethodOptions const& options, Clustering& run) {
  int const minpts = options.minpts.value_or(default_minpts);
  std::string const given = options.eps.value_or("auto");
  double const eps = given == "auto" ? HSparseClusterMgr::get_eps(run.points, minpts, true)
                                     : HString(given.c_str()).to_double();
  run.parameters = {{"eps", eps}, {"minpts", minpts}};
  if (!(eps > 0.0)) {
    run.failure = fmt::format(
        "no radius can be estimated from {} files with --minpts {}: give one with --eps",
        run.points.size(), minpts);
  }
  run.neighbourhood = {eps, minpts};
}

bool is_by_members(MethodOptions const& options) {
  return options.method == "dbscan";
}

std::string too_large_for_box(MethodOptions const& options, Clustering const& run) {
  constexpr std::uint64_t most_weights = morvabs::largest_box_memory / sizeof(double);
  std::size_t lists = run.clusters.size();
  if (is_by_members(options)) {
    lists = 0;
    for (std::vector<int> const& members : run.clusters) {
      lists += members.size();
    }
  }
  if (lists == 0 || run.words.size() <= most_weights / lists) {
    return {};
  }
  return fmt::format(
      "{} {} with {} words are too much for a box, which holds {} weights at most: {}", lists,
      is_by_members(options) ? "files" : "classes", run.words.size(), most_weights,
      is_by_members(options) ? "learn from fewer files, or with --method kmeans, which keeps a "
                               "center in place of the files"
                             : "learn fewer classes");
}

std::vector<HString> unclassified_of(Corpus const& corpus, Clustering const& run) {
  std::vector<bool> is_in_class(corpus.files.size());
  for (std::vector<int> const& members : run.clusters) {
    for (int const member : members) {
      is_in_class[static_cast<std::size_t>(member)] = true;
    }
  }
  std::vector<HString> files;
  for (std::size_t i = 0; i < corpus.files.size(); ++i) {
    if (!is_in_class[i]) {
      files.push_back(corpus.files[i]);
    }
  }
  return files;
}

ClassReport::Class shown_class(HClusterResultBase const& record, HSparsePoints const& points,
                               std::vector<int> const& members, Corpus const& corpus) {
  ClassReport::Class one;
  one.label = record.str_class_name;
  if (!members.empty()) {
    one.description = record.str_class_desc;
    one.description.cut_last(1);
  }
  one.radius = points.get_max_radius(members);
  for (int const member : members) {
    one.files.push_back(corpus.files[static_cast<std::size_t>(member)]);
  }
  return one;
}

}  // namespace tool
