// Generated documents are the same on every machine: measurements of different days and machines
// are of the same ones.

#include <cstdint>
#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "generated_texts.h"

namespace {

std::uint64_t digest_of(std::string const& text, std::uint64_t digest) {
  for (char const byte : text) {
    digest = (digest ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
  }
  return digest;
}

std::uint64_t digest_of_files(std::uint64_t seed, std::size_t count) {
  bench::GeneratedDocuments const documents(seed);
  bench::GeneratedVocabulary const vocabulary("");
  std::uint64_t digest = 0xcbf29ce484222325U;
  for (std::size_t i = 0; i < count; ++i) {
    bench::GeneratedFile const file = bench::generated_file(documents, i, vocabulary);
    digest = digest_of(file.content, digest_of(file.name, digest));
  }
  return digest;
}

TEST(GeneratedDocuments, are_the_same_bytes_for_a_seed) {
  EXPECT_EQ(digest_of_files(1, 300), 0x384F03882AC4DAA3U);
}

TEST(GeneratedDocuments, are_others_for_another_seed) {
  EXPECT_NE(digest_of_files(1, 20), digest_of_files(2, 20));
}

TEST(GeneratedDocuments, have_a_vocabulary_that_grows_more_slowly_than_the_text) {
  bench::GeneratedDocuments const documents;
  std::set<bench::GeneratedWord> seen;
  std::size_t of_first_half = 0;
  for (std::size_t i = 0; i < 400; ++i) {
    for (bench::GeneratedWord const word : documents.document(i).words) {
      seen.insert(word);
    }
    of_first_half = i + 1 == 200 ? seen.size() : of_first_half;
  }
  EXPECT_LT(seen.size(), of_first_half * 17 / 10);
  EXPECT_GT(seen.size(), of_first_half * 13 / 10);
}

TEST(GeneratedDocuments, give_weights_that_fall_from_one) {
  auto const words = bench::strongest_words(bench::GeneratedDocuments().document(7));
  ASSERT_EQ(words.size(), 100u);
  EXPECT_EQ(words.front().second, 1.0);
  EXPECT_LT(words.back().second, 0.5);
}

TEST(GeneratedTexts, take_chinese_words_from_the_dictionary_most_frequent_first) {
  std::string const path = testing::TempDir() + "generated_texts_dictionary.txt";
  std::ofstream(path) << "数据 5 n\n系统 9 n\n的 100 u\nabc 50 eng\n";
  bench::GeneratedVocabulary const vocabulary(path);
  EXPECT_EQ(vocabulary.text(0), "系统");
  EXPECT_EQ(vocabulary.text(2), "数据");
}

TEST(GeneratedTexts, spell_words_differently) {
  bench::GeneratedVocabulary const vocabulary("");
  std::set<std::string> spelt;
  for (bench::GeneratedWord word = 0; word < 20'000; ++word) {
    spelt.insert(vocabulary.text(word));
  }
  EXPECT_EQ(spelt.size(), 20'000u);
}

}  // namespace
