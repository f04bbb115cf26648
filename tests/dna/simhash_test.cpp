#include "reference/simhash.h"

#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "dna/HFileDNA.h"
#include "dna/HFileSimHash.h"

namespace {

using Words = std::map<HString, double>;
using Values = std::vector<double>;

// The DNA length for one scope; it has no setter.
class DnaLength {
 public:
  explicit DnaLength(int length) : old_(HFileDNA::mi_dna_length) {
    HFileDNA::mi_dna_length = length;
  }
  ~DnaLength() { HFileDNA::mi_dna_length = old_; }
  DnaLength(DnaLength const&) = delete;
  DnaLength& operator=(DnaLength const&) = delete;

 private:
  int old_;
};

std::wstring fingerprint(Words const& words, int length) {
  DnaLength const in_force(length);
  HString output(L"old");
  HFileSimHash::simhashDNA(words, output);
  return output.get_ws();
}

// Both forms against the plain ones.
void expect_plain(Words const& words) {
  EXPECT_EQ(fingerprint(words, 32), reference::simhash(words, false));
  EXPECT_EQ(fingerprint(words, 1024), reference::simhash(words, true));
}

std::wstring repeated(wchar_t const* field, int times) {
  std::wstring text;
  for (int i = 0; i < times; ++i) {
    text += field;
  }
  return text;
}

std::wstring wide_text(Values const& sums) {
  HString output;
  HFileSimHash::simhashDowndimension1024(sums, output);
  return output.get_ws();
}

TEST(SimHash, no_words_give_an_empty_fingerprint_in_either_form) {
  EXPECT_EQ(fingerprint({}, 32), L"");
  EXPECT_EQ(fingerprint({}, 1024), L"");
}

TEST(SimHash, one_word_of_positive_weight_gives_its_hash) {
  HString const word(L"文档");
  EXPECT_EQ(fingerprint({{word, 0.25}}, 32), word.get_md5_std_format(HString()).get_ws());
}

TEST(SimHash, one_word_of_known_digest) {
  EXPECT_EQ(fingerprint({{L"abc", 1.0}}, 32), L"900150983CD24FB0D6963F7D28E17F72");
}

TEST(SimHash, weight_zero_gives_zero_bits_and_middle_fields) {
  EXPECT_EQ(fingerprint({{L"abc", 0.0}}, 32), repeated(L"0", 32));
  EXPECT_EQ(fingerprint({{L"abc", 0.0}}, 1024), repeated(L"7FFFFFFF", 128));
}

TEST(SimHash, any_other_length_gives_the_narrow_form) {
  EXPECT_EQ(fingerprint({{L"abc", 1.0}}, 64), fingerprint({{L"abc", 1.0}}, 32));
  EXPECT_EQ(fingerprint({{L"abc", 1.0}}, -1), fingerprint({{L"abc", 1.0}}, 32));
}

TEST(SimHash, wide_form_of_small_weights_has_1024_digits) {
  EXPECT_EQ(fingerprint({{L"abc", 1.0}, {L"def", 0.5}}, 1024).size(), 1024U);
}

TEST(SimHash, fields_are_not_padded) {
  std::wstring const text = fingerprint({{L"abc", 2000.0}}, 1024);
  EXPECT_LT(text.size(), 1024U);
  EXPECT_EQ(text, reference::simhash({{L"abc", 2000.0}}, true));
}

TEST(SimHash, equals_the_plain_form_on_random_words) {
  std::mt19937 random(20);
  std::uniform_int_distribution<int> count(1, 60);
  std::uniform_int_distribution<int> code(0x4E00, 0x4E40);
  std::uniform_int_distribution<int> kind(0, 9);
  std::uniform_real_distribution<double> weight(-1.0, 1.0);
  for (int round = 0; round < 500; ++round) {
    Words words;
    for (int n = count(random); n > 0; --n) {
      HString word(static_cast<wchar_t>(code(random)));
      word += HString(static_cast<wchar_t>(code(random)));
      int const of = kind(random);
      words[word] = of == 0   ? 0.0
                    : of == 1 ? weight(random) * 3000.0
                    : of == 2 ? weight(random) * 1e-9
                              : weight(random);
    }
    expect_plain(words);
  }
}

TEST(SimHash, words_of_every_length_around_a_block_are_hashed_alike) {
  for (wchar_t const c : {L'x', L'\u00E9', L'中', static_cast<wchar_t>(0x1F600)}) {
    Words words;
    for (int length = 0; length <= 140; ++length) {
      words[std::wstring(static_cast<std::size_t>(length), c).c_str()] = 1.0 / (length + 3);
    }
    for (auto const& [word, weight] : words) {
      expect_plain({{word, weight}});
    }
    expect_plain(words);
  }
}

TEST(SimHash, counts_that_leave_lanes_empty_are_hashed_alike) {
  Words words;
  for (int count = 1; count <= 140; ++count) {
    words[HString(count, false)] = 0.1 * count;
    expect_plain(words);
  }
}

TEST(SimHash, of_words_with_one_hash_the_last_alone_counts) {
  // What no UTF-8 holds is hashed as U+FFFD.
  Words words{{L"\uFFFD", 8.0}, {L"other", 0.5}};
  for (unsigned const code : {0xD800U, 0xDFFFU, 0x110000U, 0x80000000U, 0xFFFFFFFFU}) {
    words[HString(static_cast<wchar_t>(code))] = code / 1e9;
  }
  expect_plain(words);
}

TEST(SimHash, weights_that_are_no_numbers_are_summed_alike) {
  double const infinity = std::numeric_limits<double>::infinity();
  double const nan = std::numeric_limits<double>::quiet_NaN();
  expect_plain({{L"a", -0.0}, {L"b", 0.0}, {L"c", -0.0}});
  Words const boundless{{L"a", infinity}, {L"b", 1.0}, {L"c", -2.5}};
  EXPECT_EQ(fingerprint(boundless, 32), reference::simhash(boundless, false));
  EXPECT_EQ(fingerprint({{L"a", nan}, {L"b", 1.0}}, 32), repeated(L"0", 32));
}

TEST(SimHash, equals_the_plain_form_on_many_words) {
  std::mt19937 random(21);
  std::uniform_int_distribution<int> code(0x4E00, 0x9FA5);
  std::uniform_real_distribution<double> weight(0.0, 1.0);
  Words words;
  for (int i = 0; i < 3000; ++i) {
    wchar_t const text[] = {static_cast<wchar_t>(code(random)), static_cast<wchar_t>(code(random)),
                            0};
    words[text] = weight(random);
  }
  expect_plain(words);
}

TEST(SimHash, expands_digits_into_masked_bits) {
  std::vector<int> bits;
  HFileSimHash::simhashTobinary(L"F05A", bits);
  EXPECT_EQ(bits, (std::vector<int>{8, 4, 2, 1, 0, 0, 0, 0, 0, 4, 0, 1, 8, 0, 2, 0}));
}

TEST(SimHash, lower_case_and_other_characters_expand_as_zero) {
  std::vector<int> bits;
  HFileSimHash::simhashTobinary(L"aG中", bits);
  EXPECT_EQ(bits, std::vector<int>(12, 0));
}

TEST(SimHash, expansion_appends) {
  std::vector<int> bits;
  HFileSimHash::simhashTobinary(L"8", bits);
  HFileSimHash::simhashTobinary(L"1", bits);
  HFileSimHash::simhashTobinary(L"", bits);
  EXPECT_EQ(bits, (std::vector<int>{8, 0, 0, 0, 0, 0, 0, 1}));
}

TEST(SimHash, conversion_to_double_replaces_the_output) {
  Values values{7, 7, 7};
  HFileSimHash::simhashBinaryToDouble({8, 0, -1}, values);
  EXPECT_EQ(values, (Values{8, 0, -1}));
}

TEST(SimHash, a_clear_bit_votes_minus) {
  Values values{8, 0, -0.0, 1};
  HFileSimHash::simhashAddweight(2.5, values);
  EXPECT_EQ(values, (Values{2.5, -2.5, -2.5, 2.5}));
}

TEST(SimHash, the_weight_may_be_an_element_of_the_vector) {
  Values values{3, 0, 1};
  HFileSimHash::simhashAddweight(values[0], values);
  EXPECT_EQ(values, (Values{3, -3, 3}));
}

TEST(SimHash, combining_appends_what_the_sum_lacks) {
  Values sum{1, 2};
  HFileSimHash::simhashCombine({10, 20, 30}, sum);
  EXPECT_EQ(sum, (Values{11, 22, 30}));
  HFileSimHash::simhashCombine({1}, sum);
  EXPECT_EQ(sum, (Values{12, 22, 30}));
}

TEST(SimHash, a_tie_gives_bit_zero) {
  Values sums(128, 0.0);
  sums[0] = 1e-300;
  sums[5] = -1.0;
  sums[127] = 2.0;
  HString output(L"old");
  HFileSimHash::simhashDowndimension32(sums, output);
  EXPECT_EQ(output.get_ws(), L"8" + repeated(L"0", 30) + L"1");
}

TEST(SimHash, sums_that_are_not_128_give_nothing) {
  for (std::size_t const size : {std::size_t{0}, std::size_t{127}, std::size_t{129}}) {
    HString output(L"old");
    HFileSimHash::simhashDowndimension32(Values(size, 1.0), output);
    EXPECT_TRUE(output.empty());
    output = L"old";
    HFileSimHash::simhashDowndimension1024(Values(size, 1.0), output);
    EXPECT_TRUE(output.empty());
  }
}

TEST(SimHash, wide_fields_keep_six_decimal_places) {
  EXPECT_EQ(wide_text(Values(128, 0.0)), repeated(L"7FFFFFFF", 128));
  EXPECT_EQ(wide_text(Values(128, 0.000001)), repeated(L"80000000", 128));
  EXPECT_EQ(wide_text(Values(128, -0.000001)), repeated(L"7FFFFFFE", 128));
}

TEST(SimHash, wide_fields_end_at_FFFFFFFE) {
  EXPECT_EQ(wide_text(Values(128, 2147.483647)), repeated(L"FFFFFFFE", 128));
  EXPECT_EQ(wide_text(Values(128, 2147.483648)), repeated(L"FFFFFFFE", 128));
  EXPECT_EQ(wide_text(Values(128, std::numeric_limits<double>::infinity())),
            repeated(L"FFFFFFFE", 128));
}

TEST(SimHash, wide_fields_begin_at_0) {
  EXPECT_EQ(wide_text(Values(128, -2147.483647)), repeated(L"0", 128));
  EXPECT_EQ(wide_text(Values(128, -1e300)), repeated(L"0", 128));
  EXPECT_EQ(wide_text(Values(128, std::numeric_limits<double>::quiet_NaN())), repeated(L"0", 128));
}

TEST(SimHash, hexadecimal_text_has_no_leading_zeros) {
  EXPECT_EQ(HFileSimHash::DecIntToHexStr(0), HString(L"0"));
  EXPECT_EQ(HFileSimHash::DecIntToHexStr(10), HString(L"A"));
  EXPECT_EQ(HFileSimHash::DecIntToHexStr(0x10), HString(L"10"));
  EXPECT_EQ(HFileSimHash::DecIntToHexStr(0xFFFFFFFF), HString(L"FFFFFFFF"));
}

TEST(SimHash, digits_map_both_ways) {
  std::wstring const digits = L"0123456789ABCDEF";
  for (int value = 0; value < 16; ++value) {
    wchar_t const digit = digits[static_cast<std::size_t>(value)];
    EXPECT_EQ(HFileSimHash::dec2hex(value), digit);
    EXPECT_EQ(HFileSimHash::hex2dec(digit), value);
  }
}

TEST(SimHash, what_is_no_digit_maps_to_zero) {
  for (wchar_t const c : std::wstring(L"afG/:@`中")) {
    EXPECT_EQ(HFileSimHash::hex2dec(c), 0);
  }
  EXPECT_EQ(HFileSimHash::dec2hex(-1), L'0');
  EXPECT_EQ(HFileSimHash::dec2hex(16), L'0');
}

}  // namespace
