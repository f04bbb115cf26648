#include "reference/similar_dna.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "dna/HFileSimilarDNA.h"
#include "dna/internal/digits.h"
#include "dna/internal/link_levels.h"
#include "dna/internal/near_rows.h"

namespace {

using Pairs = std::vector<std::tuple<std::size_t, std::size_t, double>>;
using Groups = std::vector<std::pair<std::vector<std::size_t>, double>>;

constexpr std::size_t row_bits = morva::BandPlan::row_bits;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

Pairs shown(std::vector<HFileDNAPair> const& pairs) {
  Pairs all;
  for (HFileDNAPair const& pair : pairs) {
    all.emplace_back(pair.first, pair.second, pair.similarity);
  }
  return all;
}

Groups shown(std::vector<HFileDNAGroup> const& groups) {
  Groups all;
  for (HFileDNAGroup const& group : groups) {
    all.emplace_back(group.members, group.weakest_link);
  }
  return all;
}

Pairs pairs_of(std::vector<HString> const& dnas, double threshold) {
  std::vector<HFileDNAPair> pairs;
  HFileSimilarDNA::get_pairs(dnas, threshold, [&](HFileDNAPair const& pair) {
    pairs.push_back(pair);
    return true;
  });
  return shown(pairs);
}

// Both operations, each compared with the plain form.
void expect_plain_form(std::vector<HString> const& dnas, double threshold) {
  std::vector<HFileDNAPair> const pairs = reference::similar_pairs(dnas, threshold);
  EXPECT_EQ(pairs_of(dnas, threshold), shown(pairs)) << threshold;
  EXPECT_EQ(shown(HFileSimilarDNA::get_groups(dnas, threshold)),
            shown(reference::groups_of(pairs, dnas.size())))
      << threshold;
}

HString random_text(std::mt19937& random, std::size_t length, std::wstring const& alphabet) {
  std::uniform_int_distribution<std::size_t> character(0, alphabet.size() - 1);
  std::wstring text(length, L'0');
  for (wchar_t& c : text) {
    c = alphabet[character(random)];
  }
  return text.c_str();
}

HString random_dna(std::mt19937& random) {
  return random_text(random, 32, L"0123456789ABCDEF");
}

// The DNA with so many of its bits the other way round, others each time.
HString with_flipped(HString const& dna, std::size_t count, std::mt19937& random) {
  std::vector<std::size_t> positions(row_bits);
  std::iota(positions.begin(), positions.end(), std::size_t{0});
  std::shuffle(positions.begin(), positions.end(), random);
  std::wstring const digits = L"0123456789ABCDEF";
  std::wstring text = dna.get_ws();
  for (std::size_t i = 0; i < count; ++i) {
    wchar_t& digit = text[positions[i] / 4];
    digit = digits[digits.find(digit) ^ (std::size_t{1} << positions[i] % 4)];
  }
  return text.c_str();
}

// Random ones, and behind each some that differ from it in the given numbers of bits.
std::vector<HString> planted(std::mt19937& random, int count, std::vector<std::size_t> const& at) {
  std::vector<HString> dnas;
  for (int i = 0; i < count; ++i) {
    HString const dna = random_dna(random);
    dnas.push_back(dna);
    for (std::size_t const bits : at) {
      dnas.push_back(with_flipped(dna, bits, random));
    }
  }
  std::shuffle(dnas.begin(), dnas.end(), random);
  return dnas;
}

double with_differing(std::size_t bits) {
  return morva::similarity(bits, 32);
}

TEST(SimilarDna, nothing_is_similar_in_no_list_and_in_one_dna) {
  for (double const threshold : {-1.0, 0.0, 90.0}) {
    expect_plain_form({}, threshold);
    expect_plain_form({L"FF"}, threshold);
    expect_plain_form({L""}, threshold);
  }
}

TEST(SimilarDna, pairs_come_by_their_indices) {
  EXPECT_EQ(pairs_of({L"F0", L"0", L"FF", L"F0", L"FE"}, 60.0),
            (Pairs{{0, 3, 100.0}, {0, 4, 62.5}, {2, 4, 87.5}, {3, 4, 62.5}}));
}

TEST(SimilarDna, groups_come_by_their_first_members_with_their_weakest_links) {
  EXPECT_EQ(shown(HFileSimilarDNA::get_groups({L"FF", L"00", L"FE", L"7", L"01", L"FC"}, 87.5)),
            (Groups{{{0, 2, 5}, 87.5}, {{1, 4}, 87.5}}));
  EXPECT_EQ(shown(HFileSimilarDNA::get_groups({L"AA", L"AB", L"BB", L"AA"}, 10.0)),
            (Groups{{{0, 1, 2, 3}, 87.5}}));
}

TEST(SimilarDna, what_takes_pairs_may_have_enough) {
  std::size_t seen = 0;
  for (double const threshold : {0.0, 50.0}) {
    seen = 0;
    HFileSimilarDNA::get_pairs({L"1", L"1", L"1", L"1"}, threshold, [&](HFileDNAPair const& pair) {
      ++seen;
      return pair.second < 2;
    });
    EXPECT_EQ(seen, 2U);
  }
}

TEST(SimilarDna, equals_the_plain_form_on_texts_of_all_kinds_at_all_kinds_of_thresholds) {
  std::mt19937 random(1);
  std::size_t const lengths[] = {0, 1, 2, 2, 3, 16, 31, 32, 32, 33, 100};
  std::vector<HString> dnas;
  for (int i = 0; i < 120; ++i) {
    dnas.push_back(random_text(random, lengths[random() % std::size(lengths)], L"0000FFFFE8中a"));
  }
  for (double const threshold :
       {-infinity, -1.0, -0.0, 0.0, std::numeric_limits<double>::denorm_min(), 25.0, 50.0, 60.9375,
        75.0, 99.9, 100.0, std::nextafter(100.0, 101.0), 101.0, infinity, nan}) {
    expect_plain_form(dnas, threshold);
  }
}

TEST(SimilarDna, a_list_of_one_length_is_whole_at_threshold_zero) {
  std::mt19937 random(2);
  std::vector<HString> dnas = planted(random, 5, {128, 3});
  expect_plain_form(dnas, 0.0);
  expect_plain_form(dnas, std::nextafter(0.0, 1.0));
  expect_plain_form({L"0", L"F"}, 0.0);
  expect_plain_form({L"", L""}, 0.0);
}

TEST(SimilarDna, equals_the_plain_form_where_copies_differ_in_just_so_many_bits) {
  std::mt19937 random(3);
  for (std::size_t const most : {0U, 1U, 3U, 6U, 12U, 19U, 25U}) {
    std::vector<HString> const dnas = planted(random, 30, {0, most / 2, most, most, most + 1});
    for (double const threshold :
         {with_differing(most), std::nextafter(with_differing(most), 0.0),
          std::nextafter(with_differing(most), 100.0), with_differing(most + 1)}) {
      expect_plain_form(dnas, threshold);
    }
  }
}

TEST(SimilarDna, many_equal_ones_are_one_group_without_their_pairs) {
  std::vector<HString> const dnas(30000, L"0123456789ABCDEF0123456789ABCDEF");
  std::vector<HFileDNAGroup> const groups = HFileSimilarDNA::get_groups(dnas, 70.0);
  ASSERT_EQ(groups.size(), 1U);
  EXPECT_EQ(groups[0].members.size(), dnas.size());
  EXPECT_EQ(groups[0].weakest_link, 100.0);
}

TEST(SimilarDna, bands_do_not_overlap_and_their_radii_leave_no_way_out) {
  for (std::size_t most = 0; most <= row_bits; ++most) {
    for (std::size_t bands = 1; bands <= std::min(most + 1, row_bits); ++bands) {
      morva::BandPlan const plan{bands, std::min<std::size_t>(20, row_bits / bands)};
      std::size_t least_missed = 0;
      for (std::size_t band = 0; band < bands; ++band) {
        least_missed += plan.radius(band, most) + 1;
        EXPECT_LE(plan.first_bit(band) + plan.width,
                  band + 1 < bands ? plan.first_bit(band + 1) : row_bits);
      }
      EXPECT_EQ(least_missed, most + 1);
    }
  }
}

TEST(SimilarDna, many_rows_are_looked_up_and_few_or_far_ones_compared) {
  EXPECT_GT(morva::best_plan(100000, 12).bands, 0U);
  EXPECT_EQ(morva::best_plan(100, 12).bands, 0U);
  EXPECT_EQ(morva::best_plan(100000, 60).bands, 0U);
}

// Rows of two words, of which each is asked for those that are near it from the first on and from
// itself on, by the plan and by comparing all.
void expect_same_as_compared(std::vector<std::uint64_t> const& words, std::size_t most,
                             morva::BandPlan const& plan) {
  morva::NearRows const looked_up(words, 2, most, plan);
  morva::NearRows const compared(words, 2, most, morva::BandPlan());
  std::vector<morva::NearRows::Near> found;
  std::vector<morva::NearRows::Near> expected;
  for (std::size_t row = 0; row < looked_up.size(); ++row) {
    for (std::size_t const first : {std::size_t{0}, row}) {
      looked_up.find(row, first, found);
      compared.find(row, first, expected);
      ASSERT_TRUE(std::equal(found.begin(), found.end(), expected.begin(), expected.end(),
                             [](auto const& a, auto const& b) {
                               return a.row == b.row && a.differing == b.differing;
                             }))
          << most << " " << plan.bands << " " << plan.width << " " << row;
    }
  }
}

std::vector<std::uint64_t> packed(std::vector<HString> const& dnas) {
  std::vector<std::uint64_t> words(2 * dnas.size());
  for (std::size_t i = 0; i < dnas.size(); ++i) {
    morva::pack_digits(text_view(dnas[i]), words.data() + 2 * i);
  }
  return words;
}

TEST(NearRows, every_plan_finds_what_comparing_finds) {
  std::mt19937 random(4);
  for (std::size_t const most : {0U, 1U, 4U, 7U, 12U}) {
    std::vector<std::uint64_t> const words =
        packed(planted(random, 50, {1, most / 2, most, most, most + 1}));
    for (std::size_t bands = 1; bands <= most + 1; ++bands) {
      for (std::size_t const width : {4U, 7U, 10U}) {
        if (width * bands <= row_bits) {
          expect_same_as_compared(words, most, {bands, width});
        }
      }
    }
  }
}

TEST(NearRows, rows_that_share_every_band_but_one_are_found) {
  std::mt19937 random(5);
  std::size_t const most = 3;
  for (std::size_t band = 0; band < 4; ++band) {
    std::vector<std::uint64_t> words;
    for (std::uint64_t i = 0; i < 500; ++i) {
      std::uint64_t const part = random() % 4096;
      words.push_back(band < 2 ? part << 32 * band : 0);
      words.push_back(band < 2 ? 0 : part << 32 * (band - 2));
    }
    expect_same_as_compared(words, most, {4, 12});
  }
}

TEST(NearRows, rows_of_one_key_are_compared_with_all) {
  std::vector<std::uint64_t> words;
  std::mt19937_64 random(6);
  for (int i = 0; i < 700; ++i) {
    // All that bands look at is equal; what lies between them is not.
    words.push_back(random() & 0xFFFF0000FFFF0000U);
    words.push_back(random() & 0xFFFF0000FFFF0000U);
  }
  expect_same_as_compared(words, 3, {4, 16});
  expect_same_as_compared(words, 24, {4, 16});
}

TEST(LinkLevels, the_level_to_the_leader_is_the_least_that_connects) {
  morva::LinkLevels levels(6, 5);
  levels.link(4, 1, 3);
  levels.link(3, 4, 1);
  levels.link(1, 3, 2);
  levels.link(1, 4, 4);
  levels.link(5, 2, 4);
  EXPECT_EQ(levels.leader(4), 1U);
  EXPECT_EQ(levels.level_to_leader(1), 0U);
  EXPECT_EQ(levels.level_to_leader(3), 2U);
  EXPECT_EQ(levels.level_to_leader(4), 2U);
  EXPECT_EQ(levels.level_to_leader(5), 4U);
  EXPECT_EQ(levels.leader(0), 0U);
}

}  // namespace
