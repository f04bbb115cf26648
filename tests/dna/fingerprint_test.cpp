#include "dna/internal/fingerprint.h"

#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "reference/simhash.h"

namespace {

using List = std::vector<std::pair<HString, double>>;

std::wstring fingerprint(List const& words) {
  std::vector<morva::WeightedWord> list;
  for (auto const& [word, weight] : words) {
    list.push_back({&word, weight});
  }
  return morva::fingerprint(list).get_ws();
}

// By a map, to which the words go in the order of the list.
std::wstring plain_fingerprint(List const& words) {
  std::map<HString, double> map;
  for (auto const& [word, weight] : words) {
    auto const [entry, is_new] = map.try_emplace(word, weight);
    if (!is_new) {
      entry->second += weight;
    }
  }
  return reference::simhash(map, false);
}

TEST(Fingerprint, no_words_give_none) {
  EXPECT_EQ(fingerprint({}), L"");
}

TEST(Fingerprint, weights_of_one_word_are_summed_in_the_order_of_the_list) {
  // In any other order the small weight is lost, or is not.
  for (List const& words : {List{{L"a", 1e16}, {L"b", 0.5}, {L"a", 1.0}, {L"a", -1e16}},
                            List{{L"a", 1e16}, {L"a", -1e16}, {L"b", 0.5}, {L"a", 1.0}}}) {
    EXPECT_EQ(fingerprint(words), plain_fingerprint(words));
  }
}

TEST(Fingerprint, of_words_with_one_hash_the_last_one_counts_with_its_sum) {
  HString const first(static_cast<wchar_t>(0xD800));
  HString const last(static_cast<wchar_t>(0xFFFD));
  List const words{{last, 1.0}, {first, -7.0}, {last, -3.0}, {first, 9.0}, {L"other", 1.5}};
  EXPECT_EQ(fingerprint(words), plain_fingerprint(words));
}

TEST(Fingerprint, equals_the_plain_form_on_random_lists) {
  std::mt19937 random(8);
  std::uniform_int_distribution<int> count(1, 200);
  std::uniform_int_distribution<int> code(0xD7F0, 0xD810);
  std::uniform_real_distribution<double> weight(-1.0, 1.0);
  for (int round = 0; round < 200; ++round) {
    List words;
    for (int left = count(random); left > 0; --left) {
      words.emplace_back(HString(static_cast<wchar_t>(code(random))), weight(random));
    }
    EXPECT_EQ(fingerprint(words), plain_fingerprint(words));
  }
}

}  // namespace
