#include <numeric>
#include <string>

#include "classes/class_lists.h"
#include "classes/class_report.h"
#include "classes/method.h"
#include "command_line/commands.h"
#include "documents/inputs.h"
#include "exit_status.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

// Why the options do not go together; empty where they do.
std::string wrong_use_of(ClusterOptions const& options) {
  if (options.output_folder) {
    HString const folder = morvabs::from_path(*options.output_folder);
    if (HFile::IsFileExist(folder) && !HFile::IsFileExistDir(folder)) {
      return printable(folder) + " is no folder";
    }
  }
  return contradiction(options.how);
}

std::vector<HString> inputs_without_lists(ClusterOptions const& options) {
  std::vector<HString> files = expand_inputs(options.inputs);
  if (options.output_folder) {
    ClassLists const lists(morvabs::from_path(*options.output_folder));
    std::erase_if(files, [&](HString const& path) { return lists.is_list(path); });
  }
  return files;
}

// The record of a class whose points are not its words: made from those of its members alone.
void describe_by_words(Corpus const& corpus, std::vector<int> const& members, int index,
                       HClusterResultBase& result) {
  std::vector<HString> words;
  HSparsePoints points;
  corpus.data.format_data(members, words, points);
  std::vector<int> positions(members.size());
  std::iota(positions.begin(), positions.end(), 0);
  HSparseResultMgr::get_cluster_base_result(&result, index, words, points, positions);
}

ClassReport::Class class_of(ClusterOptions const& options, Corpus const& corpus,
                            Clustering const& run, int index) {
  std::vector<int> const& members = run.clusters[static_cast<std::size_t>(index)];
  HClusterResultBase result;
  if (options.dna) {
    describe_by_words(corpus, members, index, result);
  } else {
    HSparseResultMgr::get_cluster_base_result(&result, index, run.words, run.points, members);
  }
  return shown_class(result, run.points, members, corpus);
}

ClassReport report_of(ClusterOptions const& options, Corpus const& corpus, Clustering const& run) {
  ClassReport report;
  report.method = options.how.method;
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
  if (std::string const problem = wrong_use_of(options); !problem.empty()) {
    complain(problem);
    return wrong_use;
  }
  Corpus const corpus =
      read_corpus(inputs_without_lists(options), options.jobs, {.fingerprints = options.dna});
  if (corpus.files.empty()) {
    complain("there is nothing to cluster");
    return some_failed;
  }
  Progress const progress("clustering");
  Clustering run;
  make_points(corpus, run);
  if (options.dna) {
    run.points = HSparsePoints(corpus.fingerprints);
  }
  cluster_points(options.how, run);
  if (!run.failure.empty()) {
    complain(run.failure);
    return some_failed;
  }
  ClassReport report = report_of(options, corpus, run);
  bool const is_complete = !options.output_folder || write_lists(*options.output_folder, report);
  bool const is_printed = options.json ? write_output(report.as_json()) : show(report.as_text());
  return is_complete && is_printed ? corpus.status : some_failed;
}

}  // namespace tool
