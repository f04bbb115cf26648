#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// Two DNAs of a list, by their indices, and their similarity.
struct HFileDNAPair {
  /// The lesser index.
  std::size_t first;
  /// The greater index.
  std::size_t second;
  /// In percent, as `HFileMatchDNA::get_dna_similarity` has it.
  double similarity;
};

/// DNAs of a list of which each is similar to another one of them.
struct HFileDNAGroup {
  /// Their indices in ascending order, at least two.
  std::vector<std::size_t> members;
  /// The greatest threshold at which they are still one group: from each of them to each other one
  /// there is a way by pairs that are at least so similar.
  double weakest_link;
};

/// Near-duplicates: what is similar within a list of DNAs, over all pairs, each compared exactly as
/// by `HFileMatchDNA::match`, to the last bit of similarity and threshold. DNAs may be any texts,
/// of any lengths and empty ones among them; texts of unequal lengths have the similarity 0.0. A
/// threshold of 0.0 or below finds every pair, one that is NaN none.
///
/// Most pairs of narrow DNAs need no comparison: they are found by parts of their bits, of which
/// two that are similar enough provably share one or nearly (`morva::BandPlan`; Manku, Jain, Das
/// Sarma, 2007; Norouzi, Punjani, Fleet, 2012). The more bits a threshold lets differ, the less
/// that saves; where it saves nothing all pairs are compared, and however DNAs are chosen the time
/// is at most about three times that of it. docs/similar.md has the times. Several threads may ask
/// at once.
class MORVA_EXPORT HFileSimilarDNA {
 public:
  /// Hands all pairs at or above the threshold to `take`, in the order of the first index and then
  /// of the second, until it gives false. They may be as many as n * (n - 1) / 2, none of which is
  /// kept: the memory is some hundred bytes for each DNA.
  static void get_pairs(std::vector<HString> const& dnas, double threshold,
                        std::function<bool(HFileDNAPair const&)> const& take);
  /// The groups that these pairs make: the connected parts of the graph, ordered by their first
  /// members. A DNA that is in no pair is in no group. Equal DNAs are compared once, and pairs are
  /// not kept: beside the above, the memory is 4 bytes for each different DNA and each number of
  /// bits that the threshold lets differ.
  static std::vector<HFileDNAGroup> get_groups(std::vector<HString> const& dnas, double threshold);
};
