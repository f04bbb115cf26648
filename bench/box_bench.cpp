#include <cstddef>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "host/QXPPolicyMorvaClustBox.h"

namespace {

constexpr int words = 50000;
constexpr int classes = 300;
constexpr int members_per_class = 4;
constexpr int words_per_document = 100;

/// A file in the working directory for as long as one benchmark runs.
class BoxFile {
 public:
  ~BoxFile() { std::filesystem::remove(name); }
  HString path() const { return name; }
  double megabytes() const { return static_cast<double>(std::filesystem::file_size(name)) / 1e6; }

 private:
  static constexpr char const* name = "box_bench.box";
};

std::vector<HString> vocabulary(std::mt19937& random) {
  std::uniform_int_distribution<int> length(2, 4);
  std::uniform_int_distribution<int> code(0x4E00, 0x9FA5);
  std::vector<HString> list;
  for (int i = 0; i < words; ++i) {
    std::wstring text;
    for (int left = length(random); left > 0; --left) {
      text.push_back(static_cast<wchar_t>(code(random)));
    }
    list.emplace_back(text.c_str());
  }
  return list;
}

/// A weight list with `used` of its words set.
std::vector<double> weights(std::mt19937& random, int used) {
  std::uniform_int_distribution<std::size_t> word(0, words - 1);
  std::uniform_real_distribution<double> weight(0.0, 1.0);
  std::vector<double> list(words);
  for (int i = 0; i < used; ++i) {
    list[word(random)] = weight(random);
  }
  return list;
}

/// Each center has the words of `documents` documents, half of them shared.
QXPPolicyMorvaClustBox kmeans_box(int documents, bool with_word_lists) {
  std::mt19937 random(1);
  QXPPolicyMorvaClustBox box;
  box.vt_words = vocabulary(random);
  for (int i = 0; i < classes; ++i) {
    QXPKMeansNode& node = box.vt_kmeans_node.emplace_back();
    node.str_class_id = HString::generateUUID();
    node.str_class_name = HString(L"class ") + HString(i, false);
    node.d_radius = 1.0;
    node.vt_weight = weights(random, documents * words_per_document / 2);
    node.vt_words.resize(with_word_lists ? words : 0);
  }
  return box;
}

QXPPolicyMorvaClustBox dbscan_box() {
  std::mt19937 random(1);
  QXPPolicyMorvaClustBox box;
  box.i_cluster_type = 1;
  box.vt_words = vocabulary(random);
  for (int i = 0; i < classes; ++i) {
    QXPDBScanNode& node = box.vt_dbscan_node.emplace_back();
    node.str_class_id = HString::generateUUID();
    for (int j = 0; j < members_per_class; ++j) {
      QXPFeatureNode& member = node.vt_file_node.emplace_back();
      member.str_file_id = HString::generateUUID();
      member.vt_weight = weights(random, words_per_document);
    }
  }
  return box;
}

double dense_megabytes(QXPPolicyMorvaClustBox const& box) {
  std::size_t numbers = 0;
  for (QXPKMeansNode const& node : box.vt_kmeans_node) {
    numbers += node.vt_weight.size();
  }
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    for (QXPFeatureNode const& member : node.vt_file_node) {
      numbers += member.vt_weight.size();
    }
  }
  return static_cast<double>(numbers * sizeof(double)) / 1e6;
}

void load(benchmark::State& state, QXPPolicyMorvaClustBox const& box) {
  BoxFile const file;
  if (box.to_file(file.path()) != 0) {
    state.SkipWithError("not written");
    return;
  }
  for (auto _ : state) {
    auto loaded = std::make_unique<QXPPolicyMorvaClustBox>();
    benchmark::DoNotOptimize(loaded->from_file(file.path()));
    state.PauseTiming();
    loaded.reset();
    state.ResumeTiming();
  }
  state.counters["file_MB"] = file.megabytes();
  state.counters["dense_MB"] = dense_megabytes(box);
}

void load_kmeans(benchmark::State& state) {
  load(state, kmeans_box(static_cast<int>(state.range(0)), false));
}
BENCHMARK(load_kmeans)->ArgName("documents")->Arg(10)->Arg(50)->Unit(benchmark::kMillisecond);

void load_kmeans_with_word_lists(benchmark::State& state) {
  load(state, kmeans_box(10, true));
}
BENCHMARK(load_kmeans_with_word_lists)->MinTime(3)->Unit(benchmark::kMillisecond);

void load_dbscan(benchmark::State& state) {
  load(state, dbscan_box());
}
BENCHMARK(load_dbscan)->MinTime(3)->Unit(benchmark::kMillisecond);

/// What the dense lists of `load_kmeans` cost by themselves: fresh memory, and zeros in it.
void dense_lists_alone(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::vector<double>> lists(classes);
    for (std::vector<double>& list : lists) {
      list.resize(words);
    }
    benchmark::DoNotOptimize(lists.data());
    state.PauseTiming();
    lists.clear();
    malloc_trim(0);
    state.ResumeTiming();
  }
}
BENCHMARK(dense_lists_alone)->Unit(benchmark::kMillisecond);

void save_kmeans(benchmark::State& state) {
  QXPPolicyMorvaClustBox const box = kmeans_box(10, false);
  BoxFile const file;
  for (auto _ : state) {
    benchmark::DoNotOptimize(box.to_file(file.path()));
  }
}
BENCHMARK(save_kmeans)->Unit(benchmark::kMillisecond);

}  // namespace
