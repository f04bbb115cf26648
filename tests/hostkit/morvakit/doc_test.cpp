#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/morvakit/word_builder.h"

namespace {

using namespace std::string_literals;
using Orlec::ParseOutcome;
using test::little;
using test::parse_bytes;
using test::WordBuilder;
using test::WordRun;

/// A property of one byte, of two, and of four.
std::string flag(unsigned number, unsigned value = 1) {
  return little(number, 2) + little(value, 1);
}
std::string number_property(unsigned number, unsigned value) {
  return little(number, 2) + little(value, 4);
}

std::string const deleted = flag(0x0800);
std::string const row_end = flag(0x2416) + flag(0x2417);
std::string const in_table = flag(0x2416);

std::string main_text(std::u16string_view text) {
  return parse_bytes(WordBuilder().add(text).bytes()).main();
}

/// Two runs, of which the second has that form.
std::string after_plain(WordRun const& run) {
  return parse_bytes(WordBuilder().add(u"plain ").add(u"other", run).bytes()).main();
}

/// A string with its length in front, and with a zero behind it where `is_ended`.
std::string counted(std::u16string_view text, bool is_ended) {
  std::string bytes = little(text.size(), 2);
  for (char16_t const unit : text) {
    bytes += little(unit, 2);
  }
  return bytes + (is_ended ? "\0\0"s : ""s);
}

}  // namespace

TEST(Doc, paragraphs_are_lines) {
  EXPECT_EQ(main_text(u"one\r二\r"), "one\n二");
}

TEST(Doc, the_outcome_of_a_document_with_text_is_text) {
  auto const parsed = parse_bytes(WordBuilder().add(u"one\r").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Doc, a_document_without_text_has_an_empty_main_text) {
  EXPECT_EQ(parse_bytes(WordBuilder().add(u"\r").bytes()).outcome, ParseOutcome::no_text);
}

TEST(Doc, text_in_bytes_is_in_the_western_code_page) {
  WordRun run;
  run.in_bytes = true;
  EXPECT_EQ(parse_bytes(WordBuilder().add(u"caf\xE9 \x93q\x94\r", run).bytes()).main(), "café “q”");
}

TEST(Doc, pieces_follow_the_order_of_the_text_not_of_the_stream) {
  WordBuilder document;
  WordRun run;
  run.in_bytes = true;
  document.is_in_order = false;
  EXPECT_EQ(parse_bytes(document.add(u"one ").add(u"two ", run).add(u"three\r").bytes()).main(),
            "one two three");
}

TEST(Doc, a_pair_of_surrogates_may_be_split_between_pieces) {
  WordBuilder document;
  document.add({u"\xD840", 1}).add({u"\xDC0B\r", 2});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "\U0002000B");
}

TEST(Doc, half_a_pair_becomes_a_replacement) {
  EXPECT_EQ(main_text({u"a\xD840\rb", 4}), "a\uFFFD\nb");
}

TEST(Doc, deleted_text_is_left_out) {
  EXPECT_EQ(after_plain({.characters = deleted}), "plain ");
}

TEST(Doc, text_of_which_the_deletion_was_undone_is_kept) {
  EXPECT_EQ(after_plain({.characters = flag(0x0800, 0)}), "plain other");
}

TEST(Doc, properties_of_every_size_are_passed_over) {
  auto const many = little(0x4A43, 2) + "xx" + little(0x6870, 2) + "xxxx" + little(0xCA47, 2) +
                    little(3, 1) + "xxx" + little(0xE000, 2) + "xxx";
  EXPECT_EQ(after_plain({.characters = many + deleted}), "plain ");
}

TEST(Doc, a_piece_that_is_marked_as_deleted_is_left_out) {
  EXPECT_EQ(after_plain({.change = 0x41U << 1U | 0x100U}), "plain ");
}

TEST(Doc, a_piece_whose_list_of_changes_deletes_it_is_left_out) {
  WordBuilder document;
  document.changes = {flag(0x0835), deleted};
  document.add(u"a").add(u"b", {.change = 0U << 1U | 1U}).add(u"c", {.change = 1U << 1U | 1U});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "ab");
}

TEST(Doc, the_end_of_a_paragraph_stays_where_it_is_marked_as_deleted) {
  WordBuilder document;
  document.add(u"a").add(u"x\r", {.characters = deleted}).add(u"b");
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "a\nb");
}

TEST(Doc, hidden_text_is_kept) {
  EXPECT_EQ(after_plain({.characters = flag(0x083C)}), "plain other");
}

TEST(Doc, of_a_field_the_result_is_kept_and_the_code_left_out) {
  EXPECT_EQ(main_text(u"a \x13 PAGE \x14"
                      u"7\x15 b\r"),
            "a 7 b");
}

TEST(Doc, fields_lie_within_each_other) {
  EXPECT_EQ(main_text(u"a\x13 IF \x13 X \x14"
                      u"code\x15 \x14r\x13 Y \x14s\x15t\x15 b\r"),
            "arst b");
}

TEST(Doc, a_field_without_an_end_does_not_swallow_the_next_paragraph) {
  EXPECT_EQ(main_text(u"a\x13 PAGE \rb\r"), "a\nb");
}

TEST(Doc, ends_and_separators_without_a_field_are_passed_over) {
  EXPECT_EQ(main_text(u"a\x15"
                      u"b\x14"
                      u"c\r"),
            "abc");
}

TEST(Doc, fields_nested_without_bound_are_survived) {
  EXPECT_EQ(main_text(std::u16string(100000, u'\x13') + u"a\rb\r"), "b");
}

TEST(Doc, the_address_behind_a_link_is_other_text) {
  auto const parsed =
      parse_bytes(WordBuilder()
                      .add(u"\x13 HYPERLINK \"http://a.example/\" \\o \"tip\" \x14here\x15\r")
                      .bytes());
  EXPECT_EQ(parsed.main(), "here");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "http://a.example/");
}

TEST(Doc, a_link_within_the_document_has_no_address) {
  auto const parsed =
      parse_bytes(WordBuilder().add(u"\x13 HYPERLINK \\l \"place\" \x14here\x15\r").bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "");
}

TEST(Doc, a_reading_above_characters_is_other_text) {
  auto const parsed = parse_bytes(
      WordBuilder()
          .add(u"a\x13 EQ \\* jc2 \\* \"Font:X\" \\* hps10 \\o\\ad(\\s\\up 9(かん),漢)\x15"
               u"b\r")
          .bytes());
  EXPECT_EQ(parsed.main(), "a漢b");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "かん");
}

TEST(Doc, characters_set_around_or_above_others_are_text) {
  EXPECT_EQ(main_text(u"\x13 eq \\o\\ac(○,注)\x15 \x13 EQ \\f(1,\\s\\up8(2))\x15\r"), "○注 12");
}

TEST(Doc, a_stroke_in_a_formula_keeps_the_character_behind_it) {
  EXPECT_EQ(main_text(u"\x13 EQ \\o(a\\,b\\)c)\x15\r"), "a,b)c");
  EXPECT_EQ(main_text(u"a\x13 EQ \\o(b\\\x15\r"), "ab");
  EXPECT_EQ(main_text(u"\x13 EQ \\o(a)\\é\x15\r"), "a");
}

TEST(Doc, breaks_tabs_and_hyphens) {
  EXPECT_EQ(main_text(u"a\vb\fc\x0E"
                      u"d\te\x1E"
                      u"f\x1Fg\r"),
            "a\nb\nc\nd\te-fg");
}

TEST(Doc, other_control_characters_are_left_out) {
  EXPECT_EQ(main_text(std::u16string(u"a\0b\x02\x03\x04\x05\x06\x08"
                                     u"c\x19\r",
                                     12)),
            "abc");
}

TEST(Doc, cells_and_rows) {
  WordBuilder document;
  document.add(u"a\ab\a", {.paragraph = in_table}).add(u"\a", {.paragraph = row_end});
  document.add(u"c\rd\a\a", {.paragraph = in_table}).add(u"\a", {.paragraph = row_end});
  document.add(u"end\r", {.paragraph = flag(0x2416, 0)});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "a\tb\nc\nd\nend");
}

TEST(Doc, an_empty_cell_does_not_end_its_row) {
  WordBuilder document;
  document.add(u"a\a\ab\a", {.paragraph = in_table}).add(u"\a", {.paragraph = row_end});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "a\tb");
}

TEST(Doc, without_formatting_a_row_ends_behind_the_end_of_a_cell) {
  EXPECT_EQ(main_text(u"a\ab\a\ac\ad\a\ae\r"), "a\tb\nc\td\ne");
}

TEST(Doc, a_row_may_keep_its_formatting_in_the_stream_of_data) {
  WordBuilder document;
  document.data = std::string(100, '\0') + little(row_end.size(), 2) + row_end;
  document.add(u"a\a\ab\a", {.paragraph = in_table})
      .add(u"\a", {.paragraph = number_property(0x6646, 100)})
      .add(u"c\a", {.paragraph = in_table});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "a\tb\nc");
}

TEST(Doc, formatting_in_the_stream_of_data_does_not_go_round_in_circles) {
  WordBuilder document;
  document.data = little(6, 2) + number_property(0x6646, 0);
  document.add(u"a\ab\r", {.paragraph = number_property(0x6646, 0)});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "a\tb");
}

TEST(Doc, a_table_in_a_cell) {
  WordBuilder document;
  document.add(u"x\r", {.paragraph = in_table + flag(0x244B)});
  document.add(u"y\r", {.paragraph = in_table + flag(0x244B)});
  document.add(u"\r", {.paragraph = in_table + flag(0x244B) + flag(0x244C)});
  document.add(u"z\a", {.paragraph = in_table}).add(u"\a", {.paragraph = row_end});
  EXPECT_EQ(parse_bytes(document.bytes()).main(), "x\ty\nz");
}

TEST(Doc, a_symbol_that_is_a_character_is_text) {
  EXPECT_EQ(parse_bytes(
                WordBuilder()
                    .add(u"(a")
                    .add(u"(", {.characters = little(0x6A09, 2) + little(0, 2) + little(0x2713, 2)})
                    .bytes())
                .main(),
            "(a✓");
}

TEST(Doc, characters_of_symbol_fonts_are_blanks) {
  EXPECT_EQ(main_text(u"a\xF0B7"
                      u"b\r"),
            "a b");
}

TEST(Doc, each_story_has_its_kind) {
  WordBuilder document;
  document.add(u"body\r");
  document.add_to(test::story_footnotes, u"footnote\r");
  document.add_to(test::story_headers, u"header\r");
  document.add_to(test::story_comments, u"comment\r");
  document.add_to(test::story_endnotes, u"endnote\r");
  document.add_to(test::story_text_boxes, u"box\r");
  document.add_to(test::story_header_text_boxes, u"header box\r");
  auto const parsed = parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body\nbox");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_fn), "footnote");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "header\nheader box");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "comment");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_en), "endnote");
}

TEST(Doc, what_separates_notes_is_no_header) {
  WordBuilder document;
  document.add(u"body\r").add_to(test::story_headers, u"separator\rheader\r");
  document.tables[11] = little(0, 4) + little(10, 4) + little(10, 4) + little(10, 4) +
                        little(10, 4) + little(10, 4) + little(10, 4) + little(17, 4);
  EXPECT_EQ(parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "header");
}

TEST(Doc, text_that_no_story_lays_claim_to_is_other_text) {
  auto document = WordBuilder().add(u"shown\r").add(u"hidden\r");
  auto stream = document.text_stream();
  stream.replace(0x4C, 4, little(6, 4));
  auto const parsed =
      parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", document.table_stream()}}));
  EXPECT_EQ(parsed.main(), "shown");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "hidden");
}

TEST(Doc, pictures_in_the_text_are_counted) {
  WordBuilder document;
  document.add(u"\x01", {.characters = number_property(0x6A03, 0)});
  document.add(u"\x01", {.characters = number_property(0x6A03, 0) + flag(0x080A)});
  EXPECT_EQ(parse_bytes(document.bytes()).counts.i_img, 1);
}

TEST(Doc, a_form_field_shows_its_default_and_its_help) {
  WordBuilder document;
  auto const field = little(0xFFFFFFFF, 4) + little(0, 6) + counted(u"Name", true) +
                     counted(u"默认", true) + counted(u"", true) + counted(u"help", true) +
                     counted(u"status", true) + counted(u"Macro", true) + counted(u"", true);
  document.data = little(68 + field.size(), 4) + little(68, 2) + std::string(62, '\0') + field;
  document.add(u"\x13 FORMTEXT ")
      .add(u"\x01", {.characters = flag(0x0806) + number_property(0x6A03, 0)})
      .add(u"\x14result\x15\r");
  auto const parsed = parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "result");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "默认\nhelp\nstatus");
  EXPECT_EQ(parsed.counts.i_img, 0);
}

TEST(Doc, a_form_field_shows_the_items_of_its_list) {
  WordBuilder document;
  auto const field = little(0xFFFFFFFF, 4) + little(2, 6) + counted(u"Name", true) + little(0, 2) +
                     counted(u"", true) + counted(u"", true) + counted(u"", true) +
                     counted(u"", true) + counted(u"", true) + little(0xFFFF, 2) + little(2, 4) +
                     little(0, 2) + counted(u"red", false) + counted(u"green", false);
  document.data = little(68 + field.size(), 4) + little(68, 2) + std::string(62, '\0') + field;
  document.add(u"\x01", {.characters = flag(0x0806) + number_property(0x6A03, 0)});
  EXPECT_EQ(parse_bytes(document.bytes()).kind(Orlec::ParseTextType_control), "red\ngreen");
}

namespace {

std::string record(unsigned version, unsigned instance, unsigned type, std::string const& content) {
  return little(version | instance << 4U, 2) + little(type, 2) + little(content.size(), 4) +
         content;
}

std::string wide(std::u16string_view text) {
  return counted(text, true).substr(2);
}

std::string drawings() {
  auto const pictures = record(2, 0, 0xF007, std::string(24, '\0') + little(1, 4)) +
                        record(2, 0, 0xF007, std::string(28, '\0'));
  auto const group = record(15, 0, 0xF000, record(15, 2, 0xF001, pictures));
  auto const art = wide(u"word art");
  auto const description = wide(u"a picture of a cat");
  auto const options = little(0x80C0, 2) + little(art.size(), 4) + little(0x0081, 2) +
                       little(7, 4) + little(0x8381, 2) + little(description.size(), 4) + art +
                       description;
  return group + "\0"s +
         record(15, 0, 0xF002, record(15, 0, 0xF004, record(3, 3, 0xF00B, options)));
}

}  // namespace

TEST(Doc, word_art_is_text_and_descriptions_are_other_text) {
  WordBuilder document;
  document.add(u"body\r").tables[50] = drawings();
  auto const parsed = parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body\nword art");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "a picture of a cat");
}

TEST(Doc, the_description_of_a_picture_in_the_text_is_other_text) {
  WordBuilder document;
  auto const description = wide(u"a cat");
  auto const shape =
      record(15, 0, 0xF004,
             record(3, 1, 0xF00B, little(0x8381, 2) + little(description.size(), 4) + description));
  auto const head = little(68, 2) + little(0x66, 2) + std::string(60, '\0') + "\3c:x"s;
  document.data = little(4 + head.size() + shape.size(), 4) + head + shape;
  document.add(u"\x01", {.characters = number_property(0x6A03, 0)});
  EXPECT_EQ(parse_bytes(document.bytes()).kind(Orlec::ParseTextType_other), "a cat");
}

TEST(Doc, picture_marks_that_share_their_data_do_not_make_a_small_file_long) {
  WordBuilder document;
  auto const description = wide(std::u16string(10000, u'x'));
  auto const shape =
      record(15, 0, 0xF004,
             record(3, 1, 0xF00B, little(0x8381, 2) + little(description.size(), 4) + description));
  document.data = little(68 + shape.size(), 4) + little(68, 2) + std::string(62, '\0') + shape;
  document.add(std::u16string(10000, u'\x01'), {.characters = number_property(0x6A03, 0)});
  auto const parsed = parse_bytes(document.bytes());
  EXPECT_LT(parsed.kind(Orlec::ParseTextType_other).size(), 50000U);
  EXPECT_EQ(parsed.counts.i_img, 10000);
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "pictures share their data");
}

TEST(Doc, floating_pictures_that_are_in_use_are_counted) {
  WordBuilder document;
  document.add(u"body\r").tables[50] = drawings();
  EXPECT_EQ(parse_bytes(document.bytes()).counts.i_img, 1);
}

TEST(Doc, building_blocks_are_other_text) {
  WordBuilder blocks;
  auto const within = blocks.add(u"block\r").text_stream();
  WordBuilder document;
  document.add(u"body\r");
  auto const own = document.text_stream();
  document.next_header = static_cast<unsigned>(own.size() / 512);
  auto stream = document.text_stream();
  auto header = within.substr(0, 2048);
  // Without pieces, the text stands where the header says.
  auto const begin = stream.size() + 2048;
  header.replace(24, 8, little(begin, 4) + little(begin + 6, 4));
  header.replace(0x9A + 8 * 33, 8, std::string(8, '\0'));
  auto const parsed = parse_bytes(test::make_ole(
      {{"WordDocument", stream + header + "block\r"}, {"1Table", document.table_stream()}}));
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "block");
}

TEST(Doc, documents_embedded_as_storages_follow) {
  WordBuilder inner;
  inner.add(u"inner\r");
  WordBuilder document;
  document.add(u"outer\r");
  document.streams = {{"ObjectPool/_1/WordDocument", inner.text_stream()},
                      {"ObjectPool/_1/1Table", inner.table_stream()}};
  auto const parsed = parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "outer\ninner");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

namespace {

/// A document of Word 6, all of whose text is one piece.
std::string old_word(std::string const& text, unsigned language, unsigned flags = 0,
                     unsigned charset = 0, std::size_t unit_size = 1) {
  std::string stream(1024, '\0');
  auto const put = [&](std::size_t at, std::string const& bytes) {
    stream.replace(at, bytes.size(), bytes);
  };
  put(0, little(0xA5DC, 2) + little(101, 2) + little(0, 2) + little(language, 2) + little(0, 2) +
             little(flags, 2));
  put(24, little(1024, 4) + little(1024 + text.size(), 4));
  put(0x34, little(text.size() / unit_size, 4));
  put(0x58 + 8 * 15, little(512, 4) + little(20, 4));
  put(512, little(20, 2) + little(10, 1) + little(0, 3) + little(charset, 1));
  return test::make_ole({{"WordDocument", stream + text + std::string(4096, '\0')}});
}

}  // namespace

TEST(Doc, old_text_is_in_the_code_page_of_its_language) {
  EXPECT_EQ(parse_bytes(old_word("\xD0\xF3\xF1\r", 0x0419)).main(), "Рус");
  EXPECT_EQ(parse_bytes(old_word("\xD6\xD0\xCE\xC4\r", 0x0804)).main(), "中文");
  EXPECT_EQ(parse_bytes(old_word("\xA4\xA4\xA4\xE5\r", 0x0404)).main(), "中文");
  EXPECT_EQ(parse_bytes(old_word("\x93\xFA\x96\x7B\r", 0x0411)).main(), "日本");
  EXPECT_EQ(parse_bytes(old_word("caf\xE9\r", 0x0409)).main(), "café");
}

TEST(Doc, old_text_may_be_in_the_code_page_of_its_font) {
  EXPECT_EQ(parse_bytes(old_word("\xD0\xF3\xF1\r", 0x0409, 0, 204)).main(), "Рус");
}

TEST(Doc, old_text_may_be_wide) {
  EXPECT_EQ(parse_bytes(old_word("\x2D\x4E\x87\x65\r\0"s, 0x0804, 0x1000, 0, 2)).main(), "中文");
}

TEST(Doc, old_formatting_tells_rows_and_deleted_text) {
  std::string stream(1024, '\0');
  auto const put = [&](std::size_t at, std::string const& bytes) {
    stream.replace(at, bytes.size(), bytes);
  };
  auto const text =
      "a\a\ab\a"
      "\a"
      "gone"
      "kept\r"s;
  put(0, little(0xA5DC, 2) + little(101, 2));
  put(24, little(1024, 4) + little(1024 + text.size(), 4));
  put(0x34, little(text.size(), 4));
  stream += text;
  stream.resize(2048, '\0');
  // Bold, some tab stops, then what matters.
  auto const run = [](std::string const& list, std::size_t size) { return little(size, 1) + list; };
  std::string characters = little(1030, 4) + little(1034, 4) + little(32, 1);
  characters.resize(64, '\0');
  characters += run("\x55\1\x41\1"s, 4);
  characters.resize(511, '\0');
  std::string paragraphs = little(1024, 4) + little(1029, 4) + little(1030, 4) + little(1039, 4);
  paragraphs += little(64, 7) + little(80, 7) + little(0, 7);
  paragraphs.resize(128, '\0');
  paragraphs += run("\0\0\x18\1"s, 2);
  paragraphs.resize(160, '\0');
  paragraphs += run("\0\0\x0F\2\0\0\x18\1\x19\1"s, 5);
  paragraphs.resize(511, '\0');
  stream += characters + '\1' + paragraphs + '\3';
  put(512, little(1030, 4) + little(1034, 4) + little(4, 2));
  put(532, little(1024, 4) + little(1039, 4) + little(5, 2));
  put(0x58 + 8 * 12, little(512, 4) + little(10, 4) + little(532, 4) + little(10, 4));
  EXPECT_EQ(
      parse_bytes(test::make_ole({{"WordDocument", stream + std::string(4096, '\0')}})).main(),
      "a\tb\nkept");
}

TEST(Doc, a_document_with_a_password_is_encrypted) {
  auto stream = WordBuilder().add(u"secret\r").text_stream();
  stream[11] = static_cast<char>(stream[11] | 1);
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", stream}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::encrypted);
  EXPECT_EQ(parsed.main(), "");
}

TEST(Doc, without_its_tables_the_text_is_read_and_the_document_damaged) {
  WordRun run;
  run.in_bytes = true;
  auto const parsed = parse_bytes(
      test::make_ole({{"WordDocument", WordBuilder().add(u"some text\r", run).text_stream()}}));
  EXPECT_EQ(parsed.main(), "some text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the stream of tables is missing");
}

TEST(Doc, without_its_pieces_wide_text_is_told_by_its_zeros) {
  WordBuilder document;
  document.add(u"some text\r");
  auto const stream = document.text_stream();
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", "x"}}));
  EXPECT_EQ(parsed.main(), "some text");
  EXPECT_EQ(parsed.reason, "the table of the text's pieces is missing");
}

TEST(Doc, without_a_directory_the_text_behind_the_first_header_is_read) {
  WordBuilder document;
  auto const stream = document.add(u"some text\r").text_stream() + std::string(4096, '\0');
  auto bytes = test::make_ole({{"WordDocument", stream}});
  bytes.resize(512 + stream.size());
  auto const parsed = parse_bytes(bytes);
  EXPECT_EQ(parsed.main(), "some text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the OLE2 directory is missing");
}

TEST(Doc, without_its_pieces_the_text_lies_between_zeros) {
  WordBuilder document;
  auto stream = document.add(u"some text\r").text_stream();
  stream.replace(24, 4, little(1536, 4));
  stream.replace(28, 4, little(stream.size(), 4));
  EXPECT_EQ(parse_bytes(test::make_ole({{"WordDocument", stream}})).main(), "some text");
}

TEST(Doc, pieces_out_of_order_end_the_text) {
  WordBuilder document;
  document.add(u"one ").add(u"two ").add(u"three\r");
  document.text_stream();
  auto stream = document.text_stream();
  auto table = document.table_stream();
  auto const pieces = table.find("\2" + little(4 * 4 + 3 * 8, 4));
  ASSERT_NE(pieces, std::string::npos);
  table.replace(pieces + 5 + 8, 4, little(1, 4));
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", table}}));
  EXPECT_EQ(parsed.main(), "one ");
  EXPECT_EQ(parsed.reason, "the table of the text's pieces is out of order");
}

TEST(Doc, pieces_that_overlap_do_not_make_a_small_file_long) {
  WordBuilder document;
  auto stream = document.add(u"x").text_stream() + std::string(100000, 'y');
  std::string places = little(0, 4);
  std::string entries;
  for (unsigned i = 0; i < 1000; ++i) {
    places += little((i + 1) * 100000, 4);
    entries += little(0, 2) + little(2048 * 2 | 0x40000000U, 4) + little(0, 2);
  }
  auto const table = "\2" + little(places.size() + entries.size(), 4) + places + entries;
  stream.replace(0x4C, 4, little(100000000, 4));
  stream.replace(0x9A + 8 * 33, 8, little(0, 4) + little(table.size(), 4));
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", table}}));
  EXPECT_EQ(parsed.reason, "the text's pieces overlap");
  EXPECT_LT(parsed.main().size(), 1000000U);
}

TEST(Doc, text_that_is_cut_short_is_told) {
  WordBuilder document;
  document.add(u"one").add(u"two\r");
  auto stream = document.text_stream();
  auto table = document.table_stream();
  auto const pieces = table.find("\2" + little(3 * 4 + 2 * 8, 4));
  ASSERT_NE(pieces, std::string::npos);
  table.replace(pieces + 5 + 12 + 8 + 2, 4, little(0x3000000, 4));
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", table}}));
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.reason, "the text is cut short");
}

TEST(Doc, a_stream_that_is_no_document_is_damaged) {
  auto const parsed = parse_bytes(test::make_ole({{"WordDocument", std::string(5000, 'x')}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the document's header is missing");
}

TEST(Doc, lists_over_their_bound_end_the_reading) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 64;
  test::ScopedLimits const scope(limits);
  EXPECT_EQ(parse_bytes(WordBuilder().add(u"a").add(u"b").add(u"c\r").bytes()).outcome,
            ParseOutcome::limit_reached);
}

TEST(Doc, main_text_over_its_bound_ends_the_reading) {
  Orlec::ParseLimits limits;
  limits.i_memory_chars = 4;
  test::ScopedLimits const scope(limits);
  EXPECT_EQ(parse_bytes(WordBuilder().add(u"one\rtwo\r").bytes()).outcome,
            ParseOutcome::limit_reached);
}

namespace {

/// Something of everything that the reader looks at.
WordBuilder everything() {
  WordBuilder document;
  auto const field = little(0xFFFFFFFF, 4) + little(0, 6) + counted(u"N", true) +
                     counted(u"default", true) + counted(u"", true) + counted(u"h", true);
  document.data = little(68 + field.size(), 4) + little(68, 2) + std::string(62, '\0') + field;
  document.changes = {deleted};
  document.tables[11] = little(0, 4) + std::string(24, '\0') + little(7, 4);
  document.tables[50] = drawings();
  document.add(u"one\r", {.in_bytes = true})
      .add(u"a\ab\a", {.paragraph = in_table})
      .add(u"\a", {.paragraph = number_property(0x6646, 0)})
      .add(u"\x01", {.characters = flag(0x0806) + number_property(0x6A03, 0)})
      .add(u"\x13 HYPERLINK \"u\" \x14r\x15", {.change = 1})
      .add_to(test::story_headers, u"header\r")
      .add_to(test::story_text_boxes, u"box\r");
  return document;
}

}  // namespace

TEST(Doc, a_document_cut_anywhere_is_survived) {
  auto document = everything();
  auto const stream = document.text_stream();
  auto const& table = document.table_stream();
  for (std::size_t length = 64; length < stream.size(); length += 11) {
    parse_bytes(test::make_ole({{"WordDocument", stream.substr(0, length)}, {"1Table", table}}));
  }
  for (std::size_t length = 0; length < table.size(); ++length) {
    parse_bytes(test::make_ole({{"WordDocument", stream}, {"1Table", table.substr(0, length)}}));
  }
  auto const bytes = document.bytes();
  for (std::size_t length = 0; length < bytes.size(); length += 37) {
    parse_bytes(bytes.substr(0, length));
  }
}

TEST(Doc, random_changes_are_survived) {
  auto document = everything();
  auto const stream = document.text_stream();
  auto const table = document.table_stream();
  std::mt19937 random(7);
  for (int round = 0; round < 1000; ++round) {
    auto changed_stream = stream;
    auto changed_table = table;
    for (int change = 0; change < 3; ++change) {
      auto& changed = random() % 2 == 0 ? changed_stream : changed_table;
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    parse_bytes(test::make_ole(
        {{"WordDocument", changed_stream}, {"1Table", changed_table}, {"Data", document.data}}));
  }
}
