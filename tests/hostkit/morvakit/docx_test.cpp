#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseOutcome;

std::string paragraph(std::string const& text) {
  return "<w:p><w:r><w:t>" + text + "</w:t></w:r></w:p>";
}

std::string main_text(std::string const& body) {
  return test::parse_bytes(OfficeDocument::word(body).bytes()).main();
}

/// The text of one kind, from a part beside the body.
std::string beside(std::string const& relation, std::string const& root,
                   Orlec::ParseTextType kind) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", relation, "beside.xml");
  document.part("word/beside.xml", word_part(root, paragraph("beside")));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body");
  return parsed.kind(kind);
}

}  // namespace

TEST(Docx, paragraphs_are_lines) {
  EXPECT_EQ(main_text(paragraph("one") + paragraph("二")), "one\n二");
}

TEST(Docx, the_outcome_of_a_document_with_text_is_text) {
  auto const parsed = test::parse_bytes(OfficeDocument::word(paragraph("one")).bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Docx, a_document_without_text_has_an_empty_main_text) {
  auto const parsed = test::parse_bytes(OfficeDocument::word("<w:p/>").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
  EXPECT_EQ(parsed.main(), "");
}

TEST(Docx, the_strict_vocabulary_is_read) {
  EXPECT_EQ(test::parse_bytes(OfficeDocument::word(paragraph("strict"), true).bytes()).main(),
            "strict");
}

TEST(Docx, the_main_part_is_found_through_relationships) {
  auto document = OfficeDocument::word(paragraph("decoy"));
  document.part("other/place.xml", word_part("w:document", paragraph("real")));
  ZipWriter zip;
  zip.add(
      "[Content_Types].xml",
      R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Override PartName="/other/place.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>)");
  zip.add(
      "_rels/.rels",
      R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"><Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="/other/place.xml"/></Relationships>)");
  zip.add("other/place.xml", word_part("w:document", "<w:body>" + paragraph("real") + "</w:body>"));
  zip.add("word/document.xml", word_part("w:document", paragraph("decoy")));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "real");
}

TEST(Docx, part_names_are_compared_without_case) {
  ZipWriter zip;
  zip.add(
      "[content_types].xml",
      R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>)");
  zip.add(
      "_rels/.rels",
      R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"><Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="WORD/Document.xml"/></Relationships>)");
  zip.add("word/document.xml",
          word_part("w:document", "<w:body>" + paragraph("case") + "</w:body>"));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "case");
}

TEST(Docx, cells_are_parted_by_tabs_and_rows_by_line_ends) {
  auto const cell = [](std::string const& text) { return "<w:tc>" + paragraph(text) + "</w:tc>"; };
  EXPECT_EQ(main_text("<w:tbl><w:tr>" + cell("a") + cell("b") + "</w:tr><w:tr>" + cell("c") +
                      "</w:tr></w:tbl>" + paragraph("d")),
            "a\tb\nc\nd");
}

TEST(Docx, runs_of_one_word_stay_together) {
  EXPECT_EQ(main_text("<w:p><w:r><w:t>wo</w:t></w:r><w:proofErr/><w:r><w:t>rd</w:t></w:r></w:p>"),
            "word");
}

TEST(Docx, tabs_and_breaks_become_white_space) {
  EXPECT_EQ(main_text("<w:p><w:r><w:t>a</w:t><w:tab/><w:t>b</w:t><w:br/><w:t>c</w:t></w:r></w:p>"),
            "a\tb\nc");
}

TEST(Docx, a_tab_stop_is_no_text) {
  EXPECT_EQ(main_text("<w:p><w:pPr><w:tabs><w:tab "
                      "w:val=\"left\"/></w:tabs></w:pPr><w:r><w:t>a</w:t></w:r></w:p>"),
            "a");
}

TEST(Docx, a_soft_hyphen_keeps_its_word_whole) {
  EXPECT_EQ(main_text("<w:p><w:r><w:t>co</w:t><w:softHyphen/><w:t>operate</w:t></w:r></w:p>"),
            "cooperate");
}

TEST(Docx, insertions_are_text_and_deletions_are_not) {
  EXPECT_EQ(
      main_text(
          "<w:p><w:ins><w:r><w:t>new</w:t></w:r></w:ins><w:del><w:r><w:delText>old</w:delText>"
          "</w:r></w:del><w:moveFrom><w:r><w:t>from</w:t></w:r></w:moveFrom><w:moveTo><w:r>"
          "<w:t>to</w:t></w:r></w:moveTo></w:p>"),
      "newto");
}

TEST(Docx, a_field_shows_its_result_and_not_its_code) {
  EXPECT_EQ(
      main_text(
          R"(<w:p><w:r><w:fldChar w:fldCharType="begin"/></w:r><w:r><w:instrText>PAGE</w:instrText></w:r>)"
          R"(<w:r><w:t>code</w:t></w:r><w:r><w:fldChar w:fldCharType="separate"/></w:r><w:r><w:t>7</w:t></w:r>)"
          R"(<w:r><w:fldChar w:fldCharType="end"/></w:r></w:p>)"),
      "7");
}

TEST(Docx, a_field_without_end_does_not_swallow_the_rest) {
  EXPECT_EQ(
      main_text(R"(<w:p><w:r><w:fldChar w:fldCharType="begin"/></w:r></w:p>)" + paragraph("rest")),
      "rest");
}

TEST(Docx, links_and_content_controls_and_formulas_hold_text) {
  EXPECT_EQ(
      main_text(
          "<w:p><w:hyperlink><w:r><w:t>link</w:t></w:r></w:hyperlink><w:sdt><w:sdtContent><w:r>"
          "<w:t> control</w:t></w:r></w:sdtContent></w:sdt><m:oMath><m:r><m:t> "
          "x=1</m:t></m:r></m:oMath></w:p>"),
      "link control x=1");
}

TEST(Docx, alternative_content_is_read_once) {
  auto const box = [](std::string const& text) {
    return "<w:txbxContent>" + paragraph(text) + "</w:txbxContent>";
  };
  EXPECT_EQ(main_text("<w:p><w:r><mc:AlternateContent><mc:Choice Requires=\"wps\">" + box("new") +
                      "</mc:Choice><mc:Fallback>" + box("old") +
                      "</mc:Fallback></mc:AlternateContent></w:r></w:p>"),
            "new");
}

TEST(Docx, an_alternative_that_is_not_understood_gives_way_to_the_fallback) {
  EXPECT_EQ(
      main_text("<w:p><mc:AlternateContent><mc:Choice Requires=\"future\"><w:r><w:t>new</w:t></w:r>"
                "</mc:Choice><mc:Fallback><w:r><w:t>old</w:t></w:r></mc:Fallback></"
                "mc:AlternateContent></w:p>"),
      "old");
}

TEST(Docx, a_phonetic_guide_stands_apart_from_the_word_it_explains) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::word("<w:p><w:ruby><w:rt><w:r><w:t>kan</w:t></w:r></w:rt><w:rubyBase><w:r>"
                           "<w:t>漢</w:t></w:r></w:rubyBase></w:ruby></w:p>")
          .bytes());
  EXPECT_EQ(parsed.main(), "漢");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "kan");
}

TEST(Docx, a_symbol_is_a_character_unless_its_font_alone_gives_it_a_meaning) {
  EXPECT_EQ(main_text(R"(<w:p><w:r><w:sym w:char="00E9"/><w:sym w:char="F0FC"/></w:r></w:p>)"),
            "é ");
}

TEST(Docx, headers_and_footers_are_kept_apart) {
  EXPECT_EQ(beside("header", "w:hdr", Orlec::ParseTextType_hf), "beside");
  EXPECT_EQ(beside("footer", "w:ftr", Orlec::ParseTextType_hf), "beside");
}

TEST(Docx, comments_are_kept_apart) {
  EXPECT_EQ(beside("comments", "w:comments", Orlec::ParseTextType_comment), "beside");
}

TEST(Docx, footnotes_are_kept_apart) {
  EXPECT_EQ(beside("footnotes", "w:footnotes", Orlec::ParseTextType_fn), "beside");
}

TEST(Docx, endnotes_are_kept_apart) {
  EXPECT_EQ(beside("endnotes", "w:endnotes", Orlec::ParseTextType_en), "beside");
}

TEST(Docx, a_header_that_is_used_twice_is_read_once) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "header", "header.xml");
  document.relation("word/document.xml", "rId8", "header", "header.xml");
  document.part("word/header.xml", word_part("w:hdr", paragraph("head")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "head");
}

TEST(Docx, kinds_without_text_are_absent) {
  EXPECT_EQ(test::parse_bytes(OfficeDocument::word(paragraph("body")).bytes())
                .text.count(Orlec::ParseTextType_hf),
            0U);
}

TEST(Docx, form_fields_are_control_text) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::word(
          R"(<w:p><w:r><w:fldChar w:fldCharType="begin"><w:ffData><w:ddList>)"
          R"(<w:listEntry w:val="red"/><w:listEntry w:val="blue"/></w:ddList></w:ffData>)"
          R"(</w:fldChar></w:r><w:r><w:fldChar w:fldCharType="end"/></w:r></w:p>)")
          .bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "red\nblue");
}

TEST(Docx, the_text_of_a_chart_follows_the_body) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "chart", "charts/chart1.xml");
  document.part(
      "word/charts/chart1.xml",
      word_part(
          "c:chartSpace",
          "<c:title><a:p><a:r><a:t>Sales</a:t></a:r></a:p></c:title><c:cat><c:strRef>"
          "<c:f>Sheet1!A1</c:f><c:strCache><c:pt><c:v>North</c:v></c:pt></c:strCache></c:strRef>"
          "</c:cat><c:val><c:numRef><c:numCache><c:pt><c:v>5</c:v></c:pt></c:numCache></c:numRef></"
          "c:val>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\nSales\nNorth\n5");
}

TEST(Docx, numbers_of_a_chart_that_are_dates_are_written_as_dates) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "chart", "charts/chart1.xml");
  document.part("word/charts/chart1.xml",
                word_part("c:chartSpace",
                          "<c:cat><c:numRef><c:numCache><c:formatCode>yyyy-mm-dd</c:formatCode>"
                          "<c:pt><c:v>45000</c:v></c:pt><c:pt><c:v>45001</c:v></c:pt></c:numCache>"
                          "</c:numRef></c:cat><c:val><c:numLit><c:formatCode>General"
                          "</c:formatCode><c:pt><c:v>2.5</c:v></c:pt></c:numLit></c:val>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\n2023-03-15\t2023-03-16\n2.5");
}

TEST(Docx, shapes_that_a_user_drew_on_a_chart_are_read) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "chart", "charts/chart1.xml");
  document.relation("word/charts/chart1.xml", "rId1", "chartUserShapes", "../drawings/d.xml");
  document.part("word/charts/chart1.xml", word_part("c:chartSpace", ""));
  document.part("word/drawings/d.xml",
                word_part("c:userShapes", "<a:p><a:r><a:t>remark</a:t></a:r></a:p>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\nremark");
}

TEST(Docx, an_embedded_workbook_follows_the_text) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "package", "embeddings/sheet.xlsx");
  document.relation("word/document.xml", "rId8", "package", "embeddings/sheet.xlsx");
  document.part("word/embeddings/sheet.xlsx",
                OfficeDocument::workbook("<sheetData><row><c t=\"inlineStr\"><is><t>cell</t></is>"
                                         "</c></row></sheetData>")
                    .bytes());
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body\nFirst\ncell");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Docx, the_workbook_behind_a_chart_is_embedded) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "chart", "charts/chart1.xml");
  document.relation("word/charts/chart1.xml", "rId1", "package", "../embeddings/data.csv");
  document.part("word/charts/chart1.xml", word_part("c:chartSpace", ""));
  document.part("word/embeddings/data.csv", "a,b\n1,2");
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\na,b\n1,2");
}

TEST(Docx, a_damaged_embedded_file_leaves_the_document_incomplete) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "package", "embeddings/sheet.xlsx");
  auto const sheet = OfficeDocument::workbook("<sheetData/>").bytes();
  document.part("word/embeddings/sheet.xlsx", sheet.substr(0, sheet.size() / 2));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_TRUE(parsed.reason.starts_with("\"word/embeddings/sheet.xlsx\": ")) << parsed.reason;
  EXPECT_EQ(parsed.main(), "body");
}

TEST(Docx, an_embedded_file_that_is_locked_is_named) {
  auto document = OfficeDocument::word(paragraph("body"));
  ZipWriter::Options locked;
  locked.encrypted = true;
  document.relation("word/document.xml", "rId7", "package", "embeddings/a.txt");
  document.part("word/embeddings/a.txt", "x", locked);
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"word/embeddings/a.txt\" needs a password");
}

TEST(Docx, a_document_embedded_in_itself_ends) {
  auto bytes = OfficeDocument::word(paragraph("body")).bytes();
  for (int i = 0; i < 12; ++i) {
    auto document = OfficeDocument::word(paragraph("body"));
    document.relation("word/document.xml", "rId7", "package", "embeddings/d.docx");
    document.part("word/embeddings/d.docx", bytes);
    bytes = document.bytes();
  }
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.counts.i_embed, 9);
}

TEST(Docx, pieces_of_text_in_other_formats_come_before_embedded_files) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "package", "embeddings/a.txt");
  document.relation("word/document.xml", "rId8", "aFChunk", "chunk.html");
  document.part("word/embeddings/a.txt", "file");
  document.part("word/chunk.html", "<html><body><p>chunk</p></body></html>");
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "body\nchunk\nfile");
}

TEST(Docx, files_that_lie_outside_are_not_embedded) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "oleObject", "word/document.xml", true);
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_embed, 0);
}

TEST(Docx, each_picture_is_counted_once) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "image", "media/a.png");
  document.relation("word/document.xml", "rId8", "image", "media/a.png");
  document.relation("word/document.xml", "rId9", "header", "header.xml");
  document.relation("word/header.xml", "rId1", "image", "media/b.png");
  document.part("word/header.xml", word_part("w:hdr", paragraph("head")));
  document.part("word/media/a.png", "a").part("word/media/b.png", "b");
  EXPECT_EQ(test::parse_bytes(document.bytes()).counts.i_img, 2);
}

TEST(Docx, links_in_footnotes_are_other_text) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "footnotes", "footnotes.xml");
  document.relation("word/footnotes.xml", "rId1", "hyperlink", "http://example.org/x", true);
  document.part("word/footnotes.xml", word_part("w:footnotes", paragraph("note")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_other),
            "http://example.org/x");
}

TEST(Docx, pages_are_those_that_the_properties_state) {
  auto const pages = [](std::string const& stated) {
    auto document = OfficeDocument::word(paragraph("body"));
    document.relation("", "rId2", "extended-properties", "docProps/app.xml");
    document.part("docProps/app.xml",
                  "<Properties xmlns=\"p\"><Pages>" + stated + "</Pages></Properties>");
    return test::parse_bytes(document.bytes()).counts.i_page;
  };
  EXPECT_EQ(pages("12"), 12);
  EXPECT_EQ(pages("many"), 0);
  EXPECT_EQ(pages("-3"), 0);
  EXPECT_EQ(pages("99999999999999999999"), 0);
}

TEST(Docx, addresses_of_links_and_descriptions_of_pictures_are_other_text) {
  auto document = OfficeDocument::word(
      "<w:p><w:r><w:drawing><wp:docPr descr=\"a cat\"/></w:drawing></w:r></w:p>");
  document.relation("word/document.xml", "rId7", "hyperlink", "http://example.org/x", true);
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_other),
            "a cat\nhttp://example.org/x");
}

TEST(Docx, properties_are_lines_of_name_and_value) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("", "rId2", "metadata/core-properties", "docProps/core.xml");
  document.relation("", "rId3", "custom-properties", "docProps/custom.xml");
  document.part(
      "docProps/core.xml",
      R"(<cp:coreProperties xmlns:cp="c" xmlns:dc="d"><dc:title>Plan</dc:title><dc:subject/></cp:coreProperties>)");
  document.part(
      "docProps/custom.xml",
      R"(<Properties xmlns:vt="v"><property name="Client"><vt:lpwstr>ACME</vt:lpwstr></property></Properties>)");
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_property),
            "title: Plan\nClient: ACME");
}

TEST(Docx, a_broken_body_is_damaged_and_keeps_the_text_before_the_fault) {
  ZipWriter zip;
  zip.add(
      "[Content_Types].xml",
      R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>)");
  zip.add(
      "_rels/.rels",
      R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"><Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/></Relationships>)");
  auto const whole = word_part("w:document", "<w:body>" + paragraph("before") + "</w:body>");
  zip.add("word/document.xml", whole.substr(0, whole.find("</w:body>")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_FALSE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "before");
  EXPECT_EQ(parsed.reason, "the part word/document.xml, line 1: no element found");
}

TEST(Docx, a_missing_part_beside_the_body_is_damage_and_the_body_is_read) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "header", "gone.xml");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the part word/gone.xml is missing");
}

TEST(Docx, relationships_are_charged_with_their_types) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  auto document = OfficeDocument::word(paragraph("body"));
  for (int i = 0; i < 50; ++i) {
    document.relation("word/document.xml", "rId7", std::string(5000, 't'), "x.xml");
  }
  EXPECT_EQ(test::parse_bytes(document.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Docx, a_header_that_is_named_in_two_cases_is_read_once) {
  auto document = OfficeDocument::word(paragraph("body"));
  document.relation("word/document.xml", "rId7", "header", "header.xml");
  document.relation("word/document.xml", "rId8", "header", "HEADER.xml");
  document.part("word/header.xml", word_part("w:hdr", paragraph("head")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "head");
}
