#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;

test::Parsed parse_text(std::string const& body) {
  return test::parse_bytes(OfficeDocument::open_document("text", body).bytes());
}

test::Parsed parse_sheet(std::string const& body) {
  return test::parse_bytes(OfficeDocument::open_document("spreadsheet", body).bytes());
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
