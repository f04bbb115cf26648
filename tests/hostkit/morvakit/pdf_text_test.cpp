#include "morvakit/pdf/pdf_text.h"

#include <gtest/gtest.h>

namespace {

using morvakit::join_han_lines;
using morvakit::text_of_markup;
using morvakit::without_ligatures;

TEST(PdfText, ligatures_are_written_out) {
  EXPECT_EQ(without_ligatures("of\xEF\xAC\x81"
                              "ce \xEF\xAC\x84"),
            "office ffl");
}

TEST(PdfText, control_characters_become_blanks) {
  EXPECT_EQ(without_ligatures("a\x01"
                              "b\tc\nd"),
            "a b\tc\nd");
}

TEST(PdfText, a_cut_ligature_is_kept_as_it_is) {
  EXPECT_EQ(without_ligatures("a\xEF\xAC"), "a\xEF\xAC");
}

TEST(PdfText, a_broken_line_of_han_characters_goes_on) {
  EXPECT_EQ(join_han_lines("甲方委托乙方开发文档管\n理系统，乙方接受委托"),
            "甲方委托乙方开发文档管理系统，乙方接受委托");
}

TEST(PdfText, the_last_line_of_a_paragraph_may_be_short) {
  EXPECT_EQ(join_han_lines("甲方委托乙方开发文档管\n理系统"), "甲方委托乙方开发文档管理系统");
}

TEST(PdfText, a_heading_keeps_its_line) {
  EXPECT_EQ(join_han_lines("服务合同\n甲方委托乙方开发文档管"), "服务合同\n甲方委托乙方开发文档管");
}

TEST(PdfText, a_blank_line_parts_paragraphs) {
  EXPECT_EQ(join_han_lines("甲方委托\n\n乙方接受"), "甲方委托\n\n乙方接受");
}

TEST(PdfText, lines_of_other_text_stay) {
  EXPECT_EQ(join_han_lines("one\ntwo\n第一行。\n第二行a\n第三行\n"),
            "one\ntwo\n第一行。\n第二行a\n第三行\n");
}

TEST(PdfText, markup_gives_its_text) {
  EXPECT_EQ(text_of_markup("<body><p>a <b>b</b></p><p>c<br/>d</p></body>"), "a b\nc\nd");
}

TEST(PdfText, references_in_markup_are_characters) {
  EXPECT_EQ(text_of_markup("a&amp;b&lt;&#x4e2d;&#20013;"), "a&b<\xE4\xB8\xAD\xE4\xB8\xAD");
}

TEST(PdfText, broken_markup_is_survived) {
  EXPECT_EQ(text_of_markup("a & b &#; &#x999999999999; <c"), "a & b   &#x999999999999;");
  EXPECT_EQ(text_of_markup("<"), "");
  EXPECT_EQ(text_of_markup("&"), "&");
}

}  // namespace
