// Speed of the segmenter and of TextRank. Texts are generated; with MORVA_CORPUS set, those under
// long/ in that directory are measured too. MORVA_DICT_PATH names the dictionary's directory, else
// that of the build tree is taken.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "host/utf8.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/lexicon.h"
#include "morvajieba/segmenter.h"
#include "morvajieba/stop_words.h"
#include "morvajieba/text_rank.h"

namespace {

using namespace morvajieba;

std::string dictionary_path() {
  char const* const directory = std::getenv("MORVA_DICT_PATH");
  return std::string(directory != nullptr ? directory : MORVA_BENCH_DICT_PATH) + "/morvajieba.dict";
}

/// The dictionary that all measurements share.
Lexicon const& lexicon() {
  static Lexicon const* const one = [] {
    auto* const dictionary = new Dictionary;
    if (!dictionary->open(dictionary_path())) std::abort();
    return new Lexicon(*dictionary);
  }();
  return *one;
}

struct Text {
  std::string name;
  std::wstring wide;
  std::int64_t bytes;  // as UTF-8
};

/// Sentences of common words, single characters, numbers and English, always the same.
std::wstring generate_text() {
  std::vector<std::wstring> const pieces = {
      L"数据",  L"安全",   L"系统", L"中国", L"我们", L"的",     L"了",     L"在",   L"公司",
      L"研究",  L"生命",   L"科学", L"技术", L"发展", L"经济",   L"社会",   L"，",   L"。",
      L"12.5%", L"2023年", L"龘",   L"靐",   L"the ", L"system", L"张三丰", L"提出", L"并",
      L"不仅",  L"而且",   L"问题", L"解决", L"方案", L"文件",   L"指纹",   L"\n"};
  std::wstring text;
  std::uint32_t state = 1;
  while (text.size() < 2'000'000) {
    state = state * 1664525u + 1013904223u;
    text += pieces[(state >> 8) % pieces.size()];
  }
  return text;
}

std::vector<Text> load_texts() {
  std::vector<Text> texts;
  auto const add = [&texts](std::string const& name, std::wstring text) {
    auto const bytes = static_cast<std::int64_t>(morvabs::to_utf8(text).size());
    texts.push_back({name, std::move(text), bytes});
  };
  add("generated", generate_text());
  if (char const* const corpus = std::getenv("MORVA_CORPUS")) {
    std::vector<std::filesystem::path> paths;
    for (auto const& entry :
         std::filesystem::directory_iterator(std::filesystem::path(corpus) / "long")) {
      paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    for (auto const& path : paths) {
      std::ifstream in(path, std::ios::binary);
      std::string const content((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
      add(path.stem().string(), morvabs::from_utf8(content));
    }
  }
  return texts;
}

class Counter : public TokenSink {
 public:
  void token(std::wstring_view) override { ++count; }
  std::int64_t count = 0;
};

void map_dictionary(benchmark::State& state) {
  std::string const path = dictionary_path();
  while (state.KeepRunning()) {
    Dictionary dictionary;
    benchmark::DoNotOptimize(dictionary.open(path));
    Lexicon const words(dictionary);
    benchmark::DoNotOptimize(words.find(L"中国"));
  }
}

void cut_whole(benchmark::State& state, Text const& text) {
  Segmenter segmenter(lexicon());
  Counter counter;
  while (state.KeepRunning()) segmenter.cut(text.wide, counter);
  state.SetBytesProcessed(state.iterations() * text.bytes);
  state.counters["tokens"] =
      benchmark::Counter(static_cast<double>(counter.count), benchmark::Counter::kIsRate);
}

void cut_lines(benchmark::State& state, Text const& text) {
  Segmenter segmenter(lexicon());
  Counter counter;
  while (state.KeepRunning()) {
    std::wstring_view rest = text.wide;
    while (!rest.empty()) {
      std::size_t const end = std::min(rest.find(L'\n'), rest.size() - 1) + 1;
      segmenter.cut(rest.substr(0, end), counter);
      rest.remove_prefix(end);
    }
  }
  state.SetBytesProcessed(state.iterations() * text.bytes);
}

void rank_words(benchmark::State& state, Text const& text) {
  static StopWords const* const stop_words = new StopWords;
  Segmenter segmenter(lexicon());
  while (state.KeepRunning()) {
    TextRank text_rank(*stop_words);
    segmenter.cut(text.wide, text_rank);
    benchmark::DoNotOptimize(text_rank.rank(static_cast<std::size_t>(state.range(0))));
  }
  state.SetBytesProcessed(state.iterations() * text.bytes);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  static std::vector<Text> const texts = load_texts();
  benchmark::RegisterBenchmark("map_dictionary", map_dictionary)->Unit(benchmark::kMicrosecond);
  for (Text const& text : texts) {
    auto const name = [&text](char const* what) { return what + ("/" + text.name); };
    benchmark::RegisterBenchmark(name("cut_whole").c_str(), cut_whole, text)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(name("cut_lines").c_str(), cut_lines, text)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(name("text_rank").c_str(), rank_words, text)
        ->Arg(100)
        ->Arg(100000)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
