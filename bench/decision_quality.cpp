// How well boxes decide real texts that people sorted: of ten texts of a class seven are learnt and
// three are decided. Markdown tables for each set of texts below `text` in the folder that
// MORVA_CORPUS names, and for versions of texts.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "box/HClusterResultMgr.h"
#include "box/HFileClusterBoxMgr.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "cluster/HParaPrefer.h"
#include "features/HClusterFileData.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HPointN.h"

#include "labelled_texts.h"

namespace {

using Members = std::vector<std::vector<int>>;

constexpr wchar_t const* id_of_box = L"decisions";
constexpr int default_minpts = 4;
/// What a policy author has to reach before recall counts.
constexpr double wanted_precision = 0.9;
constexpr int versions_per_class = 4;

/// Texts with the number of their class. A class that is not learnt keeps its number.
struct Texts {
  std::vector<HFeatureNode> records;
  std::vector<int> labels;
};

/// A set with one of the ways to split it: by the place of a text in its class plus `shift`, modulo
/// 10.
struct Split {
  bench::LabelledTexts const& set;
  int shift = 0;
};
/// So that nine of ten texts are decided, each once.
constexpr std::array shifts = {0, 3, 6};

/// The texts of the wanted classes that the split puts in [first, last).
Texts some_of(Split const& split, int first, int last, std::function<bool(int)> const& is_wanted) {
  bench::LabelledTexts const& set = split.set;
  Texts part;
  std::vector<int> places(static_cast<std::size_t>(set.class_count), split.shift);
  for (std::size_t i = 0; i < set.records.size(); ++i) {
    int const label = set.labels[i];
    int const place = places[static_cast<std::size_t>(label)]++ % 10;
    if (place >= first && place < last && is_wanted(label)) {
      part.records.push_back(set.records[i]);
      part.labels.push_back(label);
    }
  }
  return part;
}

bool any_class(int /*label*/) {
  return true;
}

Members members_by_label(Texts const& texts) {
  Members members;
  for (std::size_t i = 0; i < texts.labels.size(); ++i) {
    members.resize(std::max(members.size(), static_cast<std::size_t>(texts.labels[i]) + 1));
    members[static_cast<std::size_t>(texts.labels[i])].push_back(static_cast<int>(i));
  }
  return members;
}

HString class_id(int label) {
  return HString(label, false);
}

QXPPolicyMorvaClustBox kmeans_box(Texts const& texts) {
  HClusterResultNode result;
  Members const members = members_by_label(texts);
  Members learnt;
  std::vector<int> labels;
  for (std::size_t label = 0; label < members.size(); ++label) {
    if (!members[label].empty()) {
      learnt.push_back(members[label]);
      labels.push_back(static_cast<int>(label));
    }
  }
  HClusterResultMgr::get_kmeans_cluster_result_node(texts.records, learnt, result);
  QXPPolicyMorvaClustBox box;
  box.vt_words = result.vt_words;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    QXPKMeansNode& node = box.vt_kmeans_node.emplace_back();
    node.str_class_id = class_id(labels[i]);
    node.vt_weight = result.vt_kmeans_node[i].vt_center;
    node.d_radius = result.vt_kmeans_node[i].d_radius;
  }
  return box;
}

QXPPolicyMorvaClustBox dbscan_box(Texts const& texts) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  std::vector<HPointN> points;
  HClusterFileData::format_data(texts.records, box.vt_words, points, false);
  for (std::vector<int> const& members : members_by_label(texts)) {
    QXPDBScanNode& node = box.vt_dbscan_node.emplace_back();
    node.str_class_id = class_id(static_cast<int>(box.vt_dbscan_node.size()) - 1);
    for (int const member : members) {
      node.vt_file_node.emplace_back().vt_weight = points[static_cast<std::size_t>(member)].vt_data;
    }
  }
  return box;
}

double estimated_eps(Texts const& texts) {
  std::vector<HString> words;
  std::vector<HPointN> points;
  HClusterFileData::format_data(texts.records, words, points, false);
  return HParaPrefer::get_eps(points, default_minpts, true);
}

/// Takes a box as if it were installed, for as long as this lives, and asks the library about it.
class InstalledBox {
 public:
  explicit InstalledBox(QXPPolicyMorvaClustBox content) {
    manager_.mb_init = true;
    HClusterBoxLocalNode& entry = manager_.vt_local_box.emplace_back();
    entry.str_box_id = id_of_box;
    manager_.get_vt_class_id(content, entry.vt_class_id);
    box() = std::move(content);
    HFileClusterBoxMgr::pbox = &manager_;
  }
  ~InstalledBox() { HFileClusterBoxMgr::pbox = nullptr; }
  InstalledBox(InstalledBox const&) = delete;
  InstalledBox& operator=(InstalledBox const&) = delete;

  QXPPolicyMorvaClustBox& box() { return manager_.map_box[id_of_box]; }

  void set_neighbourhood(double eps, int minpts) {
    for (QXPDBScanNode& node : box().vt_dbscan_node) {
      node.d_eps = eps;
      node.i_minpts = minpts;
    }
  }

  bool takes(HFeatureNode const& record, int label) const {
    HString name;
    return HFileMatchClassifyMgr::pins()->match(record, class_id(label), id_of_box, name);
  }

 private:
  HFileClusterBoxMgr manager_;
};

/// The outcome of asking whether texts belong to a class.
struct Score {
  int right = 0;
  int wrong = 0;
  int missed = 0;

  void add(Score const& other) {
    right += other.right;
    wrong += other.wrong;
    missed += other.missed;
  }
  double precision() const { return right + wrong == 0 ? 0.0 : 1.0 * right / (right + wrong); }
  double recall() const { return right == 0 ? 0.0 : 1.0 * right / (right + missed); }
};

Score ask(InstalledBox const& box, int label, Texts const& texts) {
  Score score;
  for (std::size_t i = 0; i < texts.records.size(); ++i) {
    bool const taken = box.takes(texts.records[i], label);
    bool const belongs = texts.labels[i] == label;
    score.right += taken && belongs ? 1 : 0;
    score.wrong += taken && !belongs ? 1 : 0;
    score.missed += !taken && belongs ? 1 : 0;
  }
  return score;
}

/// Each class asked about each text.
std::vector<Score> ask_all(InstalledBox const& box, int class_count, Texts const& texts) {
  std::vector<Score> scores;
  for (int label = 0; label < class_count; ++label) {
    scores.push_back(ask(box, label, texts));
  }
  return scores;
}

Score total(std::vector<Score> const& scores) {
  Score sum;
  for (Score const& score : scores) {
    sum.add(score);
  }
  return sum;
}

/// Without the tenth of each class that is farthest from its center, which sets the radius.
Texts without_farthest(Texts const& texts) {
  std::vector<HString> words;
  std::vector<HPointN> points;
  HClusterFileData::format_data(texts.records, words, points, false);
  std::vector<bool> dropped(texts.records.size());
  for (std::vector<int> members : members_by_label(texts)) {
    HPointN center = HClusterCenter::get_center_point(points, members);
    std::sort(members.begin(), members.end(), [&](int a, int b) {
      return HPointN::get_distance(points[static_cast<std::size_t>(a)], center) >
             HPointN::get_distance(points[static_cast<std::size_t>(b)], center);
    });
    for (std::size_t i = 0; i < members.size() / 10; ++i) {
      dropped[static_cast<std::size_t>(members[i])] = true;
    }
  }
  Texts rest;
  for (std::size_t i = 0; i < texts.records.size(); ++i) {
    if (!dropped[i]) {
      rest.records.push_back(texts.records[i]);
      rest.labels.push_back(texts.labels[i]);
    }
  }
  return rest;
}

/// Columns of the table of a set.
struct Outcome {
  std::string title;
  std::vector<Score> scores;
};

Outcome try_kmeans(std::string const& title, Texts const& learnt, Texts const& decided, int count) {
  InstalledBox const box(kmeans_box(learnt));
  return {title, ask_all(box, count, decided)};
}

/// Each class in a box of its own.
Outcome try_alone(Split const& split, Texts const& decided) {
  Outcome outcome{"K-means, a box for each class", {}};
  for (int label = 0; label < split.set.class_count; ++label) {
    InstalledBox const box(
        kmeans_box(some_of(split, 0, 7, [&](int other) { return other == label; })));
    outcome.scores.push_back(ask(box, label, decided));
  }
  return outcome;
}

struct Neighbourhood {
  double eps;
  int minpts;
};

std::vector<Neighbourhood> neighbourhoods() {
  std::vector<Neighbourhood> list;
  for (double const eps : {1.0, 1.5, 1.75, 2.0, 2.25, 2.5, 3.0, 3.5}) {
    for (int const minpts : {1, 2, 4}) {
      list.push_back({eps, minpts});
    }
  }
  return list;
}

/// The neighbourhood of the highest recall at the wanted precision, found among the learnt texts:
/// five of ten as members, two as texts to decide.
Neighbourhood tune(Split const& split) {
  InstalledBox box(dbscan_box(some_of(split, 0, 5, any_class)));
  Texts const decided = some_of(split, 5, 7, any_class);
  Neighbourhood best = neighbourhoods().front();
  double best_recall = 0.0;
  for (Neighbourhood const& trial : neighbourhoods()) {
    box.set_neighbourhood(trial.eps, trial.minpts);
    Score const score = total(ask_all(box, split.set.class_count, decided));
    if (score.precision() >= wanted_precision && score.recall() > best_recall) {
      best = trial;
      best_recall = score.recall();
    }
  }
  return best;
}

Outcome try_dbscan(std::string const& title, InstalledBox& box, Neighbourhood const& parameters,
                   Texts const& decided, int count) {
  box.set_neighbourhood(parameters.eps, parameters.minpts);
  return {title, ask_all(box, count, decided)};
}

std::string cell(Score const& score) {
  return score.right + score.wrong == 0
             ? std::string("– / 0.00")
             : fmt::format("{:.2f} / {:.2f}", score.precision(), score.recall());
}

void print_outcomes(bench::LabelledTexts const& set, std::vector<Outcome> const& outcomes) {
  std::string head = "| class |";
  std::string rule = "|---|";
  for (Outcome const& outcome : outcomes) {
    head += " " + outcome.title + " |";
    rule += "---|";
  }
  fmt::print("{}\n{}\n", head, rule);
  for (std::size_t label = 0; label <= set.class_names.size(); ++label) {
    bool const is_sum = label == set.class_names.size();
    std::string line = is_sum ? "| **all** |" : "| " + set.class_names[label] + " |";
    for (Outcome const& outcome : outcomes) {
      line += " " + cell(is_sum ? total(outcome.scores) : outcome.scores[label]) + " |";
    }
    fmt::print("{}\n", line);
  }
}

/// A class beside texts that are learnt only so that the class has competitors.
enum class Company { none, one_class, class_each };

Texts with_company(Split const& split, int label, int stranger, Company company) {
  Texts texts = some_of(split, 0, 7, [&](int other) {
    return other == label || (company != Company::none && other != stranger);
  });
  if (company == Company::one_class) {
    for (int& other : texts.labels) {
      other = other == label ? label : split.set.class_count;
    }
  }
  return texts;
}

/// Each class asked about its own texts and about those of a class that was not learnt, for every
/// pair of them.
void print_company(Split const& split, std::string const& title, Company company) {
  Score sum;
  std::ptrdiff_t strangers = 0;
  for (int label = 0; label < split.set.class_count; ++label) {
    for (int stranger = 0; stranger < split.set.class_count; ++stranger) {
      if (stranger == label) {
        continue;
      }
      InstalledBox const box(kmeans_box(with_company(split, label, stranger, company)));
      Texts const decided =
          some_of(split, 7, 10, [&](int other) { return other == label || other == stranger; });
      sum.add(ask(box, label, decided));
      strangers += std::count(decided.labels.begin(), decided.labels.end(), stranger);
    }
  }
  fmt::print("| {} | {:.0f} % | {:.0f} % |\n", title, 100.0 * sum.recall(),
             100.0 * sum.wrong / static_cast<double>(strangers));
}

/// How many texts of a class that was not learnt are taken for one that was.
void print_strangers(bench::LabelledTexts const& set) {
  Split const split{set};
  fmt::print(
      "\n| the box of a class has beside it | own texts taken | strangers taken "
      "|\n|---|---:|---:|\n");
  print_company(split, "nothing", Company::none);
  print_company(split, "all other texts as one class", Company::one_class);
  print_company(split, "all other texts, a class for each subject", Company::class_each);
}

/// One score for each neighbourhood.
std::vector<Score> try_neighbourhoods(InstalledBox& box, Texts const& decided, int class_count) {
  std::vector<Score> scores;
  for (Neighbourhood const& trial : neighbourhoods()) {
    box.set_neighbourhood(trial.eps, trial.minpts);
    scores.push_back(total(ask_all(box, class_count, decided)));
  }
  return scores;
}

void print_neighbourhoods(std::vector<Score> const& scores) {
  std::vector<Neighbourhood> const trials = neighbourhoods();
  fmt::print("\n| eps | minpts 1 | minpts 2 | minpts 4 |\n|---:|---|---|---|");
  for (std::size_t i = 0; i < trials.size(); ++i) {
    if (i == 0 || trials[i].eps != trials[i - 1].eps) {
      fmt::print("\n| {:.2f} |", trials[i].eps);
    }
    fmt::print(" {} |", cell(scores[i]));
  }
  fmt::print("\n");
}

void add(std::vector<Score> const& scores, std::vector<Score>& sums) {
  sums.resize(scores.size());
  for (std::size_t i = 0; i < scores.size(); ++i) {
    sums[i].add(scores[i]);
  }
}

/// What one split gives: the columns of the table of classes, and the scores of neighbourhoods.
struct SplitResult {
  std::vector<Outcome> outcomes;
  std::vector<Score> neighbourhoods;
};

SplitResult measure_split(Split const& split) {
  Texts const learnt = some_of(split, 0, 7, any_class);
  Texts const decided = some_of(split, 7, 10, any_class);
  int const count = split.set.class_count;
  SplitResult result;
  result.outcomes = {
      try_kmeans("K-means", learnt, decided, count),
      try_kmeans("K-means, trimmed", without_farthest(learnt), decided, count),
      try_alone(split, decided),
  };
  Neighbourhood const automatic{estimated_eps(learnt), default_minpts};
  Neighbourhood const tuned = tune(split);
  fmt::print(
      "- {} texts learnt, {} decided. DBSCAN: automatic eps {:.2f}, minpts {}; tuned eps "
      "{:.2f}, minpts {}.\n",
      learnt.records.size(), decided.records.size(), automatic.eps, automatic.minpts, tuned.eps,
      tuned.minpts);
  InstalledBox box(dbscan_box(learnt));
  result.outcomes.push_back(try_dbscan("DBSCAN, automatic", box, automatic, decided, count));
  result.outcomes.push_back(try_dbscan("DBSCAN, tuned", box, tuned, decided, count));
  result.neighbourhoods = try_neighbourhoods(box, decided, count);
  return result;
}

void measure_set(bench::LabelledTexts const& set) {
  fmt::print("\n### {}\n\n", set.name);
  SplitResult sum;
  for (int const shift : shifts) {
    SplitResult const result = measure_split({set, shift});
    sum.outcomes.resize(result.outcomes.size());
    for (std::size_t i = 0; i < result.outcomes.size(); ++i) {
      sum.outcomes[i].title = result.outcomes[i].title;
      add(result.outcomes[i].scores, sum.outcomes[i].scores);
    }
    add(result.neighbourhoods, sum.neighbourhoods);
  }
  fmt::print("\n");
  print_outcomes(set, sum.outcomes);
  print_neighbourhoods(sum.neighbourhoods);
}

/// Whole texts are the members of one class; their versions belong to it, and other texts, which
/// the sets have behind those, do not.
void measure_versions(std::vector<bench::LabelledTexts> const& sets) {
  bench::LabelledTexts const versions = bench::load_versions(versions_per_class);
  Texts whole;
  Texts decided;
  for (std::size_t i = 0; i < versions.records.size(); ++i) {
    bool const is_whole = i == 0 || versions.labels[i] != versions.labels[i - 1];
    Texts& part = is_whole ? whole : decided;
    part.records.push_back(versions.records[i]);
    part.labels.push_back(0);
  }
  std::size_t const version_count = decided.records.size();
  for (bench::LabelledTexts const& set : sets) {
    Texts const others = some_of({set}, versions_per_class, 10, any_class);
    decided.records.insert(decided.records.end(), others.records.begin(), others.records.end());
  }
  decided.labels.resize(decided.records.size(), 1);
  fmt::print("\n### Versions: {} texts learnt, {} versions of them and {} other texts decided\n",
             whole.records.size(), version_count, decided.records.size() - version_count);
  InstalledBox box(dbscan_box(whole));
  print_neighbourhoods(try_neighbourhoods(box, decided, 1));
}

}  // namespace

int main(int argc, char** argv) {
  int most_per_class = 1000;
  CLI::App app{"Precision and recall of boxes, for the texts that MORVA_CORPUS names."};
  app.add_option("--per-class", most_per_class,
                 "Texts of each class, the first ones by name; 1000 if not given");
  CLI11_PARSE(app, argc, argv);
  auto const sets = bench::load_labelled_texts(most_per_class);
  if (sets.empty()) {
    std::fprintf(stderr, "MORVA_CORPUS names no folder with texts\n");
    return 1;
  }
  fmt::print("Precision / recall; – where nothing was taken.\n");
  for (bench::LabelledTexts const& set : sets) {
    measure_set(set);
    print_strangers(set);
    std::fflush(stdout);
  }
  measure_versions(sets);
  return 0;
}
