#include <gtest/gtest.h>

#include "host/HTessarineResult.h"
#include "hostkit/morvakit/office_documents.h"

#include "support/temporary_directory.h"

namespace {

TEST(HTessarine, fills_the_texts_of_a_file_that_it_reads) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  EXPECT_TRUE(HTessarine::read(directory.write("page.html",
                                               "<html><body><p>hello</p>"
                                               "<input type='text' value='typed'></body></html>"),
                               result));
  EXPECT_TRUE(result.str_suffix == L"html");
  EXPECT_TRUE(result.str_main == L"hello");
  EXPECT_TRUE(result.str_ctrl == L"typed");
}

TEST(HTessarine, counts_the_lines_that_are_not_empty) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  EXPECT_TRUE(HTessarine::read(directory.write("a.txt", "one\n\n\ntwo\r\nthree"), result));
  EXPECT_EQ(result.i_line, 3);
  EXPECT_EQ(result.i_page, 0);
  EXPECT_EQ(result.i_img, 0);
  EXPECT_EQ(result.i_embed, 0);
}

TEST(HTessarine, reading_leaves_the_sum_of_words) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  result.i_word = 7;
  result.vt_embed = {1, 2};
  EXPECT_TRUE(HTessarine::read(directory.write("a.txt", "one"), result));
  EXPECT_EQ(result.i_word, 7);
  EXPECT_EQ(result.vt_embed.size(), 2U);
}

TEST(HTessarine, what_an_earlier_file_had_is_gone_from_the_record) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  HTessarine::read(directory.write("a.txt", "one\ntwo"), result);
  EXPECT_FALSE(
      HTessarine::read(directory.write("b.bin", std::string("\x7f\x45LF\2\0\0", 7)), result));
  EXPECT_TRUE(result.str_main.empty());
  EXPECT_EQ(result.i_line, 0);
}

TEST(HTessarine, a_missing_file_is_not_read) {
  HTessarineResult result;
  EXPECT_FALSE(HTessarine::read(L"/nowhere/at/all", result));
}

}  // namespace
