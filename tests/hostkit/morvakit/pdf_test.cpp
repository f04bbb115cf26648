#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "host/HTessarineResult.h"
#include "hostkit/morvakit/missing_component.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/pdf_builder.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/tessarine/pdf_protection.h"

#include "support/temporary_directory.h"

namespace {

using Orlec::ParseOutcome;
using test::helvetica;
using test::one_page;
using test::parse_bytes;
using test::show;

TEST(Pdf, text_of_a_page_is_main_text) {
  auto const parsed =
      parse_bytes(one_page(show("First line", 700) + show("Second line", 680)).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "First line\nSecond line");
}

TEST(Pdf, columns_are_read_one_behind_the_other) {
  std::string content;
  for (int line = 0; line < 12; ++line) {
    auto const y = std::to_string(700 - 14 * line);
    content += "BT /F1 10 Tf 50 " + y + " Td (left column words here) Tj ET\n";
    content += "BT /F1 10 Tf 350 " + y + " Td (right column words there) Tj ET\n";
  }
  auto const main = parse_bytes(one_page(content).bytes()).main();
  EXPECT_LT(main.rfind("left"), main.find("right"));
}

TEST(Pdf, pages_come_in_order) {
  test::PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  pdf.add("<</Type/Pages/Kids[3 0 R 4 0 R]/Count 2>>");
  pdf.add(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 6 0 R/Resources<</Font<</F1 5 0 "
      "R>>>>>>");
  pdf.add(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 7 0 R/Resources<</Font<</F1 5 0 "
      "R>>>>>>");
  pdf.add(helvetica);
  pdf.add_stream(show("one"));
  pdf.add_stream(show("two"));
  EXPECT_EQ(parse_bytes(pdf.bytes()).main(), "one\ntwo");
}

TEST(Pdf, a_page_without_text_has_no_text) {
  auto const parsed = parse_bytes(one_page("0 0 100 100 re f\n").bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
}

TEST(Pdf, document_information_is_property) {
  auto pdf = one_page(show("x"));
  pdf.add("<</Title(A title)/Author<FEFF674E>/Producer(no)>>");
  EXPECT_EQ(parse_bytes(pdf.bytes("/Info 6 0 R")).kind(Orlec::ParseTextType_property),
            "title: A title\nauthor: \xe6\x9d\x8e");
}

TEST(Pdf, what_an_annotation_says_is_a_comment) {
  auto pdf = one_page(show("x"), helvetica, "", "/Annots[6 0 R]");
  pdf.add("<</Type/Annot/Subtype/Text/Rect[10 10 20 20]/Contents(A remark)>>");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_comment), "A remark");
  EXPECT_EQ(parsed.main(), "x");
}

TEST(Pdf, values_of_form_fields_are_control_text) {
  auto pdf = one_page(show("x"), helvetica,
                      "/AcroForm<</Fields[6 0 R]/DA(/F1 10 Tf)/DR<</Font<</F1 5 0 R>>>>>>",
                      "/Annots[6 0 R]");
  pdf.add(
      "<</Type/Annot/Subtype/Widget/FT/Tx/T(name)/TU(Your name)/V(Li Wei)/Rect[10 10 200 "
      "30]/DA(/F1 10 Tf)>>");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "Your name\nLi Wei");
  EXPECT_EQ(parsed.main(), "x");
}

std::string choice_text(std::string const& entries) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[6 0 R]>>", "/Annots[6 0 R]");
  pdf.add("<</Type/Annot/Subtype/Widget/FT/Ch/T(list)/Rect[10 10 200 30]" + entries + ">>");
  return parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_control);
}

TEST(Pdf, a_chosen_option_is_told_once) {
  EXPECT_EQ(choice_text("/Ff 131072/Opt[(red)(green)]/V(green)"), "red\ngreen");
}

TEST(Pdf, a_stored_value_that_is_no_option_is_control_text) {
  EXPECT_EQ(choice_text("/Ff 131072/Opt[(red)(green)]/V(blue)"), "red\ngreen\nblue");
}

TEST(Pdf, a_stored_value_that_an_option_stands_for_is_control_text) {
  EXPECT_EQ(choice_text("/Ff 131072/Opt[[(44)(red)][(46)(green)]]/V(46)"), "red\ngreen\n46");
}

TEST(Pdf, several_stored_values_are_control_text) {
  EXPECT_EQ(choice_text("/Ff 2097152/Opt[(red)(green)]/V[(red)(blue)(pink)]"),
            "red\ngreen\nblue\npink");
}

std::string comment_text(std::string const& annotation, std::string const& second = "") {
  auto pdf = one_page(show("x"), helvetica, "", "/Annots[6 0 R 7 0 R]");
  pdf.add("<</Type/Annot/Rect[10 10 20 20]" + annotation + ">>");
  pdf.add("<</Type/Annot/Rect[10 10 20 20]" + (second.empty() ? "/Subtype/Ink" : second) + ">>");
  return parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_comment);
}

TEST(Pdf, annotations_of_each_kind_are_comments) {
  for (auto const* const kind : {"FreeText", "Highlight", "Stamp", "Ink", "Line", "Redact"}) {
    EXPECT_EQ(comment_text("/Contents(said)/Subtype/" + std::string(kind)), "said") << kind;
  }
}

TEST(Pdf, rich_contents_stand_in_for_plain_ones_that_are_missing) {
  EXPECT_EQ(comment_text("/Subtype/FreeText/RC(<body><p>one &amp; <b>two</b></p></body>)"),
            "one & two");
  EXPECT_EQ(comment_text("/Subtype/FreeText/Contents(plain)/RC(<p>rich</p>)"), "plain");
}

TEST(Pdf, a_popup_is_told_where_it_says_more_than_its_parent) {
  EXPECT_EQ(comment_text("/Subtype/Text/Contents(said)", "/Subtype/Popup/Parent 6 0 R"), "said");
  EXPECT_EQ(
      comment_text("/Subtype/Text/Contents(said)", "/Subtype/Popup/Parent 6 0 R/Contents(said)"),
      "said");
  EXPECT_EQ(
      comment_text("/Subtype/Text/Contents(said)", "/Subtype/Popup/Parent 6 0 R/Contents(more)"),
      "said\nmore");
}

TEST(Pdf, the_address_of_a_link_is_other_text) {
  auto pdf = one_page(show("x"), helvetica, "", "/Annots[6 0 R]");
  pdf.add("<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/A<</S/URI/URI(http://a.example/)>>>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_other), "http://a.example/");
}

TEST(Pdf, a_field_that_no_page_shows_is_control_text) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[6 0 R 8 0 R]>>");
  pdf.add("<</T(group)/Kids[7 0 R]>>");
  pdf.add("<</FT/Tx/T(a)/Parent 6 0 R/TU(Hidden one)/V(value)>>");
  pdf.add("<</FT/Tx/T(b)/Ff 8192/V(secret)>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_control), "Hidden one\nvalue");
}

TEST(Pdf, what_a_signature_looks_like_is_main_text) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[6 0 R]>>", "/Annots[6 0 R]");
  pdf.add("<</Type/Annot/Subtype/Widget/FT/Sig/T(s)/Rect[50 10 300 30]/F 4/AP<</N 7 0 R>>>>");
  pdf.add_stream("BT /F1 12 Tf 2 2 Td (Signed by Li) Tj ET",
                 "/Type/XObject/Subtype/Form/BBox[0 0 250 20]/Resources<</Font<</F1 5 0 R>>>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).main(), "x\n\nSigned by Li");
}

/// A document whose fields stand in each other, `depth` of them.
std::string nested_fields(int depth) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[6 0 R]>>",
                      "/Annots[" + std::to_string(6 + depth) + " 0 R]");
  pdf.add("<</T(a)/Kids[7 0 R]>>");
  for (int i = 1; i < depth; ++i) {
    pdf.add("<</T(a)/Parent " + std::to_string(5 + i) + " 0 R/Kids[" + std::to_string(7 + i) +
            " 0 R]>>");
  }
  pdf.add("<</T(a)/Parent " + std::to_string(5 + depth) +
          " 0 R/FT/Tx/V(value)/Subtype/Widget/Rect[0 0 9 9]>>");
  return pdf.bytes();
}

TEST(Pdf, fields_in_each_other_are_read) {
  EXPECT_EQ(parse_bytes(nested_fields(100)).kind(Orlec::ParseTextType_control), "value");
}

TEST(Pdf, fields_nested_without_end_are_a_bound) {
  auto const parsed = parse_bytes(nested_fields(50000));
  EXPECT_EQ(parsed.main(), "x");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "form fields nested over 500 deep");
}

TEST(Pdf, a_field_that_is_its_own_parent_is_survived) {
  auto pdf = one_page(show("x"), helvetica, "", "/Annots[6 0 R]");
  pdf.add("<</T(a)/Parent 6 0 R/Subtype/Widget/Rect[0 0 9 9]>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).main(), "x");
}

TEST(Pdf, maps_of_characters_based_on_each_other_without_end_are_a_bound) {
  auto pdf = one_page(
      show("x"), "<</Type/Font/Subtype/Type0/BaseFont/A/Encoding 7 0 R/DescendantFonts[6 0 R]>>");
  pdf.add(
      "<</Type/Font/Subtype/CIDFontType2/BaseFont/A/CIDSystemInfo<</Registry(Adobe)/Ordering(GB1)"
      "/Supplement 2>>/FontDescriptor<<>>>>");
  for (int next = 8; next < 50000; ++next) {
    pdf.add_stream("abc", "/Type/CMap/UseCMap " + std::to_string(next) + " 0 R");
  }
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "maps of characters based on each other over 100 deep");
}

TEST(Pdf, a_tree_of_pages_without_end_is_a_bound) {
  test::PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  for (int next = 3; next < 30000; ++next) {
    pdf.add("<</Type/Pages/Count 1/Kids[" + std::to_string(next) + " 0 R]>>");
  }
  pdf.add("<</Type/Page/MediaBox[0 0 600 800]>>");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "tree of pages over 1000 deep");
}

TEST(Pdf, a_value_that_is_a_stream_is_control_text) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[6 0 R]>>");
  pdf.add("<</FT/Tx/T(a)/V 7 0 R>>");
  pdf.add_stream("long value");
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_control), "long value");
}

std::string const xfa_template =
    "<xdp:xdp xmlns:xdp='http://ns.adobe.com/xdp/'><template "
    "xmlns='http://www.xfa.org/schema/xfa-template/3.0/'><subform><field><caption><value><text>"
    "Name</text></value></caption><script>no()</script></field></subform></template>";
std::string const xfa_data =
    "<xfa:datasets xmlns:xfa='http://www.xfa.org/schema/xfa-data/1.0/'><xfa:data><form><name>Li "
    "Wei</name><city> Suzhou</city></form></xfa:data></xfa:datasets></xdp:xdp>";

TEST(Pdf, a_form_in_xml_is_control_text) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[]/XFA 6 0 R>>");
  pdf.add_stream(xfa_template + xfa_data);
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_control), "Name\nLi Wei\n Suzhou");
}

TEST(Pdf, a_form_in_packets_is_control_text) {
  auto pdf =
      one_page(show("x"), helvetica, "/AcroForm<</Fields[]/XFA[(template)6 0 R(datasets)7 0 R]>>");
  pdf.add_stream(xfa_template);
  pdf.add_stream(xfa_data);
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_control), "Name\nLi Wei\n Suzhou");
}

TEST(Pdf, a_form_in_broken_xml_is_damage) {
  auto pdf = one_page(show("x"), helvetica, "/AcroForm<</Fields[]/XFA 6 0 R>>");
  pdf.add_stream("<datasets>text");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "x");
}

std::string properties_with_metadata(std::string const& info) {
  auto pdf = one_page(show("x"), helvetica, "/Metadata 6 0 R");
  pdf.add_stream(
      "<?xpacket begin=''?><x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
      "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
      "xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:pdf='http://ns.adobe.com/pdf/1.3/' "
      "pdf:Keywords='k'><dc:title><rdf:Alt><rdf:li>A title</rdf:li></rdf:Alt></dc:title> "
      "<dc:creator><rdf:Seq> <rdf:li>Li</rdf:li> <rdf:li>Wei</rdf:li></rdf:Seq></dc:creator>"
      "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>");
  pdf.add("<<" + info + ">>");
  return parse_bytes(pdf.bytes("/Info 7 0 R")).kind(Orlec::ParseTextType_property);
}

TEST(Pdf, metadata_tell_properties_that_the_information_lacks) {
  EXPECT_EQ(properties_with_metadata(""), "keywords: k\ntitle: A title\nauthor: Li, Wei");
  EXPECT_EQ(properties_with_metadata("/Title(Own)/Author(Me)"),
            "title: Own\nauthor: Me\nkeywords: k");
}

TEST(Pdf, pages_and_pictures_are_counted) {
  auto const form =
      "/Type/XObject/Subtype/Form/BBox[0 0 9 9]/Resources<</XObject<</I 7 0 R/F 8 0 "
      "R/J 9 0 R>>>>";
  auto const image =
      "/Type/XObject/Subtype/Image/Width 1/Height 1/BitsPerComponent 8/ColorSpace"
      "/DeviceGray";
  auto pdf = one_page("/I Do /F Do", helvetica, "", "/Resources<</XObject<</I 7 0 R/F 8 0 R>>>>");
  pdf.add("null");
  pdf.add_stream("a", image);
  pdf.add_stream("/I Do /F Do /J Do", form);
  pdf.add_stream("b", image);
  auto const bytes = pdf.bytes();
  test::MemoryReader reader(bytes, "document.pdf");
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
  ASSERT_NE(parser, nullptr);
  parser->InitFile();
  EXPECT_EQ(parser->GetCounts().i_page, 1);
  EXPECT_EQ(parser->GetCounts().i_img, 2);
}

TEST(Pdf, attached_files_are_read_behind_the_text_and_each_once) {
  auto pdf = one_page(show("x"), helvetica,
                      "/Names<</EmbeddedFiles<</Kids[6 0 R 6 0 R]>>>>/AF[7 0 R]", "/Annots[9 0 R]");
  pdf.add("<</Names[(a.txt)7 0 R]/Kids[6 0 R]>>");
  pdf.add("<</Type/Filespec/F(a.txt)/Desc(what it is)/EF<</F 8 0 R/UF 8 0 R>>>>");
  pdf.add_stream("attached text", "/Type/EmbeddedFile");
  pdf.add("<</Type/Annot/Subtype/FileAttachment/Rect[0 0 9 9]/FS<</F(b.txt)/EF<</F 10 0 R>>>>>>");
  pdf.add_stream("second text", "/Type/EmbeddedFile");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.main(), "x\nsecond text\nattached text");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "what it is");
}

TEST(Pdf, an_attached_document_is_read) {
  auto pdf = one_page(show("x"), helvetica,
                      "/Names<</EmbeddedFiles<</Names[(a)<</F(dir/a.pdf)/EF<</F 6 0 R>>>>]>>>>");
  pdf.add_stream(one_page(show("inner")).bytes());
  EXPECT_EQ(parse_bytes(pdf.bytes()).main(), "x\ninner");
}

TEST(Pdf, the_size_of_attached_files_is_bounded) {
  auto pdf = one_page(show("x"), helvetica,
                      "/Names<</EmbeddedFiles<</Names[(a)<</F(a.txt)/EF<</F 6 0 R>>>>]>>>>");
  pdf.add_stream(std::string(200000, 'a'));
  Orlec::ParseLimits limits;
  limits.i_expanded_bytes = 100000;
  test::ScopedLimits const scoped(limits);
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "unpacked parts over 100000 bytes");
}

TEST(Pdf, the_outline_is_other_text) {
  auto pdf = one_page(show("x"), helvetica, "/Outlines 6 0 R");
  pdf.add("<</Type/Outlines/First 7 0 R/Last 7 0 R/Count 1>>");
  pdf.add("<</Title(Chapter)/Parent 6 0 R/First 8 0 R/Last 8 0 R/Count 1>>");
  pdf.add("<</Title(Section)/Parent 7 0 R>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).kind(Orlec::ParseTextType_other), "Chapter\nSection");
}

TEST(Pdf, an_outline_that_is_too_deep_is_noted) {
  auto pdf = one_page(show("x"), helvetica, "/Outlines 6 0 R");
  pdf.add("<</Type/Outlines/First 7 0 R/Last 7 0 R/Count 1>>");
  for (int i = 0; i < 70; ++i) {
    auto const inner = std::to_string(8 + i) + " 0 R";
    pdf.add("<</Title(Deep)/Parent " + std::to_string(6 + i) + " 0 R/First " + inner + "/Last " +
            inner + "/Count 1>>");
  }
  pdf.add("<</Title(Deepest)/Parent 76 0 R>>");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "outline nested over 64 deep");
}

TEST(Pdf, a_page_that_cannot_be_read_is_damage_and_the_others_are_read) {
  test::PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  pdf.add("<</Type/Pages/Kids[3 0 R]/Count 2>>");
  pdf.add(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 5 0 R/Resources<</Font<</F1 4 0 "
      "R>>>>>>");
  pdf.add(helvetica);
  pdf.add_stream(show("one"));
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "page 2 cannot be read");
}

TEST(Pdf, a_text_in_a_stream_that_is_too_long_is_noted) {
  auto pdf = one_page(show("x"), helvetica, "", "/Annots[6 0 R]");
  pdf.add("<</Type/Annot/Subtype/Text/Rect[0 0 9 9]/Contents 7 0 R>>");
  pdf.add_stream(std::string(std::size_t{2} << 20, 'c'));
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a text in a stream over 1048576 bytes");
}

TEST(Pdf, a_property_of_the_metadata_that_is_too_long_is_noted) {
  auto pdf = one_page(show("x"), helvetica, "/Metadata 6 0 R");
  pdf.add_stream("<a xmlns:dc='http://purl.org/dc/elements/1.1/'><dc:title>" +
                 std::string(100000, 't') + "</dc:title></a>");
  auto const parsed = parse_bytes(pdf.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a property over 65536 bytes");
}

TEST(Pdf, an_outline_that_contains_itself_ends) {
  auto pdf = one_page(show("x"), helvetica, "/Outlines 6 0 R");
  pdf.add("<</Type/Outlines/First 7 0 R/Last 7 0 R/Count 1>>");
  pdf.add("<</Title(Chapter)/Parent 6 0 R/First 7 0 R/Last 7 0 R/Next 7 0 R/Count 1>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).outcome, ParseOutcome::text);
}

TEST(Pdf, a_chinese_font_with_a_predefined_map_and_no_unicode_table_is_read) {
  if (!std::filesystem::exists("/usr/share/poppler/cidToUnicode/Adobe-GB1")) {
    GTEST_SKIP() << "the character maps are not installed";
  }
  struct Map {
    char const* name;
    char const* hex;
  };
  for (auto const& map :
       {Map{"GBK-EUC-H", "D0C5CFA2B0B2C8AB"}, Map{"UniGB-UCS2-H", "4FE1606F5B895168"}}) {
    auto pdf = one_page("BT /F1 12 Tf 50 700 Td <" + std::string(map.hex) + "> Tj ET",
                        "<</Type/Font/Subtype/Type0/BaseFont/STSong-Light/Encoding/" +
                            std::string(map.name) + "/DescendantFonts[6 0 R]>>");
    pdf.add(
        "<</Type/Font/Subtype/CIDFontType0/BaseFont/STSong-Light/CIDSystemInfo<</Registry(Adobe)"
        "/Ordering(GB1)/Supplement 2>>/DW 1000/FontDescriptor 7 0 R>>");
    pdf.add(
        "<</Type/FontDescriptor/FontName/STSong-Light/Flags 6/FontBBox[-25 -254 1000 "
        "880]/ItalicAngle 0"
        "/Ascent 880/Descent -120/CapHeight 880/StemV 93>>");
    EXPECT_EQ(parse_bytes(pdf.bytes()).main(), "\xe4\xbf\xa1\xe6\x81\xaf\xe5\xae\x89\xe5\x85\xa8")
        << map.name;
  }
}

TEST(Pdf, ligatures_are_written_out) {
  auto const* const font =
      "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding<</Type/Encoding/Differences[65/"
      "fi]>>>>";
  EXPECT_EQ(parse_bytes(one_page(show("Ale"), font).bytes()).main(), "file");
}

std::string protected_page(std::string const& user_password) {
  test::PdfProtection const protection(user_password, "owner");
  auto pdf = one_page(protection.encrypted(4, show("protected")));
  auto const handler = pdf.add(protection.dictionary());
  return pdf.bytes(test::PdfProtection::trailer_entries(handler));
}

TEST(Pdf, a_document_that_needs_a_password_is_encrypted) {
  auto const parsed = parse_bytes(protected_page("secret"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::encrypted);
  EXPECT_FALSE(parsed.is_ok);
}

TEST(Pdf, a_document_that_only_its_owner_protected_is_read) {
  EXPECT_EQ(parse_bytes(protected_page("")).main(), "protected");
}

TEST(Pdf, encryption_is_recognised_where_reading_finds_it) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  for (auto const* const folder : {"encrypted", "pdf"}) {
    for (auto const& entry : std::filesystem::directory_iterator(std::filesystem::path(corpus) /
                                                                 "documents" / folder)) {
      if (entry.path().extension() != ".pdf") {
        continue;
      }
      HString const path(entry.path().c_str());
      HTessarineResult recognised;
      HTessarine::recognize(path, recognised);
      Orlec::IFile file(path, false);
      std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
      ASSERT_NE(parser, nullptr);
      parser->InitFile();
      EXPECT_EQ(recognised.b_encrypt, parser->GetOutcome() == ParseOutcome::encrypted)
          << entry.path();
    }
  }
}

TEST(Pdf, a_document_whose_table_is_lost_is_read) {
  auto bytes = one_page(show("still here")).bytes();
  auto const table = bytes.find("xref");
  bytes.erase(table, bytes.find("trailer") - table);
  EXPECT_EQ(parse_bytes(bytes).main(), "still here");
}

TEST(Pdf, a_document_without_pages_is_damaged) {
  auto const parsed = parse_bytes(
      "%PDF-1.4\n1 0 obj\n<</Type/Catalog>>\nendobj\ntrailer\n<</Root 1 0 R>>\n%%EOF\n");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_FALSE(parsed.reason.empty());
}

TEST(Pdf, a_tree_of_pages_that_contains_itself_ends) {
  test::PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  pdf.add("<</Type/Pages/Kids[2 0 R 2 0 R]/Count 2000000000>>");
  EXPECT_EQ(parse_bytes(pdf.bytes()).outcome, ParseOutcome::damaged);
}

TEST(Pdf, a_page_crowded_with_words_is_read_in_the_order_of_the_file) {
  std::string content;
  for (int i = 0; i < 30000; ++i) {
    content += show("word", 700 - i % 600);
  }
  auto const parsed = parse_bytes(one_page(content).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_GT(parsed.main().size(), 100000U);
}

TEST(Pdf, states_saved_without_end_are_stopped) {
  auto content = show("before");
  for (int i = 0; i < 200000; ++i) {
    content += "q ";
  }
  EXPECT_EQ(parse_bytes(one_page(content).bytes()).main(), "before");
}

TEST(Pdf, forms_that_multiply_are_stopped) {
  auto const form = [](int next) {
    return "/Type/XObject/Subtype/Form/BBox[0 0 9 9]/Resources<</XObject<</X " +
           std::to_string(next) + " 0 R>>>>";
  };
  test::PdfBuilder crowded;
  crowded.add("<</Type/Catalog/Pages 2 0 R>>");
  crowded.add("<</Type/Pages/Kids[3 0 R]/Count 1>>");
  crowded.add(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 4 0 R/Resources<</Font<</F1 5 0 R>>"
      "/XObject<</X 6 0 R>>>>>>");
  crowded.add_stream(show("before") + "/X Do");
  crowded.add(helvetica);
  for (int next = 7; next < 22; ++next) {
    crowded.add_stream("/X Do /X Do /X Do /X Do /X Do /X Do /X Do /X Do", form(next));
  }
  crowded.add_stream("q Q", "/Type/XObject/Subtype/Form/BBox[0 0 9 9]");
  auto const parsed = parse_bytes(crowded.bytes());
  EXPECT_EQ(parsed.main(), "before");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
}

TEST(Pdf, truncations_and_random_changes_are_survived) {
  auto const bytes = one_page(show("some text here")).bytes();
  for (std::size_t length = 10; length < bytes.size(); length += 7) {
    parse_bytes(bytes.substr(0, length));
  }
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    auto changed = bytes;
    for (int i = 0; i < 5; ++i) {
      changed[8 + random() % (changed.size() - 8)] = static_cast<char>(random() % 128);
    }
    parse_bytes(changed);
  }
}

// These run in a process of their own, started by the test below, where the component is missing.
TEST(PdfComponent, DISABLED_is_missing_for_the_reader) {
  auto const parsed = parse_bytes(one_page(show("x")).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::not_supported);
  EXPECT_NE(parsed.reason.find("not installed"), std::string::npos);
}

TEST(PdfComponent, DISABLED_is_missing_for_recognition) {
  test::TemporaryDirectory const directory;
  HTessarineResult result;
  EXPECT_TRUE(HTessarine::recognize(directory.write("document", protected_page("secret")), result));
  EXPECT_FALSE(result.b_encrypt);
}

class MissingPdfComponent : public testing::TestWithParam<char const*> {};

TEST_P(MissingPdfComponent, is_told_and_survived) {
  EXPECT_TRUE(test::passes_without_components(std::string("PdfComponent.") + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Pdf, MissingPdfComponent,
                         testing::Values("DISABLED_is_missing_for_the_reader",
                                         "DISABLED_is_missing_for_recognition"));

}  // namespace
