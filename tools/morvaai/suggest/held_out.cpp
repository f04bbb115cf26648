#include "suggest/held_out.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "boxes/box_classes.h"

#include "suggest/trial_box.h"

namespace tool {

namespace {

constexpr std::size_t rounds_of_members = 3;
constexpr std::size_t most_rounds_of_strangers = 12;
constexpr std::size_t no_class = static_cast<std::size_t>(-1);
// What the classifier adds to a radius.
constexpr double tolerance = 0.000001;

double share(std::size_t part, std::size_t whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole);
}

HString id_of(std::size_t index) {
  return HString(static_cast<int>(index), false);
}

// What a round learns, as points: classes without files are no longer among them.
struct Learnt {
  Clustering run;
  std::vector<HString> ids;
};

Learnt learn(HSparseFileData const& data, std::vector<std::vector<int>> const& classes) {
  std::vector<int> files;
  for (std::vector<int> const& members : classes) {
    files.insert(files.end(), members.begin(), members.end());
  }
  std::sort(files.begin(), files.end());
  files.erase(std::unique(files.begin(), files.end()), files.end());
  Learnt learnt;
  data.format_data(files, learnt.run.words, learnt.run.points);
  for (std::size_t c = 0; c < classes.size(); ++c) {
    if (classes[c].empty()) {
      continue;
    }
    learnt.ids.push_back(id_of(c));
    std::vector<int>& members = learnt.run.clusters.emplace_back();
    for (int const file : classes[c]) {
      members.push_back(
          static_cast<int>(std::lower_bound(files.begin(), files.end(), file) - files.begin()));
    }
  }
  return learnt;
}

QXPPolicyMorvaClustBox box_of_centers(Learnt learnt) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = kmeans_box;
  for (std::size_t c = 0; c < learnt.ids.size(); ++c) {
    box.vt_kmeans_node.push_back(
        class_of_center(learnt.ids[c], {}, learnt.run.points, learnt.run.clusters[c]));
  }
  box.vt_words = std::move(learnt.run.words);
  return box;
}

QXPPolicyMorvaClustBox box_of_members(Learnt learnt) {
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = dbscan_box;
  for (std::size_t c = 0; c < learnt.ids.size(); ++c) {
    box.vt_dbscan_node.push_back(
        class_of_members(learnt.ids[c], {}, {}, learnt.run.points, learnt.run.clusters[c]));
  }
  box.vt_words = std::move(learnt.run.words);
  return box;
}

}  // namespace

double HeldOut::recall() const {
  return share(right, decided());
}

double HeldOut::precision() const {
  double const given = share(right + wrong, decided()) + share(accepted, strangers);
  return right == 0 ? 0.0 : recall() / given;
}

double HeldOut::f_measure() const {
  return right == 0 ? 0.0 : 2.0 * precision() * recall() / (precision() + recall());
}

void HeldOut::add_member(bool is_right, bool is_given) {
  right += is_right ? 1 : 0;
  wrong += is_given && !is_right ? 1 : 0;
  refused += is_given ? 0 : 1;
}

void HeldOut::add_stranger(bool is_accepted) {
  ++strangers;
  accepted += is_accepted ? 1 : 0;
}

HeldOutFiles::HeldOutFiles(Corpus const& corpus, std::vector<std::vector<int>> classes)
    : corpus_(corpus), classes_(std::move(classes)), class_of_(corpus.files.size(), no_class) {
  for (std::size_t c = 0; c < classes_.size(); ++c) {
    std::erase_if(classes_[c], [&](int file) { return class_of(file) != no_class; });
    for (int const file : classes_[c]) {
      class_of_[static_cast<std::size_t>(file)] = c;
    }
  }
  add_rounds_of_members();
  add_rounds_of_strangers();
}

void HeldOutFiles::add_rounds_of_members() {
  for (std::size_t r = 0; r < rounds_of_members; ++r) {
    Round round;
    for (std::vector<int> const& members : classes_) {
      std::vector<int>& learnt = round.learnt.emplace_back();
      for (std::size_t i = 0; i < members.size(); ++i) {
        bool const is_held_out = members.size() > 1 && i % rounds_of_members == r;
        (is_held_out ? round.members : learnt).push_back(members[i]);
      }
    }
    rounds_.push_back(std::move(round));
  }
}

void HeldOutFiles::add_rounds_of_strangers() {
  std::size_t const left_out = std::min(classes_.size(), most_rounds_of_strangers);
  for (std::size_t r = 0; r < left_out && classes_.size() > 1; ++r) {
    Round round;
    round.learnt = classes_;
    for (std::size_t c = r; c < classes_.size(); c += left_out) {
      round.strangers.insert(round.strangers.end(), classes_[c].begin(), classes_[c].end());
      round.learnt[c].clear();
    }
    rounds_.push_back(std::move(round));
  }
}

void HeldOutFiles::decide(TrialBox const& box, Round const& round, HeldOut& outcome) const {
  for (int const file : round.members) {
    std::optional<HString> const given = box.class_of(record_of(file));
    std::size_t const own = class_of(file);
    outcome.add_member(given && *given == id_of(own), given.has_value());
  }
  for (int const file : round.strangers) {
    outcome.add_stranger(box.class_of(record_of(file)).has_value());
  }
}

bool HeldOutFiles::fits_into_box(char const* method) const {
  MethodOptions how;
  how.method = method;
  return too_large_for_box(how, learn(corpus_.data, classes_).run).empty();
}

std::optional<HeldOut> HeldOutFiles::by_centers(Note const& note) const {
  if (!fits_into_box("kmeans")) {
    return std::nullopt;
  }
  HeldOut outcome;
  for (std::size_t r = 0; r < rounds_.size(); ++r) {
    note(r);
    TrialBox const box(box_of_centers(learn(corpus_.data, rounds_[r].learnt)));
    decide(box, rounds_[r], outcome);
  }
  return outcome;
}

std::vector<HeldOut> HeldOutFiles::by_members(std::vector<Neighbourhood> const& neighbourhoods,
                                              Note const& note) const {
  if (!fits_into_box("dbscan")) {
    return {};
  }
  std::vector<HeldOut> outcomes(neighbourhoods.size());
  for (std::size_t r = 0; r < rounds_.size(); ++r) {
    note(r);
    TrialBox box(box_of_members(learn(corpus_.data, rounds_[r].learnt)));
    for (std::size_t i = 0; i < neighbourhoods.size(); ++i) {
      box.set_neighbourhood(neighbourhoods[i]);
      decide(box, rounds_[r], outcomes[i]);
    }
  }
  return outcomes;
}

HeldOut HeldOutFiles::estimate_by_members(Neighbourhood const& neighbourhood,
                                          DistanceMatrix const& distances) const {
  auto const is_taken_by = [&](int file, std::vector<int> const& members) {
    std::vector<double> const& row = distances[static_cast<std::size_t>(file)];
    int count = 0;
    return std::any_of(members.begin(), members.end(), [&](int member) {
      double const distance = row[static_cast<std::size_t>(member)];
      count += distance < neighbourhood.eps + tolerance ? 1 : 0;
      return distance < tolerance || count >= neighbourhood.minpts;
    });
  };
  HeldOut outcome;
  for (Round const& round : rounds_) {
    auto const class_given = [&](int file) {
      auto const found =
          std::find_if(round.learnt.begin(), round.learnt.end(),
                       [&](auto const& members) { return is_taken_by(file, members); });
      return found == round.learnt.end() ? no_class
                                         : static_cast<std::size_t>(found - round.learnt.begin());
    };
    for (int const file : round.members) {
      std::size_t const given = class_given(file);
      outcome.add_member(given == class_of(file), given != no_class);
    }
    for (int const file : round.strangers) {
      outcome.add_stranger(class_given(file) != no_class);
    }
  }
  return outcome;
}

std::size_t HeldOutFiles::single_file_classes() const {
  return static_cast<std::size_t>(std::count_if(
      classes_.begin(), classes_.end(), [](auto const& members) { return members.size() == 1; }));
}

}  // namespace tool
