#include <array>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "dna/HFileDNAList.h"
#include "dna/HFileMatchDNA.h"
#include "dna/HFileSimHash.h"
#include "host/utf8.h"
#include "numeric/HPointN.h"

#include "reference/simhash.h"
#include "reference/similarity.h"

#ifdef MORVA_BENCH_TLSH
#include <tlsh.h>
#endif
#ifdef MORVA_BENCH_SSDEEP
#include <fuzzy.h>
#endif

namespace {

constexpr int narrow = 32;
constexpr int wide = 1024;
constexpr double threshold = 90.0;
constexpr std::size_t most = 10;

std::map<HString, double> some_words(int count) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> code(0x4E00, 0x9FA5);
  std::uniform_real_distribution<double> weight(0.0, 1.0);
  std::map<HString, double> words;
  while (words.size() < static_cast<std::size_t>(count)) {
    wchar_t const text[] = {static_cast<wchar_t>(code(random)), static_cast<wchar_t>(code(random)),
                            0};
    words.try_emplace(HString(text), weight(random));
  }
  return words;
}

HString some_digits(int count, std::minstd_rand& random) {
  std::wstring text(static_cast<std::size_t>(count), L'0');
  for (wchar_t& digit : text) {
    digit = HFileSimHash::dec2hex(static_cast<int>(random() >> 8U & 15U));
  }
  return {text.data(), count};
}

HPointN some_point(int dimensions, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
  std::vector<double> values(static_cast<std::size_t>(dimensions));
  for (double& value : values) {
    value = coordinate(random);
  }
  return HPointN(values);
}

void simhash(benchmark::State& state) {
  auto const words = some_words(static_cast<int>(state.range(0)));
  HString dna;
  for (auto _ : state) {
    HFileSimHash::simhashDNA(words, dna);
    benchmark::DoNotOptimize(dna);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(simhash)->Name("simhash/morvaai")->Arg(100)->Arg(20000)->Unit(benchmark::kMicrosecond);

void simhash_plain(benchmark::State& state) {
  auto const words = some_words(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(reference::simhash(words, false));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(simhash_plain)
    ->Name("simhash/plain")
    ->Arg(100)
    ->Arg(20000)
    ->Unit(benchmark::kMicrosecond);

void similarity(benchmark::State& state) {
  std::minstd_rand random(1);
  HString const a = some_digits(static_cast<int>(state.range(0)), random);
  HString const b = some_digits(static_cast<int>(state.range(0)), random);
  for (auto _ : state) {
    benchmark::DoNotOptimize(HFileMatchDNA::get_dna_similarity(a, b));
  }
}
BENCHMARK(similarity)->Name("similarity/morvaai")->Arg(narrow)->Arg(wide);

void similarity_plain(benchmark::State& state) {
  std::minstd_rand random(1);
  HString const a = some_digits(static_cast<int>(state.range(0)), random);
  HString const b = some_digits(static_cast<int>(state.range(0)), random);
  for (auto _ : state) {
    benchmark::DoNotOptimize(reference::similarity(a, b));
  }
}
BENCHMARK(similarity_plain)->Name("similarity/plain")->Arg(narrow)->Arg(wide);

/// The stored DNAs of the last size asked for; making a million takes a while.
HFileDNAList const& stored_dnas(int count, int length) {
  static HFileDNAList list;
  static int length_of_list = 0;
  if (list.size() != static_cast<std::size_t>(count) || length_of_list != length) {
    list = HFileDNAList();
    length_of_list = length;
    std::minstd_rand random(2);
    for (int i = 0; i < count; ++i) {
      list.append(some_digits(length, random));
    }
  }
  return list;
}

void set_scanned(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * state.range(0) * state.range(1) / 2);
}

void scan(benchmark::State& state) {
  auto const length = static_cast<int>(state.range(1));
  HFileDNAList const& list = stored_dnas(static_cast<int>(state.range(0)), length);
  std::minstd_rand random(1);
  HString const dna = some_digits(length, random);
  for (auto _ : state) {
    benchmark::DoNotOptimize(list.get_similar(dna, threshold));
  }
  set_scanned(state);
}

void nearest(benchmark::State& state) {
  auto const length = static_cast<int>(state.range(1));
  HFileDNAList const& list = stored_dnas(static_cast<int>(state.range(0)), length);
  std::minstd_rand random(1);
  HString const dna = some_digits(length, random);
  for (auto _ : state) {
    benchmark::DoNotOptimize(list.get_most_similar(dna, most));
  }
  set_scanned(state);
}

void scan_plain(benchmark::State& state) {
  auto const length = static_cast<int>(state.range(1));
  std::minstd_rand random(1);
  HString const dna = some_digits(length, random);
  std::vector<HString> list;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    list.push_back(some_digits(length, random));
  }
  for (auto _ : state) {
    std::vector<HFileDNAFound> found;
    for (std::size_t i = 0; i < list.size(); ++i) {
      double const similarity = reference::similarity(dna, list[i]);
      if (similarity >= threshold) {
        found.push_back({i, similarity});
      }
    }
    benchmark::DoNotOptimize(found);
  }
  set_scanned(state);
}
BENCHMARK(scan)->Name("scan/morvaai")->Args({1000000, narrow})->Unit(benchmark::kMicrosecond);
BENCHMARK(nearest)->Name("nearest/morvaai")->Args({1000000, narrow})->Unit(benchmark::kMicrosecond);
BENCHMARK(scan)
    ->Name("scan/morvaai")
    ->Args({20000, wide})
    ->Args({1000000, wide})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(nearest)->Name("nearest/morvaai")->Args({1000000, wide})->Unit(benchmark::kMicrosecond);
BENCHMARK(scan_plain)
    ->Name("scan/plain")
    ->Args({1000000, narrow})
    ->Args({20000, wide})
    ->Unit(benchmark::kMicrosecond);

void distance(benchmark::State& state) {
  HPointN const a = some_point(static_cast<int>(state.range(0)), 1);
  HPointN const b = some_point(static_cast<int>(state.range(0)), 2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(a.distance(b));
  }
}
BENCHMARK(distance)->Name("distance/morvaai")->Arg(128)->Arg(20000);

#if defined(MORVA_BENCH_TLSH) || defined(MORVA_BENCH_SSDEEP)
/// The words as a text, for peers that take fingerprints of bytes.
std::string some_text(int word_count) {
  std::string text;
  for (auto const& [word, weight] : some_words(word_count)) {
    morvabs::append_utf8(text, text_view(word));
  }
  return text;
}
#endif

#ifdef MORVA_BENCH_TLSH

void tlsh_hash(benchmark::State& state) {
  std::string const text = some_text(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Tlsh hash;
    hash.final(reinterpret_cast<unsigned char const*>(text.data()),
               static_cast<unsigned>(text.size()));
    benchmark::DoNotOptimize(hash.getHash());
  }
}
BENCHMARK(tlsh_hash)->Name("simhash/tlsh")->Arg(100)->Arg(20000)->Unit(benchmark::kMicrosecond);

/// Hashes of random digits, which is all that their distance looks at.
std::vector<Tlsh> some_tlsh_hashes(std::size_t count) {
  std::minstd_rand random(1);
  std::vector<Tlsh> hashes(count);
  for (Tlsh& hash : hashes) {
    hash.fromTlshStr(morvabs::to_utf8(text_view(some_digits(TLSH_STRING_LEN, random))).c_str());
  }
  return hashes;
}

void tlsh_distance(benchmark::State& state) {
  std::vector<Tlsh> const hashes = some_tlsh_hashes(2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(hashes[0].totalDiff(&hashes[1]));
  }
}
BENCHMARK(tlsh_distance)->Name("similarity/tlsh")->Arg(narrow);

void tlsh_scan(benchmark::State& state) {
  constexpr int near = 30;
  std::vector<Tlsh> const hashes = some_tlsh_hashes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < hashes.size(); ++i) {
      if (hashes[0].totalDiff(&hashes[i]) <= near) {
        found.push_back(i);
      }
    }
    benchmark::DoNotOptimize(found);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(tlsh_scan)->Name("scan/tlsh")->Args({1000000, narrow})->Unit(benchmark::kMicrosecond);

#endif

#ifdef MORVA_BENCH_SSDEEP

using FuzzyHash = std::array<char, FUZZY_MAX_RESULT>;

FuzzyHash ssdeep_of(std::string const& text) {
  FuzzyHash hash{};
  fuzzy_hash_buf(reinterpret_cast<unsigned char const*>(text.data()),
                 static_cast<std::uint32_t>(text.size()), hash.data());
  return hash;
}

void ssdeep_hash(benchmark::State& state) {
  std::string const text = some_text(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(ssdeep_of(text));
  }
}
BENCHMARK(ssdeep_hash)->Name("simhash/ssdeep")->Arg(100)->Arg(20000)->Unit(benchmark::kMicrosecond);

/// Of a text and its first nine tenths: hashes without a run in common are not compared at all.
void ssdeep_compare(benchmark::State& state) {
  std::string const text = some_text(20000);
  FuzzyHash const a = ssdeep_of(text);
  FuzzyHash const b = ssdeep_of(text.substr(0, text.size() / 10 * 9));
  for (auto _ : state) {
    benchmark::DoNotOptimize(fuzzy_compare(a.data(), b.data()));
  }
}
BENCHMARK(ssdeep_compare)->Name("similarity/ssdeep")->Arg(narrow);

#endif

}  // namespace
