#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/morvakit/zip_writer.h"

namespace {

using Orlec::ParseOutcome;

constexpr char const* declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

std::string part(std::string const& root, std::string const& content) {
  return declaration + ("<ofd:" + root + " xmlns:ofd=\"http://www.ofdspec.org/2016\">") + content +
         "</ofd:" + root + ">";
}

std::string page(std::string const& objects, std::string const& before = {}) {
  return part("Page", before + "<ofd:Content><ofd:Layer ID=\"2\">" + objects +
                          "</ofd:Layer></ofd:Content>");
}

/// A text object at a place in millimetres, in type of 5 mm.
std::string object(double x, double y, std::string const& code,
                   std::string const& code_attributes = R"(X="0" Y="5")") {
  return "<ofd:TextObject ID=\"9\" Boundary=\"" + std::to_string(x) + " " + std::to_string(y) +
         " 50 6\" Font=\"3\" Size=\"5\"><ofd:TextCode " + code_attributes + ">" + code +
         "</ofd:TextCode></ofd:TextObject>";
}

/// A package with one document; its pages are the parts P0.xml, P1.xml and so on.
class OfdDocument {
 public:
  explicit OfdDocument(std::vector<std::string> const& pages) {
    std::string list;
    for (std::size_t i = 0; i < pages.size(); ++i) {
      auto const name = "P" + std::to_string(i) + ".xml";
      list += "<ofd:Page ID=\"1" + std::to_string(i) + "\" BaseLoc=\"" + name + "\"/>";
      zip_.add("Doc_0/" + name, pages[i]);
    }
    pages_ = "<ofd:Pages>" + list + "</ofd:Pages>";
  }

  OfdDocument& info(std::string const& xml) { return info_ = xml, *this; }
  /// More of what stands in the document's description.
  OfdDocument& description(std::string const& xml) { return description_ += xml, *this; }
  OfdDocument& body(std::string const& xml) { return bodies_ += xml, *this; }
  OfdDocument& add(std::string const& name, std::string const& content) {
    return zip_.add(name, content), *this;
  }

  std::string bytes() const {
    auto zip = zip_;
    zip.add("OFD.xml", part("OFD", "<ofd:DocBody><ofd:DocInfo>" + info_ +
                                       "</ofd:DocInfo><ofd:DocRoot>Doc_0/Document.xml"
                                       "</ofd:DocRoot></ofd:DocBody>" +
                                       bodies_));
    zip.add("Doc_0/Document.xml", part("Document", description_ + pages_));
    return zip.bytes();
  }

 private:
  ZipWriter zip_;
  std::string info_;
  std::string pages_;
  std::string description_;
  std::string bodies_;
};

test::Parsed parse(OfdDocument const& document) {
  return test::parse_bytes(document.bytes());
}

std::string times(int number, std::string const& text) {
  std::string all;
  for (int i = 0; i < number; ++i) {
    all += text;
  }
  return all;
}

/// Whether the document's lists are over a bound of 100,000 bytes.
bool is_over_bound_of_lists(OfdDocument const& document) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  return parse(document).outcome == ParseOutcome::limit_reached;
}

std::string main_of(std::string const& objects) {
  return parse(OfdDocument({page(objects)})).main();
}

}  // namespace

TEST(Ofd, pages_follow_each_other_in_the_order_of_the_description) {
  auto const parsed =
      parse(OfdDocument({page(object(10, 10, "第一页")), page(object(10, 10, "第二页"))}));
  EXPECT_EQ(parsed.main(), "第一页\n第二页");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Ofd, characters_of_a_line_that_stand_apart_in_the_file_are_joined) {
  EXPECT_EQ(main_of(object(10, 10, "重") + object(15, 10, "庆市", R"(X="0" Y="5" DeltaX="5")") +
                    object(25, 10, "马")),
            "重庆市马");
}

TEST(Ofd, digits_of_a_number_are_joined) {
  EXPECT_EQ(main_of(object(10, 10, "1") + object(12.5, 10, "2") + object(15, 10, "3")), "123");
}

TEST(Ofd, a_gap_between_latin_words_is_a_blank) {
  EXPECT_EQ(main_of(object(10, 10, "one", R"(X="0" Y="5" DeltaX="2.78 2.78")") +
                    object(20, 10, "two", R"(X="0" Y="5" DeltaX="1.4 3.6")")),
            "one two");
}

TEST(Ofd, a_gap_within_a_string_without_blanks_is_a_blank) {
  EXPECT_EQ(main_of(object(10, 10, "oneman", R"(X="0" Y="5" DeltaX="2.78 2.78 4.2 4.2 2.78")")),
            "one man");
}

TEST(Ofd, a_string_that_is_spaced_out_evenly_is_one_word) {
  EXPECT_EQ(main_of(object(10, 10, "title", R"(X="0" Y="5" DeltaX="g 4 7")")), "title");
}

TEST(Ofd, a_wide_gap_is_a_tab) {
  EXPECT_EQ(main_of(object(10, 10, "名称") + object(60, 10, "数量")), "名称\t数量");
}

TEST(Ofd, another_height_is_another_line) {
  EXPECT_EQ(main_of(object(10, 10, "one") + object(10, 30, "two")), "one\ntwo");
}

TEST(Ofd, a_full_line_of_han_goes_on_with_the_next_one) {
  std::string const full = "中国一向是所谓闭关主义自己不去别人";
  auto const attributes = R"(X="0" Y="5" DeltaX="g 16 5")";
  EXPECT_EQ(main_of(object(10, 10, full, attributes) + object(10, 17, "也不许来")),
            full + "也不许来");
}

TEST(Ofd, a_short_line_of_han_does_not) {
  EXPECT_EQ(main_of(object(10, 10, "姓名") + object(10, 17, "地址")), "姓名\n地址");
}

TEST(Ofd, single_characters_below_each_other_are_vertical_text) {
  EXPECT_EQ(main_of(object(10, 10, "购") + object(10, 18, "买") + object(10, 26, "方")), "购买方");
}

TEST(Ofd, a_string_that_goes_on_in_the_next_line_is_not_torn) {
  EXPECT_EQ(main_of(object(10, 10, "2023年1月",
                           R"(X="0" Y="5" DeltaX="2.5 2.5 2.5 2.5 -10 2.5" DeltaY="g 4 0 5 0")")),
            "2023年1月");
}

TEST(Ofd, a_string_that_is_drawn_twice_for_bold_type_is_taken_once) {
  EXPECT_EQ(main_of(object(10, 10, "粗体") + object(10.1, 10, "粗体")), "粗体");
}

TEST(Ofd, blanks_of_a_string_are_run_together) {
  EXPECT_EQ(main_of(object(10, 10, "住    址", R"(X="0" Y="5" DeltaX="5 2 2 2 2")")), "住 址");
}

TEST(Ofd, the_direction_of_a_rotated_text_is_that_of_its_matrix) {
  auto const turned = [](std::string const& y, std::string const& code) {
    return "<ofd:TextObject Boundary=\"10 " + y +
           " 5 5\" CTM=\"0 1 -1 0 0 0\" Font=\"3\" Size=\"5\"><ofd:TextCode X=\"0\" Y=\"0\">" +
           code + "</ofd:TextCode></ofd:TextObject>";
  };
  EXPECT_EQ(main_of(turned("10", "1") + turned("12.5", "2")), "12");
}

TEST(Ofd, indentation_of_the_file_is_no_text) {
  EXPECT_EQ(main_of(object(10, 10, "\n      标题\n    ")), "标题");
}

TEST(Ofd, an_object_may_hold_several_strings) {
  EXPECT_EQ(main_of("<ofd:TextObject Boundary=\"10 10 50 20\" Font=\"3\" Size=\"5\">"
                    "<ofd:CGTransform CodePosition=\"0\"><ofd:Glyphs>12 13</ofd:Glyphs>"
                    "</ofd:CGTransform><ofd:TextCode X=\"0\" Y=\"5\">甲</ofd:TextCode>"
                    "<ofd:TextCode X=\"5\">乙</ofd:TextCode>"
                    "<ofd:TextCode X=\"0\" Y=\"25\">丙</ofd:TextCode></ofd:TextObject>"),
            "甲乙\n丙");
}

TEST(Ofd, blocks_within_blocks_are_read_in_their_place) {
  EXPECT_EQ(
      main_of("<ofd:PageBlock>" + object(10, 10, "one") + "<ofd:PageBlock>" +
              object(10, 30, "two") + "</ofd:PageBlock></ofd:PageBlock>" + object(10, 50, "three")),
      "one\ntwo\nthree");
}

TEST(Ofd, a_template_is_read_once_however_many_pages_show_it) {
  auto const use = R"(<ofd:Template TemplateID="7" ZOrder="Background"/>)";
  OfdDocument document({page(object(10, 10, "一"), use), page(object(10, 10, "二"), use)});
  document.description(
      R"(<ofd:CommonData><ofd:TemplatePage ID="7" BaseLoc="T.xml"/></ofd:CommonData>)");
  document.add("Doc_0/T.xml", page(object(10, 5, "发票")));
  EXPECT_EQ(parse(document).main(), "发票\n一\n二");
}

TEST(Ofd, a_template_in_front_follows_the_page) {
  OfdDocument document(
      {page(object(10, 10, "一"), R"(<ofd:Template TemplateID="7" ZOrder="Foreground"/>)")});
  document.description(
      R"(<ofd:CommonData><ofd:TemplatePage ID="7" BaseLoc="T.xml"/></ofd:CommonData>)");
  document.add("Doc_0/T.xml", page(object(10, 5, "发票")));
  EXPECT_EQ(parse(document).main(), "一\n发票");
}

TEST(Ofd, text_of_drawings_among_the_resources_is_read) {
  OfdDocument document({page(object(10, 10, "page"))});
  document.description("<ofd:CommonData><ofd:PublicRes>Res.xml</ofd:PublicRes></ofd:CommonData>");
  document.add("Doc_0/Res.xml", part("Res",
                                     "<ofd:CompositeGraphicUnits>"
                                     "<ofd:CompositeGraphicUnit ID=\"5\"><ofd:Content>" +
                                         object(0, 0, "drawing") +
                                         "</ofd:Content></ofd:CompositeGraphicUnit>"
                                         "</ofd:CompositeGraphicUnits>"));
  EXPECT_EQ(parse(document).main(), "page\ndrawing");
}

TEST(Ofd, properties_are_lines_of_name_and_value) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.info(
      "<ofd:DocID>1</ofd:DocID><ofd:Title>计划</ofd:Title><ofd:Author>me</ofd:Author>"
      "<ofd:Keywords><ofd:Keyword>a</ofd:Keyword><ofd:Keyword>b</ofd:Keyword></ofd:Keywords>"
      "<ofd:CustomDatas><ofd:CustomData Name=\"发票代码\">011</ofd:CustomData></ofd:CustomDatas>");
  EXPECT_EQ(parse(document).kind(Orlec::ParseTextType_property),
            "title: 计划\nauthor: me\nkeywords: a\nkeywords: b\n发票代码: 011");
}

TEST(Ofd, notes_are_comments_and_watermarks_are_other_text) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.description("<ofd:Annotations>Annots/A.xml</ofd:Annotations>");
  document.add("Doc_0/Annots/A.xml", part("Annotations",
                                          "<ofd:Page PageID=\"10\"><ofd:FileLoc>Page_0/B.xml"
                                          "</ofd:FileLoc></ofd:Page>"));
  document.add(
      "Doc_0/Annots/Page_0/B.xml",
      part("PageAnnot", "<ofd:Annot Type=\"Watermark\"><ofd:Appearance>" + object(0, 0, "机密") +
                            "</ofd:Appearance></ofd:Annot><ofd:Annot Type=\"Highlight\">"
                            "<ofd:Remark>why</ofd:Remark></ofd:Annot>"));
  auto const parsed = parse(document);
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "why");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "机密");
  EXPECT_EQ(parsed.main(), "x");
}

TEST(Ofd, outlines_and_links_are_other_text) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.description(
      "<ofd:Outlines><ofd:OutlineElem Title=\"一 章\n\"><ofd:Actions><ofd:Action Event=\"CLICK\">"
      "<ofd:URI URI=\"http://a.example\"/></ofd:Action></ofd:Actions></ofd:OutlineElem>"
      "</ofd:Outlines>");
  EXPECT_EQ(parse(document).kind(Orlec::ParseTextType_other), "一 章\nhttp://a.example");
}

TEST(Ofd, data_of_custom_tags_are_other_text_without_references) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.description("<ofd:CustomTags>Tags/CustomTags.xml</ofd:CustomTags>");
  document.add(
      "Doc_0/Tags/CustomTags.xml",
      part("CustomTags", "<ofd:CustomTag><ofd:FileLoc>Tag.xml</ofd:FileLoc></ofd:CustomTag>"));
  document.add("Doc_0/Tags/Tag.xml",
               part("Invoice",
                    "<ofd:No><ofd:ObjectRef PageRef=\"1\">306</ofd:ObjectRef></ofd:No>"
                    "<ofd:Kind>special</ofd:Kind>"));
  EXPECT_EQ(parse(document).kind(Orlec::ParseTextType_other), "special");
}

TEST(Ofd, attachments_follow_the_text_of_all_documents) {
  OfdDocument document({page(object(10, 10, "page"))});
  document.description("<ofd:Attachments>Attachs/Attachments.xml</ofd:Attachments>");
  document.add("Doc_0/Attachs/Attachments.xml",
               part("Attachments",
                    "<ofd:Attachment Name=\"a\"><ofd:FileLoc>a.txt</ofd:FileLoc>"
                    "</ofd:Attachment>"));
  document.add("Doc_0/Attachs/a.txt", "attached");
  auto const parsed = parse(document);
  EXPECT_EQ(parsed.main(), "page\nattached");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Ofd, several_documents_follow_each_other) {
  OfdDocument document({page(object(10, 10, "first"))});
  document.body("<ofd:DocBody><ofd:DocRoot>/Doc_1/Document.xml</ofd:DocRoot></ofd:DocBody>");
  document.add("Doc_1/Document.xml",
               part("Document", R"(<ofd:Pages><ofd:Page ID="1" BaseLoc="P.xml"/></ofd:Pages>)"));
  document.add("Doc_1/P.xml", page(object(10, 10, "second")));
  auto const parsed = parse(document);
  EXPECT_EQ(parsed.main(), "first\nsecond");
  EXPECT_EQ(parsed.counts.i_page, 2);
}

TEST(Ofd, of_several_versions_the_newest_is_read) {
  ZipWriter zip;
  zip.add("OFD.xml", part("OFD",
                          "<ofd:DocBody><ofd:DocRoot>D/Document.xml</ofd:DocRoot><ofd:Versions>"
                          R"(<ofd:Version ID="1" Index="1" Current="false" BaseLoc="V/1.xml"/>)"
                          R"(<ofd:Version ID="2" Index="2" Current="true" BaseLoc="V/2.xml"/>)"
                          "</ofd:Versions></ofd:DocBody>"));
  zip.add("V/1.xml", part("DocVersion", "<ofd:DocRoot>/D/Document.xml</ofd:DocRoot>"));
  zip.add("V/2.xml", part("DocVersion", "<ofd:DocRoot>/E/Document.xml</ofd:DocRoot>"));
  for (auto const* const directory : {"D", "E"}) {
    zip.add(std::string(directory) + "/Document.xml",
            part("Document", R"(<ofd:Pages><ofd:Page ID="1" BaseLoc="P.xml"/></ofd:Pages>)"));
    zip.add(std::string(directory) + "/P.xml", page(object(10, 10, directory)));
  }
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "E");
}

TEST(Ofd, addresses_may_have_another_case_and_backslashes) {
  ZipWriter zip;
  zip.add(
      "OFD.xml",
      part("OFD", R"(<ofd:DocBody><ofd:DocRoot>doc_0\document.xml</ofd:DocRoot></ofd:DocBody>)"));
  zip.add("Doc_0/Document.xml",
          part("Document", R"(<ofd:Pages><ofd:Page ID="1" BaseLoc="/DOC_0/p.XML"/></ofd:Pages>)"));
  zip.add("Doc_0/P.xml", page(object(10, 10, "found")));
  EXPECT_EQ(test::parse_bytes(zip.bytes()).main(), "found");
}

TEST(Ofd, pictures_are_counted) {
  EXPECT_EQ(parse(OfdDocument({page(R"(<ofd:ImageObject ID="1"/><ofd:ImageObject ID="2"/>)")}))
                .counts.i_img,
            2);
}

TEST(Ofd, a_page_that_is_missing_is_damage_and_the_others_are_read) {
  OfdDocument document({page(object(10, 10, "there"))});
  document.description(R"(<ofd:Pages><ofd:Page ID="5" BaseLoc="Pages/Lost.xml"/></ofd:Pages>)");
  auto const parsed = parse(document);
  EXPECT_EQ(parsed.main(), "there");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the part Doc_0/Pages/Lost.xml is missing");
}

TEST(Ofd, without_a_root_that_leads_anywhere_the_documents_are_searched) {
  ZipWriter zip;
  zip.add("OFD.xml", "no XML");
  zip.add("Doc_0/Document.xml",
          part("Document", R"(<ofd:Pages><ofd:Page ID="1" BaseLoc="P.xml"/></ofd:Pages>)"));
  zip.add("Doc_0/P.xml", page(object(10, 10, "found")));
  auto const parsed = test::parse_bytes(zip.bytes());
  EXPECT_EQ(parsed.main(), "found");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Ofd, a_document_whose_pages_are_ciphers_is_encrypted) {
  OfdDocument document({"\x8f\x02 cipher"});
  document.add("Encryptions.xml", part("Encryptions", {}));
  EXPECT_EQ(parse(document).outcome, ParseOutcome::encrypted);
}

TEST(Ofd, a_page_that_is_named_a_thousand_times_is_read_once) {
  OfdDocument document({page(object(10, 10, "once"))});
  std::string list;
  for (int i = 0; i < 1000; ++i) {
    list += R"(<ofd:Page ID="1" BaseLoc="P0.xml"/>)";
  }
  document.description("<ofd:Pages>" + list + "</ofd:Pages>");
  EXPECT_EQ(parse(document).main(), "once");
}

TEST(Ofd, a_template_that_names_itself_ends) {
  OfdDocument document(
      {page(object(10, 10, "page"), R"(<ofd:Template TemplateID="7" ZOrder="Background"/>)")});
  document.description(
      R"(<ofd:CommonData><ofd:TemplatePage ID="7" BaseLoc="P0.xml"/></ofd:CommonData>)");
  EXPECT_EQ(parse(document).main(), "page");
}

TEST(Ofd, distances_that_no_page_has_are_survived) {
  for (auto const* const list :
       {"g 99999999999 1e300", "1e999 nan inf", "g", "g -5 g g 3", "g 1", "x y z", ",,,;"}) {
    auto const attributes = "X=\"1e308\" Y=\"-1e308\" DeltaX=\"" + std::string(list) + "\"";
    auto text = main_of(object(1e300, -1e300, "abc", attributes));
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    EXPECT_EQ(text, "abc") << list;
  }
}

TEST(Ofd, type_without_a_size_is_read) {
  EXPECT_EQ(main_of("<ofd:TextObject><ofd:TextCode>abc</ofd:TextCode></ofd:TextObject>"), "abc");
}

TEST(Ofd, a_string_of_many_thousand_characters_is_read_whole) {
  EXPECT_EQ(main_of(object(10, 10, std::string(300000, 'x'))).size(), 300000U);
}

TEST(Ofd, many_pages_are_bounded_by_the_memory_of_lists) {
  Orlec::ParseLimits limits;
  limits.i_list_bytes = 10000;
  test::ScopedLimits const scoped(limits);
  OfdDocument document({page(object(10, 10, "x"))});
  std::string list;
  for (int i = 0; i < 1000; ++i) {
    list += "<ofd:Page ID=\"1\" BaseLoc=\"" + std::to_string(i) + ".xml\"/>";
  }
  document.description("<ofd:Pages>" + list + "</ofd:Pages>");
  EXPECT_EQ(parse(document).outcome, ParseOutcome::limit_reached);
}

TEST(Ofd, files_in_a_long_directory_are_charged_with_their_whole_names) {
  auto const directory = std::string(5000, 'd');
  OfdDocument document({page(object(10, 10, "x"))});
  document.description("<ofd:Annotations>" + directory + "/A.xml</ofd:Annotations>");
  document.add("Doc_0/" + directory + "/A.xml",
               part("Annotations", times(50, "<ofd:FileLoc>x</ofd:FileLoc>")));
  EXPECT_TRUE(is_over_bound_of_lists(document));
}

TEST(Ofd, a_template_is_charged_each_time_that_a_page_has_it_in_front) {
  OfdDocument document({page(object(10, 10, "x"),
                             times(50, R"(<ofd:Template TemplateID="7" ZOrder="Foreground"/>)"))});
  document.description("<ofd:TemplatePage ID=\"7\" BaseLoc=\"" + std::string(5000, 't') + "\"/>");
  EXPECT_TRUE(is_over_bound_of_lists(document));
}

TEST(Ofd, templates_are_charged_with_their_numbers) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.description(
      times(50, "<ofd:TemplatePage ID=\"" + std::string(5000, '1') + "\" BaseLoc=\"t\"/>"));
  EXPECT_TRUE(is_over_bound_of_lists(document));
}

TEST(Ofd, versions_are_charged_with_their_addresses) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.body("<ofd:DocBody>" +
                times(50, "<ofd:Version BaseLoc=\"" + std::string(5000, 'v') + "\"/>") +
                "</ofd:DocBody>");
  EXPECT_TRUE(is_over_bound_of_lists(document));
}

TEST(Ofd, resources_of_a_page_are_charged_though_they_are_empty) {
  EXPECT_TRUE(is_over_bound_of_lists(OfdDocument({page({}, times(5000, "<ofd:PageRes/>"))})));
}

TEST(Ofd, text_on_both_sides_of_an_element_is_read) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.description("<ofd:Extensions>Data.xml</ofd:Extensions>");
  document.add("Doc_0/Data.xml", part("List", "<ofd:FileLoc>Note.xml</ofd:FileLoc>"));
  document.add("Doc_0/Note.xml",
               part("Notes", "<ofd:Note>secret<ofd:b>bold</ofd:b>tail</ofd:Note>"));
  EXPECT_EQ(parse(document).kind(Orlec::ParseTextType_other), "secret\nbold\ntail");
}

TEST(Ofd, a_property_that_is_too_long_is_noted) {
  OfdDocument document({page(object(10, 10, "x"))});
  document.info("<ofd:Title>" + std::string(std::size_t{2} << 20, 't') + "</ofd:Title>");
  auto const parsed = parse(document);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "the text of an element over 1048576 bytes");
}

TEST(Ofd, every_truncation_and_flipped_bytes_end_well) {
  OfdDocument document({page(object(10, 10, "页") + object(10, 20, "two"))});
  document.info("<ofd:Title>t</ofd:Title>");
  auto const bytes = document.bytes();
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
