#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/morvakit/zip_writer.h"

namespace {

using Orlec::ParseOutcome;

constexpr std::string_view microsoft = "http://schemas.microsoft.com/xps/2005/06";
constexpr std::string_view open = "http://schemas.openxps.org/oxps/v1.0";

std::string relationships(std::string const& list) {
  return "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
         list + "</Relationships>";
}

std::string relationship(std::string const& type, std::string const& target) {
  return "<Relationship Id=\"R\" Type=\"" + type + "\" Target=\"" + target + "\"/>";
}

std::string page(std::string const& content, std::string_view space = microsoft) {
  return "<FixedPage xmlns=\"" + std::string(space) + "\" Width=\"800\" Height=\"1000\">" +
         content + "</FixedPage>";
}

std::string glyphs(int x, int y, std::string const& text, std::string const& more = {}) {
  return "<Glyphs OriginX=\"" + std::to_string(x) + "\" OriginY=\"" + std::to_string(y) +
         "\" FontRenderingEmSize=\"10\" FontUri=\"/F.odttf\" UnicodeString=\"" + text + "\" " +
         more + "/>";
}

constexpr char const* types =
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Default Extension="fdseq" ContentType="application/vnd.ms-package.xps-fixeddocumentsequence+xml"/></Types>)";

/// A package of one document but for its pages, which `pages` lists.
ZipWriter package(std::string const& pages, std::string_view space = microsoft,
                  std::string const& root_relations = {}) {
  ZipWriter zip;
  zip.add("[Content_Types].xml", types);
  zip.add("_rels/.rels", relationships(relationship(std::string(space) + "/fixedrepresentation",
                                                    "/FixedDocSeq.fdseq") +
                                       root_relations));
  zip.add("FixedDocSeq.fdseq", "<FixedDocumentSequence xmlns=\"" + std::string(space) +
                                   "\"><DocumentReference Source=\"Documents/1/FixedDoc.fdoc\"/>"
                                   "</FixedDocumentSequence>");
  zip.add("Documents/1/FixedDoc.fdoc",
          "<FixedDocument xmlns=\"" + std::string(space) + "\">" + pages + "</FixedDocument>");
  return zip;
}

constexpr char const* one_page = R"(<PageContent Source="Pages/1.fpage"/>)";

test::Parsed parse_page(std::string const& content, std::string_view space = microsoft) {
  auto zip = package(one_page, space);
  zip.add("Documents/1/Pages/1.fpage", page(content, space));
  return test::parse_bytes(zip.bytes());
}

}  // namespace

TEST(Xps, pages_follow_each_other_in_the_order_of_the_document) {
  auto zip = package(R"(<PageContent Source="Pages/2.fpage"/><PageContent Source="/P1.fpage"/>)");
  zip.add("P1.fpage", page(glyphs(10, 10, "second")));
  zip.add("Documents/1/Pages/2.fpage", page(glyphs(10, 10, "first")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "first\nsecond");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Xps, the_open_vocabulary_is_read) {
  EXPECT_EQ(parse_page(glyphs(10, 10, "text"), open).main(), "text");
}

TEST(Xps, an_escape_in_front_of_a_string_is_no_text) {
  EXPECT_EQ(parse_page(glyphs(10, 10, "{}{a}")).main(), "{a}");
}

TEST(Xps, runs_of_one_line_are_joined_or_parted_by_their_distance) {
  auto const text = glyphs(10, 10, "wo", R"(Indices=",72;,56")") + glyphs(23, 10, "rd") +
                    glyphs(37, 10, "and") + glyphs(200, 10, "cell");
  EXPECT_EQ(parse_page(text).main(), "word and\tcell");
}

TEST(Xps, another_height_is_another_line) {
  EXPECT_EQ(parse_page(glyphs(10, 10, "one") + glyphs(10, 25, "two")).main(), "one\ntwo");
}

TEST(Xps, a_blank_at_the_end_of_a_run_stays) {
  EXPECT_EQ(parse_page(glyphs(10, 10, "one ") + glyphs(29, 10, "two")).main(), "one two");
}

TEST(Xps, glyphs_that_stand_for_several_characters_keep_their_places) {
  auto const text =
      glyphs(10, 10, "officer", R"(Indices=",55;(3:1),80;,50;,55;,33")") + glyphs(40, 10, "s");
  EXPECT_EQ(parse_page(text).main(), "officers");
}

TEST(Xps, a_canvas_moves_what_stands_on_it) {
  auto const text = glyphs(10, 110, "1", R"(Indices=",55")") +
                    R"(<Canvas RenderTransform="1,0,0,1,0,100">)" + glyphs(15, 10, "2") +
                    "</Canvas>";
  EXPECT_EQ(parse_page(text).main(), "12");
}

TEST(Xps, a_transformation_may_be_an_element) {
  auto const text = glyphs(10, 110, "1", R"(Indices=",55")") +
                    "<Canvas><Canvas.RenderTransform><MatrixTransform "
                    "Matrix=\"1,0,0,1,0,100\"/></Canvas.RenderTransform>" +
                    glyphs(15, 10, "2") + "</Canvas>";
  EXPECT_EQ(parse_page(text).main(), "12");
}

TEST(Xps, writing_from_right_to_left_goes_on_to_the_left) {
  auto const text = glyphs(100, 10, "אב", R"(BidiLevel="1" Indices=",50;,50")") +
                    glyphs(87, 10, "גד", R"(BidiLevel="1" Indices=",50;,50")");
  EXPECT_EQ(parse_page(text).main(), "אב גד");
}

TEST(Xps, pictures_are_counted_and_their_descriptions_are_other_text) {
  auto const parsed =
      parse_page(R"(<Path AutomationProperties.Name="A cat"><Path.Fill><ImageBrush/></Path.Fill>)"
                 R"(</Path><Path FixedPage.NavigateUri="http://a.example"/>)");
  EXPECT_EQ(parsed.counts.i_img, 1);
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "A cat\nhttp://a.example");
}

TEST(Xps, properties_are_lines_of_name_and_value) {
  auto zip = package(one_page, microsoft,
                     relationship("http://schemas.openxmlformats.org/package/2006/relationships/"
                                  "metadata/core-properties",
                                  "docProps/core.xml"));
  zip.add("Documents/1/Pages/1.fpage", page(glyphs(10, 10, "x")));
  zip.add(
      "docProps/core.xml",
      R"(<c:coreProperties xmlns:c="http://c" xmlns:dc="http://dc"><dc:title>Plan</dc:title></c:coreProperties>)");
  EXPECT_EQ(test::parse_bytes(zip.bytes()).kind(Orlec::ParseTextType_property), "title: Plan");
}

TEST(Xps, the_outline_is_other_text) {
  auto zip = package(one_page);
  zip.add("Documents/1/Pages/1.fpage", page(glyphs(10, 10, "x")));
  zip.add("Documents/1/_rels/FixedDoc.fdoc.rels",
          relationships(relationship(std::string(microsoft) + "/documentstructure", "S.struct")));
  zip.add(
      "Documents/1/S.struct",
      R"(<DocumentStructure xmlns="http://s"><DocumentOutline><OutlineEntry Description="Chapter"/></DocumentOutline></DocumentStructure>)");
  EXPECT_EQ(test::parse_bytes(zip.bytes()).kind(Orlec::ParseTextType_other), "Chapter");
}

TEST(Xps, a_part_in_pieces_is_put_together) {
  auto zip = package(one_page);
  auto const whole = page(glyphs(10, 10, "pieces"));
  zip.add("Documents/1/Pages/1.fpage/[1].last.piece", whole.substr(40));
  zip.add("Documents/1/Pages/1.fpage/[0].piece", whole.substr(0, 40));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "pieces");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Xps, a_document_that_is_missing_is_damage_and_the_others_are_read) {
  ZipWriter zip;
  auto const space = std::string(microsoft);
  zip.add("[Content_Types].xml", types);
  zip.add("_rels/.rels",
          relationships(relationship(space + "/fixedrepresentation", "/FixedDocSeq.fdseq")));
  zip.add("FixedDocSeq.fdseq", "<FixedDocumentSequence xmlns=\"" + space +
                                   "\"><DocumentReference Source=\"Gone.fdoc\"/>"
                                   "<DocumentReference Source=\"There.fdoc\"/>"
                                   "</FixedDocumentSequence>");
  zip.add("There.fdoc", "<FixedDocument xmlns=\"" + space + "\">" + one_page + "</FixedDocument>");
  zip.add("Pages/1.fpage", page(glyphs(10, 10, "text")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the part Gone.fdoc is missing");
}

TEST(Xps, a_page_that_is_missing_is_damage_and_the_others_are_read) {
  auto zip = package(std::string(one_page) + R"(<PageContent Source="Pages/2.fpage"/>)");
  zip.add("Documents/1/Pages/2.fpage", page(glyphs(10, 10, "there")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "there");
  EXPECT_EQ(parsed.reason, "the part Documents/1/Pages/1.fpage is missing");
}

TEST(Xps, without_a_document_the_pages_are_searched) {
  ZipWriter zip;
  zip.add("[Content_Types].xml", types);
  zip.add("Documents/1/Pages/1.fpage", page(glyphs(10, 10, "found")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "found");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Xps, indices_that_make_no_sense_are_survived) {
  for (auto const* const indices : {"(99999999999999999999:9),1", "(0:0)", "(:)", "(", ",,,,;;;;",
                                    ",1e999;,-1e999", "(2:99)"}) {
    auto const more = "Indices=\"" + std::string(indices) + "\"";
    EXPECT_EQ(parse_page(glyphs(10, 10, "abc", more)).main().size(), 3U) << indices;
  }
}

TEST(Xps, pages_in_a_long_directory_are_charged_with_their_whole_names) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  auto const sequence = std::string(5000, 'd') + "/FixedDocSeq.fdseq";
  std::string documents;
  for (int i = 0; i < 50; ++i) {
    documents += R"(<DocumentReference Source="x"/>)";
  }
  ZipWriter zip;
  zip.add("[Content_Types].xml", types);
  zip.add("_rels/.rels", relationships(relationship(std::string(microsoft) + "/fixedrepresentation",
                                                    "/" + sequence)));
  zip.add(sequence, "<FixedDocumentSequence xmlns=\"" + std::string(microsoft) + "\">" + documents +
                        "</FixedDocumentSequence>");
  EXPECT_EQ(test::parse_bytes(zip.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Xps, every_truncation_and_flipped_bytes_end_well) {
  auto zip = package(one_page);
  zip.add("Documents/1/Pages/1.fpage",
          page(glyphs(10, 10, "one", R"(Indices="(2:1)3,40;,50")") + glyphs(10, 20, "two")));
  auto const bytes = zip.bytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    test::parse_bytes(bytes.substr(0, length));
  }
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    auto changed = bytes;
    for (int flips = 0; flips < 3; ++flips) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    test::parse_bytes(changed);
  }
}
