#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "box_store.h"

#include "class_report.h"
#include "commands.h"
#include "corpus.h"
#include "inputs.h"
#include "progress.h"

namespace tool {

namespace {

constexpr int kmeans_type = 0;
constexpr int dbscan_type = 1;

// The files to learn from, and where folders say which class each is in, the names of the classes
// and beside each file the position of its own.
struct Samples {
  std::vector<HString> files;
  std::vector<HString> class_names;
  std::vector<std::size_t> class_of_file;
  // Files in no sub-folder.
  std::vector<HString> strays;
};

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
  for (std::string const& input : options.inputs) {
    if (!HFile::IsFileExistDir(morvabs::from_path(input))) {
      return printable(morvabs::from_path(input)) + " is no folder: --by-folder needs folders";
    }
  }
  return misplaced_parameter(options.how);
}

void add_folder(HString folder, Samples& samples) {
  folder.dir_fit(true);
  for (HString const& file : files_in(folder, true)) {
    HString inside = file;
    inside.cut_first(folder.length());
    std::vector<HString> steps;
    inside.get_vt_str_by_sep(steps, L"/");
    if (steps.size() < 2) {
      samples.strays.push_back(file);
      continue;
    }
    auto& names = samples.class_names;
    auto const found = std::find(names.begin(), names.end(), steps.front());
    samples.class_of_file.push_back(static_cast<std::size_t>(found - names.begin()));
    if (found == names.end()) {
      names.push_back(steps.front());
    }
    samples.files.push_back(file);
  }
}

Samples find_samples(LearnOptions const& options) {
  Samples samples;
  if (!options.by_folder) {
    samples.files = expand_inputs(options.inputs);
    return samples;
  }
  for (std::string const& input : options.inputs) {
    add_folder(morvabs::from_path(input), samples);
  }
  return samples;
}

Corpus read_samples(LearnOptions const& options, Samples const& samples) {
  Corpus corpus = read_corpus(samples.files, options.jobs, false);
  for (HString const& stray : samples.strays) {
    corpus.failed.push_back({stray, "in no sub-folder, and so in no class"});
    complain(printable(stray) + ": " + corpus.failed.back().reason);
    corpus.status = some_failed;
  }
  return corpus;
}

// The classes that the folders are.
Clustering take_folders(MethodOptions const& how, Samples const& samples, Corpus const& corpus) {
  Clustering run;
  corpus.data.format_data(run.words, run.points);
  run.clusters.resize(samples.class_names.size());
  std::size_t at = 0;
  for (std::size_t i = 0; i < corpus.files.size(); ++i, ++at) {
    at = static_cast<std::size_t>(std::find(samples.files.begin() + static_cast<std::ptrdiff_t>(at),
                                            samples.files.end(), corpus.files[i]) -
                                  samples.files.begin());
    run.clusters[samples.class_of_file[at]].push_back(static_cast<int>(i));
  }
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

QXPKMeansNode class_of_center(ClassReport::Class const& shown, HSparsePoints const& points,
                              std::vector<int> const& members) {
  QXPKMeansNode node;
  node.str_class_id = shown.id;
  node.str_class_name = shown.label;
  node.d_radius = shown.radius;
  node.vt_weight = points.get_center_point(members).vt_data;
  return node;
}

QXPDBScanNode class_of_members(ClassReport::Class const& shown, Neighbourhood const& neighbourhood,
                               HSparsePoints const& points, std::vector<int> const& members) {
  QXPDBScanNode node;
  node.str_class_id = shown.id;
  node.str_class_name = shown.label;
  node.d_eps = neighbourhood.eps;
  node.i_minpts = neighbourhood.minpts;
  node.vt_file_node.reserve(members.size());
  for (std::size_t i = 0; i < members.size(); ++i) {
    QXPFeatureNode& file = node.vt_file_node.emplace_back();
    file.str_file_id = shown.files[i].get_short_name();
    file.vt_weight = points.at(members[i]).vt_data;
  }
  return node;
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
  learnt.box.i_cluster_type = is_by_members(options.how) ? dbscan_type : kmeans_type;
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    std::vector<int> const& members = run.clusters[i];
    ClassReport::Class const& shown =
        learnt.report.classes.emplace_back(described(run, i, names, corpus));
    if (is_by_members(options.how)) {
      learnt.box.vt_dbscan_node.push_back(
          class_of_members(shown, run.neighbourhood, run.points, members));
      warn_of_few_files(shown, run.neighbourhood.minpts);
    } else {
      learnt.box.vt_kmeans_node.push_back(class_of_center(shown, run.points, members));
    }
  }
  learnt.box.vt_words = std::move(run.words);
  return learnt;
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
  Samples samples = find_samples(options);
  Corpus const corpus = read_samples(options, samples);
  if (corpus.files.empty()) {
    complain("there is nothing to learn from");
    return some_failed;
  }
  Progress const progress(corpus.files.size());
  progress.note("learning");
  Clustering run = options.by_folder ? take_folders(options.how, samples, corpus)
                                     : cluster_corpus(options.how, corpus, false);
  progress.clear();
  drop_empty_classes(run, samples.class_names);
  if (run.failure.empty() && run.clusters.empty()) {
    run.failure = "no classes were found: try other parameters";
  }
  if (run.failure.empty()) {
    run.failure = too_large_for_box(options.how, run);
  }
  if (!run.failure.empty()) {
    complain(run.failure);
    return some_failed;
  }
  Learnt learnt = learnt_of(options, samples.class_names, corpus, std::move(run));
  if (auto const problem = BoxStore::install(std::move(learnt.box), id, options.force)) {
    complain(*problem);
    return some_failed;
  }
  learnt.report.box = {id, BoxStore::file_of(id).value_or(HString())};
  bool const is_printed =
      write_output(options.json ? learnt.report.as_json() : learnt.report.as_text());
  return is_printed ? corpus.status : some_failed;
}

}  // namespace tool
