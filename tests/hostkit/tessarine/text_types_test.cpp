#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/samples.h"

namespace {

using tessarine::FileType;
using test::recognize;
using namespace std::string_literals;

TEST(RecognizeText, a_page_is_html_whatever_its_name) {
  EXPECT_EQ(recognize("<!DOCTYPE html>\n<html><body>x</body></html>", "page.txt").type,
            FileType::html);
}

TEST(RecognizeText, a_page_with_an_xml_declaration_is_html) {
  EXPECT_EQ(
      recognize("<?xml version=\"1.0\"?>\n<html xmlns=\"http://www.w3.org/1999/xhtml\"/>").type,
      FileType::html);
}

TEST(RecognizeText, a_page_that_begins_with_a_comment_is_html) {
  EXPECT_EQ(recognize("<!-- a comment -->\n<html><p>x</html>").type, FileType::html);
}

TEST(RecognizeText, a_part_of_a_page_is_html) {
  EXPECT_EQ(recognize("<table><tr><td>cell</table>", "x.html").type, FileType::html);
}

TEST(RecognizeText, a_page_in_utf_16_is_html) {
  EXPECT_EQ(recognize("\xff\xfe<\0h\0t\0m\0l\0>\0x\0"s).type, FileType::html);
}

TEST(RecognizeText, a_declaration_makes_xml) {
  EXPECT_EQ(recognize("<?xml version=\"1.0\"?><list><item/></list>").type, FileType::xml);
}

TEST(RecognizeText, an_element_that_is_closed_makes_xml) {
  EXPECT_EQ(recognize("<list><item>x</item></list>").type, FileType::xml);
}

TEST(RecognizeText, a_text_that_begins_with_an_angle_is_a_text) {
  EXPECT_EQ(recognize("<someone@example.org> wrote to us").type, FileType::plain_text);
}

TEST(RecognizeText, a_drawing_is_xml_with_its_own_suffix) {
  EXPECT_STREQ(recognize("<svg xmlns=\"http://www.w3.org/2000/svg\"/>").suffix, "svg");
}

TEST(RecognizeText, a_flat_spreadsheet_is_told) {
  auto const recognition = recognize(
      "<?xml version=\"1.0\"?><office:document xmlns:office=\"x\" "
      "office:mimetype=\"application/vnd.oasis.opendocument.spreadsheet\"></office:document>");
  EXPECT_EQ(recognition.type, FileType::flat_odf);
  EXPECT_STREQ(recognition.suffix, "fods");
}

TEST(RecognizeText, rows_in_a_file_named_txt_are_plain_text) {
  EXPECT_EQ(recognize("a,b,c\n1,2,3\n", "rows.txt").type, FileType::plain_text);
}

TEST(RecognizeText, rows_in_a_file_named_csv_are_csv) {
  EXPECT_EQ(recognize("a,b,c\n1,2,3\n", "ROWS.CSV").type, FileType::csv);
}

TEST(RecognizeText, markdown_that_begins_with_an_element_is_markdown) {
  EXPECT_EQ(recognize("<p align=\"center\">Title</p>\n\n# Heading\n", "README.md").type,
            FileType::markdown);
}

TEST(RecognizeText, source_code_keeps_its_suffix) {
  auto const recognition = recognize("int main() { return 0; }\n", "main.cpp");
  EXPECT_EQ(recognition.type, FileType::source_code);
  EXPECT_STREQ(recognition.suffix, "cpp");
}

TEST(RecognizeText, a_page_named_like_source_code_is_html) {
  EXPECT_EQ(recognize("<!doctype html><title>x</title>", "page.json").type, FileType::html);
}

TEST(RecognizeText, plain_text_keeps_a_known_suffix_and_else_has_txt) {
  EXPECT_STREQ(recognize("a line\n", "build.log").suffix, "log");
  EXPECT_STREQ(recognize("a line\n", "letter.docx").suffix, "txt");
}

TEST(RecognizeText, chinese_text_in_gb18030_is_text) {
  std::string text;
  for (int i = 0; i < 20; ++i) {
    text +=
        "\xd6\xd0\xb9\xfa\xc8\xcb\xc3\xf1\xb5\xc4\xce\xc4\xbb\xaf\xba\xcd\xc0\xfa\xca\xb7\xa1\xa3";
  }
  EXPECT_EQ(recognize(text).type, FileType::plain_text);
}

}  // namespace
