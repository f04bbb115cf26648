#include "dna/internal/fingerprint.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string_view>
#include <tuple>

#include "dna/HFileDNA.h"
#include "dna/HFileSimHash.h"
#include "dna/internal/word_hashes.h"

namespace morva {

namespace {

constexpr std::size_t positions = 128;
constexpr int wide_length = 1024;

struct Vote {
  WordHash hash;
  double weight;
  std::size_t index;  // in the list of words
};

// Some words at a time: looking up one text after the other lets the machine wait for the memory of
// all of them at once.
std::vector<Vote> votes_of(std::span<WeightedWord const> words) {
  constexpr std::size_t most = 64;
  std::array<std::wstring_view, most> texts;
  std::array<WordHash, most> hashes;
  std::vector<Vote> votes;
  votes.reserve(words.size());
  while (votes.size() < words.size()) {
    std::size_t const first = votes.size();
    std::size_t const count = std::min(most, words.size() - first);
    for (std::size_t i = 0; i < count; ++i) {
      texts[i] = text_view(*words[first + i].word);
    }
    hash_words(std::span(texts).first(count), hashes);
    for (std::size_t i = 0; i < count; ++i) {
      votes.push_back({hashes[i], words[first + i].weight, first + i});
    }
  }
  return votes;
}

// By hash, then by index. Hashes are spread evenly, so that a bucket for each vote leaves next to
// nothing to compare; where someone has made them fall into one, that one is sorted.
std::vector<Vote> in_order(std::span<Vote const> votes) {
  auto const bits = static_cast<int>(std::bit_width(votes.size()));
  auto const bucket_of = [bits](Vote const& vote) { return vote.hash[0] >> (64 - bits); };
  std::vector<std::size_t> ends(std::size_t{1} << bits);
  for (Vote const& vote : votes) {
    ++ends[bucket_of(vote)];
  }
  std::exclusive_scan(ends.begin(), ends.end(), ends.begin(), std::size_t{0});
  std::vector<Vote> sorted(votes.size());
  for (Vote const& vote : votes) {
    sorted[ends[bucket_of(vote)]++] = vote;
  }
  std::size_t start = 0;
  for (std::size_t const end : ends) {
    if (end - start > 1) {
      std::sort(sorted.data() + start, sorted.data() + end, [](Vote const& a, Vote const& b) {
        return std::tie(a.hash, a.index) < std::tie(b.hash, b.index);
      });
    }
    start = end;
  }
  return sorted;
}

// Of several votes with one hash that of the last word stays, with the sum of its weights.
void merge_equal_hashes(std::vector<Vote>& votes, std::span<WeightedWord const> words) {
  auto const word_of = [words](Vote const& vote) -> HString const& {
    return *words[vote.index].word;
  };
  std::size_t kept = 0;
  for (Vote const& vote : votes) {
    if (kept == 0 || votes[kept - 1].hash != vote.hash) {
      votes[kept++] = vote;
      continue;
    }
    Vote& last = votes[kept - 1];
    if (word_of(last) == word_of(vote)) {
      last.weight += vote.weight;
    } else if (word_of(last) < word_of(vote)) {
      last = vote;
    }
  }
  votes.resize(kept);
}

using Vector [[gnu::vector_size(64)]] = double;
using Bits [[gnu::vector_size(64)]] = std::uint64_t;
constexpr std::size_t width = sizeof(Vector) / sizeof(double);
constexpr std::size_t vectors_in_half = positions / 2 / width;

// Compiled for several widths, of which the loader picks one; not under the sanitizers, which start
// up after the loader has picked.
#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void add_votes(std::span<Vote const> votes, std::span<double, positions> sums) {
  std::array<Vector, vectors_in_half> high{};
  std::array<Vector, vectors_in_half> low{};
  Bits const first_bits = {1ULL << 63U, 1ULL << 62U, 1ULL << 61U, 1ULL << 60U,
                           1ULL << 59U, 1ULL << 58U, 1ULL << 57U, 1ULL << 56U};
  for (Vote const& vote : votes) {
    Vector const set = Vector{} + vote.weight;
    Vector const clear = 0.0 - set;
    for (std::size_t i = 0; i < vectors_in_half; ++i) {
      Bits const asked = first_bits >> (i * width);
      high[i] += (asked & vote.hash[0]) != 0 ? set : clear;
      low[i] += (asked & vote.hash[1]) != 0 ? set : clear;
    }
  }
  std::memcpy(sums.data(), high.data(), sizeof high);
  std::memcpy(sums.data() + positions / 2, low.data(), sizeof low);
}

}  // namespace

HString fingerprint(std::span<WeightedWord const> words) {
  HString output;
  if (words.empty()) {
    return output;
  }
  std::vector<Vote> votes = in_order(votes_of(words));
  merge_equal_hashes(votes, words);
  std::vector<double> sums(positions);
  add_votes(votes, std::span<double, positions>(sums));
  if (HFileDNA::get_dna_length() == wide_length) {
    HFileSimHash::simhashDowndimension1024(sums, output);
  } else {
    HFileSimHash::simhashDowndimension32(sums, output);
  }
  return output;
}

}  // namespace morva
