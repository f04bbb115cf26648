#include "morvabs/box_format.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "host/QXPPolicyMorvaClustBox.h"
#include "hostkit/morvabs/box_support.h"

namespace {

using test::BoxText;
using test::full_box;

QXPPolicyMorvaClustBox written_and_read(QXPPolicyMorvaClustBox const& box) {
  auto const content = morvabs::encode_box(box);
  EXPECT_TRUE(content);
  QXPPolicyMorvaClustBox read;
  EXPECT_EQ(morvabs::decode_box(content.value_or(""), read), 0);
  return read;
}

std::size_t stored_size(QXPPolicyMorvaClustBox const& box) {
  return morvabs::encode_box(box).value_or("").size();
}

TEST(BoxFormat, every_field_comes_back) {
  EXPECT_EQ(BoxText::of(written_and_read(full_box())), BoxText::of(full_box()));
}

TEST(BoxFormat, an_empty_box_comes_back) {
  QXPPolicyMorvaClustBox const empty;
  EXPECT_EQ(BoxText::of(written_and_read(empty)), BoxText::of(empty));
}

TEST(BoxFormat, what_was_in_the_record_is_replaced) {
  QXPPolicyMorvaClustBox record = full_box();
  EXPECT_EQ(morvabs::decode_box(morvabs::encode_box({}).value_or(""), record), 0);
  EXPECT_EQ(BoxText::of(record), BoxText::of({}));
}

class OddNumber : public testing::TestWithParam<std::uint64_t> {
 protected:
  double number() const { return std::bit_cast<double>(GetParam()); }
};

TEST_P(OddNumber, comes_back_in_a_full_list) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].vt_weight = {number(), 1.0, number()};
  EXPECT_EQ(BoxText::of(written_and_read(box)), BoxText::of(box));
}

TEST_P(OddNumber, comes_back_in_a_list_of_zeros) {
  QXPPolicyMorvaClustBox box;
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].vt_file_node.resize(1);
  box.vt_dbscan_node[0].vt_file_node[0].vt_weight.resize(1000);
  box.vt_dbscan_node[0].vt_file_node[0].vt_weight[500] = number();
  EXPECT_EQ(BoxText::of(written_and_read(box)), BoxText::of(box));
}

TEST_P(OddNumber, comes_back_by_itself) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].d_radius = number();
  box.vt_dbscan_node.resize(1);
  box.vt_dbscan_node[0].d_eps = number();
  EXPECT_EQ(BoxText::of(written_and_read(box)), BoxText::of(box));
}

INSTANTIATE_TEST_SUITE_P(Numbers, OddNumber,
                         testing::Values(0, 0x8000000000000000,                   // both zeros
                                         1, 0x800FFFFFFFFFFFFF,                   // subnormal
                                         0x7FF0000000000000, 0xFFF0000000000000,  // infinite
                                         0x7FF8000000000000, 0xFFF8000000000123,  // quiet NaN
                                         0x7FF0000000000001, 0xFFF4DEADBEEF0000,  // signalling NaN
                                         0x3FF0000000000000, 0x7FEFFFFFFFFFFFFF));

TEST(BoxFormat, every_kind_of_character_comes_back) {
  std::vector<std::uint32_t> values;
  for (std::uint32_t bit = 1; bit != 0; bit <<= 1U) {
    values.insert(values.end(), {bit - 1, bit, bit + 1});
  }
  values.insert(values.end(), {0xD800, 0xDFFF, 0xFFFE, 0x10FFFF, 0x110000, 0xFFFFFFFF});
  std::wstring all;
  QXPPolicyMorvaClustBox box;
  for (std::uint32_t const value : values) {
    all.push_back(static_cast<wchar_t>(value));
    box.vt_words.emplace_back(static_cast<wchar_t>(value));
  }
  box.vt_words.emplace_back(all.data(), static_cast<int>(all.size()));
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].str_class_id = box.vt_words.back();
  EXPECT_EQ(BoxText::of(written_and_read(box)), BoxText::of(box));
}

TEST(BoxFormat, a_list_of_few_weights_takes_room_for_those_only) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  std::size_t const bare = stored_size(box);
  auto& weights = box.vt_kmeans_node[0].vt_weight;
  weights.resize(50000);
  for (std::size_t i = 0; i < weights.size(); i += 500) {
    weights[i] = 1.0;
  }
  EXPECT_LT(stored_size(box), bare + 100 * 12 + 100);
}

TEST(BoxFormat, a_list_without_zeros_takes_eight_bytes_for_each) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  std::size_t const bare = stored_size(box);
  box.vt_kmeans_node[0].vt_weight.assign(1000, 0.5);
  EXPECT_LT(stored_size(box), bare + 8100);
}

TEST(BoxFormat, a_list_of_empty_words_takes_no_room) {
  QXPPolicyMorvaClustBox box = full_box();
  std::size_t const few = stored_size(box);
  box.vt_kmeans_node[0].vt_words.resize(50000);
  EXPECT_LE(stored_size(box), few + 8);
}

TEST(BoxFormat, empty_words_keep_their_places) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {L"", L"a", L"", L"", L"b", L"", L""};
  EXPECT_EQ(BoxText::of(written_and_read(box)), BoxText::of(box));
}

/// A box as the first version of the format has it.
constexpr std::string_view old_file =
    "89424F580D0A1A0A01000000000000006801000000000000BF86DB10325A7F571800000000000000"
    "00000E001800040008000C00100014000E0000000500000030010000200100009000000004000000"
    "010000001400000000000E0014000400080000000C0010000E000000680000006000000003000000"
    "04000000010000000C00000008000E0004000800080000003C0000001000000000000A0010000400"
    "08000C000A00000004000000080000000C0000000100000003000000010000000000000000000040"
    "000000000000000000000000000000000100000014000000100020000400080018000C0010001400"
    "10000000680000006000000050000000200000000C000000000000000000E03F0000000000000A00"
    "0C000400000008000A000000020000000400000002000000000000000000D03F000000000000E83F"
    "00000000080008000000040008000000040000000000000000000000010000006B00000000000000"
    "08000C000400080008000000020000000400000006000000016101AD9C010000";

std::string from_hex(std::string_view digits) {
  std::string bytes;
  for (; !digits.empty(); digits.remove_prefix(2)) {
    bytes.push_back(static_cast<char>(std::stoi(std::string(digits.substr(0, 2)), nullptr, 16)));
  }
  return bytes;
}

TEST(BoxFormat, files_of_the_first_version_stay_readable) {
  QXPPolicyMorvaClustBox expected;
  expected.i_box_value = 5;
  expected.vt_words = {L"a", L"中"};
  expected.vt_kmeans_node.resize(1);
  expected.vt_kmeans_node[0].str_class_id = L"k";
  expected.vt_kmeans_node[0].d_radius = 0.5;
  expected.vt_kmeans_node[0].vt_weight = {0.25, 0.75};
  expected.vt_dbscan_node.resize(1);
  expected.vt_dbscan_node[0].i_minpts = 3;
  expected.vt_dbscan_node[0].vt_file_node.resize(1);
  expected.vt_dbscan_node[0].vt_file_node[0].vt_weight = {0.0, 0.0, 0.0, 2.0};
  QXPPolicyMorvaClustBox read;
  EXPECT_EQ(morvabs::decode_box(from_hex(old_file), read), 0);
  EXPECT_EQ(BoxText::of(read), BoxText::of(expected));
}

TEST(BoxFormat, equal_boxes_give_equal_files) {
  EXPECT_EQ(morvabs::encode_box(full_box()), morvabs::encode_box(full_box()));
}

TEST(BoxFormat, a_box_that_would_be_refused_is_not_written) {
  QXPPolicyMorvaClustBox box;
  box.vt_words.resize(2500000);  // far more memory than room in the file
  EXPECT_FALSE(morvabs::encode_box(box));
}

}  // namespace
