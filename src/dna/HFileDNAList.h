#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "host/HString.h"
#include "host/export.h"

/// One of the DNAs of a list and its similarity to the one that was asked for.
struct HFileDNAFound {
  /// Its place in the list: the number of those appended before it.
  std::size_t index;
  /// In percent, as `HFileMatchDNA::get_dna_similarity` has it.
  double similarity;
};

/// Many DNAs of any lengths, with each of which one DNA is compared. A similarity is, to the last
/// bit, what `HFileMatchDNA::get_dna_similarity` gives for the texts; that of texts of unequal
/// length, or without a character, is 0.0.
///
/// A DNA takes half a byte for each character, rounded up to 8 bytes, and 8 bytes for its index. A
/// comparison goes through those of the same length as they lie in memory, as fast as that delivers
/// them. Several threads may ask at once, but none while another appends.
class MORVA_EXPORT HFileDNAList {
 public:
  HFileDNAList();
  ~HFileDNAList();

  /// The index of a DNA is the number of those that were appended before it.
  void append(HString const& str_dna);
  /// Number of the DNAs.
  std::size_t size() const;

  /// All with a similarity at or above the threshold, in the order of their indices. A threshold of
  /// 0.0 or below finds every DNA, one that is NaN none.
  std::vector<HFileDNAFound> get_similar(HString const& str_dna, double threshold) const;
  /// The `count` most similar ones, or all of a list that is not that long: the most similar first,
  /// and of equally similar ones the one that was appended first.
  std::vector<HFileDNAFound> get_most_similar(HString const& str_dna, std::size_t count) const;

 private:
  // The DNAs of one length, as words of 16 digits.
  struct Shelf {
    std::vector<std::size_t> indices;
    std::vector<std::vector<std::uint64_t>> blocks;
  };

  template <typename Seen>
  static void compare(std::wstring_view digits, Shelf const& shelf, Seen seen);

  std::map<std::size_t, Shelf> shelves_;
  std::size_t size_ = 0;
};
