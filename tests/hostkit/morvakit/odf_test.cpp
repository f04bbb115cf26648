#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseOutcome;

test::Parsed parse_text(std::string const& body) {
  return test::parse_bytes(OfficeDocument::open_document("text", body).bytes());
}

test::Parsed parse_sheet(std::string const& body) {
  return test::parse_bytes(OfficeDocument::open_document("spreadsheet", body).bytes());
}

/// A document that is one file, from what stands in its root.
std::string flat(std::string const& kind, std::string const& content) {
  auto text = odf_part("office:document", content);
  text.insert(text.find("<office:document") + std::string("<office:document").size(),
              " office:mimetype=\"application/vnd.oasis.opendocument." + kind + "\"");
  return text;
}

std::string flat_text(std::string const& body) {
  return flat("text", "<office:body><office:text>" + body + "</office:text></office:body>");
}

}  // namespace

TEST(Odf, headings_paragraphs_and_list_items_are_lines) {
  EXPECT_EQ(
      parse_text("<text:h>One</text:h><text:p>two</text:p><text:list><text:list-item><text:p>三</"
                 "text:p></text:list-item></text:list>")
          .main(),
      "One\ntwo\n三");
}

TEST(Odf, white_space_is_collapsed_and_written_blanks_stay) {
  EXPECT_EQ(parse_text("<text:p>\n  a \n <text:span> b</text:span><text:s "
                       "text:c=\"2\"/>c<text:tab/>d<text:line-break/>e</text:p>")
                .main(),
            "a b  c\td\ne");
}

TEST(Odf, a_million_blanks_are_not_written_out) {
  EXPECT_EQ(parse_text("<text:p>a<text:s text:c=\"1000000\"/>b</text:p>").main().size(), 66U);
}

TEST(Odf, notes_are_kept_apart_by_their_class) {
  auto const note = [](std::string const& kind, std::string const& text) {
    return "<text:note text:note-class=\"" + kind +
           "\"><text:note-citation>1</text:note-citation><text:note-body><text:p>" + text +
           "</text:p></text:note-body></text:note>";
  };
  auto const parsed = parse_text("<text:p>bo" + note("footnote", "foot") + "dy" +
                                 note("endnote", "end") + "</text:p>");
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_fn), "foot");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_en), "end");
}

TEST(Odf, annotations_are_comments_without_author_and_date) {
  auto const parsed = parse_text(
      "<text:p>a<office:annotation><dc:creator>me</dc:creator><text:p>why</text:p></"
      "office:annotation>b</text:p>");
  EXPECT_EQ(parsed.main(), "ab");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "why");
}

TEST(Odf, deleted_text_is_left_out) {
  EXPECT_EQ(parse_text("<text:tracked-changes><text:changed-region><text:deletion><text:p>old</"
                       "text:p></text:deletion>"
                       "</text:changed-region></text:tracked-changes><text:p>new</text:p>")
                .main(),
            "new");
}

TEST(Odf, tables_have_tabs_between_cells) {
  EXPECT_EQ(
      parse_text(
          "<table:table "
          "table:name=\"T\"><table:table-row><table:table-cell><text:p>a</text:p></"
          "table:table-cell><table:table-cell>"
          "<text:p>b</text:p></table:table-cell></table:table-row></table:table><text:p>c</text:p>")
          .main(),
      "a\tb\nc");
}

TEST(Odf, text_boxes_and_forms_hold_text) {
  auto const parsed = parse_text(
      "<office:forms><form:form><form:button "
      "form:label=\"Press\"/></form:form></office:forms><text:p>a<draw:frame>"
      "<draw:text-box><text:p>box</text:p></draw:text-box></draw:frame></text:p>");
  EXPECT_EQ(parsed.main(), "a\nbox");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "Press");
}

TEST(Odf, headers_and_footers_of_master_pages_are_read) {
  auto document = OfficeDocument::open_document("text", "<text:p>body</text:p>");
  document.part("styles.xml", odf_part("office:document-styles",
                                       "<office:master-styles><style:master-page><style:header><"
                                       "text:p>head</text:p></style:header>"
                                       "<style:footer><text:p>foot</text:p></style:footer></"
                                       "style:master-page></office:master-styles>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "head\nfoot");
}

TEST(Odf, properties_are_lines_of_name_and_value) {
  auto document = OfficeDocument::open_document("text", "<text:p>body</text:p>");
  document.part(
      "meta.xml",
      odf_part("office:document-meta",
               "<office:meta><dc:title>Plan</dc:title><meta:user-defined meta:name=\"Client\">ACME"
               "</meta:user-defined></office:meta>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_property),
            "title: Plan\nClient: ACME");
}

TEST(Odf, a_sheet_is_its_name_and_its_rows) {
  EXPECT_EQ(parse_sheet("<table:table "
                        "table:name=\"First\"><table:table-row><table:table-cell><text:p>1</"
                        "text:p></table:table-cell></table:table-row>"
                        "</table:table>")
                .main(),
            "First\n1");
}

TEST(Odf, repeated_cells_and_rows_are_not_expanded) {
  EXPECT_EQ(parse_sheet("<table:table table:name=\"T\"><table:table-row "
                        "table:number-rows-repeated=\"1048576\"><table:table-cell "
                        "table:number-columns-repeated=\"16384\"><text:p>x</text:p></"
                        "table:table-cell></table:table-row></table:table>")
                .main(),
            "T\nx");
}

TEST(Odf, a_cell_without_paragraph_shows_its_value) {
  EXPECT_EQ(parse_sheet("<table:table table:name=\"T\"><table:table-row><table:table-cell "
                        "office:value=\"7\"/><table:table-cell office:value=\"8\">"
                        "<text:p>eight</text:p></table:table-cell></table:table-row></table:table>")
                .main(),
            "T\n7\teight");
}

TEST(Odf, speaker_notes_are_remarks) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::open_document(
          "presentation",
          "<draw:page><draw:frame><draw:text-box><text:p>slide</text:p></draw:text-box>"
          "</draw:frame><presentation:notes><text:p>say</text:p></presentation:notes>"
          "</draw:page>")
          .bytes());
  EXPECT_EQ(parsed.main(), "slide");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_remark), "say");
}

TEST(Odf, embedded_objects_follow_the_body) {
  auto document = OfficeDocument::open_document(
      "text", "<text:p>body<draw:object xlink:href=\"./Object 1\"/></text:p>");
  document.part(
      "Object 1/content.xml",
      odf_part("office:document-content", "<office:body><text:p>chart</text:p></office:body>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\nchart");
}

TEST(Odf, the_forerunner_of_the_format_is_read) {
  ZipWriter zip;
  zip.add("mimetype", "application/vnd.sun.xml.writer");
  zip.add(
      "content.xml",
      R"(<!DOCTYPE office:document-content PUBLIC "-//OpenOffice.org//DTD OfficeDocument 1.0//EN" "office.dtd"><office:document-content xmlns:office="http://openoffice.org/2000/office" xmlns:text="http://openoffice.org/2000/text"><office:body><text:p>old</text:p></office:body></office:document-content>)");
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "old");
}

TEST(Odf, an_encrypted_document_is_refused) {
  auto document = OfficeDocument::open_document("text", "<text:p>cipher</text:p>");
  document.part(
      "META-INF/manifest.xml",
      R"(<m:manifest xmlns:m="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0"><m:file-entry m:full-path="content.xml"><m:encryption-data/></m:file-entry></m:manifest>)");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_TRUE(parsed.has_parser);
  EXPECT_FALSE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::encrypted);
  EXPECT_EQ(parsed.reason, "the document needs a password");
  EXPECT_TRUE(parsed.text.empty());
}

TEST(Odf, objects_count_as_embedded_documents) {
  auto document = OfficeDocument::open_document(
      "text", "<text:p>body<draw:object xlink:href=\"./Object 1\"/></text:p>");
  document.part("Object 1/content.xml",
                odf_part("office:document-content",
                         "<office:body><office:spreadsheet><table:table table:name=\"Sheet\">"
                         "<table:table-row><table:table-cell office:value=\"7\"/>"
                         "</table:table-row></table:table></office:spreadsheet></office:body>"));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body\nSheet\n7");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Odf, objects_of_objects_are_read_and_circles_end) {
  auto document = OfficeDocument::open_document("text", "<draw:object xlink:href=\"./A\"/>");
  document.part("A/content.xml",
                odf_part("office:document-content",
                         "<office:body><text:p>a</text:p><draw:object xlink:href=\"./B\"/>"
                         "</office:body>"));
  document.part("A/B/content.xml",
                odf_part("office:document-content",
                         "<office:body><text:p>b</text:p><draw:object xlink:href=\"../../A\"/>"
                         "</office:body>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "a\nb");
}

TEST(Odf, an_object_that_is_named_in_two_cases_is_read_once) {
  auto document = OfficeDocument::open_document(
      "text", "<draw:object xlink:href=\"./A\"/><draw:object xlink:href=\"./a\"/>");
  document.part("A/content.xml", odf_part("office:document-content",
                                          "<office:body><text:p>chart</text:p></office:body>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "chart");
}

TEST(Odf, an_object_that_names_the_document_itself_is_not_read_again) {
  for (std::string const address : {"./", "/", "../", "content.xml"}) {
    auto const parsed =
        parse_text("<text:p>body</text:p><draw:object xlink:href=\"" + address + "\"/>");
    EXPECT_EQ(parsed.main(), "body") << address;
    EXPECT_EQ(parsed.counts.i_embed, 0) << address;
  }
}

TEST(Odf, objects_over_their_bound_are_noted) {
  Orlec::ParseLimits limits;
  limits.i_entries = 10;
  test::ScopedLimits const scoped(limits);
  std::string objects;
  for (int i = 0; i < 11; ++i) {
    objects += "<draw:object xlink:href=\"./" + std::to_string(i) + "\"/>";
  }
  auto const parsed = parse_text("<text:p>body</text:p>" + objects);
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "over 10 objects");
}

TEST(Odf, files_of_the_package_are_read_behind_the_text) {
  auto document = OfficeDocument::open_document(
      "text", "<text:p>a<draw:object-ole xlink:href=\"./Object 1\"/>b</text:p>");
  document.part("Object 1", "the file");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "ab\nthe file");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Odf, pictures_of_the_package_are_counted) {
  auto document = OfficeDocument::open_document("text", "<text:p>a</text:p>");
  document.part("Pictures/1.png", "x").part("ObjectReplacements/Object 1", "x");
  EXPECT_EQ(test::parse_bytes(document.bytes()).counts.i_img, 1);
}

TEST(Odf, pages_are_those_that_the_properties_state) {
  auto document = OfficeDocument::open_document("text", "<text:p>a</text:p>");
  document.part("meta.xml", odf_part("office:document-meta",
                                     "<office:meta><meta:document-statistic "
                                     "meta:page-count=\"12\"/></office:meta>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).counts.i_page, 12);
}

TEST(Odf, pages_of_a_show_are_its_slides_and_those_of_a_workbook_its_sheets) {
  auto const show = OfficeDocument::open_document("presentation", "<draw:page/><draw:page/>");
  EXPECT_EQ(test::parse_bytes(show.bytes()).counts.i_page, 2);
  EXPECT_EQ(parse_sheet("<table:table/><table:table/><table:table/>").counts.i_page, 3);
}

TEST(Odf, addresses_behind_links_are_other_text) {
  auto const parsed = parse_text(
      "<text:p><text:a xlink:href=\"http://a.example\">there</text:a>"
      "<text:a xlink:href=\"#here\">here</text:a></text:p>");
  EXPECT_EQ(parsed.main(), "therehere");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "http://a.example");
}

TEST(FlatOdf, text_is_read_as_from_a_package) {
  auto const parsed = test::parse_bytes(flat_text(
      "<text:h>One</text:h><text:p>a<text:s text:c=\"2\"/>b<text:note text:note-class=\"footnote\">"
      "<text:note-body><text:p>foot</text:p></text:note-body></text:note></text:p>"));
  EXPECT_EQ(parsed.main(), "One\na  b");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_fn), "foot");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(FlatOdf, sheets_have_their_names) {
  auto const parsed = test::parse_bytes(
      flat("spreadsheet",
           "<office:body><office:spreadsheet><table:table table:name=\"First\"><table:table-row>"
           "<table:table-cell office:value=\"1\"/><table:table-cell><text:p>2</text:p>"
           "</table:table-cell></table:table-row></table:table></office:spreadsheet>"
           "</office:body>"));
  EXPECT_EQ(parsed.main(), "First\n1\t2");
  EXPECT_EQ(parsed.counts.i_page, 1);
}

TEST(FlatOdf, properties_headers_and_styles_are_told_apart) {
  auto const parsed = test::parse_bytes(
      flat("text",
           "<office:meta><dc:title>Plan</dc:title><meta:document-statistic "
           "meta:page-count=\"3\"/></office:meta><office:styles><text:p>sample</text:p>"
           "</office:styles><office:master-styles><style:master-page><style:header>"
           "<text:p>head</text:p></style:header></style:master-page></office:master-styles>"
           "<office:body><office:text><text:p>body</text:p></office:text></office:body>"));
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "head");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_property), "title: Plan");
  EXPECT_EQ(parsed.counts.i_page, 3);
}

TEST(FlatOdf, embedded_files_follow_the_text_and_pictures_are_counted) {
  auto const parsed = test::parse_bytes(flat_text(
      "<text:p>a<draw:frame><draw:object-ole><office:binary-data>dGhlIGZp\n  bGU=\n"
      "</office:binary-data></draw:object-ole><draw:image><office:binary-data>AAAA"
      "</office:binary-data></draw:image></draw:frame>"
      "<draw:image><office:binary-data>dGV4dA==</office:binary-data></draw:image>b</text:p>"));
  EXPECT_EQ(parsed.main(), "ab\nthe file");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(FlatOdf, a_document_that_is_cut_short_is_damaged_and_read_so_far) {
  auto const whole = flat_text("<text:p>one</text:p><text:p>two</text:p>");
  auto const parsed = test::parse_bytes(whole.substr(0, whole.find("two")));
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(FlatOdf, every_truncation_and_flipped_bytes_end_well) {
  auto const bytes = flat_text(
      "<text:p>a<draw:object-ole><office:binary-data>dGhl</office:binary-data></draw:object-ole>"
      "</text:p><table:table><table:table-row><table:table-cell/></table:table-row>"
      "</table:table>");
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    test::parse_bytes(bytes.substr(0, length));
  }
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    auto changed = bytes;
    changed[random() % changed.size()] = static_cast<char>(random());
    test::parse_bytes(changed);
  }
}
