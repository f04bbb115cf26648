#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "boxes/box_classes.h"
#include "boxes/box_store.h"

#include "classes/class_ids.h"
#include "classes/class_report.h"
#include "classes/corpus.h"
#include "classes/samples.h"
#include "classes/shard_corpus.h"
#include "command_line/commands.h"
#include "exit_status.h"
#include "mpi/process_run.h"
#include "report/report_classes.h"
#include "report/report_page.h"
#include "shards/shard_error.h"
#include "terminal/output.h"
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
  if (options.inputs.empty() && options.shards.empty()) {
    return "name files or folders, or shards with --from";
  }
  if (options.mpi && options.shards.empty()) {
    return "--mpi needs --from: morvaai extract makes shards of files, which all processes can "
           "read";
  }
  if (!options.by_folder) {
    return contradiction(options.how);
  }
  if (options.how.k || options.how.canopy_seeds) {
    return "-k and --canopy-seeds find classes, which --by-folder has already";
  }
  if (options.shards.empty()) {
    if (std::string problem = no_folders_of_classes(options.inputs); !problem.empty()) {
      return problem;
    }
  }
  return misplaced_parameter(options.how);
}

// What is learnt from, with --from without the documents.
Corpus read_corpus(LearnOptions const& options, Samples& samples) {
  if (options.shards.empty()) {
    samples = find_samples(options.inputs, options.by_folder);
    return read_samples(samples, options.jobs);
  }
  std::vector<std::string> shards = options.shards;
  shards.insert(shards.end(), options.inputs.begin(), options.inputs.end());
  return corpus_of_shards(shards, options.by_folder ? &samples : nullptr);
}

// The classes that the folders are.
void take_folders(MethodOptions const& how, Samples const& samples, Corpus const& corpus,
                  Clustering& run) {
  run.clusters = members_by_folder(samples, corpus);
  if (run.failure.empty() && is_by_members(how)) {
    run.failure = too_large_for_box(how, run);
    if (run.failure.empty()) {
      choose_neighbourhood(how, run);
    }
  }
  run.parameters.insert(run.parameters.begin(), {"classes", std::string("by folder")});
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
ClassReport::Class described(HString const& box_id, Clustering const& run, std::size_t index,
                             std::vector<HString> const& names, Corpus const& corpus) {
  std::vector<int> const& members = run.clusters[index];
  HClusterResultBase record;
  HSparseResultMgr::get_cluster_base_result(&record, static_cast<int>(index), run.words, run.points,
                                            members);
  if (!names.empty()) {
    record.str_class_name = names[index];
  }
  ClassReport::Class shown = shown_class(record, run.points, members, corpus);
  shown.id = class_id(box_id, shown);
  return shown;
}

Learnt learnt_of(LearnOptions const& options, std::vector<HString> const& names,
                 Corpus const& corpus, Clustering run) {
  Learnt learnt;
  HString const box_id = morvabs::from_path(options.box_id);
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
        learnt.report.classes.emplace_back(described(box_id, run, i, names, corpus));
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
bool write_report_of(LearnOptions const& options, Corpus const& corpus, Clustering const& run,
                     ClassReport& shown) {
  if (!options.report) {
    return true;
  }
  HString const path = morvabs::from_path(*options.report);
  if (auto const problem = write_report(path, report_of_learning(shown, corpus, run).as_json())) {
    complain(*problem);
    return false;
  }
  shown.page = path;
  return true;
}

// Why this machine could not take the box, or the report; empty where it can.
std::string refusal_of(LearnOptions const& options) {
  if (!options.force) {
    if (auto const refused = BoxStore::refuse_replacing(morvabs::from_path(options.box_id))) {
      return *refused;
    }
  }
  return unwritable_report(options);
}

// Why nothing can be learnt from the shards or files; empty where it can, and `corpus` is there.
std::string try_to_read_corpus(LearnOptions const& options, Samples& samples, Corpus& corpus) {
  try {
    corpus = read_corpus(options, samples);
  } catch (ShardError const& error) {
    return error.what();
  }
  return corpus.files.empty() ? "there is nothing to learn from" : std::string();
}

// Leaves the corpus without the words of its files.
Clustering find_classes(LearnOptions const& options, Samples& samples, Corpus& corpus) {
  Clustering run;
  make_points(corpus, run);
  // They take more memory than the points.
  corpus.data = HSparseFileData();
  if (options.by_folder) {
    take_folders(options.how, samples, corpus, run);
  } else {
    cluster_points(options.how, run);
  }
  if (!is_first(corpus.group)) {
    return run;
  }
  drop_empty_classes(run, samples.class_names);
  if (run.failure.empty() && run.clusters.empty()) {
    run.failure = "no classes were found: morvaai suggest proposes other parameters";
  }
  if (run.failure.empty()) {
    run.failure = too_large_for_box(options.how, run);
  }
  return run;
}

// Puts the box in its place, and shows it.
int write_box(LearnOptions const& options, Samples const& samples, Corpus const& corpus,
              Clustering run) {
  HString const id = morvabs::from_path(options.box_id);
  Clustering const reported = options.report ? run : Clustering();
  Learnt learnt = learnt_of(options, samples.class_names, corpus, std::move(run));
  if (auto const problem = BoxStore::install(std::move(learnt.box), id, options.force)) {
    complain(*problem);
    return some_failed;
  }
  learnt.report.box = {id, BoxStore::file_of(id).value_or(HString())};
  bool const is_reported = write_report_of(options, corpus, reported, learnt.report);
  bool const is_printed =
      options.json ? write_output(learnt.report.as_json()) : show(learnt.report.as_text());
  return is_reported && is_printed ? corpus.status : some_failed;
}

// One process, or one of a group, of which the first looks after box and report, and tells.
int learn(LearnOptions const& options, std::shared_ptr<HProcessGroup> const& group) {
  NoComplaints const others_are_silent(!is_first(group));
  if (!all_go_on(group, wrong_use_of(options))) {
    return wrong_use;
  }
  if (!all_go_on(group, is_first(group) ? refusal_of(options) : std::string())) {
    return some_failed;
  }
  Samples samples;
  Corpus corpus;
  if (!all_go_on(group, try_to_read_corpus(options, samples, corpus))) {
    return some_failed;
  }
  corpus.group = group;
  Progress const progress("learning");
  Clustering run = find_classes(options, samples, corpus);
  if (!all_go_on(group, run.failure)) {
    return some_failed;
  }
  if (!is_first(group)) {
    return all_done;
  }
  progress.note("writing the box");
  return write_box(options, samples, corpus, std::move(run));
}

}  // namespace

int run_learn(LearnOptions const& options) {
  if (!options.mpi) {
    return learn(options, nullptr);
  }
  if (auto const refused = refuse_process_run()) {
    complain(*refused);
    return wrong_use;
  }
  return run_in_group([&options](auto const& group) { return learn(options, group); });
}

}  // namespace tool
