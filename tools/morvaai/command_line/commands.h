#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "classes/method.h"
#include "documents/run_on_files.h"

namespace tool {

/// `morvaai features`: the words that characterise each file.
struct FeaturesOptions : RunOptions {
  int words = 20;
};
int run_features(FeaturesOptions const& options);

/// `morvaai dna`: the fingerprint of each file.
struct DnaOptions : RunOptions {
  bool wide = false;
  bool count = false;
};
int run_dna(DnaOptions const& options);

/// `morvaai compare`: how like two files are.
struct CompareOptions {
  std::string first;
  std::string second;
  int words = 20;
  bool json = false;
};
int run_compare(CompareOptions const& options);

/// `morvaai similar`: groups of files that are nearly the same.
struct SimilarOptions : RunOptions {
  /// Least percentage of bits in which the fingerprints of two files agree.
  double threshold = 90.0;
  /// Each pair, instead of the groups.
  bool pairs = false;
  /// Shards, and what `morvaai dna --json` has printed.
  std::vector<std::string> lists;
};
int run_similar(SimilarOptions const& options);

/// `morvaai text`: the text of each file.
struct TextOptions : RunOptions {
  std::string kind = "main";
};
int run_text(TextOptions const& options);
/// The kinds of text by the names that `--kind` takes.
std::vector<std::string> text_kind_names();

/// `morvaai cluster`: the classes that files fall into.
struct ClusterOptions : RunOptions {
  MethodOptions how;
  bool dna = false;
  std::optional<std::string> output_folder;
};
int run_cluster(ClusterOptions const& options);
/// The names that `--method` takes.
std::vector<std::string> cluster_method_names();

/// `morvaai collect`: the records that the agent has of each file.
int run_collect(RunOptions const& options);

/// `morvaai extract`: what is needed of files without them, into a shard.
struct ExtractOptions : RunOptions {
  std::string output;
  /// The part of all files that is to be read, as "2/8".
  std::string part = "1/1";
};
int run_extract(ExtractOptions const& options);

/// `morvaai merge`: one shard from several.
struct MergeOptions {
  std::vector<std::string> shards;
  std::string output;
  bool json = false;
};
int run_merge(MergeOptions const& options);

/// `morvaai learn`: classes from files, into a box of this machine.
struct LearnOptions : RunOptions {
  std::string box_id;
  MethodOptions how;
  /// The sub-folders are the classes.
  bool by_folder = false;
  /// A box of that id may be replaced.
  bool force = false;
  /// Shards in the place of files, those among `inputs` too.
  std::vector<std::string> shards;
  /// This is one of the processes that an MPI launcher has started.
  bool mpi = false;
  /// File for a page about the classes.
  std::optional<std::string> report;
};
int run_learn(LearnOptions const& options);

/// `morvaai suggest`: the parameters by which classes are found, and learnt, best.
struct SuggestOptions : RunOptions {
  /// The sub-folders are the classes.
  bool by_folder = false;
  /// Of more files, so many are looked at.
  std::size_t sample = 1000;
};
int run_suggest(SuggestOptions const& options);

/// `morvaai match`: the class of each file, by the boxes of this machine. The status is that of
/// grep: 0 some file has one, 1 none has, 2 trouble.
struct MatchOptions : RunOptions {
  /// All boxes if empty.
  std::vector<std::string> boxes;
  /// Ids or names; all classes if empty.
  std::vector<std::string> classes;
  /// File for a page about the decisions.
  std::optional<std::string> report;
};
int run_match(MatchOptions const& options);

/// `morvaai report`: a page about a box.
struct ReportOptions {
  /// The id of a box of this machine, or else a box file.
  std::string box;
  /// The id with ".html" if not given.
  std::optional<std::string> output;
};
int run_report(ReportOptions const& options);

/// `morvaai console`: the interactive clustering tool, for "canopy", "kmeans" or "dbscan".
int run_console(std::string const& method);

/// `morvaai box dump`: what a box file holds.
struct BoxDumpOptions {
  std::string file;
  bool json = false;
};
int run_box_dump(BoxDumpOptions const& options);

/// `morvaai box list`: the boxes of this machine.
int run_box_list(bool json);
/// `morvaai box show` and `remove`, of one box, and `verify`, of those named or all.
struct BoxOptions {
  std::vector<std::string> ids;
  bool json = false;
};
int run_box_show(BoxOptions const& options);
int run_box_remove(BoxOptions const& options);
int run_box_verify(BoxOptions const& options);
/// `morvaai box add`: installs a box file.
struct BoxAddOptions {
  std::string file;
  /// The file's name without its suffix if not given.
  std::optional<std::string> id;
  /// A box of that id may be replaced.
  bool force = false;
  bool json = false;
};
int run_box_add(BoxAddOptions const& options);

/// `morvaai version`: versions and where the dictionary lies.
int run_version(bool json);

/// What a shell completes a word with, one a line: "boxes" their ids, "classes" the names of the
/// classes of the boxes behind it, or of all. What cannot be read is left out without a word.
int run_complete(std::vector<std::string> const& what);

}  // namespace tool
