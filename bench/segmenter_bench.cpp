// Speed of the segmenter and of TextRank, beside cppjieba where bench/fetch_cppjieba has fetched
// it. With MORVA_CORPUS set its novels and short documents are measured, else generated ones.
// MORVA_DICT_PATH names the dictionary's directory, else that of the build tree is taken.
//
//   segment_whole/candidate/text    the text in one call
//   segment_lines/candidate/text    line by line, one segmenter for all
//   segment_bare/candidate/text     all but the Han characters taken out: one run from end to end
//   textrank_novel/candidate/text   every keyword of a novel
//   textrank_short/candidate/set    the 100 best keywords of short documents, one call for each
//   segment_growth/morvaai/bytes, textrank_growth/morvaai/bytes   a novel over and over
//
// What differs in meaning:
// - The segmenter takes wide characters, cppjieba UTF-8, as their callers hold the text: cppjieba
//   decodes first, which is a small share of its time. Both find tokens as ranges of the text, and
//   no string is made for any of them.
// - cppjieba ends a sentence at blanks, the full-width comma and the full stop only, and knows no
//   words of ASCII letters but those of its list; its word list is jieba's, its tokens on Han text
//   are nearly the same.
// - TextRank is asked for as a host does it here, an HString handed to HJieba, which looks for
//   changed dictionaries, finds the part of speech of each keyword and makes its string; of
//   cppjieba a warm TextRankExtractor is asked, text in as std::string. It has other stop words and
//   takes signs of two characters and more for words; window, damping and rounds are the same.
// - `plain` is TextRank as it reads in the definition (tests/reference/textrank.h), with this
//   segmenter's tokens.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "host/HJieba.h"
#include "host/HString.h"
#include "host/HStutterDict.h"
#include "host/WordNode.h"
#include "host/native_path.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/lexicon.h"
#include "morvajieba/segmenter.h"
#include "morvajieba/stop_words.h"

#include "reference/textrank.h"
#include "segmenter_texts.h"
#ifdef MORVA_CPPJIEBA_DICT_DIR
#include "cppjieba_peer.h"
#endif

namespace {

using namespace morvajieba;
using bench::NamedTexts;
using bench::SegmenterText;

constexpr std::size_t all_keywords = 100'000;
constexpr std::size_t best_keywords = 100;
/// A text with fewer Han characters has no form without punctuation to speak of.
constexpr std::size_t least_han = 10'000;

std::string dictionary_directory() {
  char const* const directory = std::getenv("MORVA_DICT_PATH");
  return directory != nullptr ? directory : MORVA_BENCH_DICT_PATH;
}

std::string dictionary_path() {
  return dictionary_directory() + "/morvajieba.dict";
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

class Counter : public TokenSink {
 public:
  void token(std::wstring_view) override { ++count; }
  std::int64_t count = 0;
};

class TokenList : public TokenSink {
 public:
  void token(std::wstring_view text) override { tokens.emplace_back(text); }
  std::vector<std::wstring> tokens;
};

template <typename String>
std::vector<String> split_lines(String const& text) {
  std::vector<String> lines;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t const found = text.find(typename String::value_type('\n'), start);
    std::size_t const end = found == String::npos ? text.size() : found + 1;
    lines.push_back(text.substr(start, end - start));
    start = end;
  }
  return lines;
}

HString to_host(std::wstring const& text) {
  return HString(text.data(), static_cast<int>(text.size()));
}

void map_dictionary(benchmark::State& state) {
  std::string const path = dictionary_path();
  while (state.KeepRunning()) {
    Dictionary dictionary;
    benchmark::DoNotOptimize(dictionary.open(path));
    Lexicon const words(dictionary);
    benchmark::DoNotOptimize(words.find(L"中国"));
  }
}

void segment(benchmark::State& state, std::vector<std::wstring> const& pieces, std::int64_t bytes) {
  Segmenter segmenter(lexicon());
  Counter counter;
  while (state.KeepRunning()) {
    for (std::wstring const& piece : pieces) segmenter.cut(piece, counter);
  }
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["tokens"] =
      benchmark::Counter(static_cast<double>(counter.count), benchmark::Counter::kIsRate);
}

void extract(benchmark::State& state, NamedTexts const& documents, std::size_t top) {
  HStutterDict::pins()->set_dict_path(morvabs::from_path(dictionary_directory()));
  std::vector<HString> texts;
  for (SegmenterText const& text : documents.texts) texts.push_back(to_host(text.wide));
  HString const name(L"document");
  std::size_t keywords = 0;
  while (state.KeepRunning()) {
    for (HString const& text : texts) {
      std::vector<WordNode> words;
      HJieba::pins()->textrank_extractor(text, name, words, top, true);
      keywords += words.size();
    }
  }
  if (keywords == 0) state.SkipWithError("no keywords");
  state.SetBytesProcessed(state.iterations() * documents.bytes());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
}

void extract_plainly(benchmark::State& state, NamedTexts const& documents, std::size_t top) {
  static StopWords const* const stop_words = new StopWords;
  auto const is_candidate = [](std::wstring const& token) {
    return token.size() >= 2 && !stop_words->contains(token) &&
           std::any_of(token.begin(), token.end(),
                       [](wchar_t character) { return is_letter_or_digit(classify(character)); });
  };
  while (state.KeepRunning()) {
    for (SegmenterText const& text : documents.texts) {
      TokenList list;
      Segmenter(lexicon()).cut(text.wide, list);
      benchmark::DoNotOptimize(reference::rank_words(list.tokens, is_candidate, top));
    }
  }
  state.SetBytesProcessed(state.iterations() * documents.bytes());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(documents.texts.size()));
}

#ifdef MORVA_CPPJIEBA_DICT_DIR

CppjiebaPeer const& cppjieba_peer() {
  static auto const* const one = new CppjiebaPeer(CppjiebaPeer::Load::segmenter_and_text_rank);
  return *one;
}

void segment_by_cppjieba(benchmark::State& state, std::vector<std::string> const& pieces,
                         std::int64_t bytes) {
  CppjiebaPeer const& peer = cppjieba_peer();
  while (state.KeepRunning()) {
    for (std::string const& piece : pieces) benchmark::DoNotOptimize(peer.count_tokens(piece));
  }
  state.SetBytesProcessed(state.iterations() * bytes);
}

void extract_by_cppjieba(benchmark::State& state, NamedTexts const& documents, std::size_t top) {
  CppjiebaPeer const& peer = cppjieba_peer();
  while (state.KeepRunning()) {
    for (SegmenterText const& text : documents.texts) {
      benchmark::DoNotOptimize(peer.count_keywords(text.utf8, top));
    }
  }
  state.SetBytesProcessed(state.iterations() * documents.bytes());
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(documents.texts.size()));
}

#endif

template <typename Run>
void add_case(std::string const& name, Run run) {
  benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

/// One text, in pieces, with all candidates.
void add_segmenting(std::string const& operation, std::string const& name,
                    SegmenterText const& text, bool by_lines) {
  auto const bytes = static_cast<std::int64_t>(text.utf8.size());
  add_case(operation + "/morvaai/" + name,
           [bytes, pieces = by_lines ? split_lines(text.wide) : std::vector{text.wide}](
               benchmark::State& state) { segment(state, pieces, bytes); });
#ifdef MORVA_CPPJIEBA_DICT_DIR
  add_case(operation + "/cppjieba/" + name,
           [bytes, pieces = by_lines ? split_lines(text.utf8) : std::vector{text.utf8}](
               benchmark::State& state) { segment_by_cppjieba(state, pieces, bytes); });
#endif
}

using Extraction = void (*)(benchmark::State&, NamedTexts const&, std::size_t);

void add_extraction(std::string const& operation, std::string const& candidate, Extraction run,
                    NamedTexts const& documents, std::size_t top) {
  add_case(operation + '/' + candidate + '/' + documents.name,
           [&documents, top, run](benchmark::State& state) { run(state, documents, top); });
}

/// The plain form would take the better part of a minute for a novel.
void add_novel_extraction(NamedTexts const& novel) {
  add_extraction("textrank_novel", "morvaai", extract, novel, all_keywords);
#ifdef MORVA_CPPJIEBA_DICT_DIR
  add_extraction("textrank_novel", "cppjieba", extract_by_cppjieba, novel, all_keywords);
#endif
}

void add_short_extraction(NamedTexts const& documents) {
  add_extraction("textrank_short", "morvaai", extract, documents, best_keywords);
  add_extraction("textrank_short", "plain", extract_plainly, documents, best_keywords);
#ifdef MORVA_CPPJIEBA_DICT_DIR
  add_extraction("textrank_short", "cppjieba", extract_by_cppjieba, documents, best_keywords);
#endif
}

/// A novel over and over, up to a length.
SegmenterText repeat(SegmenterText const& novel, std::size_t bytes) {
  std::wstring text;
  std::size_t const characters = bytes * novel.wide.size() / novel.utf8.size();
  while (text.size() < characters) text += novel.wide.substr(0, characters - text.size());
  return SegmenterText(text);
}

/// The texts are made when their case runs, as the longest ones are many times the novel.
void add_growth(SegmenterText const& novel) {
  for (std::size_t const mebibytes : {1u, 2u, 4u, 8u, 16u, 32u}) {
    std::size_t const bytes = mebibytes << 20;
    add_case("segment_growth/morvaai/" + std::to_string(bytes),
             [&novel, bytes](benchmark::State& state) {
               SegmenterText const text = repeat(novel, bytes);
               segment(state, {text.wide}, static_cast<std::int64_t>(text.utf8.size()));
             });
    add_case("textrank_growth/morvaai/" + std::to_string(bytes),
             [&novel, bytes](benchmark::State& state) {
               extract(state, {"repeated", {repeat(novel, bytes)}}, all_keywords);
             });
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RegisterBenchmark("map_dictionary/morvaai/built", map_dictionary)
      ->Unit(benchmark::kMicrosecond);
  std::vector<NamedTexts> const novels = bench::load_novels();
  for (NamedTexts const& novel : novels) {
    SegmenterText const& text = novel.texts.front();
    add_segmenting("segment_whole", novel.name, text, false);
    add_segmenting("segment_lines", novel.name, text, true);
    SegmenterText const bare(bench::keep_han(text.wide));
    if (bare.wide.size() >= least_han) add_segmenting("segment_bare", novel.name, bare, false);
    add_novel_extraction(novel);
  }
  std::vector<NamedTexts> const short_documents = bench::load_short_documents();
  for (NamedTexts const& documents : short_documents) {
    add_short_extraction(documents);
  }
  if (!novels.empty()) add_growth(novels.back().texts.front());
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
