#include <random>

#include <gtest/gtest.h>

#include "dna/HFileMatchDNA.h"
#include "dna/HFileSimHash.h"

namespace {

double similarity(HString const& a, HString const& b) {
  return HFileMatchDNA::get_dna_similarity(a, b);
}

// Position by position over the expanded bits.
double plain_similarity(HString const& a, HString const& b) {
  std::vector<int> bits_a;
  std::vector<int> bits_b;
  HFileSimHash::simhashTobinary(a, bits_a);
  HFileSimHash::simhashTobinary(b, bits_b);
  if (bits_a.empty() || bits_a.size() != bits_b.size()) {
    return 0.0;
  }
  int agreeing = 0;
  for (std::size_t i = 0; i < bits_a.size(); ++i) {
    agreeing += bits_a[i] == bits_b[i] ? 1 : 0;
  }
  return static_cast<double>(agreeing) / static_cast<double>(bits_a.size()) * 100.0;
}

TEST(MatchDna, equal_texts_are_wholly_alike) {
  EXPECT_EQ(similarity(L"0123456789ABCDEF", L"0123456789ABCDEF"), 100.0);
}

TEST(MatchDna, an_empty_text_is_like_nothing) {
  EXPECT_EQ(similarity(L"", L"F"), 0.0);
  EXPECT_EQ(similarity(L"F", L""), 0.0);
  EXPECT_EQ(similarity(L"", L""), 0.0);
}

TEST(MatchDna, texts_of_unequal_length_are_not_compared) {
  EXPECT_EQ(similarity(L"FF", L"F"), 0.0);
}

TEST(MatchDna, counts_agreeing_bits) {
  EXPECT_EQ(similarity(L"F", L"0"), 0.0);
  EXPECT_EQ(similarity(L"8", L"0"), 75.0);
}

TEST(MatchDna, what_is_no_upper_case_digit_counts_as_zero) {
  EXPECT_EQ(similarity(L"a", L"0"), 100.0);
  EXPECT_EQ(similarity(L"abcdef", L"fedcba"), 100.0);
}

TEST(MatchDna, the_threshold_itself_matches) {
  EXPECT_TRUE(HFileMatchDNA::match(L"8", L"0", 75.0));
  EXPECT_FALSE(HFileMatchDNA::match(L"8", L"0", 75.000001));
}

TEST(MatchDna, threshold_zero_accepts_every_pair) {
  EXPECT_TRUE(HFileMatchDNA::match(L"", L"FFF", 0.0));
}

TEST(MatchDna, equals_the_plain_form_on_random_texts) {
  std::mt19937 random(3);
  std::wstring const alphabet = L"0123456789ABCDEFabcdefZ中";
  std::uniform_int_distribution<std::size_t> character(0, alphabet.size() - 1);
  std::uniform_int_distribution<std::size_t> length(1, 1024);
  for (int round = 0; round < 300; ++round) {
    std::wstring a(length(random), L'0');
    std::wstring b(a.size(), L'0');
    for (std::size_t i = 0; i < a.size(); ++i) {
      a[i] = alphabet[character(random)];
      b[i] = alphabet[character(random)];
    }
    EXPECT_EQ(similarity(a.c_str(), b.c_str()), plain_similarity(a.c_str(), b.c_str()));
  }
}

}  // namespace
