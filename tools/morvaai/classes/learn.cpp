#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "boxes/box_classes.h"
#include "boxes/box_store.h"

#include "classes/class_report.h"
#include "classes/corpus.h"
#include "classes/samples.h"
#include "command_line/commands.h"
#include "report/report_classes.h"
#include "report/report_page.h"
#include "terminal/progress.h"

namespace tool {

namespace {

// What was learnt, and what is said of it.
struct Learnt {
  QXPPolicyMorvaClustBox box;
  ClassReport report;
};

// Why the options do not go together; empty where they do.
std::string wrong_use_of(LearnOptions const& options) {
  if (auto const refused = BoxStore::refuse_id(morvabs::from_path(options.box_id))) {
    return *refused;
  }
  if (!options.by_folder) {
    return contradiction(options.how);
  }
  if (options.how.k || options.how.canopy_seeds) {
    return "-k and --canopy-seeds find classes, which --by-folder has already";
  }
  if (std::string problem = no_folders_of_classes(options.inputs); !problem.empty()) {
    return problem;
  }
  return misplaced_parameter(options.how);
}

// The classes that the folders are.
Clustering take_folders(MethodOptions const& how, Samples const& samples, Corpus const& corpus) {
  Clustering run;
  corpus.data.format_data(run.words, run.points);
  run.clusters = members_by_folder(samples, corpus);
  if (is_by_members(how)) {
    run.failure = too_large_for_box(how, run);
    if (run.failure.empty()) {
      choose_neighbourhood(how, run);
    }
  }
  run.parameters.insert(run.parameters.begin(), {"classes", std::string("by folder")});
  return run;
}

// A class without files has no center, and one such makes a box in which nothing is found.
void drop_empty_classes(Clustering& run, std::vector<HString>& names) {
  for (std::size_t i = run.clusters.size(); i-- > 0;) {
    if (!run.clusters[i].empty()) {
      continue;
    }
    auto const offset = static_cast<std::ptrdiff_t>(i);
    run.clusters.erase(run.clusters.begin() + offset);
    if (!names.empty()) {
      complain("warning: class " + printable(names[i]) + " is left out: no file of it gave words");
      names.erase(names.begin() + offset);
    }
  }
}

void warn_of_few_files(ClassReport::Class const& shown, int minpts) {
  if (shown.files.size() < static_cast<std::size_t>(minpts)) {
    complain(fmt::format(
        "warning: class {} has fewer files than --minpts {}: only what has the words of one of "
        "them will be found in it",
        printable(shown.label), minpts));
  }
}

// A class, described; by folder it has a name.
ClassReport::Class described(Clustering const& run, std::size_t index,
                             std::vector<HString> const& names, Corpus const& corpus) {
  std::vector<int> const& members = run.clusters[index];
  HClusterResultBase record;
  HSparseResultMgr::get_cluster_base_result(&record, static_cast<int>(index), run.words, run.points,
                                            members);
  if (!names.empty()) {
    record.str_class_name = names[index];
  }
  ClassReport::Class shown = shown_class(record, run.points, members, corpus);
  shown.id = record.str_class_id;
  return shown;
}

Learnt learnt_of(LearnOptions const& options, std::vector<HString> const& names,
                 Corpus const& corpus, Clustering run) {
  Learnt learnt;
  learnt.report.method = options.how.method;
  learnt.report.parameters = run.parameters;
  learnt.report.file_count = corpus.files.size();
  learnt.report.word_count = run.words.size();
  learnt.report.unclassified = unclassified_of(corpus, run);
  learnt.report.failed = corpus.failed;
  learnt.box.i_cluster_type = is_by_members(options.how) ? dbscan_box : kmeans_box;
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    std::vector<int> const& members = run.clusters[i];
    ClassReport::Class const& shown =
        learnt.report.classes.emplace_back(described(run, i, names, corpus));
    if (is_by_members(options.how)) {
      QXPDBScanNode& node = learnt.box.vt_dbscan_node.emplace_back(
          class_of_members(shown.id, shown.label, run.neighbourhood, run.points, members));
      for (std::size_t at = 0; at < members.size(); ++at) {
        node.vt_file_node[at].str_file_id = shown.files[at].get_short_name();
      }
      warn_of_few_files(shown, run.neighbourhood.minpts);
    } else {
      learnt.box.vt_kmeans_node.push_back(
          class_of_center(shown.id, shown.label, run.points, members));
    }
  }
  learnt.box.vt_words = std::move(run.words);
  return learnt;
}

// Why no report can be written; empty where it can, or none is wanted.
std::string unwritable_report(LearnOptions const& options) {
  return options.report ? refuse_report(morvabs::from_path(*options.report)).value_or("") : "";
}

// Whether the report that is wanted could be written. The box is there by now.
bool write_report_of(LearnOptions const& options, Learnt const& learnt, Corpus const& corpus,
                     Clustering const& run) {
  if (!options.report) {
    return true;
  }
  HString const path = morvabs::from_path(*options.report);
  auto const problem = write_report(path, report_of_learning(learnt.report, corpus, run).as_json());
  if (problem) {
    complain(*problem);
  }
  return !problem;
}

}  // namespace

int run_learn(LearnOptions const& options) {
  if (std::string const problem = wrong_use_of(options); !problem.empty()) {
    complain(problem);
    return wrong_use;
  }
  HString const id = morvabs::from_path(options.box_id);
  if (auto const refused = BoxStore::refuse_replacing(id); refused && !options.force) {
    complain(*refused);
    return some_failed;
  }
  if (std::string const problem = unwritable_report(options); !problem.empty()) {
    complain(problem);
    return some_failed;
  }
  Samples samples = find_samples(options.inputs, options.by_folder);
  Corpus const corpus = read_samples(samples, options.jobs);
  if (corpus.files.empty()) {
    complain("there is nothing to learn from");
    return some_failed;
  }
  Progress const progress("learning");
  Clustering run = options.by_folder ? take_folders(options.how, samples, corpus)
                                     : cluster_corpus(options.how, corpus, false);
  drop_empty_classes(run, samples.class_names);
  if (run.failure.empty() && run.clusters.empty()) {
    run.failure = "no classes were found: morvaai suggest proposes other parameters";
  }
  if (run.failure.empty()) {
    run.failure = too_large_for_box(options.how, run);
  }
  if (!run.failure.empty()) {
    complain(run.failure);
    return some_failed;
  }
  Clustering const reported = options.report ? run : Clustering();
  progress.note("writing the box");
  Learnt learnt = learnt_of(options, samples.class_names, corpus, std::move(run));
  if (auto const problem = BoxStore::install(std::move(learnt.box), id, options.force)) {
    complain(*problem);
    return some_failed;
  }
  learnt.report.box = {id, BoxStore::file_of(id).value_or(HString())};
  bool const is_reported = write_report_of(options, learnt, corpus, reported);
  bool const is_printed =
      options.json ? write_output(learnt.report.as_json()) : show(learnt.report.as_text());
  return is_reported && is_printed ? corpus.status : some_failed;
}

}  // namespace tool
