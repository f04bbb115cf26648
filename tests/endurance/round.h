#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <vector>

#include "morvaai.h"

#include "digest.h"

namespace endurance {

/// The documents that every round works on.
struct Samples {
  std::vector<HString> documents;
  /// The samples of each class, and the documents that are to be given one.
  std::map<HString, std::vector<HString>> classes;
  std::vector<HString> undecided;

  /// Those in a folder laid out as samples/ is, in order of their names.
  static Samples in(std::filesystem::path const& folder);
};

/// Makes the process work below a directory: all that the library writes lands there, the boxes of
/// the machine included.
void settle_in(std::filesystem::path const& directory);

/// One time through all that a host does with the library, in its calling orders: parse, words,
/// fingerprints, similarity, matrix, clustering by each engine, boxes written, installed, asked and
/// removed.
class Round {
 public:
  /// With boxes of two names: one that is the same in every round, and one that is this round's.
  Round(Samples const& samples, std::uint64_t number);

  /// Runs, and gives the digest of all results.
  std::uint64_t run();

 private:
  void read(HString const& path);
  void read_by_path(HString const& path);
  void read_through_files(std::vector<HString> const& paths);
  void compare_fingerprints();
  void gather_samples();
  void cluster_dense();
  void cluster_sparse();
  void describe(std::vector<std::vector<int>> const& clusters);
  void build_center_box(HString const& id);
  void build_member_box(HString const& id);
  void install(HString const& id);
  void ask(HString const& id);
  void remove(HString const& id);

  Samples const& samples_;
  HString own_id_;
  Digest digest_;
  std::map<HString, HFeatureNode> records_;
  std::vector<HFeatureNode> learnt_;
  std::vector<HString> names_;
  std::vector<std::vector<int>> classes_;
  std::vector<HString> words_;
  std::vector<HPointN> points_;
  HSparsePoints sparse_;
};

}  // namespace endurance
