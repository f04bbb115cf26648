#include "documents/word_record.h"

#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

tool::WordRecord record() {
  return {{HString(L"harbour"), HString(L"合同")}, {3, 1}, {1.0, 0.1}, HString(L"00FF")};
}

/// The packed record with the bytes of a number in it exchanged for those of another.
template <typename Number>
std::string with(Number old, Number other) {
  std::string packed = tool::pack(record());
  std::string const bytes(reinterpret_cast<char const*>(&old), sizeof old);
  packed.replace(packed.find(bytes), sizeof old, reinterpret_cast<char const*>(&other),
                 sizeof other);
  return packed;
}

TEST(WordRecord, comes_out_as_it_went_in) {
  auto const taken = tool::unpack_record(tool::pack(record()));
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->words, record().words);
  EXPECT_EQ(taken->counts, record().counts);
  EXPECT_EQ(taken->weights, record().weights);
  EXPECT_EQ(taken->dna, record().dna);
}

TEST(WordRecord, may_be_cut_only_between_words) {
  std::string const packed = tool::pack(record());
  std::size_t whole = 0;
  for (std::size_t size = 0; size < packed.size(); ++size) {
    whole += tool::unpack_record(packed.substr(0, size)) ? 1U : 0U;
  }
  EXPECT_EQ(whole, record().words.size());
}

TEST(WordRecord, a_length_over_its_end_is_refused) {
  EXPECT_FALSE(tool::unpack_record(with(std::uint64_t{7}, ~std::uint64_t{0})));
}

TEST(WordRecord, a_count_below_0_is_refused) {
  EXPECT_FALSE(tool::unpack_record(with(std::int32_t{3}, std::int32_t{-3})));
}

TEST(WordRecord, a_weight_that_is_no_number_is_refused) {
  EXPECT_FALSE(tool::unpack_record(with(0.1, std::numeric_limits<double>::quiet_NaN())));
  EXPECT_FALSE(tool::unpack_record(with(0.1, std::numeric_limits<double>::infinity())));
}

TEST(WordRecord, a_fingerprint_of_other_than_digits_is_refused) {
  tool::WordRecord wrong = record();
  wrong.dna = HString(L"00FG");
  EXPECT_FALSE(tool::unpack_record(tool::pack(wrong)));
}

TEST(WordRecord, a_word_that_is_no_text_is_refused) {
  for (std::string const& word : {std::string("harb\0ur", 7), std::string("harb\xFFur")}) {
    std::string packed = tool::pack(record());
    packed.replace(packed.find("harbour"), word.size(), word);
    EXPECT_FALSE(tool::unpack_record(packed));
  }
}

TEST(WordRecord, garbage_is_refused) {
  EXPECT_FALSE(tool::unpack_record(std::string(1000, '\x81')));
}

}  // namespace
