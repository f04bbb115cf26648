#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "box_store.h"

#include "class_report.h"
#include "commands.h"
#include "corpus.h"
#include "inputs.h"
#include "progress.h"
#include "work_directory.h"

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

// What was learnt: the vocabulary and the classes as they go into a box, and what is said of them.
struct Learnt {
  std::vector<HString> words;
  std::vector<HClusterOut> classes;
  int cluster_type = kmeans_type;
  ClassReport report;
};

// Makes a folder the working directory while it lives.
class Stay {
 public:
  explicit Stay(std::filesystem::path const& folder)
      : before_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    std::filesystem::create_directory(folder);
    if (before_ < 0 || chdir(folder.c_str()) != 0) {
      throw std::system_error(errno, std::system_category(), folder.string());
    }
  }
  ~Stay() {
    if (fchdir(before_) != 0) {
      std::perror("morvaai: working directory");
    }
    close(before_);
  }
  Stay(Stay const&) = delete;
  Stay& operator=(Stay const&) = delete;

 private:
  int before_;
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
  HClusterFileData::format_data(corpus.records, run.words, run.points, false);
  run.clusters.resize(samples.class_names.size());
  std::size_t at = 0;
  for (std::size_t i = 0; i < corpus.files.size(); ++i, ++at) {
    at = static_cast<std::size_t>(std::find(samples.files.begin() + static_cast<std::ptrdiff_t>(at),
                                            samples.files.end(), corpus.files[i]) -
                                  samples.files.begin());
    run.clusters[samples.class_of_file[at]].push_back(static_cast<int>(i));
  }
  if (how.method == "dbscan") {
    choose_neighbourhood(how, run);
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

// The points are moved to where they are used last: all of them may be large.
void add_members(Clustering& run, Corpus const& corpus, std::vector<HClusterOut>& classes) {
  std::vector<int> uses(run.points.size());
  for (std::vector<int> const& members : run.clusters) {
    for (int const member : members) {
      ++uses[static_cast<std::size_t>(member)];
    }
  }
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    for (int const member : run.clusters[i]) {
      auto const at = static_cast<std::size_t>(member);
      QXPFeatureNode& node = classes[i].vt_file_node.emplace_back();
      node.str_file_id = corpus.files[at].get_short_name();
      std::vector<double>& weights = run.points[at].vt_data;
      node.vt_weight = --uses[at] == 0 ? std::move(weights) : weights;
    }
  }
}

void add_classes(std::vector<HString> const& names, Clustering& run, Corpus const& corpus,
                 Learnt& learnt) {
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    std::vector<int> const& members = run.clusters[i];
    HClusterResultBase record;
    HClusterResultMgr::get_cluster_base_result(&record, static_cast<int>(i), run.words, run.points,
                                               members);
    if (!names.empty()) {
      record.str_class_name = names[i];
    }
    ClassReport::Class& shown =
        learnt.report.classes.emplace_back(shown_class(record, run.points, members, corpus));
    shown.id = record.str_class_id;
    HClusterOut& out = learnt.classes.emplace_back();
    out.str_class_id = record.str_class_id;
    out.str_class_name = record.str_class_name;
    if (learnt.cluster_type == kmeans_type) {
      out.vt_center = HClusterCenter::get_center_point(run.points, members).vt_data;
      out.d_radius = shown.radius;
    }
  }
}

void add_neighbourhood(Neighbourhood const& neighbourhood, Learnt& learnt) {
  for (HClusterOut& out : learnt.classes) {
    out.d_eps = neighbourhood.eps;
    out.i_minpts = neighbourhood.minpts;
    if (out.vt_file_node.size() < static_cast<std::size_t>(neighbourhood.minpts)) {
      complain(fmt::format(
          "warning: class {} has fewer files than --minpts {}: only what has the words of one of "
          "them will be found in it",
          printable(out.str_class_name), neighbourhood.minpts));
    }
  }
}

Learnt learnt_of(LearnOptions const& options, std::vector<HString> const& names,
                 Corpus const& corpus, Clustering run) {
  Learnt learnt;
  learnt.cluster_type = options.how.method == "dbscan" ? dbscan_type : kmeans_type;
  learnt.report.method = options.how.method;
  learnt.report.parameters = run.parameters;
  learnt.report.file_count = corpus.files.size();
  learnt.report.word_count = run.words.size();
  learnt.report.unclassified = unclassified_of(corpus, run);
  learnt.report.failed = corpus.failed;
  add_classes(names, run, corpus, learnt);
  if (learnt.cluster_type == dbscan_type) {
    add_members(run, corpus, learnt.classes);
    add_neighbourhood(run.neighbourhood, learnt);
  }
  learnt.words = std::move(run.words);
  return learnt;
}

// A box is built below the folder beside the working directory, so it gets both to itself.
BoxStore::Problem install(Learnt& learnt, HString const& id, bool may_replace) {
  WorkDirectory const place;
  {
    Stay const inside(place.path() / "run");
    HClusterBox::pins()->to_box(0, learnt.words, learnt.classes, id, learnt.cluster_type);
  }
  learnt.classes.clear();
  HString const built =
      morvabs::from_path((place.path() / "data/ClusterBox/").string()) + id + L".box";
  if (!HFile::IsFileExistFile(built)) {
    return printable(built) + ": cannot be written: the disk is full, or the box is too large";
  }
  return BoxStore::install(built, id, may_replace);
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
                                     : cluster_records(options.how, corpus.records, false);
  progress.clear();
  drop_empty_classes(run, samples.class_names);
  if (run.failure.empty() && run.clusters.empty()) {
    run.failure = "no classes were found: try other parameters";
  }
  if (!run.failure.empty()) {
    complain(run.failure);
    return some_failed;
  }
  Learnt learnt = learnt_of(options, samples.class_names, corpus, std::move(run));
  if (auto const problem = install(learnt, id, options.force)) {
    complain(*problem);
    return some_failed;
  }
  learnt.report.box = {id, BoxStore::file_of(id).value_or(HString())};
  bool const is_printed =
      write_output(options.json ? learnt.report.as_json() : learnt.report.as_text());
  return is_printed ? corpus.status : some_failed;
}

}  // namespace tool
