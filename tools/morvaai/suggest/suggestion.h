#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "classes/corpus.h"
#include "classes/method.h"
#include "suggest/held_out.h"
#include "suggest/parameter_sweep.h"

namespace tool {

/// Copies and revisions of a file lie within this radius, whatever the file is about.
inline constexpr Neighbourhood for_copies{1.5, 1};

/// What was measured of a corpus, and which parameters follow from it.
struct Suggestion {
  /// A box that was tried on files that were held out.
  struct TriedBox {
    /// Kept as its files, with this neighbourhood; else as centers.
    std::optional<Neighbourhood> neighbourhood;
    HeldOut outcome;
  };
  /// What boxes of files would decide, as far as distances tell.
  struct Estimate {
    Neighbourhood neighbourhood;
    HeldOut outcome;
  };

  /// As they were given.
  std::vector<std::string> inputs;
  bool is_by_folder = false;
  std::size_t found = 0;
  std::size_t looked_at = 0;
  std::size_t word_count = 0;
  std::vector<Corpus::Failure> failed;

  /// Without folders: which K-means and DBSCAN find the clearest classes.
  Sweep k;
  Sweep neighbourhoods;
  /// With folders: the classes and their files, and which neighbourhoods are right about them.
  std::vector<std::pair<HString, std::size_t>> folders;
  std::vector<Estimate> estimates;

  /// Sorted distances of the files to the nearest other file, and to the fourth.
  std::vector<double> nearest;
  std::vector<double> fourth;
  /// The radius that `--eps auto` takes, for 4 files; not a number above 0 where there is none.
  double estimated_eps = 0.0;
  std::optional<Neighbourhood> proposed;

  std::vector<TriedBox> tried;
  /// A box of the centers, or of the files, of all these classes would be larger than a box may be,
  /// and so none was tried.
  bool is_too_large_for_centers = false;
  bool is_too_large_for_files = false;
  /// Of the boxes that were tried, the one that separates the classes best; none where no classes
  /// are known or found.
  std::optional<std::size_t> best;

  /// Without folders: whether files fall into classes of themselves by either method.
  bool has_structure() const;
  /// The `learn` that was found best; empty where nothing was found.
  std::string command() const;
  /// Lines for a terminal, with styles.
  std::string as_text() const;
  /// One object in one line.
  std::string as_json() const;
};

}  // namespace tool
