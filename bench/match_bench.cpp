#include <algorithm>
#include <cstddef>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "box/HFileClusterBoxMgr.h"
#include "classify/HFileMatchClassifyDBScan.h"
#include "classify/HFileMatchClassifyKMeans.h"
#include "classify/HFileMatchClassifyMgr.h"

#include "reference/classify.h"

namespace {

constexpr int words = 20000;
constexpr int words_of_document = 100;
constexpr int documents_of_class = 20;
constexpr int members_of_class = 10;
constexpr wchar_t const* id_of_box = L"bench";

/// Words of real length and script: two to four ideographs, or three to nine letters.
std::vector<HString> vocabulary(std::mt19937& random) {
  std::set<HString> list;
  std::uniform_int_distribution<int> ideographs(2, 4);
  std::uniform_int_distribution<int> letters(3, 9);
  std::uniform_int_distribution<int> ideograph(0x4E00, 0x5E00);
  std::uniform_int_distribution<int> letter('a', 'z');
  while (list.size() < words) {
    bool const is_latin = list.size() % 4 == 0;
    std::wstring text;
    for (int left = is_latin ? letters(random) : ideographs(random); left > 0; --left) {
      text.push_back(static_cast<wchar_t>(is_latin ? letter(random) : ideograph(random)));
    }
    list.insert(text.c_str());
  }
  return {list.begin(), list.end()};
}

/// Words of a topic: the frequent ones of the language, and some of the topic's own.
std::size_t word_of_topic(std::mt19937& random, int topic) {
  std::exponential_distribution<double> rank(1.0 / 300.0);
  auto const offset = static_cast<std::size_t>(random() % 2 == 0 ? 0 : 131 * topic + 1000);
  return (static_cast<std::size_t>(rank(random)) + offset) * 7919 % words;
}

std::vector<double> weights_of_document(std::mt19937& random, int topic) {
  std::uniform_real_distribution<double> weight(0.05, 1.0);
  std::vector<double> list(words);
  for (int i = 0; i < words_of_document; ++i) {
    list[word_of_topic(random, topic)] = weight(random);
  }
  return list;
}

HFeatureNode document(std::mt19937& random, std::vector<HString> const& vocabulary, int topic) {
  HFeatureNode node;
  std::vector<double> const weights = weights_of_document(random, topic);
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (weights[i] != 0.0) {
      // Some words the box does not know.
      HString const word = i % 5 == 0 ? vocabulary[i] + L"s" : vocabulary[i];
      node.vt_words.push_back(word);
      node.vt_weight.push_back(weights[i]);
      node.map_word_weight[word] = weights[i];
    }
  }
  std::shuffle(node.vt_words.begin(), node.vt_words.end(), random);
  return node;
}

QXPKMeansNode center(std::mt19937& random, int topic) {
  QXPKMeansNode node;
  node.str_class_id = HString(topic, false);
  node.str_class_name = HString(L"class ") + node.str_class_id;
  node.d_radius = 10.0;
  node.vt_weight.resize(words);
  for (int i = 0; i < documents_of_class; ++i) {
    std::vector<double> const weights = weights_of_document(random, topic);
    for (std::size_t word = 0; word < weights.size(); ++word) {
      node.vt_weight[word] += weights[word] / documents_of_class;
    }
  }
  return node;
}

QXPDBScanNode members(std::mt19937& random, int topic) {
  QXPDBScanNode node;
  node.str_class_id = HString(topic, false);
  node.str_class_name = HString(L"class ") + node.str_class_id;
  node.d_eps = 6.0;
  node.i_minpts = members_of_class + 1;
  for (int i = 0; i < members_of_class; ++i) {
    node.vt_file_node.emplace_back().vt_weight = weights_of_document(random, topic);
  }
  return node;
}

enum Type { kmeans, dbscan };

/// A box in the manager's cache, and documents of its topics.
class Scene {
 public:
  Scene(Type type, int classes) {
    std::mt19937 random(1);
    HFileClusterBoxMgr::pbox = &boxes;
    boxes.mb_init = true;
    boxes.vt_local_box.resize(1);
    boxes.vt_local_box[0].str_box_id = id_of_box;
    QXPPolicyMorvaClustBox& box = boxes.map_box[id_of_box];
    box.i_cluster_type = type;
    box.vt_words = vocabulary(random);
    for (int topic = 0; topic < classes; ++topic) {
      if (type == kmeans) {
        box.vt_kmeans_node.push_back(center(random, topic));
      } else {
        box.vt_dbscan_node.push_back(members(random, topic));
      }
    }
    boxes.get_vt_class_id(box, boxes.vt_local_box[0].vt_class_id);
    for (int i = 0; i < 50; ++i) {
      documents.push_back(document(random, box.vt_words, i % classes));
    }
  }
  ~Scene() { HFileClusterBoxMgr::pbox = nullptr; }
  Scene(Scene const&) = delete;
  Scene& operator=(Scene const&) = delete;

  HFeatureNode const& next() { return documents[turn++ % documents.size()]; }
  HString const& class_of_last() const {
    auto const& ids = boxes.vt_local_box[0].vt_class_id;
    return ids[(turn - 1) % documents.size() % ids.size()];
  }
  std::vector<HString> const& class_ids() const { return boxes.vt_local_box[0].vt_class_id; }
  QXPPolicyMorvaClustBox const& box() { return boxes.map_box[id_of_box]; }

  HFileClusterBoxMgr boxes;

 private:
  std::vector<HFeatureNode> documents;
  std::size_t turn = 0;
};

/// Asks for each document in turn, and counts those that belong.
template <typename Ask>
void run(benchmark::State& state, Scene& scene, Ask ask) {
  HString out;
  // Makes the box ready, where that is kept.
  ask(scene.next(), scene.class_of_last(), out);
  std::size_t accepted = 0;
  for (auto _ : state) {
    HFeatureNode const& node = scene.next();
    accepted += static_cast<std::size_t>(ask(node, scene.class_of_last(), out));
    benchmark::DoNotOptimize(out);
  }
  state.counters["accepted"] =
      static_cast<double>(accepted) / static_cast<double>(state.iterations());
}

/// The document's own class, of a box in the cache.
void one_class(benchmark::State& state, Type type) {
  Scene scene(type, static_cast<int>(state.range(0)));
  run(state, scene, [](HFeatureNode const& node, HString const& id, HString& out) {
    return HFileMatchClassifyMgr::pins()->match(node, id, HString(id_of_box), out);
  });
}

/// All classes of the box, up to the first that accepts.
void all_classes(benchmark::State& state, Type type) {
  Scene scene(type, static_cast<int>(state.range(0)));
  run(state, scene, [&](HFeatureNode const& node, HString const& /*id*/, HString& out) {
    return HFileMatchClassifyMgr::pins()->match(node, scene.class_ids(), HString(id_of_box), out);
  });
}

/// A box that is seen for the first time.
void uncached(benchmark::State& state, Type type) {
  Scene scene(type, static_cast<int>(state.range(0)));
  run(state, scene, [&](HFeatureNode const& node, HString const& id, HString& out) {
    return type == kmeans ? HFileMatchClassifyKMeans().match(node, id, scene.box(), out)
                          : HFileMatchClassifyDBScan().match(node, id, scene.box(), out);
  });
}

void plain(benchmark::State& state, Type type) {
  Scene scene(type, static_cast<int>(state.range(0)));
  run(state, scene, [&](HFeatureNode const& node, HString const& id, HString& out) {
    return reference::match(scene.boxes, node, {id}, id_of_box, out);
  });
}

/// A map node for each word and class, and a dense list for each member: 1,000 classes would fill
/// gigabytes.
void register_all(std::string const& kind, Type type) {
  auto const add = [&](std::string const& operation, void (*work)(benchmark::State&, Type)) {
    return benchmark::RegisterBenchmark(operation.c_str(), work, type)
        ->Unit(benchmark::kMicrosecond)
        ->Arg(10)
        ->Arg(100);
  };
  for (auto* const ours : {add("match_" + kind + "/morvaai", one_class),
                           add("match_" + kind + "_all/morvaai", all_classes),
                           add("first_match_" + kind + "/morvaai", uncached)}) {
    if (type == kmeans) {
      ours->Arg(1000);
    }
  }
  add("match_" + kind + "/plain", plain);
}

bool const is_registered = [] {
  register_all("kmeans", kmeans);
  register_all("dbscan", dbscan);
  return true;
}();

}  // namespace
