#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;

std::string slide(std::string const& shapes) {
  return slide_part("p:sld", "<p:cSld><p:spTree>" + shapes + "</p:spTree></p:cSld>");
}

}  // namespace

TEST(Pptx, shapes_are_lines) {
  EXPECT_EQ(test::parse_bytes(OfficeDocument::show(shape("title", "title") + shape("body")).bytes())
                .main(),
            "title\nbody");
}

TEST(Pptx, slides_and_their_pictures_are_counted) {
  auto document = OfficeDocument::show(
      shape("one"),
      R"(<p:sldIdLst><p:sldId id="2" r:id="rId2"/><p:sldId id="1" r:id="rId1"/></p:sldIdLst>)");
  document.relation("ppt/presentation.xml", "rId2", "slide", "slides/slide2.xml");
  document.relation("ppt/slides/slide1.xml", "rId1", "image", "../media/a.png");
  document.relation("ppt/slides/slide2.xml", "rId1", "image", "../media/a.png");
  document.part("ppt/slides/slide2.xml", slide(shape("two"))).part("ppt/media/a.png", "a");
  auto const counts = test::parse_bytes(document.bytes()).counts;
  EXPECT_EQ(counts.i_page, 2);
  EXPECT_EQ(counts.i_img, 1);
}

TEST(Pptx, embedded_files_follow_all_slides) {
  auto document = OfficeDocument::show(
      shape("one"),
      R"(<p:sldIdLst><p:sldId id="1" r:id="rId1"/><p:sldId id="2" r:id="rId2"/></p:sldIdLst>)");
  document.relation("ppt/presentation.xml", "rId2", "slide", "slides/slide2.xml");
  document.relation("ppt/slides/slide1.xml", "rId1", "package", "../embeddings/a.txt");
  document.part("ppt/slides/slide2.xml", slide(shape("two")));
  document.part("ppt/embeddings/a.txt", "file");
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "one\ntwo\nfile");
}

TEST(Pptx, slides_come_in_the_order_of_the_show) {
  auto document = OfficeDocument::show(
      shape("one"),
      R"(<p:sldIdLst><p:sldId id="2" r:id="rId2"/><p:sldId id="1" r:id="rId1"/></p:sldIdLst>)");
  document.relation("ppt/presentation.xml", "rId2", "slide", "slides/slide2.xml");
  document.part("ppt/slides/slide2.xml", slide(shape("two")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "two\none");
}

TEST(Pptx, tables_have_tabs_between_cells) {
  EXPECT_EQ(test::parse_bytes(
                OfficeDocument::show("<p:graphicFrame><a:tbl><a:tr><a:tc><a:txBody><a:p><a:r><a:"
                                     "t>a</a:t></a:r></a:p></a:txBody></a:tc>"
                                     "<a:tc><a:txBody><a:p><a:r><a:t>b</a:t></a:r></a:p></"
                                     "a:txBody></a:tc></a:tr></a:tbl></p:graphicFrame>" +
                                     shape("after"))
                    .bytes())
                .main(),
            "a\tb\nafter");
}

TEST(Pptx, shapes_in_groups_are_read) {
  EXPECT_EQ(test::parse_bytes(
                OfficeDocument::show("<p:grpSp><p:grpSp>" + shape("deep") + "</p:grpSp></p:grpSp>")
                    .bytes())
                .main(),
            "deep");
}

TEST(Pptx, dates_footers_and_numbers_of_slides_are_footers) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::show(shape("text") + shape("2024", "dt") + shape("secret", "ftr")).bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_hf), "2024\nsecret");
}

TEST(Pptx, speaker_notes_are_remarks) {
  auto document = OfficeDocument::show(shape("text"));
  document.relation("ppt/slides/slide1.xml", "rId1", "notesSlide",
                    "../notesSlides/notesSlide1.xml");
  document.part("ppt/notesSlides/notesSlide1.xml",
                slide_part("p:notes", shape("say this", "body") + shape("3", "sldNum")));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_remark), "say this");
}

TEST(Pptx, comments_are_kept_apart) {
  auto document = OfficeDocument::show(shape("text"));
  document.relation("ppt/slides/slide1.xml", "rId1", "comments", "../comments/comment1.xml");
  document.part("ppt/comments/comment1.xml",
                slide_part("p:cmLst", "<p:cm><p:text>why?</p:text></p:cm>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_comment), "why?");
}

TEST(Pptx, diagrams_follow_their_slide) {
  auto document = OfficeDocument::show(shape("text"));
  document.relation("ppt/slides/slide1.xml", "rId1", "diagramData", "../diagrams/data1.xml");
  document.part("ppt/diagrams/data1.xml",
                slide_part("dataModel", "<pt><t><a:p><a:r><a:t>step</a:t></a:r></a:p></t></pt>"));
  EXPECT_EQ(test::parse_bytes(document.bytes()).main(), "text\nstep");
}

TEST(Pptx, a_master_shows_what_is_no_placeholder) {
  auto document = OfficeDocument::show(shape("text"));
  document.relation("ppt/slides/slide1.xml", "rId1", "slideLayout",
                    "../slideLayouts/slideLayout1.xml");
  document.relation("ppt/slideLayouts/slideLayout1.xml", "rId1", "slideMaster",
                    "../slideMasters/slideMaster1.xml");
  document.part("ppt/slideLayouts/slideLayout1.xml",
                slide_part("p:sldLayout", shape("Click to edit", "title")));
  document.part("ppt/slideMasters/slideMaster1.xml",
                slide_part("p:sldMaster", shape("Confidential")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "Confidential");
}

TEST(Pptx, relationships_in_a_circle_end) {
  auto document = OfficeDocument::show(shape("text"));
  document.relation("ppt/slides/slide1.xml", "rId1", "slideLayout",
                    "../slideLayouts/slideLayout1.xml");
  document.relation("ppt/slideLayouts/slideLayout1.xml", "rId1", "slideMaster", "slideLayout1.xml");
  document.relation("ppt/slides/slide1.xml", "rId2", "notesSlide", "slide1.xml");
  document.part("ppt/slideLayouts/slideLayout1.xml", slide_part("p:sldLayout", shape("once")));
  EXPECT_EQ(test::parse_bytes(document.bytes()).kind(Orlec::ParseTextType_hf), "once");
}

TEST(Pptx, a_show_without_text_has_no_text) {
  auto const parsed = test::parse_bytes(OfficeDocument::show("").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
}

TEST(Pptx, a_slide_without_a_relationship_is_damage_and_the_others_are_read) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::show(
          shape("one"),
          R"(<p:sldIdLst><p:sldId id="1" r:id="rId9"/><p:sldId id="2" r:id="rId1"/></p:sldIdLst>)")
          .bytes());
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the slide rId9 is missing");
}

TEST(Pptx, a_slide_whose_part_is_gone_is_damage_and_the_others_are_read) {
  auto document = OfficeDocument::show(
      shape("one"),
      R"(<p:sldIdLst><p:sldId id="1" r:id="rId9"/><p:sldId id="2" r:id="rId1"/></p:sldIdLst>)");
  document.relation("ppt/presentation.xml", "rId9", "slide", "slides/gone.xml");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the part ppt/slides/gone.xml is missing");
}

TEST(Pptx, a_slide_that_is_named_in_two_cases_is_read_once) {
  auto document = OfficeDocument::show(
      shape("one"),
      R"(<p:sldIdLst><p:sldId id="1" r:id="rId1"/><p:sldId id="2" r:id="rId9"/></p:sldIdLst>)");
  document.relation("ppt/presentation.xml", "rId9", "slide", "SLIDES/Slide1.xml");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.counts.i_page, 1);
}
