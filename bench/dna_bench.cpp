#include <map>
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "dna/HFileDNA.h"
#include "dna/HFileMatchDNA.h"
#include "dna/HFileSimHash.h"
#include "numeric/HPointN.h"

#include "reference/simhash.h"

namespace {

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

HString some_digits(int count, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> digit(0, 15);
  std::wstring text;
  for (int i = 0; i < count; ++i) {
    text.push_back(HFileSimHash::dec2hex(digit(random)));
  }
  return text.c_str();
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
BENCHMARK(simhash)->Arg(100)->Arg(20000)->Unit(benchmark::kMicrosecond);

void simhash_plain(benchmark::State& state) {
  auto const words = some_words(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(reference::simhash(words, false));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(simhash_plain)->Arg(100)->Arg(20000)->Unit(benchmark::kMicrosecond);

void similarity(benchmark::State& state) {
  HString const a = some_digits(static_cast<int>(state.range(0)), 1);
  HString const b = some_digits(static_cast<int>(state.range(0)), 2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(HFileMatchDNA::get_dna_similarity(a, b));
  }
}
BENCHMARK(similarity)->Arg(32)->Arg(1024);

void similarity_plain(benchmark::State& state) {
  HString const a = some_digits(static_cast<int>(state.range(0)), 1);
  HString const b = some_digits(static_cast<int>(state.range(0)), 2);
  for (auto _ : state) {
    std::vector<int> bits_a;
    std::vector<int> bits_b;
    HFileSimHash::simhashTobinary(a, bits_a);
    HFileSimHash::simhashTobinary(b, bits_b);
    int agreeing = 0;
    for (std::size_t i = 0; i < bits_a.size(); ++i) {
      agreeing += bits_a[i] == bits_b[i] ? 1 : 0;
    }
    benchmark::DoNotOptimize(agreeing);
  }
}
BENCHMARK(similarity_plain)->Arg(32)->Arg(1024);

void distance(benchmark::State& state) {
  HPointN const a = some_point(static_cast<int>(state.range(0)), 1);
  HPointN const b = some_point(static_cast<int>(state.range(0)), 2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(a.distance(b));
  }
}
BENCHMARK(distance)->Arg(128)->Arg(20000);

}  // namespace
