#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "morvaai.h"

#include "classes/corpus.h"
#include "exit_status.h"

namespace tool {

/// Files with their narrow fingerprints, for a command that compares them with each other.
struct Fingerprints {
  /// The files that have one, each once, and at the same positions the fingerprints.
  std::vector<HString> files;
  std::vector<HString> dnas;
  /// The others, in order.
  std::vector<Corpus::Failure> failed;
  int status = all_done;
};

/// Adds those of the files, made in worker processes as `run_on_files` does.
void read_fingerprints(std::vector<HString> const& files, std::size_t jobs, Fingerprints& all);

/// Adds those of the lines that `morvaai dna --json` has printed into a file, or standard input for
/// "-". What is said there of files without a fingerprint is said again. Other lines are told by
/// their numbers, 20 of them, and left out; a line may have 64 KiB.
void load_fingerprints(std::string const& list, Fingerprints& all);

/// Leaves of the files with one name the first.
void keep_first_of_each(Fingerprints& all);

}  // namespace tool
