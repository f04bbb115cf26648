#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include "box_peers.h"
#include "host/QXPPolicyMorvaClustBox.h"

namespace {

constexpr int words = 50000;
constexpr int many_classes = 300;
constexpr int members_per_class = 4;
constexpr int words_per_document = 100;

/// A file in the working directory for as long as one benchmark runs.
class BoxFile {
 public:
  static constexpr char const* name = "box_bench.box";

  ~BoxFile() { std::filesystem::remove(name); }
  double megabytes() const { return static_cast<double>(std::filesystem::file_size(name)) / 1e6; }
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
QXPPolicyMorvaClustBox kmeans_box(int classes, int documents, bool with_word_lists) {
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

QXPPolicyMorvaClustBox dbscan_box(int classes) {
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

bool is_same(QXPPolicyMorvaClustBox const& a, QXPPolicyMorvaClustBox const& b) {
  return a.vt_words == b.vt_words &&
         std::equal(a.vt_kmeans_node.begin(), a.vt_kmeans_node.end(), b.vt_kmeans_node.begin(),
                    b.vt_kmeans_node.end(), [](QXPKMeansNode const& x, QXPKMeansNode const& y) {
                      return x.str_class_id == y.str_class_id &&
                             x.str_class_name == y.str_class_name && x.d_radius == y.d_radius &&
                             x.vt_weight == y.vt_weight;
                    });
}

/// What writes a box, and what reads it.
struct Form {
  std::function<void(QXPPolicyMorvaClustBox const&)> save;
  std::function<QXPPolicyMorvaClustBox()> load;
};

Form our_form() {
  return {[](QXPPolicyMorvaClustBox const& box) { box.to_file(BoxFile::name); },
          [] {
            QXPPolicyMorvaClustBox box;
            box.from_file(BoxFile::name);
            return box;
          }};
}

Form text_form(box_peers::Lists lists) {
  return {[lists](QXPPolicyMorvaClustBox const& box) {
            box_peers::write_text(box, lists, BoxFile::name);
          },
          [lists] { return box_peers::read_text(lists, BoxFile::name); }};
}

Form json_form(box_peers::Lists lists) {
  return {[lists](QXPPolicyMorvaClustBox const& box) {
            box_peers::write_json(box, lists, BoxFile::name);
          },
          [lists] { return box_peers::read_json(lists, BoxFile::name); }};
}

void load(benchmark::State& state, QXPPolicyMorvaClustBox const& box, BoxFile const& file,
          Form const& form) {
  form.save(box);
  if (!is_same(form.load(), box)) {
    state.SkipWithError("another box comes back");
    return;
  }
  for (auto _ : state) {
    auto loaded = std::make_unique<QXPPolicyMorvaClustBox>(form.load());
    benchmark::DoNotOptimize(loaded);
    state.PauseTiming();
    loaded.reset();
    // Each load starts as in a process of its own.
    malloc_trim(0);
    state.ResumeTiming();
  }
  state.counters["file_MB"] = file.megabytes();
  state.counters["dense_MB"] = dense_megabytes(box);
}

void save(benchmark::State& state, QXPPolicyMorvaClustBox const& box, BoxFile const& file,
          Form const& form) {
  for (auto _ : state) {
    form.save(box);
  }
  state.counters["file_MB"] = file.megabytes();
}

/// What the dense lists of a box of 300 classes cost by themselves: fresh memory, and zeros in it.
void dense_lists_alone(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::vector<double>> lists(many_classes);
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

constexpr int few_documents = 10;
constexpr int many_documents = 50;

/// Each with a box of 500 words a class.
void register_form(std::string const& name, Form const& form) {
  auto const add = [&](std::string const& operation, auto measure) {
    benchmark::RegisterBenchmark(
        (operation + "/" + name).c_str(),
        [measure, form](benchmark::State& state) {
          BoxFile const file;
          measure(state, kmeans_box(static_cast<int>(state.range(0)), few_documents, false), file,
                  form);
        })
        ->Arg(30)
        ->Arg(many_classes)
        ->Unit(benchmark::kMillisecond);
  };
  add("box_load", load);
  add("box_save", save);
}

void register_load(std::string const& kind, std::function<QXPPolicyMorvaClustBox()> const& make) {
  benchmark::RegisterBenchmark(("load_" + kind + "/morvaai").c_str(),
                               [make](benchmark::State& state) {
                                 BoxFile const file;
                                 load(state, make(), file, our_form());
                               })
      ->Arg(many_classes)
      ->Unit(benchmark::kMillisecond);
}

bool const is_registered = [] {
  using box_peers::Lists;
  register_form("morvaai", our_form());
  register_form("text", text_form(Lists::dense));
  register_form("json", json_form(Lists::dense));
  register_form("sparse-text", text_form(Lists::sparse));
  register_form("sparse-json", json_form(Lists::sparse));
  register_load("many_words", [] { return kmeans_box(many_classes, many_documents, false); });
  register_load("word_lists", [] { return kmeans_box(many_classes, few_documents, true); });
  register_load("members", [] { return dbscan_box(many_classes); });
  benchmark::RegisterBenchmark("dense_lists/alone", dense_lists_alone)
      ->Unit(benchmark::kMillisecond);
  return true;
}();

}  // namespace
