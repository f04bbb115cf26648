#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "dna/HFileDNAList.h"
#include "dna/HFileMatchDNA.h"

#include "reference/similarity.h"

namespace {

using Pairs = std::vector<std::pair<std::size_t, double>>;

Pairs pairs(std::vector<HFileDNAFound> const& found) {
  Pairs result;
  for (HFileDNAFound const& one : found) {
    result.emplace_back(one.index, one.similarity);
  }
  return result;
}

HFileDNAList list_of(std::vector<HString> const& dnas) {
  HFileDNAList list;
  for (HString const& dna : dnas) {
    list.append(dna);
  }
  return list;
}

Pairs plain_similar(std::vector<HString> const& dnas, HString const& dna, double threshold) {
  Pairs result;
  for (std::size_t i = 0; i < dnas.size(); ++i) {
    if (HFileMatchDNA::match(dna, dnas[i], threshold)) {
      result.emplace_back(i, reference::similarity(dna, dnas[i]));
    }
  }
  return result;
}

Pairs plain_most_similar(std::vector<HString> const& dnas, HString const& dna, std::size_t count) {
  Pairs result = plain_similar(dnas, dna, 0.0);
  std::stable_sort(result.begin(), result.end(),
                   [](auto const& a, auto const& b) { return a.second > b.second; });
  result.resize(std::min(count, result.size()));
  return result;
}

HString random_text(std::mt19937& random, std::size_t length) {
  std::wstring const alphabet = L"000011118888EEEEFFFF0123456789ABCDEFabz中";
  std::uniform_int_distribution<std::size_t> character(0, alphabet.size() - 1);
  std::wstring text(length, L'0');
  for (wchar_t& c : text) {
    c = alphabet[character(random)];
  }
  return text.c_str();
}

// Of all kinds of lengths, the empty text among them; many short ones, so that there are ties.
std::vector<HString> random_dnas(std::mt19937& random, int count) {
  std::size_t const lengths[] = {0, 1, 2, 2, 3, 16, 17, 32, 32, 32, 33, 127, 1023, 1024};
  std::uniform_int_distribution<std::size_t> kind(0, std::size(lengths) - 1);
  std::vector<HString> dnas;
  for (int i = 0; i < count; ++i) {
    dnas.push_back(random_text(random, lengths[kind(random)]));
  }
  return dnas;
}

TEST(DnaList, an_empty_list_finds_nothing) {
  HFileDNAList const list;
  EXPECT_EQ(list.size(), 0U);
  EXPECT_TRUE(list.get_similar(L"FF", 0.0).empty());
  EXPECT_TRUE(list.get_most_similar(L"FF", 3).empty());
}

TEST(DnaList, finds_in_the_order_of_indices) {
  HFileDNAList const list = list_of({L"F0", L"0", L"FF", L"00", L"FE"});
  EXPECT_EQ(pairs(list.get_similar(L"FF", 50.0)), (Pairs{{0, 50.0}, {2, 100.0}, {4, 87.5}}));
}

TEST(DnaList, the_threshold_itself_is_found) {
  HFileDNAList const list = list_of({L"8"});
  EXPECT_EQ(list.get_similar(L"0", 75.0).size(), 1U);
  EXPECT_EQ(list.get_similar(L"0", 75.000001).size(), 0U);
}

TEST(DnaList, threshold_zero_finds_all_as_match_does) {
  HFileDNAList const list = list_of({L"F", L"", L"FFFF"});
  EXPECT_EQ(pairs(list.get_similar(L"F", 0.0)), (Pairs{{0, 100.0}, {1, 0.0}, {2, 0.0}}));
  EXPECT_EQ(pairs(list.get_similar(L"", -1.0)), (Pairs{{0, 0.0}, {1, 0.0}, {2, 0.0}}));
}

TEST(DnaList, a_threshold_that_nothing_reaches_finds_nothing) {
  HFileDNAList const list = list_of({L"F", L""});
  EXPECT_TRUE(list.get_similar(L"F", 100.1).empty());
  EXPECT_TRUE(list.get_similar(L"F", std::numeric_limits<double>::infinity()).empty());
  EXPECT_TRUE(list.get_similar(L"F", std::numeric_limits<double>::quiet_NaN()).empty());
}

TEST(DnaList, of_equally_similar_ones_the_earlier_comes_first) {
  HFileDNAList const list = list_of({L"1", L"2", L"0", L"4", L"0"});
  EXPECT_EQ(pairs(list.get_most_similar(L"0", 4)),
            (Pairs{{2, 100.0}, {4, 100.0}, {0, 75.0}, {1, 75.0}}));
}

TEST(DnaList, those_without_similarity_fill_up_by_index) {
  HFileDNAList const list = list_of({L"00", L"", L"0", L"F", L"FFF"});
  EXPECT_EQ(pairs(list.get_most_similar(L"F", 4)),
            (Pairs{{3, 100.0}, {0, 0.0}, {1, 0.0}, {2, 0.0}}));
  EXPECT_EQ(list.get_most_similar(L"F", 9).size(), 5U);
  EXPECT_EQ(list.get_most_similar(L"F", SIZE_MAX).size(), 5U);
  EXPECT_TRUE(list.get_most_similar(L"F", 0).empty());
}

TEST(DnaList, equals_the_plain_form_on_random_texts) {
  std::mt19937 random(5);
  std::vector<HString> const dnas = random_dnas(random, 400);
  HFileDNAList const list = list_of(dnas);
  for (std::size_t i = 0; i < dnas.size(); i += 10) {
    for (double const threshold : {-1.0, 0.0, 30.0, 50.0, 60.9375, 75.0, 100.0}) {
      EXPECT_EQ(pairs(list.get_similar(dnas[i], threshold)),
                plain_similar(dnas, dnas[i], threshold));
    }
    for (std::size_t const count : {1U, 7U, 50U, 399U, 500U}) {
      EXPECT_EQ(pairs(list.get_most_similar(dnas[i], count)),
                plain_most_similar(dnas, dnas[i], count));
    }
  }
}

TEST(DnaList, every_threshold_that_is_a_similarity_finds_it) {
  std::mt19937 random(6);
  HString const dna = random_text(random, 32);
  std::vector<HString> dnas;
  for (int i = 0; i < 60; ++i) {
    dnas.push_back(random_text(random, 32));
  }
  HFileDNAList const list = list_of(dnas);
  for (HString const& other : dnas) {
    double const threshold = HFileMatchDNA::get_dna_similarity(dna, other);
    EXPECT_EQ(pairs(list.get_similar(dna, threshold)), plain_similar(dnas, dna, threshold));
  }
}

TEST(DnaList, long_texts_fill_several_blocks) {
  std::vector<HString> dnas;
  for (wchar_t const digit : std::wstring(L"0137F")) {
    dnas.push_back(std::wstring(400'000, digit).c_str());
    dnas.push_back(std::wstring(1'200'000, digit).c_str());
  }
  HFileDNAList const list = list_of(dnas);
  EXPECT_EQ(pairs(list.get_most_similar(dnas[4], 10)), (Pairs{{4, 100.0},
                                                              {2, 75.0},
                                                              {6, 75.0},
                                                              {0, 50.0},
                                                              {8, 50.0},
                                                              {1, 0.0},
                                                              {3, 0.0},
                                                              {5, 0.0},
                                                              {7, 0.0},
                                                              {9, 0.0}}));
  EXPECT_EQ(pairs(list.get_similar(dnas[7], 75.0)), (Pairs{{5, 75.0}, {7, 100.0}, {9, 75.0}}));
}

TEST(DnaList, many_rows_are_counted_through) {
  HFileDNAList list;
  for (int i = 0; i < 40'000; ++i) {
    list.append(i % 9'000 == 7 ? L"0123456789ABCDEF0123456789ABCDEF"
                               : L"FEDCBA9876543210FEDCBA9876543210");
  }
  EXPECT_EQ(pairs(list.get_similar(L"0123456789ABCDEF0123456789ABCDEF", 100.0)),
            (Pairs{{7, 100.0}, {9'007, 100.0}, {18'007, 100.0}, {27'007, 100.0}, {36'007, 100.0}}));
}

}  // namespace
