#include <algorithm>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "dna/HFileSimilarDNA.h"
#include "dna/internal/digits.h"
#include "dna/internal/near_rows.h"

#include "reference/similar_dna.h"
#include "similar_dnas.h"

namespace {

using bench::DnaKind;

constexpr std::size_t rows = 100000;

std::vector<HString> dnas_for(benchmark::State const& state, DnaKind kind) {
  return bench::similar_dnas(kind, static_cast<std::size_t>(state.range(0)));
}

void groups(benchmark::State& state, DnaKind kind) {
  std::vector<HString> const dnas = dnas_for(state, kind);
  auto const threshold = static_cast<double>(state.range(1));
  std::size_t count = 0;
  for (auto _ : state) {
    count = HFileSimilarDNA::get_groups(dnas, threshold).size();
  }
  state.counters["groups"] = static_cast<double>(count);
}

void pairs(benchmark::State& state, DnaKind kind) {
  std::vector<HString> const dnas = dnas_for(state, kind);
  auto const threshold = static_cast<double>(state.range(1));
  std::size_t count = 0;
  for (auto _ : state) {
    count = 0;
    HFileSimilarDNA::get_pairs(dnas, threshold, [&count](HFileDNAPair const& /*pair*/) {
      ++count;
      return true;
    });
  }
  state.counters["pairs"] = static_cast<double>(count);
}

void plain(benchmark::State& state) {
  std::vector<HString> const dnas = dnas_for(state, DnaKind::planted);
  for (auto _ : state) {
    benchmark::DoNotOptimize(reference::similar_pairs(dnas, static_cast<double>(state.range(1))));
  }
}

void sizes_and_thresholds(benchmark::internal::Benchmark* rows_of_table) {
  rows_of_table->ArgsProduct({{1000, 10000, 100000}, {100, 97, 95, 90, 85, 80, 70}})
      ->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(groups, planted, DnaKind::planted)->Apply(sizes_and_thresholds);
BENCHMARK_CAPTURE(groups, clustered, DnaKind::clustered)->Apply(sizes_and_thresholds);
BENCHMARK_CAPTURE(groups, alike, DnaKind::alike)->Apply(sizes_and_thresholds);
BENCHMARK_CAPTURE(pairs, planted, DnaKind::planted)->Apply(sizes_and_thresholds);
BENCHMARK(plain)->Args({1000, 90})->Args({10000, 90})->Unit(benchmark::kMillisecond);

/// Asks for what is near each row in turn, so that the time for one is that of what is given: of
/// comparing all, of lookups that find hardly a row, or of comparing many that are looked up.
void near_rows(benchmark::State& state, std::size_t most, morva::BandPlan plan, double work) {
  std::vector<HString> const dnas = bench::similar_dnas(DnaKind::planted, rows);
  std::vector<std::uint64_t> words(rows * morva::words_in_group);
  for (std::size_t i = 0; i < rows; ++i) {
    morva::pack_digits(text_view(dnas[i]), words.data() + i * morva::words_in_group);
  }
  morva::NearRows const near(std::move(words), morva::words_in_group, most, plan);
  std::vector<morva::NearRows::Near> found;
  std::size_t row = 0;
  for (auto _ : state) {
    near.find(row, 0, found);
    benchmark::DoNotOptimize(found);
    row = (row + 1) % rows;
  }
  state.counters["ns"] = benchmark::Counter(
      work * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

constexpr std::size_t few = 12;
constexpr morva::BandPlan many_keys{6, 20};
constexpr morva::BandPlan many_rows{13, 8};

BENCHMARK_CAPTURE(near_rows, comparison, few, morva::BandPlan(), double{rows});
BENCHMARK_CAPTURE(near_rows, lookup, few, many_keys, many_keys.lookups(few));
BENCHMARK_CAPTURE(near_rows, candidate, few, many_rows, many_rows.lookups(few) * rows / 256.0);

}  // namespace
