#pragma once

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

#include "dna/HFileMatchDNA.h"
#include "dna/HFileSimilarDNA.h"
#include "host/HString.h"

namespace reference {

/// All pairs in the plainest form: a loop in a loop over `HFileMatchDNA`.
inline std::vector<HFileDNAPair> similar_pairs(std::vector<HString> const& dnas, double threshold) {
  std::vector<HFileDNAPair> pairs;
  for (std::size_t i = 0; i < dnas.size(); ++i) {
    for (std::size_t j = i + 1; j < dnas.size(); ++j) {
      if (HFileMatchDNA::match(dnas[i], dnas[j], threshold)) {
        pairs.push_back({i, j, HFileMatchDNA::get_dna_similarity(dnas[i], dnas[j])});
      }
    }
  }
  return pairs;
}

/// The groups that the pairs make of so many: the most similar pairs join first, so that the last
/// one that joins two parts is the weakest link of what it makes.
inline std::vector<HFileDNAGroup> groups_of(std::vector<HFileDNAPair> pairs, std::size_t count) {
  std::stable_sort(pairs.begin(), pairs.end(), [](HFileDNAPair const& a, HFileDNAPair const& b) {
    return a.similarity > b.similarity;
  });
  std::vector<HFileDNAGroup> parts(count);
  std::vector<std::size_t> part_of(count);
  std::iota(part_of.begin(), part_of.end(), std::size_t{0});
  for (std::size_t i = 0; i < count; ++i) {
    parts[i] = {{i}, 100.0};
  }
  for (HFileDNAPair const& pair : pairs) {
    std::size_t const into = std::min(part_of[pair.first], part_of[pair.second]);
    std::size_t const from = std::max(part_of[pair.first], part_of[pair.second]);
    if (into == from) {
      continue;
    }
    for (std::size_t const member : parts[from].members) {
      part_of[member] = into;
      parts[into].members.push_back(member);
    }
    parts[from].members.clear();
    parts[into].weakest_link = pair.similarity;
  }
  std::erase_if(parts, [](HFileDNAGroup const& part) { return part.members.size() < 2; });
  for (HFileDNAGroup& part : parts) {
    std::sort(part.members.begin(), part.members.end());
  }
  std::sort(parts.begin(), parts.end(), [](HFileDNAGroup const& a, HFileDNAGroup const& b) {
    return a.members.front() < b.members.front();
  });
  return parts;
}

}  // namespace reference
