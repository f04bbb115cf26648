#include <memory>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "host/Orlec/ParseFile.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseOutcome;
using test::parse_bytes;

std::string document(std::string const& body) {
  return "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset134 "
         "SimSun;}{\\f2\\fcharset204 Arial;}{\\f3\\fcharset2 Wingdings;}{\\f4\\fcharset128 "
         "MS Gothic;}{\\f5\\fcharset1 Arial;}{\\f6\\cpg1251 Arial;}}" +
         body + "}";
}

test::Parsed parse(std::string const& body) {
  return parse_bytes(document(body));
}

std::string main_text(std::string const& body) {
  return parse(body).main();
}

std::string kind_text(Orlec::ParseTextType kind, std::string const& body) {
  return parse(body).kind(kind);
}

TEST(Rtf, paragraphs_and_lines_end_lines) {
  EXPECT_EQ(main_text("\\pard one\\par two\\line three\\\nfour\\page five"),
            "one\ntwo\nthree\nfour\nfive");
}

TEST(Rtf, cells_are_set_apart_by_tabs_and_rows_by_line_ends) {
  EXPECT_EQ(main_text("\\trowd\\intbl a\\cell b\\cell\\row\\trowd\\intbl c\\cell d\\cell\\row"),
            "a\tb\nc\td");
}

TEST(Rtf, a_table_in_a_table_is_read) {
  EXPECT_EQ(main_text("\\intbl a\\par\\itap2 x\\nestcell y\\nestcell{\\*\\nesttableprops\\trowd"
                      "\\nestrow}{\\nonesttables\\par old}\\itap1 b\\cell\\row"),
            "a\nx\ty\nb");
}

TEST(Rtf, named_characters_and_escapes_are_text) {
  EXPECT_EQ(main_text("a\\emdash b\\~c\\_d\\-e\\{\\}\\\\\\tab\\ldblquote f\\rdblquote"),
            "a\u2014b\u00a0c-de{}\\\t\u201cf\u201d");
}

TEST(Rtf, line_ends_of_the_file_are_no_text) {
  EXPECT_EQ(main_text("on\r\ne"), "one");
}

TEST(Rtf, a_hyphen_behind_a_control_word_is_text) {
  EXPECT_EQ(main_text("a\\b-\\b0 b"), "a-b");
}

TEST(Rtf, a_font_tells_the_code_page) {
  EXPECT_EQ(main_text("\\'e9{\\f2\\'ef\\'f0}{\\f6\\'ef\\'f0}"), "\u00e9\u043f\u0440\u043f\u0440");
}

TEST(Rtf, a_font_of_the_default_set_has_the_code_page_of_the_document) {
  EXPECT_EQ(parse_bytes("{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0\\fcharset1 A;}}\\f0\\'ef\\'f0}")
                .main(),
            "\u043f\u0440");
}

TEST(Rtf, the_kind_of_character_set_tells_the_code_page) {
  EXPECT_EQ(parse_bytes("{\\rtf1\\mac \\'8e}").main(), "\u00e9");
  EXPECT_EQ(parse_bytes("{\\rtf1\\pc \\'82}").main(), "\u00e9");
  EXPECT_EQ(parse_bytes("{\\rtf1\\pca \\'b5}").main(), "\u00c1");
}

TEST(Rtf, characters_of_two_bytes_are_read_in_each_way_of_writing) {
  EXPECT_EQ(main_text("{\\f1\\'d6\\'d0}"), "\u4e2d");
  EXPECT_EQ(main_text("{\\f1\xd6\xd0}"), "\u4e2d");
  EXPECT_EQ(main_text("{\\f1\\'d6\xd0}"), "\u4e2d");
  EXPECT_EQ(main_text("{\\f1\\'b0A}"), "\u7646");
  EXPECT_EQ(main_text("{\\f1\\'d6\\lang2052\\'d0}"), "\u4e2d");
}

TEST(Rtf, a_character_whose_second_byte_is_ascii_is_read) {
  EXPECT_EQ(main_text("{\\f4\\'83\\'5e\\'83^}"), "\u30bf\u30bf");
}

TEST(Rtf, a_long_run_of_two_byte_characters_is_not_torn) {
  std::string bytes = "x";
  std::string expected = "x";
  for (int i = 0; i < 40000; ++i) {
    bytes += "\xd6\xd0";
    expected += "\u4e2d";
  }
  EXPECT_EQ(main_text("{\\f1 " + bytes + "}"), expected);
}

TEST(Rtf, the_far_east_font_of_a_run_tells_its_code_page) {
  EXPECT_EQ(main_text("{\\loch\\af0\\hich\\af0\\dbch\\af1\\f0\\'d6\\'d0}"), "\u4e2d");
  EXPECT_EQ(main_text("{\\hich\\af0\\dbch\\af1\\loch\\f0\\'e9}"), "\u00e9");
}

TEST(Rtf, chinese_in_a_western_font_of_a_chinese_document_is_read) {
  std::string const head =
      "{\\rtf1\\ansi\\ansicpg936\\deff0{\\fonttbl{\\f0\\fcharset0 Times New Roman;}}";
  EXPECT_EQ(parse_bytes(head + "\\'d6\\'d0 caf\\'e9}").main(), "\u4e2d caf\u00e9");
}

TEST(Rtf, long_chinese_in_a_western_font_is_not_torn) {
  std::string const head =
      "{\\rtf1\\ansi\\ansicpg936\\deff0{\\fonttbl{\\f0\\fcharset0 Times New Roman;}}";
  for (std::string const shift : {"", "x"}) {
    std::string bytes;
    std::string expected = shift;
    for (int i = 0; i < 20000; ++i) {
      bytes += "\\'d6\\'d0";
      expected += "\u4e2d";
    }
    EXPECT_EQ(parse_bytes(head + shift + bytes + "}").main(), expected);
  }
}

TEST(Rtf, text_in_utf8_is_read) {
  EXPECT_EQ(parse_bytes("{\\rtf1\\ansi\\ansicpg65001 \\'e4\\'b8\\'ad\u56fd}").main(),
            "\u4e2d\u56fd");
}

TEST(Rtf, characters_of_a_symbol_font_are_no_text) {
  EXPECT_EQ(main_text("a{\\f3\\'b7}b\\u61623?c"), "a b c");
}

TEST(Rtf, a_unicode_character_replaces_what_stands_for_it) {
  EXPECT_EQ(main_text("\\u20013?\\uc2\\u22269\\'b9\\'fax\\uc0\\u25991 y"), "\u4e2d\u56fdx\u6587y");
}

TEST(Rtf, what_a_skip_counts_goes_back_with_its_group) {
  EXPECT_EQ(main_text("{\\uc0\\u20013}\\u22269?x"), "\u4e2d\u56fdx");
}

TEST(Rtf, a_group_ends_a_skip) {
  EXPECT_EQ(main_text("{\\uc5\\u20013}x"), "\u4e2dx");
}

TEST(Rtf, negative_values_and_pairs_are_characters) {
  EXPECT_EQ(main_text("\\u-28589?\\u-10179?\\u-8704?\\u128512?"), "\u9053\U0001f600\U0001f600");
}

TEST(Rtf, half_a_pair_is_replaced) {
  EXPECT_EQ(main_text("a\\u-10240?b\\u-9216?"), "a\ufffdb\ufffd");
}

TEST(Rtf, of_two_branches_the_one_in_unicode_is_read) {
  EXPECT_EQ(main_text("a{\\upr{old}{\\*\\ud{\\u20013?}}}b"), "a\u4e2db");
}

TEST(Rtf, headers_and_footers_are_of_their_kind) {
  auto const parsed = parse("{\\header top}{\\footerf{\\b bottom}}body");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "top\nbottom");
  EXPECT_EQ(parsed.main(), "body");
}

TEST(Rtf, notes_are_of_their_kinds) {
  auto const parsed = parse(
      "a{\\footnote foot}b{\\footnote\\ftnalt end}c{\\*\\atnauthor me}{\\*\\annotation said}");
  EXPECT_EQ(parsed.main(), "abc");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_fn), "foot");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_en), "end");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "said");
}

TEST(Rtf, text_boxes_are_main_text) {
  EXPECT_EQ(main_text("a\\par{\\shp{\\*\\shpinst\\shpleft0{\\sp{\\sn fill}{\\sv 7}}"
                      "{\\shptxt\\pard box\\par}}{\\shprslt old}}b"),
            "a\nbox\nb");
  EXPECT_EQ(main_text("a\\par{\\*\\do\\dobxpage{\\dptxbxtext\\pard box\\par}}b"), "a\nbox\nb");
}

TEST(Rtf, a_text_box_in_a_group_of_shapes_is_read) {
  EXPECT_EQ(main_text("{\\shpgrp{\\*\\shpinst{\\shp{\\*\\shpinst{\\shptxt box}}}}}"), "box");
}

TEST(Rtf, a_text_box_in_a_header_is_header) {
  EXPECT_EQ(kind_text(Orlec::ParseTextType_hf, "{\\header{\\shp{\\*\\shpinst{\\shptxt box}}}}"),
            "box");
}

TEST(Rtf, word_art_is_text_and_the_description_of_a_shape_is_told) {
  auto const parsed = parse(
      "{\\shp{\\*\\shpinst{\\sp{\\sn gtextUNICODE}{\\sv Grand}}{\\sp{\\sn wzDescription}{\\sv a "
      "sign}}{\\sp{\\sn wzName}{\\sv no}}}}");
  EXPECT_EQ(parsed.main(), "Grand");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "a sign");
}

TEST(Rtf, of_a_field_the_result_is_read_and_the_address_of_a_link_told) {
  auto const parsed = parse(
      "{\\field{\\*\\fldinst{ HYPERLINK \"http://a.example/\" }}{\\fldrslt{here}}} "
      "{\\field{\\*\\fldinst PAGE}{\\fldrslt 3}}{\\field{\\*\\fldinst HYPERLINK \\\\l \"mark\"}"
      "{\\fldrslt !}}");
  EXPECT_EQ(parsed.main(), "here 3!");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "http://a.example/");
}

TEST(Rtf, a_link_of_any_length_is_cut_between_characters) {
  for (int shift = 0; shift < 3; ++shift) {
    std::string address(static_cast<std::size_t>(shift), 'x');
    for (int i = 0; i < 6000; ++i) {
      address += "\\u20013?";
    }
    auto const other = parse_bytes("{\\rtf1 {\\field{\\*\\fldinst HYPERLINK \"" + address +
                                   "\"}{\\fldrslt link}}}")
                           .kind(Orlec::ParseTextType_other);
    EXPECT_GT(other.size(), 16000U);
    EXPECT_EQ(other.find("\uFFFD"), std::string::npos);
    EXPECT_TRUE(other.ends_with("\u4e2d"));
  }
}

TEST(Rtf, form_fields_are_control_text) {
  auto const parsed = parse(
      "{\\field{\\*\\fldinst FORMTEXT {\\*\\formfield{\\fftype0{\\*\\ffname Name}{\\*\\ffdeftext "
      "Li}{\\*\\ffhelptext Your name}{\\*\\ffl one}}}}{\\fldrslt Wei}}");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "Name\nLi\nYour name\none");
  EXPECT_EQ(parsed.main(), "Wei");
}

TEST(Rtf, information_is_property) {
  auto const parsed = parse(
      "{\\info{\\title A{\\b  title}}{\\author Li}{\\doccomm said}{\\creatim\\yr2005\\mo1\\dy2"
      "\\hr3\\min4}\\nofpages7{\\*\\unknown x}}{\\*\\userprops{\\propname Case}\\proptype30"
      "{\\staticval 12}}");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_property),
            "title: A title\ncreator: Li\ndescription: said\ncreated: 2005-01-02T03:04\nCase: 12");
  EXPECT_EQ(parsed.main(), "");
}

TEST(Rtf, information_is_in_the_code_page_of_the_document) {
  EXPECT_EQ(parse_bytes("{\\rtf1\\ansi\\ansicpg932\\deff0{\\fonttbl{\\f0\\fcharset0 A;}}"
                        "{\\info{\\title \\'83\\'5e}}}")
                .kind(Orlec::ParseTextType_property),
            "title: \u30bf");
}

TEST(Rtf, information_in_unicode_is_taken_in_place_of_the_other) {
  EXPECT_EQ(kind_text(Orlec::ParseTextType_property,
                      "{\\info{\\upr{\\author D?}{\\*\\ud\\uc0{\\author D{\\uc1\\u246?}}}}}"),
            "creator: D\u00f6");
}

TEST(Rtf, a_destination_that_is_not_known_is_left_out) {
  EXPECT_EQ(main_text("a{\\*\\somethingnew text{\\footnote x}}b{\\somethingelse c}"), "abc");
}

TEST(Rtf, tables_of_styles_and_lists_are_left_out) {
  EXPECT_EQ(main_text("{\\stylesheet{\\s0 Normal;}}{\\*\\listtable{\\list{\\listname x;}}}a"), "a");
}

TEST(Rtf, deleted_text_is_left_out) {
  EXPECT_EQ(main_text("a{\\deleted b}{\\deleted\\deleted0 c}\\deleted d\\plain e"), "ace");
}

TEST(Rtf, hidden_text_is_read) {
  EXPECT_EQ(main_text("a{\\v b}c"), "abc");
}

TEST(Rtf, the_numbers_of_lists_are_read) {
  EXPECT_EQ(main_text("{\\listtext 1.\\tab}one\\par{\\pntext 2.\\tab}two{\\*\\pn{\\pntxta .}}"),
            "1.\tone\n2.\ttwo");
}

TEST(Rtf, formulas_are_read) {
  EXPECT_EQ(main_text("{\\mmath{\\*\\moMath{\\mf{\\mfPr{\\mtype x}}{\\mnum{\\mr a}}{\\mden{\\mr "
                      "b}}}}{\\mmathPict{\\pict 00}}}"),
            "ab");
}

TEST(Rtf, binary_data_are_no_syntax) {
  EXPECT_EQ(main_text("a{\\pict\\bin5 }}{\\{}b"), "ab");
}

TEST(Rtf, a_message_in_html_is_read_as_it_is_seen) {
  EXPECT_EQ(parse_bytes("{\\rtf1\\ansi\\fromhtml1{\\*\\htmltag64 <p>}\\htmlrtf{\\htmlrtf0 "
                        "Dear{\\*\\htmltag84 &nbsp;}\\htmlrtf\\~\\htmlrtf0 Li\\htmlrtf\\par}"
                        "\\htmlrtf0{\\*\\htmltag72 </p>}}")
                .main(),
            "Dear\u00a0Li");
}

TEST(Rtf, text_behind_the_document_is_left_out) {
  EXPECT_EQ(parse_bytes("{\\rtf1 a}b").main(), "a");
}

TEST(Rtf, pieces_of_a_document_are_read) {
  EXPECT_EQ(parse_bytes("{\\pard a\\par}{\\pard b\\par}").main(), "a\nb");
}

TEST(Rtf, a_document_that_breaks_off_is_damaged) {
  auto const parsed = parse_bytes("{\\rtf1 text {\\b more");
  EXPECT_EQ(parsed.main(), "text more");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the document ends within a group");
}

TEST(Rtf, binary_data_without_end_are_damage) {
  auto const parsed = parse("a\\bin2000000000 b");
  EXPECT_EQ(parsed.main(), "a");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "binary data reach beyond the end of the file");
}

TEST(Rtf, groups_that_are_too_deep_are_a_bound) {
  auto const parsed = parse("a\\par" + std::string(2000000, '{'));
  EXPECT_EQ(parsed.main(), "a");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "groups nested over 1000 deep");
}

TEST(Rtf, numbers_that_are_too_long_are_survived) {
  EXPECT_EQ(main_text("\\f99999999999999999999\\uc-9999999999999\\u99999999999999 a"), "\ufffda");
}

std::string hexadecimal(std::string const& bytes) {
  std::string digits;
  for (char const byte : bytes) {
    auto const value = static_cast<unsigned char>(byte);
    digits += "0123456789abcdef"[value >> 4U];
    digits += "0123456789ABCDEF"[value & 15U];
    digits += digits.size() % 64 == 0 ? "\r\n" : "";
  }
  return digits;
}

std::string number(std::size_t value) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    bytes += static_cast<char>(value >> shift & 0xFFU);
  }
  return bytes;
}

std::string counted(std::string const& text) {
  return text.empty() ? number(0) : number(text.size() + 1) + text + '\0';
}

/// An object as it was before compound files.
std::string embedded(std::string const& class_name, std::string const& content, int kind = 2) {
  return number(0x501) + number(static_cast<std::size_t>(kind)) + counted(class_name) +
         counted("") + counted("") + number(content.size()) + content;
}

std::string package(std::string const& name, std::string const& content) {
  std::string const terminated = name + '\0';
  return std::string("\2\0", 2) + terminated + terminated + std::string("\0\0\3\0", 4) +
         number(terminated.size()) + terminated + number(content.size()) + content;
}

std::string object(std::string const& data) {
  return "{\\object\\objemb{\\*\\objclass X}{\\*\\objdata " + data + "}{\\result seen}}";
}

TEST(Rtf, an_embedded_file_is_read_behind_the_text) {
  auto const parsed = parse("a " + object(hexadecimal(embedded("X", "{\\rtf1 inner}"))) + " b");
  EXPECT_EQ(parsed.main(), "a seen b\ninner");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Rtf, a_packaged_file_is_read) {
  EXPECT_EQ(main_text(object(hexadecimal(embedded("Package", package("a.txt", "inner text"))))),
            "seen\ninner text");
}

TEST(Rtf, an_object_in_binary_is_read) {
  auto const data = embedded("X", "{\\rtf1 inner}");
  EXPECT_EQ(main_text(object("\\bin" + std::to_string(data.size()) + " " + data)), "seen\ninner");
}

TEST(Rtf, what_stands_between_the_digits_of_an_object_is_passed_over) {
  auto digits = hexadecimal(embedded("X", "{\\rtf1 inner}"));
  digits.insert(41, "{\\*\\junk 0123}\\par z{\\b ");
  digits.insert(80, "}");
  EXPECT_EQ(main_text(object(digits)), "seen\ninner");
}

TEST(Rtf, an_object_without_a_header_is_read) {
  EXPECT_EQ(main_text(object(hexadecimal("{\\rtf1 inner}"))), "seen\ninner");
}

TEST(Rtf, a_linked_object_has_nothing_to_be_read) {
  EXPECT_EQ(main_text(object(hexadecimal(embedded("X", "{\\rtf1 inner}", 1)))), "seen");
}

TEST(Rtf, objects_in_each_other_are_bounded) {
  std::string inner = "{\\rtf1 deepest}";
  for (int depth = 0; depth < 4; ++depth) {
    inner = document(object(hexadecimal(embedded("X", inner))));
  }
  Orlec::ParseLimits limits;
  limits.i_nesting = 2;
  test::ScopedLimits const scoped(limits);
  auto const parsed = parse_bytes(inner);
  EXPECT_EQ(parsed.main(), "seen\nseen\nseen");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(Rtf, data_of_objects_in_each_other_are_read_once) {
  std::string body;
  for (int i = 0; i < 900; ++i) {
    body += "{\\objdata 00";
  }
  EXPECT_EQ(parse(body + std::string(200000, '0')).outcome, ParseOutcome::damaged);
}

std::string everything() {
  return document(
      "{\\info{\\title T}\\nofpages2}{\\header h}a\\'e9\\u20013?{\\f1\\'d6\\'d0}{\\footnote n}"
      "{\\field{\\*\\fldinst HYPERLINK \"u\"}{\\fldrslt r}}{\\upr{x}{\\*\\ud y}}"
      "{\\shp{\\*\\shpinst{\\sp{\\sn wzDescription}{\\sv d}}{\\shptxt b}}}{\\pict\\bin3 abc}" +
      object(hexadecimal(embedded("Package", package("a.txt", "inner")))));
}

TEST(Rtf, pages_and_pictures_are_counted) {
  auto const bytes = everything();
  test::MemoryReader reader(bytes, "document.rtf");
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
  ASSERT_NE(parser, nullptr);
  parser->InitFile();
  auto const counts = parser->GetCounts();
  EXPECT_EQ(counts.i_page, 2);
  EXPECT_EQ(counts.i_img, 1);
  EXPECT_EQ(counts.i_embed, 1);
}

TEST(Rtf, a_document_cut_anywhere_is_survived) {
  auto const bytes = everything();
  for (std::size_t length = 8; length < bytes.size(); ++length) {
    EXPECT_EQ(parse_bytes(bytes.substr(0, length)).outcome, ParseOutcome::damaged) << length;
  }
}

TEST(Rtf, random_changes_are_survived) {
  auto const bytes = everything();
  std::mt19937 random(11);
  for (int round = 0; round < 2000; ++round) {
    auto changed = bytes;
    for (int i = 0; i < 4; ++i) {
      changed[6 + random() % (changed.size() - 6)] = static_cast<char>(random() % 256);
    }
    parse_bytes(changed);
  }
}

}  // namespace
