#include <bit>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using namespace std::string_literals;
using Orlec::ParseOutcome;
using test::little;

std::string variable_number(std::uint32_t value) {
  std::string bytes;
  do {
    bytes += static_cast<char>((value & 0x7fU) | (value > 0x7f ? 0x80U : 0U));
    value >>= 7U;
  } while (value > 0);
  return bytes;
}

std::string record(std::uint32_t type, std::string const& body = {}) {
  return variable_number(type) + variable_number(static_cast<std::uint32_t>(body.size())) + body;
}

std::string wide(std::u16string const& text) {
  auto bytes = little(text.size(), 4);
  for (auto const unit : text) {
    bytes += little(unit, 2);
  }
  return bytes;
}

std::string rich(std::u16string const& text) {
  return "\1"s + wide(text) + little(1, 4) + little(0, 4);
}

std::string number_bytes(double value) {
  return little(std::bit_cast<std::uint64_t>(value), 8);
}

std::string row(std::uint32_t number) {
  return record(0, little(number, 4) + std::string(12, '\0'));
}

std::string cell(std::uint32_t type, std::string const& value, std::uint32_t style = 0) {
  return record(type, little(0, 4) + little(style, 4) + value);
}

std::string sheet(std::u16string const& name, std::u16string const& relation, unsigned state = 0) {
  return record(156, little(state, 4) + little(1, 4) + wide(relation) + wide(name));
}

std::string const one_sheet = sheet(u"First", u"rId1");

OfficeDocument document(std::string const& cells) {
  return OfficeDocument::binary_workbook(one_sheet, cells);
}

std::string read(OfficeDocument const& document) {
  return test::parse_bytes(document.bytes()).main();
}

std::string read_cells(std::string const& cells) {
  return read(document(cells));
}

/// A workbook with something of everything.
OfficeDocument full_document() {
  auto result = document(row(0) + cell(7, little(0, 4)) + cell(5, number_bytes(45467)) + row(1) +
                         cell(8, wide(u"\u7ed3\u679c")) +
                         record(479, little(0, 2) + wide(u"&Ctop") + little(0xffffffff, 4)));
  result.relation("xl/workbook.bin", "rId2", "sharedStrings", "sharedStrings.bin");
  result.part("xl/sharedStrings.bin", record(19, rich(u"shared")));
  result.relation("xl/workbook.bin", "rId3", "styles", "styles.bin");
  result.part("xl/styles.bin", record(617) + record(47, little(0, 2) + little(14, 2)));
  result.relation("xl/worksheets/sheet1.bin", "rId1", "comments", "../comments1.bin");
  result.part("xl/comments1.bin", record(637, rich(u"comment")));
  return result;
}

}  // namespace

TEST(Xlsb, a_sheet_is_its_name_and_its_rows) {
  EXPECT_EQ(read_cells(row(0) + cell(5, number_bytes(1)) + cell(5, number_bytes(2)) + row(1) +
                       cell(5, number_bytes(3))),
            "First\n1\t2\n3");
}

TEST(Xlsb, all_types_of_cells_are_text) {
  EXPECT_EQ(read_cells(row(0) + cell(2, little(7 << 2 | 2, 4)) + cell(3, "\x2a") + cell(4, "\1") +
                       cell(6, wide(u"text")) + cell(62, rich(u"rich"))),
            "First\n7\t#N/A\tTRUE\ttext\trich");
}

TEST(Xlsb, formulas_show_their_results) {
  EXPECT_EQ(read_cells(row(0) + cell(8, wide(u"sum") + "formula") +
                       cell(9, number_bytes(2.5) + "formula") + cell(10, "\0"s) + cell(11, "\7")),
            "First\nsum\t2.5\tFALSE\t#DIV/0!");
}

TEST(Xlsb, cells_may_leave_out_their_column) {
  auto const next = [](std::uint32_t type, std::string const& value) {
    return record(type, little(0, 4) + value);
  };
  EXPECT_EQ(read_cells(row(0) + next(13, little(5 << 2 | 2, 4)) + next(14, "\x17") +
                       next(15, "\1") + next(16, number_bytes(0.5)) + next(17, wide(u"t"))),
            "First\n5\t#REF!\tTRUE\t0.5\tt");
}

TEST(Xlsb, everything_of_a_workbook_is_read) {
  auto const parsed = test::parse_bytes(full_document().bytes());
  EXPECT_EQ(parsed.main(), "First\nshared\t2024-06-24\n结果");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "top");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "comment");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_page, 1);
}

TEST(Xlsb, days_may_be_counted_from_1904) {
  auto result = OfficeDocument::binary_workbook(record(153, little(1, 4) + "rest") + one_sheet,
                                                row(0) + cell(5, number_bytes(1)));
  result.relation("xl/workbook.bin", "rId3", "styles", "styles.bin");
  result.part("xl/styles.bin", record(44, little(170, 2) + wide(u"yyyy")) +
                                   record(47, little(0, 2) + little(0, 2)) + record(617) +
                                   record(47, little(0, 2) + little(170, 2)) + record(618) +
                                   record(47, little(0, 2) + little(0, 2)));
  EXPECT_EQ(read(result), "First\n1904-01-02");
}

TEST(Xlsb, sheets_come_in_the_order_of_the_workbook_hidden_ones_too) {
  auto result = OfficeDocument::binary_workbook(sheet(u"B", u"rId2", 1) + sheet(u"A", u"rId1"),
                                                row(0) + cell(5, number_bytes(1)));
  result.relation("xl/workbook.bin", "rId2", "worksheet", "worksheets/sheet2.bin");
  result.part("xl/worksheets/sheet2.bin", row(0) + cell(5, number_bytes(2)));
  EXPECT_EQ(read(result), "B\n2\nA\n1");
}

TEST(Xlsb, a_sheet_that_two_names_lead_to_is_read_once) {
  EXPECT_EQ(read(OfficeDocument::binary_workbook(sheet(u"A", u"rId1") + sheet(u"B", u"rId1"),
                                                 row(0) + cell(5, number_bytes(1)))),
            "A\n1\nB");
}

TEST(Xlsb, a_sheet_that_is_missing_is_damage) {
  auto result = OfficeDocument::binary_workbook(
      sheet(u"A", u"rId8") + sheet(u"B", u"rId9") + sheet(u"C", u"rId1"),
      row(0) + cell(5, number_bytes(1)));
  result.relation("xl/workbook.bin", "rId9", "worksheet", "worksheets/lost.bin");
  auto const parsed = test::parse_bytes(result.bytes());
  EXPECT_EQ(parsed.main(), "A\nB\nC\n1");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "a sheet is missing");
}

TEST(Xlsb, drawings_and_links_stand_beside_a_sheet) {
  auto result = document(row(0) + cell(5, number_bytes(1)));
  result.relation("xl/worksheets/sheet1.bin", "rId1", "drawing", "../drawings/drawing1.xml");
  result.part("xl/drawings/drawing1.xml",
              sheet_part("xdr:wsDr", "<a:p><a:r><a:t>box</a:t></a:r></a:p>"));
  result.relation("xl/worksheets/sheet1.bin", "rId2", "hyperlink", "http://example.org", true);
  auto const parsed = test::parse_bytes(result.bytes());
  EXPECT_EQ(parsed.main(), "First\n1\nbox");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "http://example.org");
}

TEST(Xlsb, a_record_may_come_in_many_pieces) {
  std::u16string const text(30000, u'\u4e00');
  std::string expected;
  for (std::size_t i = 0; i < text.size(); ++i) {
    expected += "一";
  }
  EXPECT_EQ(read_cells(row(0) + cell(6, wide(text)) + cell(5, number_bytes(1))),
            "First\n" + expected + "\t1");
}

TEST(Xlsb, a_record_that_no_cell_can_fill_is_passed_over) {
  auto const parsed =
      test::parse_bytes(document(row(0) + record(6, std::string(std::size_t{2} << 20, 'x')) +
                                 cell(5, number_bytes(1)))
                            .bytes());
  EXPECT_EQ(parsed.main(), "First\n1");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "a record of the workbook is too long");
}

TEST(Xlsb, a_part_that_is_cut_short_is_damaged) {
  auto const whole = row(0) + cell(6, wide(u"first")) + cell(6, wide(u"second"));
  auto const parsed = test::parse_bytes(document(whole.substr(0, whole.size() - 3)).bytes());
  EXPECT_EQ(parsed.main(), "First\nfirst");
  EXPECT_EQ(parsed.reason, "a part of the workbook is cut short");
}

TEST(Xlsb, names_of_sheets_over_the_bound_end_the_parse) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 1000;
  test::ScopedLimits const scope(limits);
  std::string sheets;
  for (int i = 0; i < 100; ++i) {
    sheets += one_sheet;
  }
  EXPECT_EQ(test::parse_bytes(OfficeDocument::binary_workbook(sheets, row(0)).bytes()).outcome,
            ParseOutcome::limit_reached);
}

TEST(Xlsb, parts_that_are_cut_anywhere_end_well) {
  auto const cells = row(0) + cell(6, wide(u"text")) + cell(5, number_bytes(2)) +
                     record(479, little(0, 2) + wide(u"top"));
  for (std::size_t length = 0; length < cells.size(); ++length) {
    EXPECT_EQ(read_cells(cells.substr(0, length)).substr(0, 5), "First") << length;
  }
}

TEST(Xlsb, a_workbook_reads_as_it_does_in_the_older_format) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr || *corpus == '\0') {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  auto const read_file = [corpus](std::string const& name) {
    std::ifstream file(corpus + "/documents/hostile/"s + name, std::ios::binary);
    return test::parse_bytes({std::istreambuf_iterator<char>(file), {}}).main();
  };
  auto const older = read_file("poi__42464-ExpPtg-bad.xls");
  EXPECT_EQ(read_file("sheets__apachepoi_42464-ExpPtg-bad.xls.xlsb"), older);
  EXPECT_NE(older, "");
}

TEST(Xlsb, flipped_bytes_end_well) {
  auto const whole = full_document().bytes();
  std::mt19937 random(20071);
  for (int i = 0; i < 1000; ++i) {
    auto bytes = whole;
    bytes[random() % bytes.size()] = static_cast<char>(random());
    test::parse_bytes(bytes);
  }
}
