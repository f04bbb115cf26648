#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "classes/corpus.h"
#include "classes/method.h"
#include "suggest/silhouette.h"

namespace tool {

class TrialBox;

/// What boxes decided about files that they were not learnt from.
struct HeldOut {
  /// Of a class that was learnt: given to it, given to another, or to none.
  std::size_t right = 0;
  std::size_t wrong = 0;
  std::size_t refused = 0;
  /// Of a class that was not learnt, and those among them that were given to one that was.
  std::size_t strangers = 0;
  std::size_t accepted = 0;

  void add_member(bool is_right, bool is_given);
  void add_stranger(bool is_accepted);

  std::size_t decided() const { return right + wrong + refused; }
  /// Share of the files of learnt classes that were given to their own.
  double recall() const;
  /// Share of right ones among all that were given to a class, strangers counting as much as the
  /// others, however many of them there were; 0 where nothing was given.
  double precision() const;
  /// The harmonic mean of both (van Rijsbergen, "Information Retrieval", 1979); 0 where nothing is
  /// right.
  double f_measure() const;
};

/// Files of a corpus with their classes, for boxes to be learnt from some and asked about others:
/// the same ones each time.
///
/// Every file of a class with two or more is decided once by a box that was learnt from the other
/// two thirds: in three rounds, each third file of a class in its order is held out. And every file
/// is decided once as a stranger, by a box of the other classes; more than 12 classes are left out
/// several at a time. The only file of a class is learnt always. Without a second class there are
/// no strangers.
class HeldOutFiles {
 public:
  /// The corpus, with its records, must live as long. A file in several classes is of the first;
  /// files in none take no part.
  HeldOutFiles(Corpus const& corpus, std::vector<std::vector<int>> classes);

  /// A round: what is learnt, class by class, with no files for a class that is not, and which
  /// files are decided.
  struct Round {
    std::vector<std::vector<int>> learnt;
    std::vector<int> members;
    std::vector<int> strangers;
  };
  std::vector<Round> const& rounds() const { return rounds_; }
  /// Classes with a single file, which is never decided about among its own.
  std::size_t single_file_classes() const;

  /// Hears of each round before it is done.
  using Note = std::function<void(std::size_t)>;
  /// What boxes of centers decide: by the library's own classifiers, as `match` does; nothing where
  /// one of all these files would be larger than a box may be.
  std::optional<HeldOut> by_centers(Note const& note) const;
  /// What boxes of files decide with each of these neighbourhoods, by the classifiers too; no
  /// outcomes where one of all these files would be larger than a box may be.
  std::vector<HeldOut> by_members(std::vector<Neighbourhood> const& neighbourhoods,
                                  Note const& note) const;
  /// The same of one neighbourhood from the distances between the files alone, much sooner. A file
  /// that shares no word with a box may come out otherwise.
  HeldOut estimate_by_members(Neighbourhood const& neighbourhood,
                              DistanceMatrix const& distances) const;

 private:
  void add_rounds_of_members();
  void add_rounds_of_strangers();
  HFeatureNode const& record_of(int file) const {
    return corpus_.records[static_cast<std::size_t>(file)];
  }
  std::size_t class_of(int file) const { return class_of_[static_cast<std::size_t>(file)]; }
  bool fits_into_box(char const* method) const;
  void decide(TrialBox const& box, Round const& round, HeldOut& outcome) const;

  Corpus const& corpus_;
  std::vector<std::vector<int>> classes_;
  std::vector<std::size_t> class_of_;
  std::vector<Round> rounds_;
};

}  // namespace tool
