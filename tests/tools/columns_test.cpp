#include "terminal/columns.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using tool::Align;
using tool::columns_of;
using tool::cut_end;
using tool::cut_middle;
using tool::Role;
using tool::Table;

TEST(Columns, letters_take_one) {
  EXPECT_EQ(columns_of("harbour"), 7U);
  EXPECT_EQ(columns_of("Größe"), 5U);
  EXPECT_EQ(columns_of(""), 0U);
}

TEST(Columns, wide_characters_take_two) {
  EXPECT_EQ(columns_of("采购合同"), 8U);
  EXPECT_EQ(columns_of("ＡＢ（）"), 8U);
  EXPECT_EQ(columns_of("한글かな"), 8U);
  EXPECT_EQ(columns_of("𠮷"), 2U);
}

TEST(Columns, characters_of_ambiguous_width_take_one) {
  EXPECT_EQ(columns_of("…“”αЯ①"), 6U);
}

TEST(Columns, halfwidth_forms_take_one) {
  EXPECT_EQ(columns_of("ｱｲ｡"), 3U);
}

TEST(Columns, marks_on_a_character_take_none) {
  EXPECT_EQ(columns_of("e\u0301"), 1U);
  EXPECT_EQ(columns_of("か\u3099"), 2U);
  EXPECT_EQ(columns_of("न\u0941"), 1U);
}

TEST(Columns, what_is_not_drawn_takes_none) {
  EXPECT_EQ(columns_of("a\u200B\u200D\uFEFF\u2060b"), 2U);
}

TEST(Columns, a_soft_hyphen_takes_one) {
  EXPECT_EQ(columns_of("a\u00ADb"), 3U);
}

TEST(Columns, a_hangul_syllable_in_parts_takes_as_much_as_a_whole_one) {
  EXPECT_EQ(columns_of("\u1112\u1161\u11AB"), columns_of("한"));
}

TEST(Columns, pictograms_take_two) {
  EXPECT_EQ(columns_of("😀"), 2U);
  EXPECT_EQ(columns_of("\u2764"), 1U);
  EXPECT_EQ(columns_of("\u2764\uFE0F"), 2U);
  EXPECT_EQ(columns_of("🇨🇳"), 2U);
}

TEST(Columns, a_selector_makes_no_pictogram_of_a_letter) {
  EXPECT_EQ(columns_of("a\uFE0F"), 1U);
}

TEST(Columns, marks_of_style_take_none) {
  EXPECT_EQ(columns_of(tool::styled(Role::name, "合同")), 4U);
}

TEST(Columns, bytes_that_are_no_text_take_one_each) {
  EXPECT_EQ(columns_of("a\xFF\xFE"), 3U);
}

TEST(Cutting, leaves_what_fits) {
  EXPECT_EQ(cut_end("采购合同", 8), "采购合同");
  EXPECT_EQ(cut_middle("采购合同", 8), "采购合同");
}

TEST(Cutting, at_the_end_keeps_the_beginning) {
  EXPECT_EQ(cut_end("harbour", 5), "harb…");
}

TEST(Cutting, in_the_middle_keeps_more_of_the_end) {
  EXPECT_EQ(cut_middle("samples/corpus/invoice.docx", 16), "sampl…voice.docx");
}

TEST(Cutting, takes_no_half_of_a_wide_character) {
  EXPECT_EQ(cut_end("采购合同", 6), "采购…");
  EXPECT_EQ(cut_end("采购合同", 7), "采购合…");
  EXPECT_EQ(columns_of(cut_middle("采购合同采购合同", 10)), 9U);
}

TEST(Cutting, keeps_marks_with_their_characters) {
  EXPECT_EQ(cut_end("e\u0301e\u0301e\u0301", 2), "e\u0301…");
  EXPECT_EQ(cut_middle("e\u0301e\u0301e\u0301", 2), "…e\u0301");
}

TEST(Cutting, to_nothing_gives_nothing) {
  EXPECT_EQ(cut_end("harbour", 0), "");
  EXPECT_EQ(cut_middle("harbour", 0), "");
  EXPECT_EQ(cut_middle("harbour", 1), "…");
}

TEST(ATable, lines_up_wide_characters) {
  Table table({Align::left, Align::left});
  table.add({std::string("合同"), std::string("a")});
  table.add({std::string("contract"), std::string("b")});
  EXPECT_EQ(table.text(),
            "合同      a\n"
            "contract  b\n");
}

TEST(ATable, sets_numbers_to_the_right) {
  Table table({Align::right, Align::left}, 2);
  table.add({std::string("7"), std::string("a")});
  table.add({std::string("1234"), std::string("b")});
  EXPECT_EQ(table.text(),
            "     7  a\n"
            "  1234  b\n");
}

TEST(ATable, lines_up_decimal_points) {
  Table table({Align::decimal, Align::left});
  table.add({std::string("0.25"), std::string("a")});
  table.add({std::string("12.5"), std::string("b")});
  table.add({std::string("3"), std::string("c")});
  EXPECT_EQ(table.text(),
            " 0.25  a\n"
            "12.5   b\n"
            " 3     c\n");
}

TEST(ATable, has_no_blanks_at_the_end_of_a_line) {
  Table table({Align::left, Align::left, Align::left});
  table.add({std::string("a"), std::string("long"), std::string()});
  table.add({std::string("long"), std::string("b")});
  EXPECT_EQ(table.text(),
            "a     long\n"
            "long  b\n");
}

TEST(ATable, gives_a_column_its_least_width) {
  Table table({{Align::right, 5}, {Align::left, 3}, Align::left});
  table.add({std::string("1"), std::string("n"), std::string("x")});
  EXPECT_EQ(table.text(), "    1  n    x\n");
}

TEST(ATable, sets_titles_above_where_the_cells_are) {
  Table table({Align::decimal, Align::right, Align::left});
  table.set_titles({"weight", "n", "word"});
  table.add({std::string("1.5"), std::string("12"), std::string("合同")});
  EXPECT_EQ(tool::without_styles(table.text()),
            "weight   n  word\n"
            "   1.5  12  合同\n");
}

TEST(ATable, cuts_the_cells_of_one_column_to_fit) {
  Table table({Align::left, Align::right});
  table.add({std::string("samples/corpus/learn/invoices/invoice-01.docx"), std::string("12")});
  table.fit(0, 30);
  EXPECT_EQ(table.text(), "samples/…s/invoice-01.docx  12\n");
}

TEST(ATable, leaves_cells_whole_where_no_width_is_known) {
  Table table({Align::left});
  std::string const path(300, 'a');
  table.add({path});
  table.fit(0, std::nullopt);
  EXPECT_EQ(table.text(), path + "\n");
}

TEST(ATable, styles_cells_and_not_the_blanks_beside_them) {
  Table table({Align::left, Align::left});
  table.add({{"a", Role::name}, std::string("b")});
  table.add({{"long", Role::name}, std::string("c")});
  EXPECT_EQ(tool::with_colors(table.text()),
            "\x1B[36ma\x1B[0m     b\n"
            "\x1B[36mlong\x1B[0m  c\n");
}

TEST(Styles, go_without_a_trace) {
  EXPECT_EQ(tool::without_styles("x " + tool::styled(Role::error, "合同") + " y"), "x 合同 y");
}

TEST(Styles, leave_other_characters_of_their_block_alone) {
  EXPECT_EQ(tool::without_styles("ﷲ \uFDF0 \uFDCF"), "ﷲ \uFDF0 \uFDCF");
}

}  // namespace
