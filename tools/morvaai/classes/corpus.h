#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "morvaai.h"

#include "exit_status.h"

namespace tool {

/// Files with what characterises them, for a command that looks at all of them together.
struct Corpus {
  struct Failure {
    HString file;
    std::string reason;
  };

  /// The files that gave words, and at the same positions what the words say of them and, where
  /// they were asked for, their fingerprints as points.
  std::vector<HString> files;
  HSparseFileData data;
  std::vector<HPointN> fingerprints;
  /// Their records, where they were asked for.
  std::vector<HFeatureNode> records;
  /// The others, in order.
  std::vector<Failure> failed;
  int status = all_done;
  /// The processes that have read the same files and share the work on them; null where this one
  /// works alone.
  std::shared_ptr<HProcessGroup> group;
};

/// The files that failed, each with its outcome and the reason.
nlohmann::ordered_json json_of(std::vector<Corpus::Failure> const& failed);

/// What a file gave: its record, or why there is none.
struct Extracted {
  std::optional<HFeatureNode> record;
  std::string reason;
};

/// Extracts the words of the files in worker processes, as `run_on_files` does, and with
/// `with_dna` their wide fingerprints too; hands them to `take` in order of the files. A file
/// without any is one that failed.
int read_records(std::vector<HString> const& files, std::size_t jobs, bool with_dna,
                 std::function<bool(std::size_t, Extracted)> const& take);

/// What a command needs of a corpus beside the words.
struct CorpusNeeds {
  bool fingerprints = false;
  /// Some 20 KiB for each file. Otherwise each word of a file takes 16 bytes.
  bool records = false;
};

/// The same, all together.
Corpus read_corpus(std::vector<HString> const& files, std::size_t jobs, CorpusNeeds const& needs);

}  // namespace tool
