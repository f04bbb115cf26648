#include "morvajieba/neighbour_counts.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using morvajieba::NeighbourCounts;
using Rows = std::map<std::uint32_t, std::map<std::uint32_t, std::uint32_t>>;

Rows count_plainly(std::vector<std::uint32_t> const& words) {
  Rows rows;
  for (std::size_t i = 0; i < words.size(); ++i) {
    for (std::size_t j = i + 1; j < std::min(i + 5, words.size()); ++j) {
      ++rows[words[i]][words[j]];
      ++rows[words[j]][words[i]];
    }
  }
  return rows;
}

Rows count(std::vector<std::uint32_t> const& words, std::size_t batch) {
  NeighbourCounts counts(batch);
  for (std::uint32_t const word : words) counts.add(word);
  counts.finish();
  Rows rows;
  std::size_t size = 0;
  std::uint32_t const greatest = words.empty() ? 0 : *std::max_element(words.begin(), words.end());
  for (std::uint32_t word = 0; word <= greatest + 1; ++word) {
    for (auto const& [neighbour, times] : counts.of(word)) {
      EXPECT_TRUE(rows[word].emplace(neighbour, times).second) << "told twice: " << neighbour;
      ++size;
    }
  }
  EXPECT_EQ(counts.size(), size);
  return rows;
}

std::vector<std::uint32_t> random_words(std::uint32_t seed) {
  std::minstd_rand random(seed + 1);
  auto const below = [&random](std::uint32_t bound) {
    return static_cast<std::uint32_t>(random() % bound);
  };
  std::uint32_t const distinct = 1 + below(seed % 2 == 0 ? 5 : 300);
  std::vector<std::uint32_t> words(below(1000));
  std::generate(words.begin(), words.end(), [&] { return below(1 + below(distinct)); });
  return words;
}

TEST(NeighbourCounts, of_no_words_are_none) {
  EXPECT_EQ(count({}, 10), Rows());
}

TEST(NeighbourCounts, of_one_word_are_none) {
  EXPECT_EQ(count({3}, 10), Rows());
}

TEST(NeighbourCounts, count_a_word_near_itself_from_both_places) {
  EXPECT_EQ(count({1, 1}, 10), (Rows{{1, {{1, 2}}}}));
}

TEST(NeighbourCounts, reach_over_four_places) {
  EXPECT_EQ(count({1, 0, 0, 0, 2, 3}, 10)[1],
            (std::map<std::uint32_t, std::uint32_t>{{0, 3}, {2, 1}}));
}

TEST(NeighbourCounts, may_be_finished_twice) {
  NeighbourCounts counts;
  for (std::uint32_t const word : {0u, 1u}) counts.add(word);
  counts.finish();
  counts.finish();
  EXPECT_EQ(counts.size(), 2u);
}

TEST(NeighbourCounts, equal_the_plain_form_for_any_batch) {
  for (std::uint32_t seed = 0; seed < 30; ++seed) {
    std::vector<std::uint32_t> const words = random_words(seed);
    Rows const expected = count_plainly(words);
    for (std::size_t const batch : {1u, 2u, 3u, 4u, 5u, 7u, 64u, 1000u}) {
      EXPECT_EQ(count(words, batch), expected) << seed << ' ' << batch;
    }
  }
}

}  // namespace
