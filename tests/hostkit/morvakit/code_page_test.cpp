#include "morvakit/text/code_page.h"

#include <gtest/gtest.h>

#include "morvabs/text_decoder.h"

namespace {

using morvakit::code_page_name;
using morvakit::code_page_of_charset;
using morvakit::decode_code_page;
using morvakit::decode_utf16;

TEST(CodePage, simplified_chinese_is_decoded_as_its_widest_set) {
  EXPECT_EQ(code_page_name(936), "GB18030");
  EXPECT_EQ(decode_code_page("\xba\xcf\xcd\xac", 936), "合同");
}

TEST(CodePage, windows_dos_and_latin_pages_are_known_by_their_numbers) {
  EXPECT_EQ(decode_code_page("\xcf\xf0", 1251), "Пр");
  EXPECT_EQ(decode_code_page("\x8f\xe0", 866), "Пр");
  EXPECT_EQ(decode_code_page("\xe9", 28591), "é");
}

TEST(CodePage, every_number_of_the_table_has_a_decoder) {
  for (int const number :
       {932,   936,   949,   950,   1200,  1201,  1361,  10000, 10001, 10002, 10003, 10006, 10007,
        10008, 10029, 10081, 12000, 12001, 20127, 20866, 20932, 20936, 21866, 50220, 50225, 51932,
        51936, 51949, 52936, 54936, 65000, 65001, 874,   1250,  1251,  1252,  1253,  1254,  1255,
        1256,  1257,  1258,  437,   850,   852,   855,   866,   28592, 28605}) {
    EXPECT_TRUE(morvabs::TextDecoder(code_page_name(number)).is_known()) << number;
  }
}

TEST(CodePage, an_unknown_number_has_no_name) {
  EXPECT_EQ(code_page_name(0), "");
  EXPECT_EQ(code_page_name(-1), "");
  EXPECT_EQ(code_page_name(438), "");
}

TEST(CodePage, an_unknown_number_is_decoded_as_western) {
  EXPECT_EQ(decode_code_page("caf\xe9", 12345), "café");
}

TEST(CodePage, character_sets_of_fonts_have_code_pages) {
  EXPECT_EQ(code_page_of_charset(134), 936);
  EXPECT_EQ(code_page_of_charset(136), 950);
  EXPECT_EQ(code_page_of_charset(128), 932);
  EXPECT_EQ(code_page_of_charset(2), 0);
}

TEST(CodePage, utf16_has_its_low_byte_first) {
  EXPECT_EQ(decode_utf16(std::string_view("\x08\x54\x0c\x54", 4)), "合同");
}

TEST(CodePage, half_a_character_at_the_end_is_replaced) {
  EXPECT_EQ(decode_utf16(std::string_view("A\0\x3d\xd8", 4)), "A\xef\xbf\xbd");
}

}  // namespace
