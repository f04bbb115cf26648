#include <cstdio>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "class_lists.h"
#include "class_report.h"
#include "commands.h"
#include "inputs.h"
#include "progress.h"

namespace tool {

namespace {

// A run of a method: its points, the parameters that it had, and what came of it.
struct Run {
  std::vector<HString> words;
  std::vector<HPointN> points;
  std::vector<std::pair<std::string, ClassReport::Parameter>> parameters;
  std::vector<std::vector<int>> clusters;
  // Why the method could not be run; empty where it could.
  std::string failure;
};

void complain(std::string const& problem) {
  std::fprintf(stderr, "morvaai: %s\n", problem.c_str());
}

bool is_by_k(ClusterOptions const& options) {
  return options.method == "kmeans" || options.method == "kmedians";
}

// Why the options do not go together; empty where they do.
std::string contradiction(ClusterOptions const& options) {
  if (!is_by_k(options) && (options.k || options.canopy_seeds)) {
    return "-k and --canopy-seeds are for --method kmeans and kmedians";
  }
  if (options.method != "canopy" && (options.t1 || options.t2)) {
    return "--t1 and --t2 are for --method canopy";
  }
  if (options.method != "dbscan" && (options.eps || options.minpts)) {
    return "--eps and --minpts are for --method dbscan";
  }
  if (is_by_k(options) && !options.k && !options.canopy_seeds) {
    return fmt::format(
        "--method {} needs -k, the number of classes, or --canopy-seeds, which finds one",
        options.method);
  }
  if (options.t1 && !options.t2) {
    return "--t1 needs --t2";
  }
  if (options.t1 && *options.t1 < *options.t2) {
    return "--t1 must not be below --t2";
  }
  if (options.output_folder) {
    HString const folder = morvabs::from_path(*options.output_folder);
    if (HFile::IsFileExist(folder) && !HFile::IsFileExistDir(folder)) {
      return printable(folder) + " is no folder";
    }
  }
  return {};
}

std::vector<HString> inputs_without_lists(ClusterOptions const& options) {
  std::vector<HString> files = expand_inputs(options.inputs);
  if (options.output_folder) {
    ClassLists const lists(morvabs::from_path(*options.output_folder));
    std::erase_if(files, [&](HString const& path) { return lists.is_list(path); });
  }
  return files;
}

void run_kmeans(ClusterOptions const& options, Run& run) {
  gi_K_ClusterType = options.method == "kmeans" ? 0 : 1;
  HClusterMgr::pins()->kmeans(run.points, options.k.value_or(0), run.clusters,
                              options.canopy_seeds);
  run.parameters = {{"k", options.k.value_or(static_cast<int>(run.clusters.size()))},
                    {"seeds", std::string(options.canopy_seeds ? "canopy" : "farthest")}};
  if (run.clusters.empty()) {
    run.failure = options.canopy_seeds
                      ? "no canopies as many as -k asks for: try another -k, or none"
                      : "too few of the files differ to be seeds of that many classes";
  }
}

void run_canopy(ClusterOptions const& options, Run& run) {
  // Without radii the engine takes these itself; taken here, they can be shown.
  double const mean = options.t2 ? 0.0 : HClusterDistance::get_avg_distance(run.points);
  double const t2 = options.t2.value_or(mean);
  double const t1 = options.t1.value_or(options.t2 ? t2 : 3 * mean);
  HClusterMgr::pins()->canopy(run.points, t1, t2, run.clusters);
  run.parameters = {{"t1", t1}, {"t2", t2}};
}

void run_dbscan(ClusterOptions const& options, Run& run) {
  int const minpts = options.minpts.value_or(default_minpts);
  std::string const given = options.eps.value_or("auto");
  double const eps = given == "auto" ? HParaPrefer::get_eps(run.points, minpts, true)
                                     : HString(given.c_str()).to_double();
  run.parameters = {{"eps", eps}, {"minpts", minpts}};
  if (!(eps > 0.0)) {
    run.failure = fmt::format(
        "no radius can be estimated from {} files with --minpts {}: give one with --eps",
        run.points.size(), minpts);
    return;
  }
  HClusterMgr::pins()->dbscan(run.points, eps, minpts, false, run.clusters);
}

Run run_method(ClusterOptions const& options, std::vector<HFeatureNode> const& records) {
  Run run;
  HClusterFileData::format_data(records, run.words, run.points, options.dna);
  if (is_by_k(options)) {
    run_kmeans(options, run);
  } else if (options.method == "canopy") {
    run_canopy(options, run);
  } else {
    run_dbscan(options, run);
  }
  return run;
}

// The record of a class whose points are not its words: made from those of its members alone.
void describe_by_words(std::vector<HFeatureNode> const& records, std::vector<int> const& members,
                       int index, HClusterResultBase& result) {
  std::vector<HFeatureNode> member_records;
  std::vector<int> positions;
  for (int const member : members) {
    positions.push_back(static_cast<int>(positions.size()));
    member_records.push_back(records[static_cast<std::size_t>(member)]);
  }
  std::vector<HString> words;
  std::vector<HPointN> points;
  HClusterFileData::format_data(member_records, words, points, false);
  HClusterResultMgr::get_cluster_base_result(&result, index, words, points, positions);
}

ClassReport::Class class_of(ClusterOptions const& options, Corpus const& corpus, Run& run,
                            int index) {
  std::vector<int> const& members = run.clusters[static_cast<std::size_t>(index)];
  HClusterResultBase result;
  if (options.dna) {
    describe_by_words(corpus.records, members, index, result);
  } else {
    HClusterResultMgr::get_cluster_base_result(&result, index, run.words, run.points, members);
  }
  ClassReport::Class one;
  one.label = result.str_class_name;
  if (!members.empty()) {
    one.description = result.str_class_desc;
    one.description.cut_last(1);
  }
  one.radius = HClusterDistance::get_max_radius(run.points, members);
  for (int const member : members) {
    one.files.push_back(corpus.files[static_cast<std::size_t>(member)]);
  }
  return one;
}

std::vector<HString> unclassified_of(Corpus const& corpus, Run const& run) {
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

ClassReport report_of(ClusterOptions const& options, Corpus const& corpus, Run& run) {
  ClassReport report;
  report.method = options.method;
  report.parameters = run.parameters;
  report.is_by_dna = options.dna;
  report.file_count = corpus.files.size();
  report.word_count = run.words.size();
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    report.classes.push_back(class_of(options, corpus, run, static_cast<int>(i)));
  }
  report.unclassified = unclassified_of(corpus, run);
  report.failed = corpus.failed;
  return report;
}

// Whether all lists could be written.
bool write_lists(std::string const& folder, ClassReport& report) {
  std::vector<std::vector<HString>> classes;
  for (ClassReport::Class const& one : report.classes) {
    classes.push_back(one.files);
  }
  ClassLists const lists(morvabs::from_path(folder));
  ClassLists::Written const written = lists.write(classes, report.unclassified);
  if (written.problem) {
    complain(*written.problem);
  }
  for (HString const& path : lists.others_than(written.paths)) {
    complain("warning: " + printable(path) + " is a list of an earlier run");
  }
  report.lists = written.paths;
  return !written.problem;
}

}  // namespace

std::vector<std::string> cluster_method_names() {
  return {"kmeans", "kmedians", "canopy", "dbscan"};
}

int run_cluster(ClusterOptions const& options) {
  if (std::string const problem = contradiction(options); !problem.empty()) {
    complain(problem);
    return wrong_use;
  }
  Corpus const corpus = read_corpus(inputs_without_lists(options), options.jobs, options.dna);
  if (corpus.files.empty()) {
    complain("there is nothing to cluster");
    return some_failed;
  }
  Progress const progress(corpus.files.size());
  progress.note("clustering");
  Run run = run_method(options, corpus.records);
  progress.clear();
  if (!run.failure.empty()) {
    complain(run.failure);
    return some_failed;
  }
  ClassReport report = report_of(options, corpus, run);
  bool const is_complete = !options.output_folder || write_lists(*options.output_folder, report);
  bool const is_printed = write_output(options.json ? report.as_json() : report.as_text());
  return is_complete && is_printed ? corpus.status : some_failed;
}

}  // namespace tool
