#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "classes/distance_rows.h"
#include "classes/neighbour_distances.h"
#include "classes/samples.h"
#include "command_line/commands.h"
#include "exit_status.h"
#include "suggest/suggestion.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

constexpr std::size_t fewest_files = 4;
// Of the files of a class one is held out, and one learnt.
constexpr std::size_t fewest_of_each = 2;
// Of the answers of a box, so many have to be right before it counts how many there are.
constexpr double wanted_precision = 0.9;
constexpr std::array counts_of_boxes = {1, 2, 4};

// What all steps need.
struct Measured {
  Corpus const& corpus;
  HSparsePoints points;
  std::vector<double> radii;
  Progress const& progress;

  SweepNote note(char const* what) const {
    return [this, what](std::size_t done, std::size_t all) {
      progress.note(fmt::format("{}: {} of {}", what, done + 1, all));
    };
  }
  HeldOutFiles::Note note_of_rounds(char const* what, HeldOutFiles const& files) const {
    return [this, what, all = files.rounds().size()](std::size_t round) {
      progress.note(fmt::format("{}: round {} of {}", what, round + 1, all));
    };
  }
};

void measure_distances(Measured const& measured, Suggestion& suggestion) {
  suggestion.nearest = neighbour_distances(measured.points, 1);
  suggestion.fourth = neighbour_distances(measured.points, default_minpts);
  suggestion.estimated_eps = HSparseClusterMgr::get_eps(measured.points, default_minpts, true);
}

// The neighbourhood that gives most files to their own class, of those that are hardly ever wrong.
std::optional<Neighbourhood> most_useful(std::vector<Suggestion::Estimate> const& estimates) {
  std::optional<Neighbourhood> best;
  double best_recall = 0.0;
  for (auto const& [neighbourhood, outcome] : estimates) {
    if (outcome.precision() >= wanted_precision && outcome.recall() > best_recall) {
      best = neighbourhood;
      best_recall = outcome.recall();
    }
  }
  return best;
}

void estimate_folders(Measured const& measured, HeldOutFiles const& files, Suggestion& suggestion) {
  DistanceMatrix const distances = distances_of(measured.points);
  auto const note = measured.note("radii");
  for (double const eps : measured.radii) {
    for (int const minpts : counts_of_boxes) {
      note(suggestion.estimates.size(), measured.radii.size() * counts_of_boxes.size());
      suggestion.estimates.push_back(
          {{eps, minpts}, files.estimate_by_members({eps, minpts}, distances)});
    }
  }
  suggestion.proposed = most_useful(suggestion.estimates).value_or(for_copies);
}

// The neighbourhood itself, and those beside it in radius or count.
std::vector<Neighbourhood> with_others(Neighbourhood const& proposed,
                                       std::vector<double> const& radii,
                                       std::vector<int> const& counts) {
  std::vector<Neighbourhood> all{proposed};
  auto const above = std::upper_bound(radii.begin(), radii.end(), proposed.eps);
  auto const at = std::lower_bound(radii.begin(), radii.end(), proposed.eps);
  if (at != radii.begin()) {
    all.push_back({*std::prev(at), proposed.minpts});
  }
  if (above != radii.end()) {
    all.push_back({*above, proposed.minpts});
  }
  for (int const count : counts) {
    if (count != proposed.minpts) {
      all.push_back({proposed.eps, count});
    }
  }
  return all;
}

void try_centers(Measured const& measured, HeldOutFiles const& files, Suggestion& suggestion) {
  std::optional<HeldOut> const outcome =
      files.by_centers(measured.note_of_rounds("boxes of centers", files));
  suggestion.is_too_large_for_centers = !outcome;
  if (outcome) {
    suggestion.tried.push_back({std::nullopt, *outcome});
  }
}

void try_members(Measured const& measured, HeldOutFiles const& files,
                 std::vector<Neighbourhood> const& neighbourhoods, Suggestion& suggestion) {
  std::vector<HeldOut> const outcomes =
      files.by_members(neighbourhoods, measured.note_of_rounds("boxes of files", files));
  suggestion.is_too_large_for_files = outcomes.empty();
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    suggestion.tried.push_back({neighbourhoods[i], outcomes[i]});
  }
}

void compare_folders(Measured const& measured, std::vector<std::vector<int>> classes,
                     Suggestion& suggestion) {
  HeldOutFiles const files(measured.corpus, std::move(classes));
  estimate_folders(measured, files, suggestion);
  try_centers(measured, files, suggestion);
  try_members(measured, files,
              with_others(*suggestion.proposed, measured.radii,
                          {counts_of_boxes.begin(), counts_of_boxes.end()}),
              suggestion);
}

// Files that the method left in no class count as refused.
HeldOut with_unclassified(HeldOut outcome, Trial const& trial, std::size_t file_count) {
  outcome.refused +=
      static_cast<std::size_t>(std::lround(trial.unclassified * static_cast<double>(file_count)));
  return outcome;
}

// Without folders, the classes are those that the method itself finds among all files.
void compare_found_classes(Measured const& measured, Suggestion& suggestion) {
  DistanceMatrix const apart = directions_of(measured.points);
  suggestion.k = sweep_k(measured.points, apart, measured.note("numbers of classes"));
  suggestion.neighbourhoods =
      sweep_neighbourhoods(measured.points, apart, measured.radii, measured.note("radii"));
  if (suggestion.k.best) {
    Trial const& best = suggestion.k.trials[*suggestion.k.best];
    try_centers(measured, HeldOutFiles(measured.corpus, best.classes), suggestion);
  }
  if (suggestion.neighbourhoods.best) {
    Trial const& best = suggestion.neighbourhoods.trials[*suggestion.neighbourhoods.best];
    suggestion.proposed = best.neighbourhood;
    try_members(measured, HeldOutFiles(measured.corpus, best.classes), {best.neighbourhood},
                suggestion);
    for (Suggestion::TriedBox& box : suggestion.tried) {
      if (box.neighbourhood) {
        box.outcome = with_unclassified(box.outcome, best, measured.points.size());
      }
    }
  }
}

void choose_box(Suggestion& suggestion) {
  if (!suggestion.is_by_folder && !suggestion.has_structure()) {
    return;
  }
  double best_measure = 0.0;
  for (std::size_t i = 0; i < suggestion.tried.size(); ++i) {
    double const measure = suggestion.tried[i].outcome.f_measure();
    if (measure > best_measure) {
      suggestion.best = i;
      best_measure = measure;
    }
  }
}

Suggestion suggestion_of(SuggestOptions const& options, Samples const& samples,
                         Corpus const& corpus, Progress const& progress) {
  Suggestion suggestion;
  suggestion.inputs = options.inputs;
  suggestion.is_by_folder = options.by_folder;
  suggestion.looked_at = corpus.files.size();
  suggestion.failed = corpus.failed;
  progress.note("comparing all files");
  std::vector<HString> words;
  Measured measured{corpus, {}, {}, progress};
  corpus.data.format_data(words, measured.points);
  suggestion.word_count = words.size();
  measured.radii = radii_to_try(measured.points);
  measure_distances(measured, suggestion);
  if (options.by_folder) {
    std::vector<std::vector<int>> classes = members_by_folder(samples, corpus);
    for (std::size_t c = 0; c < classes.size(); ++c) {
      suggestion.folders.emplace_back(samples.class_names[c], classes[c].size());
    }
    compare_folders(measured, std::move(classes), suggestion);
  } else {
    compare_found_classes(measured, suggestion);
  }
  choose_box(suggestion);
  return suggestion;
}

}  // namespace

int run_suggest(SuggestOptions const& options) {
  if (std::string const problem =
          options.by_folder ? no_folders_of_classes(options.inputs) : std::string();
      !problem.empty()) {
    complain(problem);
    return wrong_use;
  }
  Samples const all = find_samples(options.inputs, options.by_folder);
  if (most_of_each(all, options.sample) < fewest_of_each) {
    complain(fmt::format(
        "{} folders are too many for a sample of {} files, which takes {} of each: give a larger "
        "--sample, or fewer folders",
        all.class_names.size(), options.sample, fewest_of_each));
    return some_failed;
  }
  Samples const samples = some_of(all, options.sample);
  Corpus const corpus = read_samples(samples, options.jobs, {.records = true});
  if (corpus.files.size() < fewest_files) {
    complain(fmt::format("{} files with words are too few to choose parameters by: give {} or more",
                         corpus.files.size(), fewest_files));
    return some_failed;
  }
  Progress progress(std::string("comparing"));
  Suggestion suggestion = suggestion_of(options, samples, corpus, progress);
  suggestion.found = all.files.size() + all.strays.size();
  progress.clear();
  bool const is_printed =
      options.json ? write_output(suggestion.as_json()) : show(suggestion.as_text());
  return is_printed ? corpus.status : some_failed;
}

}  // namespace tool
