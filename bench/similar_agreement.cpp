/// Compares what is found among many DNAs, at several thresholds, with what a plain loop over all
/// pairs finds, to the last bit. 100,000 DNAs take some minutes. Exit status: 0 all is the same.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <vector>

#include "dna/HFileSimilarDNA.h"

#include "reference/similar_dna.h"
#include "similar_dnas.h"

namespace {

using bench::DnaKind;

constexpr double lowest = 75.0;

bool same_pairs(std::vector<HString> const& dnas, double threshold,
                std::vector<HFileDNAPair> const& expected) {
  std::size_t at = 0;
  bool is_same = true;
  HFileSimilarDNA::get_pairs(dnas, threshold, [&](HFileDNAPair const& pair) {
    is_same = at < expected.size() && pair.first == expected[at].first &&
              pair.second == expected[at].second && pair.similarity == expected[at].similarity;
    ++at;
    return is_same;
  });
  return is_same && at == expected.size();
}

bool same_groups(std::vector<HString> const& dnas, double threshold,
                 std::vector<HFileDNAPair> const& pairs) {
  std::vector<HFileDNAGroup> const groups = HFileSimilarDNA::get_groups(dnas, threshold);
  std::vector<HFileDNAGroup> const expected = reference::groups_of(pairs, dnas.size());
  return std::equal(groups.begin(), groups.end(), expected.begin(), expected.end(),
                    [](HFileDNAGroup const& a, HFileDNAGroup const& b) {
                      return a.members == b.members && a.weakest_link == b.weakest_link;
                    });
}

bool is_same(char const* name, DnaKind kind, std::size_t count) {
  std::vector<HString> const dnas = bench::similar_dnas(kind, count);
  std::vector<HFileDNAPair> const all = reference::similar_pairs(dnas, lowest);
  bool good = true;
  for (double const threshold : {100.0, 97.0, 95.0, 90.0, 85.0, 80.0, lowest}) {
    std::vector<HFileDNAPair> pairs;
    std::copy_if(all.begin(), all.end(), std::back_inserter(pairs),
                 [=](HFileDNAPair const& pair) { return pair.similarity >= threshold; });
    bool const here = same_pairs(dnas, threshold, pairs) && same_groups(dnas, threshold, pairs);
    std::printf("%s, %zu DNAs at %g: %zu pairs, %s\n", name, count, threshold, pairs.size(),
                here ? "the same" : "NOT THE SAME");
    std::fflush(stdout);
    good = good && here;
  }
  return good;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t const count = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 100000;
  bool const planted = is_same("planted", DnaKind::planted, count);
  bool const clustered = is_same("clustered", DnaKind::clustered, count);
  return planted && clustered ? EXIT_SUCCESS : EXIT_FAILURE;
}
