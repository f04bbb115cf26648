#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "box_format_schema.h"
#include "host/QXPPolicyMorvaClustBox.h"
#include "hostkit/morvabs/box_support.h"
#include "morvabs/box_format.h"

#include "support/memory_limit.h"

namespace {

namespace file = morvabs::box_format;

using flatbuffers::FlatBufferBuilder;
using test::BoxText;
using test::full_box;

std::string const& before() {
  static std::string const text = BoxText::of(full_box());
  return text;
}

/// The result for a content; a refusal must not touch the record.
int read(std::string const& content) {
  QXPPolicyMorvaClustBox box = full_box();
  int const result = morvabs::decode_box(content, box);
  if (result < 0) {
    EXPECT_EQ(BoxText::of(box), before()) << "the record was touched";
  }
  return result;
}

int read_payload(std::string const& payload) {
  return read(morvabs::seal_box(payload));
}

std::string content_of_full_box() {
  return *morvabs::encode_box(full_box());
}

std::string payload_of_full_box() {
  return content_of_full_box().substr(morvabs::box_header_size);
}

TEST(DamagedBox, with_any_bit_flipped_is_refused) {
  std::string const good = content_of_full_box();
  for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
    std::string bad = good;
    bad[bit / 8] = static_cast<char>(static_cast<unsigned char>(bad[bit / 8]) ^ (1U << bit % 8));
    ASSERT_LT(read(bad), 0) << "bit " << bit;
  }
}

TEST(DamagedBox, cut_anywhere_is_refused) {
  std::string const good = content_of_full_box();
  for (std::size_t size = 0; size < good.size(); ++size) {
    ASSERT_EQ(read(good.substr(0, size)), -EBADMSG) << "size " << size;
  }
}

TEST(DamagedBox, with_bytes_behind_its_end_is_refused) {
  EXPECT_EQ(read(content_of_full_box() + '\0'), -EBADMSG);
  EXPECT_EQ(read(content_of_full_box() + content_of_full_box()), -EBADMSG);
}

TEST(DamagedBox, with_parts_exchanged_is_refused) {
  std::string bad = content_of_full_box();
  std::swap_ranges(bad.end() - 64, bad.end() - 32, bad.end() - 32);
  EXPECT_EQ(read(bad), -EBADMSG);
}

TEST(HostileBox, with_any_bit_flipped_under_a_good_checksum_does_no_harm) {
  std::string const good = payload_of_full_box();
  for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
    std::string bad = good;
    bad[bit / 8] = static_cast<char>(static_cast<unsigned char>(bad[bit / 8]) ^ (1U << bit % 8));
    read_payload(bad);
  }
}

TEST(HostileBox, with_telling_numbers_anywhere_under_a_good_checksum_does_no_harm) {
  std::string const good = payload_of_full_box();
  for (std::uint32_t const number :
       {0U, 1U, 4U, 0x7FU, 0x80U, 0xFFFFU, 0x10000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    for (std::size_t at = 0; at + sizeof number <= good.size(); ++at) {
      std::string bad = good;
      std::memcpy(&bad[at], &number, sizeof number);
      read_payload(bad);
    }
  }
}

TEST(HostileBox, with_noise_under_a_good_checksum_does_no_harm) {
  std::string const good = payload_of_full_box();
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string bad = good;
    for (unsigned changes = 1 + random() % 8; changes > 0; --changes) {
      bad[random() % bad.size()] = static_cast<char>(random());
    }
    read_payload(bad);
  }
}

TEST(HostileBox, cut_anywhere_under_a_good_checksum_does_no_harm) {
  std::string const good = payload_of_full_box();
  for (std::size_t size = 0; size < good.size(); ++size) {
    read_payload(good.substr(0, size));
  }
}

TEST(HostileBox, without_a_payload_is_refused) {
  EXPECT_EQ(read_payload(""), -EBADMSG);
}

std::string finished(FlatBufferBuilder& builder) {
  return {reinterpret_cast<char const*>(builder.GetBufferPointer()), builder.GetSize()};
}

/// A box of so many classes that are all one and the same weight list.
int read_weights(std::uint32_t count, std::vector<std::uint32_t> const* positions,
                 std::vector<double> const& values, std::size_t classes = 1) {
  FlatBufferBuilder builder;
  auto const weights =
      file::CreateWeightListDirect(builder, count, positions, values.empty() ? nullptr : &values);
  auto const node = file::CreateKMeansClass(builder, 0, 0, 0, 0, weights);
  std::vector const list(classes, node);
  builder.Finish(file::CreateBoxDirect(builder, 0, 0, nullptr, &list));
  return read_payload(finished(builder));
}

int read_sparse(std::uint32_t count, std::vector<std::uint32_t> const& positions,
                std::vector<double> const& values) {
  return read_weights(count, &positions, values);
}

int read_words(std::uint32_t count, std::vector<std::uint8_t> const& bytes) {
  FlatBufferBuilder builder;
  auto const words = file::CreateTextListDirect(builder, count, &bytes);
  builder.Finish(file::CreateBox(builder, 0, words));
  return read_payload(finished(builder));
}

int read_class_id(std::vector<std::uint8_t> const& bytes) {
  FlatBufferBuilder builder;
  std::vector const list{file::CreateDbscanClassDirect(builder, &bytes)};
  builder.Finish(file::CreateBoxDirect(builder, 0, 0, nullptr, nullptr, &list));
  return read_payload(finished(builder));
}

TEST(HostileBox, made_by_hand_is_read_where_it_is_sound) {
  EXPECT_EQ(read_sparse(10, {0, 3, 9}, {1.0, 2.0, 3.0}), 0);
  EXPECT_EQ(read_weights(2, nullptr, {1.0, 2.0}), 0);
  EXPECT_EQ(read_words(3, {1, 'a', 0, 2, 'b', 'c'}), 0);
  EXPECT_EQ(read_class_id({'a', 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}), 0);
}

TEST(HostileBox, with_positions_out_of_order_is_refused) {
  EXPECT_EQ(read_sparse(10, {3, 2}, {1.0, 2.0}), -EBADMSG);
  EXPECT_EQ(read_sparse(10, {3, 3}, {1.0, 2.0}), -EBADMSG);
}

TEST(HostileBox, with_positions_outside_the_list_is_refused) {
  EXPECT_EQ(read_sparse(10, {10}, {1.0}), -EBADMSG);
  EXPECT_EQ(read_sparse(10, {0xFFFFFFFF}, {1.0}), -EBADMSG);
  EXPECT_EQ(read_sparse(0, {0}, {1.0}), -EBADMSG);
}

TEST(HostileBox, with_other_numbers_of_values_than_told_is_refused) {
  EXPECT_EQ(read_sparse(10, {1, 2}, {1.0}), -EBADMSG);
  EXPECT_EQ(read_sparse(10, {1}, {}), -EBADMSG);
  EXPECT_EQ(read_weights(3, nullptr, {1.0, 2.0}), -EBADMSG);
  EXPECT_EQ(read_weights(1, nullptr, {}), -EBADMSG);
}

/// A weight list of one value that lies where four bytes more or less in front of it put it.
int read_shifted(std::size_t filling) {
  constexpr std::uint64_t radius_bits = 1;  // what takes eight bytes lies on eights
  FlatBufferBuilder builder;
  builder.CreateVector(std::vector<std::uint8_t>(filling));
  auto const words = builder.CreateVector(std::vector<std::uint32_t>{7, 8, 9});
  auto const weights = file::CreateWeightList(
      builder, 1, 0, flatbuffers::Offset<flatbuffers::Vector<double>>(words.o));
  std::vector const list{file::CreateKMeansClass(builder, 0, 0, radius_bits, 0, weights)};
  builder.Finish(file::CreateBoxDirect(builder, 0, 0, nullptr, &list));
  std::string payload = finished(builder);
  // Three words become one value.
  payload[payload.find(std::string("\3\0\0\0\7\0\0\0\10", 9))] = 1;
  return read_payload(payload);
}

TEST(HostileBox, with_a_value_between_two_places_is_refused) {
  EXPECT_THAT((std::vector{read_shifted(0), read_shifted(4)}),
              testing::UnorderedElementsAre(0, -EBADMSG));
}

TEST(HostileBox, that_would_become_much_larger_is_refused_before_it_does) {
  EXPECT_EQ(read_sparse(0xFFFFFFFF, {0}, {1.0}), -EFBIG);
  EXPECT_EQ(read_sparse(10000000, {0}, {1.0}), -EFBIG);
  EXPECT_EQ(read_weights(0xFFFFFFFF, nullptr, {1.0}), -EFBIG);
  EXPECT_EQ(read_words(0xFFFFFFFF, {}), -EFBIG);
}

/// A place in the payload of the full box.
using Place = void const* (*)(file::Box const& box);

void const* field_of(void const* table, flatbuffers::voffset_t field) {
  return static_cast<flatbuffers::Table const*>(table)->GetAddressOf(field);
}

int read_with_number_at(Place place, std::uint32_t number) {
  std::string payload = payload_of_full_box();
  auto const* const at = static_cast<char const*>(place(*file::GetBox(payload.data())));
  std::memcpy(&payload[static_cast<std::size_t>(at - payload.data())], &number, sizeof number);
  return read_payload(payload);
}

struct Claim {
  char const* name;
  Place place;
  int result;
};

std::ostream& operator<<(std::ostream& stream, Claim const& claim) {
  return stream << claim.name;
}

/// Less than any billion of things takes, and more than a box may take whatever its size.
constexpr std::size_t room = 2 * morvabs::memory_of_any_box;

class BillionClaim : public testing::TestWithParam<Claim> {};

TEST_P(BillionClaim, is_refused_before_memory_is_taken) {
  test::MemoryLimit const limit(room);
  EXPECT_EQ(read_with_number_at(GetParam().place, 1'000'000'000), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Counts, BillionClaim,
    testing::Values(
        Claim{"words",
              [](file::Box const& box) -> void const* {
                return field_of(box.words(), file::TextList::VT_COUNT);
              },
              -EFBIG},
        Claim{"words_of_class",
              [](file::Box const& box) -> void const* {
                auto const* const words = box.kmeans_classes()->Get(0)->words();
                return field_of(words, file::TextList::VT_COUNT);
              },
              -EFBIG},
        Claim{"weights_of_class",
              [](file::Box const& box) -> void const* {
                auto const* const weights = box.kmeans_classes()->Get(1)->weights();
                return field_of(weights, file::WeightList::VT_COUNT);
              },
              -EFBIG},
        Claim{"weights_of_member",
              [](file::Box const& box) -> void const* {
                auto const* const members = box.dbscan_classes()->Get(0)->members();
                return field_of(members->Get(0)->weights(), file::WeightList::VT_COUNT);
              },
              -EFBIG},
        Claim{"bytes_of_words",
              [](file::Box const& box) -> void const* { return box.words()->bytes(); }, -EBADMSG},
        Claim{"reserved", [](file::Box const& box) -> void const* { return box.reserved(); },
              -EBADMSG},
        Claim{"kmeans_classes",
              [](file::Box const& box) -> void const* { return box.kmeans_classes(); }, -EBADMSG},
        Claim{"dbscan_classes",
              [](file::Box const& box) -> void const* { return box.dbscan_classes(); }, -EBADMSG},
        Claim{"members",
              [](file::Box const& box) -> void const* {
                return box.dbscan_classes()->Get(0)->members();
              },
              -EBADMSG},
        Claim{
            "bytes_of_id",
            [](file::Box const& box) -> void const* { return box.kmeans_classes()->Get(0)->id(); },
            -EBADMSG},
        Claim{"positions",
              [](file::Box const& box) -> void const* {
                return box.kmeans_classes()->Get(1)->weights()->positions();
              },
              -EBADMSG},
        Claim{"values",
              [](file::Box const& box) -> void const* {
                return box.kmeans_classes()->Get(1)->weights()->values();
              },
              -EBADMSG}),
    [](auto const& claim) { return claim.param.name; });

TEST(HostileBox, that_claims_a_billion_anywhere_takes_no_memory) {
  std::string const good = payload_of_full_box();
  constexpr std::uint32_t billion = 1'000'000'000;
  for (std::size_t at = 0; at + sizeof billion <= good.size(); ++at) {
    std::string bad = good;
    std::memcpy(&bad[at], &billion, sizeof billion);
    test::MemoryLimit const limit(room);
    read_payload(bad);
  }
}

TEST(HostileBox, with_a_list_that_is_itself_is_refused) {
  EXPECT_EQ(read_with_number_at(
                [](file::Box const& box) -> void const* {
                  return field_of(&box, file::Box::VT_KMEANS_CLASSES);
                },
                0),
            -EBADMSG);
}

TEST(HostileBox, with_a_class_that_is_the_list_of_it_is_refused) {
  // Behind the length of the list; four bytes back from there it begins.
  EXPECT_EQ(read_with_number_at(
                [](file::Box const& box) -> void const* { return box.kmeans_classes()->data(); },
                std::uint32_t(-4)),
            -EBADMSG);
}

TEST(HostileBox, with_parts_that_lead_back_anywhere_does_no_harm) {
  std::string const good = payload_of_full_box();
  for (std::size_t at = 0; at + sizeof(std::uint32_t) <= good.size(); at += 4) {
    for (std::size_t target = 0; target <= at; target += 4) {
      std::string bad = good;
      auto const back = static_cast<std::uint32_t>(target - at);
      std::memcpy(&bad[at], &back, sizeof back);
      read_payload(bad);
    }
  }
}

TEST(HostileBox, that_names_one_list_many_times_is_refused) {
  std::vector<std::uint32_t> const positions{0};
  EXPECT_EQ(read_weights(100000, &positions, {1.0}, 1000000), -EBADMSG);
}

TEST(HostileBox, with_a_text_longer_than_its_bytes_is_refused) {
  EXPECT_EQ(read_words(1, {2, 'a'}), -EBADMSG);
  EXPECT_EQ(read_words(1, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F}), -EBADMSG);
  EXPECT_EQ(read_words(1, {1, 0x80}), -EBADMSG);
}

TEST(HostileBox, with_more_texts_than_told_is_refused) {
  EXPECT_EQ(read_words(1, {1, 'a', 1, 'b'}), -EBADMSG);
  EXPECT_EQ(read_words(0, {0}), -EBADMSG);
}

TEST(HostileBox, with_a_character_of_more_than_32_bits_is_refused) {
  EXPECT_EQ(read_class_id({0xFF, 0xFF, 0xFF, 0xFF, 0x1F}), -EBADMSG);
  EXPECT_EQ(read_class_id({0x80, 0x80, 0x80, 0x80, 0x80, 0x00}), -EBADMSG);
  EXPECT_EQ(read_class_id({0x80}), -EBADMSG);
}

}  // namespace
