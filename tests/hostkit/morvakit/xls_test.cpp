#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "hostkit/morvakit/biff_builder.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using namespace std::string_literals;
using Orlec::ParseOutcome;
using test::biff;
using test::biff_begin;
using test::biff_end;
using test::biff_string;
using test::BiffBook;
using test::label;
using test::little;
using test::number;
using test::number_bytes;
using test::object;
using test::old_string;
using test::place;
using test::shared;
using test::utf16;

test::Parsed parse_sheet(std::string const& records) {
  return test::parse_bytes(BiffBook().sheet("First", records).bytes());
}

std::string cells(std::string const& records) {
  return parse_sheet(records).main();
}

/// Records of shared strings, which may go on in further records.
std::string strings(std::string const& first, std::vector<std::string> const& others = {}) {
  auto records = biff(0x00fc, std::string(8, '\0') + first);
  for (auto const& other : others) {
    records += biff(0x003c, other);
  }
  return records;
}

/// A sheet with the shared string of that number.
std::string shared_string(std::string const& records, unsigned number = 0) {
  return test::parse_bytes(BiffBook().global(records).sheet("S", shared(0, 0, number)).bytes())
      .main();
}

/// A formula of no length, with that result.
std::string formula(unsigned row, unsigned column, std::string const& result, unsigned style = 0) {
  return biff(0x0006, place(row, column, style) + result + std::string(8, '\0'));
}

std::string const text_result = "\0\0\0\0\0\0\xff\xff"s;

std::string link(std::uint32_t flags, std::string const& rest) {
  return biff(0x01b8, std::string(24, '\0') + little(2, 4) + little(flags, 4) + rest);
}

std::string link_target(std::string const& record) {
  return parse_sheet(record).kind(Orlec::ParseTextType_other);
}

std::string wide_counted(std::u16string const& text) {
  return little(text.size() + 1, 4) + utf16(text) + "\0\0"s;
}

std::string const address_id = "\xe0\xc9\xea\x79\xf9\xba\xce\x11\x8c\x82\x00\xaa\x00\x4b\xa9\x0b"s;
std::string const file_id = "\x03\x03\0\0\0\0\0\0\xc0\0\0\0\0\0\0\x46"s;

/// A workbook with something of everything.
std::string full_workbook() {
  return BiffBook()
      .global(strings(biff_string("shared") + biff_string(u"\u5171\u4eab")) +
              biff(0x041e, little(164, 2) + biff_string("yyyy\\-mm")) +
              biff(0x00e0, little(0, 2) + little(164, 2)))
      .sheet("First", shared(0, 0, 0) + shared(0, 1, 1) + number(1, 0, 45467, 0) +
                          formula(1, 1, text_result) + biff(0x0207, biff_string("text")) +
                          biff(0x00bd, little(2, 2) + little(0, 2) + little(1, 2) + little(6, 4) +
                                           little(1, 2) + little(10, 4) + little(1, 2)) +
                          biff(0x0014, biff_string("&Ctop")) + object(0x19, "note") +
                          link(3, address_id + little(8, 4) + utf16(u"a:b")))
      .sheet("Second", label(0, 0, "label") + biff_begin(32) +
                           biff(0x100d, little(0, 2) + biff_string("title", 1)) + biff_end())
      .bytes();
}

}  // namespace

TEST(Xls, a_sheet_is_its_name_and_its_rows) {
  EXPECT_EQ(cells(number(0, 0, 1) + number(0, 1, 2) + number(1, 0, 3)), "First\n1\t2\n3");
}

TEST(Xls, all_types_of_cells_are_text) {
  EXPECT_EQ(cells(label(0, 0, "label") + biff(0x027e, place(0, 1) + little(7 << 2 | 2, 4)) +
                  biff(0x0205, place(0, 2) + little(1, 1) + little(0, 1)) +
                  biff(0x0205, place(0, 3) + little(0, 1) + little(0, 1)) +
                  biff(0x0205, place(0, 4) + little(0x2a, 1) + little(1, 1)) +
                  biff(0x00d6, place(0, 5) + biff_string("rich") + little(0, 2))),
            "First\nlabel\t7\tTRUE\tFALSE\t#N/A\trich");
}

TEST(Xls, packed_numbers_are_whole_or_hundredths_or_the_upper_half_of_others) {
  auto const upper_half = static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(0.5) >> 32U);
  EXPECT_EQ(
      cells(biff(0x00bd, little(0, 2) + little(0, 2) + little(0, 2) + little(5 << 2 | 2, 4) +
                             little(0, 2) + little(1234 << 2 | 3, 4) + little(0, 2) +
                             little(upper_half, 4) + little(0, 2) +
                             little(static_cast<std::uint32_t>(-3) << 2U | 2U, 4) + little(3, 2))),
      "First\n5\t12.34\t0.5\t-3");
}

TEST(Xls, formulas_show_their_results) {
  EXPECT_EQ(cells(formula(0, 0, number_bytes(2.5)) + formula(0, 1, "\1\0\1\0\0\0\xff\xff"s) +
                  formula(0, 2, "\2\0\x07\0\0\0\xff\xff"s) +
                  formula(0, 3, "\3\0\0\0\0\0\xff\xff"s) + number(0, 4, 1)),
            "First\n2.5\tTRUE\t#DIV/0!\t1");
}

TEST(Xls, the_text_of_a_formula_follows_it_behind_other_records) {
  EXPECT_EQ(cells(formula(3, 0, text_result) + biff(0x04bc, std::string(10, '\1')) +
                  biff(0x0207, biff_string("one")) + formula(3, 1, text_result) +
                  biff(0x0221, std::string(14, '\1')) + biff(0x0207, biff_string(u"\u4e8c"))),
            "First\none\t二");
}

TEST(Xls, dates_are_written_by_their_format) {
  auto const book =
      BiffBook()
          .global(biff(0x041e, little(164, 2) + biff_string("yyyy\\-mm\\-dd hh:mm")) +
                  biff(0x00e0, little(0, 2) + little(0, 2)) +
                  biff(0x00e0, little(0, 2) + little(14, 2)) +
                  biff(0x00e0, little(0, 2) + little(164, 2)))
          .sheet("First", number(0, 0, 45467, 1) + number(0, 1, 45467.5, 2) +
                              number(0, 2, 45467.5, 0) + formula(0, 3, number_bytes(45467), 1));
  EXPECT_EQ(test::parse_bytes(book.bytes()).main(),
            "First\n2024-06-24\t2024-06-24 12:00:00\t45467.5\t2024-06-24");
}

TEST(Xls, days_may_be_counted_from_1904) {
  auto const book =
      BiffBook()
          .global(biff(0x0022, little(1, 2)) + biff(0x00e0, little(0, 2) + little(14, 2)))
          .sheet("First", number(0, 0, 1));
  EXPECT_EQ(test::parse_bytes(book.bytes()).main(), "First\n1904-01-02");
}

TEST(Xls, shared_strings_are_found_by_number) {
  auto const all = strings(biff_string("zero") + biff_string(u"\u4e00"));
  EXPECT_EQ(shared_string(all, 1), "S\n一");
  EXPECT_EQ(shared_string(all, 9), "S");
}

TEST(Xls, a_shared_string_changes_its_width_where_it_goes_on_in_another_record) {
  EXPECT_EQ(shared_string(strings("\4\0\0ab"s, {"\1"s + utf16(u"\u4e00\u4e8c")})), "S\nab一二");
  EXPECT_EQ(shared_string(strings("\4\0\1"s + utf16(u"\u4e00\u4e8c"), {"\0cd"s})), "S\n一二cd");
}

TEST(Xls, the_halves_of_a_character_may_lie_in_two_records) {
  EXPECT_EQ(shared_string(strings("\2\0\1\x3d\xd8"s, {"\1\x00\xde"s})), "S\n\U0001f600");
}

TEST(Xls, the_characters_of_a_shared_string_may_begin_in_the_next_record) {
  EXPECT_EQ(shared_string(strings("\2\0\0"s, {"\0ab"s})), "S\nab");
}

TEST(Xls, formatting_and_reading_aids_of_shared_strings_are_left_out) {
  auto const formatted = "\2\0\x0d\1\0\6\0\0\0"s + utf16(u"\u6f22\u5b57") + "runs" + "kanji!";
  EXPECT_EQ(shared_string(strings(formatted + biff_string("next")), 1), "S\nnext");
  EXPECT_EQ(shared_string(strings(formatted)), "S\n漢字");
  auto const cut = formatted.size() - 8;
  EXPECT_EQ(shared_string(
                strings(formatted.substr(0, cut), {formatted.substr(cut) + biff_string("n")}), 1),
            "S\nn");
}

TEST(Xls, control_characters_end_lines) {
  EXPECT_EQ(cells(label(0, 0, "a\nb\rc\td\x07"s + "e\0f"s)), "First\na\nb\nc\td\ne f");
}

TEST(Xls, low_bytes_beyond_ascii_are_characters) {
  EXPECT_EQ(cells(label(0, 0, "\xe9t\xe9")), "First\nété");
}

TEST(Xls, sheets_come_in_the_order_of_the_workbook_hidden_ones_too) {
  auto const size = static_cast<int>((biff_begin(16) + number(0, 0, 1) + biff_end()).size());
  auto const book = BiffBook()
                        .sheet("B", number(0, 0, 1))
                        .misplaced(size)
                        .sheet("A", number(0, 0, 2))
                        .misplaced(-size)
                        .hidden();
  auto const parsed = test::parse_bytes(book.bytes());
  EXPECT_EQ(parsed.main(), "B\n2\nA\n1");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Xls, text_boxes_stand_behind_the_cells) {
  EXPECT_EQ(cells(label(0, 0, "cell") + object(6, "box\nline") + object(2, "shape")),
            "First\ncell\nbox\nline\nshape");
}

TEST(Xls, captions_of_controls_are_of_their_own_kind) {
  auto const parsed = parse_sheet(object(7, "button") + object(11, "check") + object(14, "label"));
  EXPECT_EQ(parsed.main(), "First");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "button\ncheck\nlabel");
}

TEST(Xls, notes_are_comments) {
  auto const parsed = parse_sheet(object(25, "Ann:\nfirst") + object(25, "second") +
                                  biff(0x001c, place(0, 0) + little(1, 2) + biff_string("Ann")));
  EXPECT_EQ(parsed.main(), "First");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "Ann:\nfirst\nsecond");
}

TEST(Xls, headers_and_footers_lose_their_codes) {
  auto const more =
      biff(0x089c, std::string(30, '\0') + little(4, 2) + little(0, 2) + little(5, 2) +
                       little(0, 2) + biff_string("even") + biff_string("first"));
  auto const parsed =
      parse_sheet(biff(0x0014, biff_string("&L&\"Arial,Bold\"&12left&Cpage &P&Rright")) +
                  biff(0x0015, biff_string(u"\u811a\u6ce8 && &\"")) + biff(0x0015) + more);
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "left\tpage \tright\n脚注 & \neven\nfirst");
}

TEST(Xls, addresses_behind_links_are_other_text) {
  EXPECT_EQ(link_target(link(0x13, wide_counted(u"shown") + address_id + little(26, 4) +
                                       utf16(u"http://\u4f8b\0junk"s))),
            "http://例");
  EXPECT_EQ(link_target(link(0x103, wide_counted(u"\\\\server\\file"))), "\\\\server\\file");
}

TEST(Xls, files_behind_links_are_other_text) {
  auto const path = "old.doc\0"s;
  auto const narrow = file_id + little(0, 2) + little(path.size(), 4) + path + std::string(24, 'x');
  EXPECT_EQ(link_target(link(1, narrow + little(0, 4))), "old.doc");
  EXPECT_EQ(link_target(link(
                1, narrow + little(20, 4) + little(14, 4) + little(3, 2) + utf16(u"\u65b0.docx"))),
            "新.docx");
}

TEST(Xls, a_link_within_the_workbook_has_no_address) {
  EXPECT_EQ(link_target(link(8, wide_counted(u"Second!A1"))), "");
}

TEST(Xls, charts_show_their_titles_and_the_texts_of_the_cells) {
  auto const chart = biff(0x100d, little(0, 2) + biff_string(u"\u6807\u9898", 1)) +
                     number(0, 0, 5) + label(0, 1, "north") + label(0, 1, "south");
  EXPECT_EQ(cells(number(0, 0, 1) + biff_begin(32) + chart + biff_end() + label(1, 0, "below")),
            "First\n1\n标题\nnorth\nsouth\nbelow");
  EXPECT_EQ(test::parse_bytes(BiffBook().sheet("Chart", chart, 32).bytes()).main(),
            "Chart\n标题\nnorth\nsouth");
}

TEST(Xls, shapes_tell_their_art_text_and_description) {
  auto const properties = little(0x00c0 | 0xc000, 2) + little(8, 4) + little(0x0381 | 0x8000, 2) +
                          little(6, 4) + little(0x0181, 2) + little(1, 4) + utf16(u"art"s) +
                          "\0\0"s + utf16(u"dog");
  auto const shape = little(0x0f, 2) + little(0xf004, 2) + little(200, 4) + little(3 << 4 | 3, 2) +
                     little(0xf00b, 2) + little(properties.size(), 4) + properties;
  auto const parsed = parse_sheet(biff(0x00ec, shape));
  EXPECT_EQ(parsed.main(), "First\nart");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "dog");
}

TEST(Xls, a_list_whose_size_leaves_out_its_head_does_not_shift_what_follows) {
  auto const corners = little(2, 2) + little(2, 2) + little(4, 2) + std::string(8, '\1');
  auto const properties = little(0x0145 | 0x8000, 2) + little(8, 4) + little(0x0381 | 0x8000, 2) +
                          little(6, 4) + corners + utf16(u"dog");
  auto const shape =
      little(2 << 4 | 3, 2) + little(0xf00b, 2) + little(properties.size(), 4) + properties;
  EXPECT_EQ(parse_sheet(biff(0x00ec, shape)).kind(Orlec::ParseTextType_other), "dog");
}

TEST(Xls, the_table_of_a_chart_keeps_attributes_of_three_bytes) {
  double const value = 20.5;
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  EXPECT_EQ(cells(biff(0x0003, little(0, 2) + little(0, 2) + little(0, 3) + bytes)), "First\n20.5");
}

TEST(Xls, pictures_are_counted_once_each) {
  auto const stored = [](unsigned uses) {
    return little(2, 2) + little(0xf007, 2) + little(40, 4) + std::string(24, '\1') +
           little(uses, 4) + std::string(12, '\xff');
  };
  auto const store =
      little(0x2f, 2) + little(0xf001, 2) + little(144, 4) + stored(1) + stored(0) + stored(3);
  auto const group = little(0x0f, 2) + little(0xf000, 2) + little(store.size(), 4) + store;
  auto const book = BiffBook()
                        .global(biff(0x00eb, group.substr(0, 50)) + biff(0x003c, group.substr(50)))
                        .sheet("First", number(0, 0, 1));
  EXPECT_EQ(test::parse_bytes(book.bytes()).counts.i_img, 2);
}

TEST(Xls, version_5_writes_in_the_code_page_of_the_file) {
  auto const book =
      BiffBook(5)
          .global(biff(0x0042, little(936, 2)) +
                  biff(0x041e, little(164, 2) + old_string("yyyy", 1)) +
                  biff(0x00e0, little(0, 2) + little(164, 2)))
          .sheet("\xb1\xed", biff(0x0204, place(0, 0) + old_string("\xd6\xd0\xce\xc4")) +
                                 number(0, 1, 45467) + formula(0, 2, text_result) +
                                 biff(0x0207, old_string("\xbd\xe1")) +
                                 biff(0x0014, old_string("&C\xd2\xb3", 1)));
  auto const parsed = test::parse_bytes(test::in_compound_file(book.bytes(), "Book"));
  EXPECT_EQ(parsed.main(), "表\n中文\t2024-06-24\t结");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "页");
}

TEST(Xls, notes_of_version_5_go_on_in_further_records) {
  auto const notes = biff(0x001c, little(0, 2) + little(0, 2) + little(8, 2) + "one ") +
                     biff(0x001c, little(0xffff, 2) + little(0, 2) + little(4, 2) + "more") +
                     biff(0x001c, little(1, 2) + little(0, 2) + little(3, 2) + "two");
  EXPECT_EQ(
      test::parse_bytes(BiffBook(5).sheet("S", notes).bytes()).kind(Orlec::ParseTextType_comment),
      "one more\ntwo");
}

TEST(Xls, version_2_is_one_sheet_whose_cells_name_formats) {
  auto const attributes = [](unsigned format) { return "\0"s + little(format, 1) + "\0"s; };
  auto const at = [&](unsigned row, unsigned column, unsigned format = 0) {
    return little(row, 2) + little(column, 2) + attributes(format);
  };
  auto const stream =
      biff_begin(16, 2) + biff(0x0042, little(0x8001, 2)) + biff(0x001e, old_string("General", 1)) +
      biff(0x001e, old_string("d-mmm-yy", 1)) + biff(0x0004, at(0, 0) + old_string("caf\xe9", 1)) +
      biff(0x0002, at(0, 1) + little(42, 2)) + biff(0x0003, at(1, 0, 1) + number_bytes(31000)) +
      biff(0x0005, at(1, 1) + "\1\0"s) +
      biff(0x0006, at(1, 2) + text_result + std::string(4, '\0')) +
      biff(0x0007, old_string("sum", 1)) + biff_end();
  EXPECT_EQ(test::parse_bytes(stream).main(), "café\t42\n1984-11-14\tTRUE\tsum");
}

TEST(Xls, versions_3_and_4_have_styles_before_cells) {
  auto const old_style = [](unsigned version, unsigned format) {
    return biff(version == 3 ? 0x0243 : 0x0443, little(0, 1) + little(format, 1) + "\0\0"s);
  };
  auto const format = [](unsigned version, char const* code) {
    return biff(version == 3 ? 0x001e : 0x041e,
                (version == 3 ? ""s : little(0, 2)) + old_string(code, 1));
  };
  for (unsigned const version : {3U, 4U}) {
    auto const stream =
        biff_begin(16, version) + format(version, "General") + format(version, "d-mmm-yy") +
        old_style(version, 0) + old_style(version, 1) +
        biff(0x0204, place(0, 0) + old_string("text")) + number(0, 1, 31000, 1) +
        biff(version == 3 ? 0x0206 : 0x0406, place(1, 0) + text_result + std::string(4, '\0')) +
        biff(0x0207, old_string("sum")) + biff_end();
    EXPECT_EQ(test::parse_bytes(stream).main(), "text\t1984-11-14\nsum") << version;
  }
}

TEST(Xls, a_workbook_of_version_4_holds_sheets_with_names) {
  auto const sheet = [](char const* name, char const* text) {
    return biff(0x008f, little(0, 4) + old_string(name, 1)) + biff_begin(16, 4) +
           biff(0x0204, place(0, 0) + old_string(text)) + biff_end();
  };
  auto const parsed =
      test::parse_bytes(biff_begin(0x100, 4) + sheet("A", "one") + sheet("B", "two") + biff_end());
  EXPECT_EQ(parsed.main(), "A\none\nB\ntwo");
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Xls, a_sheet_that_asks_for_a_password_is_encrypted) {
  EXPECT_EQ(test::parse_bytes(biff_begin(16, 3) + biff(0x002f, little(1, 4)) +
                              label(0, 0, "noise") + biff_end())
                .outcome,
            ParseOutcome::encrypted);
}

TEST(Xls, a_protected_sheet_is_no_encrypted_one) {
  auto const book = BiffBook().global(biff(0x0012, little(1, 2))).sheet("First", number(0, 0, 1));
  EXPECT_EQ(test::parse_bytes(test::in_compound_file(book.bytes())).main(), "First\n1");
}

TEST(Xls, embedded_documents_follow_the_workbook) {
  test::CompoundImage image;
  auto outer = BiffBook().sheet("Outer", number(0, 0, 1)).bytes();
  auto inner = BiffBook().sheet("Inner", number(0, 0, 2)).bytes();
  outer.resize(4096, '\0');
  inner.resize(4096, '\0');
  image.add_stream("Workbook", outer);
  image.link({"MBD0001", test::CompoundImage::storage});
  image.entries.back().child = 3;
  image.entries.push_back(
      {"Workbook", test::CompoundImage::stream, image.add_chain(inner), inner.size()});
  auto const parsed = test::parse_bytes(image.bytes());
  EXPECT_EQ(parsed.main(), "Outer\n1\nInner\n2");
  EXPECT_EQ(parsed.counts.i_embed, 1);
  EXPECT_EQ(parsed.counts.i_page, 1);
}

TEST(Xls, a_file_without_its_directory_gives_what_is_left) {
  auto const file = test::in_compound_file(
      BiffBook().sheet("First", label(0, 0, std::string(6000, 'x')) + label(1, 0, "last")).bytes());
  auto const parsed = test::parse_bytes(file.substr(0, 512 + 6085));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "First\n" + std::string(6000, 'x'));
}

TEST(Xls, sheets_that_are_not_where_they_should_be_are_found) {
  auto const parsed = test::parse_bytes(BiffBook()
                                            .sheet("A", number(0, 0, 1))
                                            .sheet("B", number(0, 0, 2))
                                            .misplaced(1)
                                            .sheet("C", number(0, 0, 3))
                                            .bytes());
  EXPECT_EQ(parsed.main(), "A\n1\nB\n2\nC\n3");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "a sheet is not where the workbook says");
}

TEST(Xls, sheets_that_the_workbook_does_not_name_are_read) {
  auto const sheet = [](double value) { return biff_begin(16) + number(0, 0, value) + biff_end(); };
  auto const parsed = test::parse_bytes(biff_begin(5) + biff_end() + sheet(1) + sheet(2));
  EXPECT_EQ(parsed.main(), "1\n2");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Xls, parts_over_the_bound_of_lists_end_the_parse_before_they_are_read) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 5000;
  test::ScopedLimits const scope(limits);
  std::string parts;
  for (int i = 0; i < 100; ++i) {
    parts += biff_begin(16) + number(0, 0, 1) + biff_end();
  }
  auto const parsed = test::parse_bytes(biff_begin(5) + biff_end() + parts);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.main(), "");
}

TEST(Xls, sheets_at_one_place_are_read_once) {
  BiffBook book;
  book.sheet("A", number(0, 0, 7));
  auto const size = static_cast<int>((biff_begin(16) + number(0, 0, 7) + biff_end()).size());
  for (int i = 1; i < 50; ++i) {
    book.sheet("B", number(0, 0, 7)).misplaced(-i * size);
  }
  auto const main = test::parse_bytes(book.bytes()).main();
  EXPECT_EQ(std::count(main.begin(), main.end(), '7'), 1);
}

TEST(Xls, a_sheet_that_is_cut_by_the_place_of_another_is_damaged) {
  auto const inner = biff_begin(16) + number(0, 0, 8) + biff_end();
  auto const size = static_cast<int>((inner + biff_end()).size());
  auto const parsed = test::parse_bytes(BiffBook()
                                            .sheet("A", number(0, 0, 7) + inner)
                                            .sheet("B", number(0, 0, 9))
                                            .misplaced(-size)
                                            .bytes());
  EXPECT_EQ(parsed.main(), "A\n7\nB\n8");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "a sheet goes on where another begins");
}

TEST(Xls, a_stream_without_a_beginning_is_damaged) {
  EXPECT_EQ(test::parse_bytes(test::in_compound_file({})).reason,
            "the workbook's beginning is missing");
}

TEST(Xls, what_is_embedded_in_a_damaged_workbook_is_read) {
  auto inner = BiffBook().sheet("Inner", number(0, 0, 2)).bytes();
  inner.resize(4096, '\0');
  test::CompoundImage image;
  image.add_stream("Workbook", std::string(4096, 'x'));
  image.link({"MBD0001", test::CompoundImage::storage});
  image.entries.back().child = 3;
  image.entries.push_back(
      {"Workbook", test::CompoundImage::stream, image.add_chain(inner), inner.size()});
  auto const parsed = test::parse_bytes(image.bytes());
  EXPECT_EQ(parsed.main(), "Inner\n2");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Xls, shared_strings_that_are_cut_short_are_damaged) {
  auto const read = [](unsigned stated, std::string const& content) {
    return test::parse_bytes(BiffBook()
                                 .global(biff(0x00fc, little(1, 4) + little(stated, 4) + content))
                                 .sheet("First", shared(0, 0, 0))
                                 .bytes());
  };
  auto const cut = read(1, "\x40\0\0abc"s);
  EXPECT_EQ(cut.main(), "First\nabc");
  EXPECT_EQ(cut.reason, "the shared strings are cut short");
  EXPECT_EQ(read(2, biff_string("one")).outcome, ParseOutcome::damaged);
  EXPECT_EQ(read(1, biff_string("one") + "\0"s).outcome, ParseOutcome::text);
}

TEST(Xls, a_stream_that_ends_between_records_is_damaged) {
  auto const whole = BiffBook().sheet("First", number(0, 0, 1)).bytes();
  auto const parsed = test::parse_bytes(whole.substr(0, whole.size() - biff_end().size()));
  EXPECT_EQ(parsed.main(), "First\n1");
  EXPECT_EQ(parsed.reason, "the workbook's stream is cut short");
  EXPECT_EQ(test::parse_bytes(biff_begin(5)).outcome, ParseOutcome::damaged);
}

TEST(Xls, names_of_sheets_over_the_bound_end_the_parse) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 1000;
  test::ScopedLimits const scope(limits);
  BiffBook book;
  for (int i = 0; i < 100; ++i) {
    book.sheet("Sheet", number(0, 0, 1));
  }
  EXPECT_EQ(test::parse_bytes(book.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Xls, begins_without_ends_are_no_deep_recursion) {
  std::string begins;
  for (int i = 0; i < 100000; ++i) {
    begins += biff_begin(32);
  }
  EXPECT_EQ(cells(begins + label(0, 0, "deep")), "First\ndeep");
}

TEST(Xls, a_file_that_is_cut_anywhere_ends_well) {
  auto const whole = full_workbook();
  auto const text = test::parse_bytes(whole);
  EXPECT_EQ(text.main(), "First\nshared\t共享\n2024-06-24\ttext\n1\t2\nSecond\nlabel\ntitle");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    auto const parsed = test::parse_bytes(whole.substr(0, length));
    EXPECT_LE(parsed.main().size(), text.main().size() + 64) << length;
    EXPECT_TRUE(length < 4 || parsed.outcome != ParseOutcome::text) << length;
  }
}

TEST(Xls, flipped_bytes_end_well) {
  auto const whole = full_workbook();
  std::mt19937 random(20031);
  for (int i = 0; i < 2000; ++i) {
    auto bytes = whole;
    for (int flips = 0; flips < 3; ++flips) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    test::parse_bytes(bytes);
  }
}
