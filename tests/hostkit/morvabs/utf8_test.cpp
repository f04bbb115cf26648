#include "host/utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(Utf8, every_scalar_value_comes_back) {
  for (std::uint32_t value = 0; value <= 0x10FFFF; ++value) {
    if (value >= 0xD800 && value <= 0xDFFF) {
      continue;
    }
    std::wstring const text(1, static_cast<wchar_t>(value));
    ASSERT_EQ(morvabs::from_utf8(morvabs::to_utf8(text)), text) << value;
  }
}

TEST(Utf8, what_is_no_scalar_value_is_written_as_the_replacement_character) {
  for (std::uint32_t const value : {0xD800U, 0xDFFFU, 0x110000U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(morvabs::to_utf8(std::wstring(1, static_cast<wchar_t>(value))), "\xEF\xBF\xBD");
  }
}

TEST(Utf8, malformed_sequences_are_not_well_formed) {
  for (char const* bytes :
       {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFE", "\xE4\xB8", "\xE4\xB8z", "a\xE4"}) {
    EXPECT_FALSE(morvabs::is_utf8(bytes)) << bytes;
  }
}

TEST(Utf8, each_malformed_byte_becomes_one_replacement_character) {
  EXPECT_EQ(morvabs::from_utf8("a\xED\xA0\x80z"), L"a\xFFFD\xFFFD\xFFFDz");
}

TEST(Utf8, the_valid_prefix_ends_at_the_first_fault) {
  EXPECT_EQ(morvabs::valid_utf8_prefix("plain ascii text, \xE4\xB8\xAD\xFF"), 21U);
  EXPECT_EQ(morvabs::valid_utf8_prefix(""), 0U);
}

TEST(Utf8, a_cut_sequence_is_left_for_the_next_chunk) {
  EXPECT_EQ(morvabs::complete_utf8_prefix("ab\xE4\xB8"), 2U);
  EXPECT_EQ(morvabs::complete_utf8_prefix("ab\xF0\x9F\x98"), 2U);
  EXPECT_EQ(morvabs::complete_utf8_prefix("ab\xE4\xB8\xAD"), 5U);
  EXPECT_EQ(morvabs::complete_utf8_prefix("ab"), 2U);
  EXPECT_EQ(morvabs::complete_utf8_prefix(""), 0U);
}

TEST(Utf8, bytes_that_no_chunk_can_complete_are_not_held_back) {
  EXPECT_EQ(morvabs::complete_utf8_prefix("ab\xFF"), 3U);
  EXPECT_EQ(morvabs::complete_utf8_prefix("\x80\x80\x80\x80"), 4U);
  EXPECT_EQ(morvabs::complete_utf8_prefix("\xED\xA0"), 2U);
}

TEST(Utf8, appending_keeps_what_is_there) {
  std::wstring wide = L"a";
  std::string narrow = "a";
  morvabs::append_wide(wide, "\xE4\xB8\xAD");
  morvabs::append_utf8(narrow, L"中");
  EXPECT_EQ(wide, L"a中");
  EXPECT_EQ(narrow, "a\xE4\xB8\xAD");
}

}  // namespace
