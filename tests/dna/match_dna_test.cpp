#include <random>

#include <gtest/gtest.h>

#include "dna/HFileMatchDNA.h"

#include "reference/similarity.h"

namespace {

double similarity(HString const& a, HString const& b) {
  return HFileMatchDNA::get_dna_similarity(a, b);
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
    EXPECT_EQ(similarity(a.c_str(), b.c_str()), reference::similarity(a.c_str(), b.c_str()));
  }
}

TEST(MatchDna, equals_the_plain_form_at_every_length_around_the_vectors) {
  std::mt19937 random(4);
  std::uniform_int_distribution<int> digit(0, 15);
  for (std::size_t length = 0; length <= 70; ++length) {
    std::wstring a(length, L'0');
    std::wstring b(length, L'0');
    for (std::size_t i = 0; i < length; ++i) {
      a[i] = L"0123456789ABCDEF"[digit(random)];
      b[i] = L"0123456789ABCDEF"[digit(random)];
    }
    EXPECT_EQ(similarity(a.c_str(), b.c_str()), reference::similarity(a.c_str(), b.c_str()));
  }
}

TEST(MatchDna, only_the_digits_themselves_have_a_value) {
  std::wstring odd;
  for (wchar_t c = 1; c < 0x180; ++c) {
    odd.push_back(c);
  }
  for (unsigned const base : {0x10000U, 0x10FF00U, 0x7FFFFF00U, 0x80000000U, 0xFFFFFF00U}) {
    for (unsigned low = 0; low < 0x100; ++low) {
      odd.push_back(static_cast<wchar_t>(base + low));
    }
  }
  std::wstring const zeros(odd.size(), L'0');
  std::wstring const ones(odd.size(), L'F');
  HString const text(odd.c_str());
  EXPECT_EQ(similarity(text, zeros.c_str()), reference::similarity(text, zeros.c_str()));
  EXPECT_EQ(similarity(text, ones.c_str()), reference::similarity(text, ones.c_str()));
}

}  // namespace
