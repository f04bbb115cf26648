#include <string>

#include <gtest/gtest.h>

#include "host/native_path.h"

namespace {

TEST(Path, utf8_names_are_plain_text) {
  EXPECT_EQ(morvabs::from_path("/data/\xE6\x8A\xA5"), HString(L"/data/报"));
  EXPECT_EQ(morvabs::to_path(L"/data/报"), "/data/\xE6\x8A\xA5");
}

TEST(Path, names_that_are_no_utf8_come_back_byte_for_byte) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) {
    all.push_back(static_cast<char>(byte));
  }
  EXPECT_EQ(morvabs::to_path(morvabs::from_path(all)), all);
}

TEST(Path, a_byte_of_no_sequence_is_told_from_the_character_it_might_mean) {
  EXPECT_EQ(morvabs::from_path("\xB1"), HString(L"\xDCB1"));
}

TEST(Path, a_null_character_is_no_path) {
  EXPECT_FALSE(morvabs::to_path(HString(L"/etc/passwd\0.txt", 16)).has_value());
}

TEST(Path, a_value_that_no_name_can_have_is_no_path) {
  EXPECT_FALSE(morvabs::to_path(HString(static_cast<wchar_t>(0xD800))).has_value());
  EXPECT_FALSE(morvabs::to_path(HString(static_cast<wchar_t>(0x110000))).has_value());
}

}  // namespace
