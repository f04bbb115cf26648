#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "morvakit/sheet/number_format.h"

namespace {

using morvakit::NumberKind;
using Orlec::ParseOutcome;

std::string cells(std::string const& row) {
  return test::parse_bytes(
             OfficeDocument::workbook("<sheetData><row>" + row + "</row></sheetData>").bytes())
      .main();
}

}  // namespace

TEST(Xlsx, a_sheet_is_its_name_and_its_rows) {
  auto const data =
      "<sheetData><row><c><v>1</v></c><c><v>2</v></c></row><row><c><v>3</v></c></row></sheetData>";
  EXPECT_EQ(test::parse_bytes(OfficeDocument::workbook(data).bytes()).main(), "First\n1\t2\n3");
}

TEST(Xlsx, embedded_files_follow_all_sheets_and_sheets_are_counted) {
  auto document = OfficeDocument::workbook(
      "<sheetData><row><c><v>1</v></c></row></sheetData>",
      R"(<sheets><sheet name="First" r:id="rId1"/><sheet name="Second" r:id="rId2"/></sheets>)");
  document.relation("xl/workbook.xml", "rId2", "worksheet", "worksheets/sheet2.xml");
  document.relation("xl/worksheets/sheet1.xml", "rId1", "oleObject", "../embeddings/a.txt");
  document.part("xl/worksheets/sheet2.xml", sheet_part("worksheet", "<sheetData/>"));
  document.part("xl/embeddings/a.txt", "file");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "First\n1\nSecond\nfile");
  EXPECT_EQ(parsed.counts.i_page, 2);
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Xlsx, all_types_of_cells_are_text) {
  EXPECT_EQ(
      cells(
          R"(<c t="b"><v>1</v></c><c t="b"><v>0</v></c><c t="e"><v>#DIV/0!</v></c><c t="str"><f>A1</f><v>sum</v></c>)"
          R"(<c t="inlineStr"><is><r><t>in</t></r><r><t>line</t></r></is></c><c t="d"><v>2024-06-24</v></c>)"),
      "First\nTRUE\tFALSE\t#DIV/0!\tsum\tinline\t2024-06-24");
}

TEST(Xlsx, shared_strings_are_found_by_number) {
  auto document = OfficeDocument::workbook(
      R"(<sheetData><row><c t="s"><v>1</v></c><c t="s"><v>0</v></c><c t="s"><v>9</v></c></row></sheetData>)");
  document.relation("xl/workbook.xml", "rId2", "sharedStrings", "sharedStrings.xml");
  document.part("xl/sharedStrings.xml",
                sheet_part("sst",
                           "<si><t>zero</t></si><si><r><t>on</t></r><r><t>e</t></"
                           "r><rPh><t>phonetic</t></rPh></si>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "First\none\tzero");
}

TEST(Xlsx, escaped_characters_are_read) {
  EXPECT_EQ(cells(R"(<c t="str"><v>a_x000D_b_x0041_c_x00_</v></c>)"), "First\na\nbAc_x00_");
}

TEST(Xlsx, dates_are_written_by_their_format) {
  auto document = OfficeDocument::workbook(
      R"(<sheetData><row><c s="1"><v>45467</v></c><c s="2"><v>45467.5</v></c><c s="0"><v>45467.5</v></c></row></sheetData>)");
  document.relation("xl/workbook.xml", "rId2", "styles", "styles.xml");
  document.part(
      "xl/styles.xml",
      sheet_part(
          "styleSheet",
          R"(<numFmts><numFmt numFmtId="164" formatCode="yyyy\-mm\-dd hh:mm"/></numFmts>)"
          R"(<cellStyleXfs><xf numFmtId="14"/></cellStyleXfs>)"
          R"(<cellXfs><xf numFmtId="0"/><xf numFmtId="14"/><xf numFmtId="164"/></cellXfs>)"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(),
            "First\n2024-06-24\t2024-06-24 12:00:00\t45467.5");
}

TEST(Xlsx, days_may_be_counted_from_1904) {
  auto document = OfficeDocument::workbook(
      R"(<sheetData><row><c s="0"><v>1</v></c></row></sheetData>)",
      R"(<workbookPr date1904="1"/><sheets><sheet name="First" r:id="rId1"/></sheets>)");
  document.relation("xl/workbook.xml", "rId2", "styles", "styles.xml");
  document.part("xl/styles.xml",
                sheet_part("styleSheet", R"(<cellXfs><xf numFmtId="14"/></cellXfs>)"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "First\n1904-01-02");
}

TEST(Xlsx, sheets_come_in_the_order_of_the_workbook_hidden_ones_too) {
  auto document = OfficeDocument::workbook(
      "<sheetData><row><c><v>1</v></c></row></sheetData>",
      R"(<sheets><sheet name="B" r:id="rId2" state="hidden"/><sheet name="A" r:id="rId1"/></sheets>)");
  document.relation("xl/workbook.xml", "rId2", "worksheet", "worksheets/sheet2.xml");
  document.part("xl/worksheets/sheet2.xml",
                sheet_part("worksheet", "<sheetData><row><c><v>2</v></c></row></sheetData>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "B\n2\nA\n1");
}

TEST(Xlsx, a_sheet_that_is_missing_is_damage) {
  auto const parse_with = [](char const* relation) {
    auto document = OfficeDocument::workbook(
        "<sheetData><row><c><v>1</v></c></row></sheetData>",
        R"(<sheets><sheet name="A" r:id="rId7"/><sheet name="B" r:id="rId1"/></sheets>)");
    document.relation("xl/workbook.xml", relation, "worksheet", "worksheets/lost.xml");
    return test::parse_bytes(document.bytes());
  };
  auto const unknown = parse_with("rId8");
  EXPECT_EQ(unknown.main(), "A\nB\n1");
  EXPECT_EQ(unknown.outcome, Orlec::ParseOutcome::damaged);
  EXPECT_EQ(unknown.reason, "a sheet is missing");
  auto const lost = parse_with("rId7");
  EXPECT_EQ(lost.main(), "A\nB\n1");
  EXPECT_EQ(lost.outcome, Orlec::ParseOutcome::damaged);
  EXPECT_EQ(lost.reason, "the part xl/worksheets/lost.xml is missing");
}

TEST(Xlsx, a_header_of_any_length_is_no_text_of_a_cell) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::workbook("<sheetData><row><c t=\"str\"><v>1</v></c></row></sheetData>"
                               "<headerFooter><oddHeader>" +
                               std::string(200000, 'x') + "</oddHeader></headerFooter>")
          .bytes());
  EXPECT_EQ(parsed.main(), "First\n1");
}

TEST(Xlsx, comments_of_cells_are_kept_apart) {
  auto document = OfficeDocument::workbook("<sheetData/>");
  document.relation("xl/worksheets/sheet1.xml", "rId1", "comments", "../comments1.xml");
  document.part(
      "xl/comments1.xml",
      sheet_part(
          "comments",
          "<authors><author>me</author></authors><commentList><comment><text><r><t>look</t></r>"
          "</text></comment><comment><text><t>here</t></text></comment></commentList>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_comment), "look\nhere");
}

TEST(Xlsx, printed_headers_are_read_without_their_codes) {
  auto const data =
      "<sheetData/><headerFooter><oddHeader>&amp;L&amp;\"Arial,Bold\"&amp;12Left&amp;CA &amp;&amp; "
      "B&amp;RPage "
      "&amp;P</oddHeader></headerFooter>";
  EXPECT_EQ(test::parse_bytes(OfficeDocument::workbook(data).bytes()).kind(Orlec::ParseTextType_hf),
            "Left\tA & B\tPage ");
}

TEST(Xlsx, text_boxes_are_main_text) {
  auto document = OfficeDocument::workbook("<sheetData/>");
  document.relation("xl/worksheets/sheet1.xml", "rId1", "drawing", "../drawings/drawing1.xml");
  document.part(
      "xl/drawings/drawing1.xml",
      sheet_part("xdr:wsDr",
                 "<xdr:sp><xdr:txBody><a:p><a:r><a:t>box</a:t></a:r></a:p></xdr:txBody></xdr:sp>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "First\nbox");
}

TEST(Xlsx, captions_of_form_controls_are_control_text) {
  auto document = OfficeDocument::workbook("<sheetData/>");
  document.relation("xl/worksheets/sheet1.xml", "rId1", "vmlDrawing", "../drawings/vml1.vml");
  document.part(
      "xl/drawings/vml1.vml",
      R"(<xml xmlns:v="urn:schemas-microsoft-com:vml"><v:shape><v:textbox><div><font>Press</font></div></v:textbox></v:shape><br></xml>)");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "Press");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Xlsx, main_text_over_its_bound_ends_the_reading_with_the_text_so_far) {
  Orlec::ParseLimits limits;
  limits.i_memory_chars = 8;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes(
      OfficeDocument::workbook("<sheetData><row><c><v>123456</v></c></row></sheetData>").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "main text over 8 characters");
  EXPECT_EQ(parsed.main(), "First\n12");
}

TEST(NumberFormat, letters_of_dates_and_times_decide_the_kind) {
  EXPECT_EQ(morvakit::kind_of_format("yyyy\"年\"m\"月\"d\"日\""), NumberKind::date);
  EXPECT_EQ(morvakit::kind_of_format("[$-409]h:mm AM/PM"), NumberKind::time);
  EXPECT_EQ(morvakit::kind_of_format("d/m/yy h:mm"), NumberKind::date_time);
  EXPECT_EQ(morvakit::kind_of_format("[h]:mm:ss"), NumberKind::elapsed);
  EXPECT_EQ(morvakit::kind_of_format("mm:ss.0"), NumberKind::time);
  EXPECT_EQ(morvakit::kind_of_format("mmm"), NumberKind::date);
}

TEST(NumberFormat, a_code_that_ends_within_a_bracket_is_no_elapsed_time) {
  std::string_view const code = "[m]";
  EXPECT_EQ(morvakit::kind_of_format(code.substr(0, 2)), NumberKind::number);
  EXPECT_EQ(morvakit::kind_of_format(code), NumberKind::elapsed);
}

TEST(NumberFormat, other_codes_are_numbers) {
  for (auto const* const code : {"General", "0.00", "#,##0;[Red]-#,##0", "0.00E+00", "\"day\" 0",
                                 "0\\d", "@", "[", "\"", ""}) {
    EXPECT_EQ(morvakit::kind_of_format(code), NumberKind::number) << code;
  }
}

TEST(NumberFormat, the_calendar_of_1900_has_a_day_too_many) {
  EXPECT_EQ(morvakit::format_number("1", NumberKind::date, false), "1900-01-01");
  EXPECT_EQ(morvakit::format_number("59", NumberKind::date, false), "1900-02-28");
  EXPECT_EQ(morvakit::format_number("61", NumberKind::date, false), "1900-03-01");
  EXPECT_EQ(morvakit::format_number("2958465", NumberKind::date, false), "9999-12-31");
}

TEST(NumberFormat, a_time_that_rounds_up_to_midnight_is_the_next_day) {
  EXPECT_EQ(morvakit::format_number("45467.999999999", NumberKind::date_time, false),
            "2024-06-25 00:00:00");
}

TEST(NumberFormat, elapsed_time_goes_past_a_day) {
  EXPECT_EQ(morvakit::format_number("1.5", NumberKind::elapsed, false), "36:00:00");
}

TEST(NumberFormat, numbers_take_their_shortest_form) {
  EXPECT_EQ(morvakit::format_number("0.10000000000000001", NumberKind::number, false), "0.1");
  EXPECT_EQ(morvakit::format_number("100000", NumberKind::number, false), "100000");
  EXPECT_EQ(morvakit::format_number("1.0E-3", NumberKind::number, false), "0.001");
  EXPECT_EQ(morvakit::format_number("1E+300", NumberKind::number, false), "1e+300");
}

TEST(NumberFormat, what_is_no_number_or_no_date_stays_as_it_is) {
  EXPECT_EQ(morvakit::format_number("abc", NumberKind::date, false), "abc");
  EXPECT_EQ(morvakit::format_number("", NumberKind::number, false), "");
  EXPECT_EQ(morvakit::format_number("-5", NumberKind::date, false), "-5");
  EXPECT_EQ(morvakit::format_number("1e999", NumberKind::number, false), "1e999");
}
