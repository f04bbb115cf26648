#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/pdf_builder.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseOutcome;
using test::one_page;
using test::parse_bytes;
using test::show;

std::string page() {
  return one_page(show("text")).bytes();
}

/// The document with one piece of it exchanged, at its last place.
std::string exchanged(std::string bytes, std::string_view what, std::string_view by) {
  return bytes.replace(bytes.rfind(what), what.size(), by);
}

/// The document with one more part behind it, and its end pointing there.
std::string continued(std::string const& part) {
  auto const before = page();
  return before + part + "\nstartxref\n" + std::to_string(before.size()) + "\n%%EOF\n";
}

struct Claim {
  char const* name;
  std::string bytes;
};

class PdfObjectClaim : public testing::TestWithParam<Claim> {};

// Room for so many objects would take over a gigabyte.
TEST_P(PdfObjectClaim, beyond_all_sense_is_damage) {
  auto const parsed = parse_bytes(GetParam().bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the document claims to have more objects than it has bytes");
}

INSTANTIATE_TEST_SUITE_P(
    , PdfObjectClaim,
    testing::Values(
        Claim{"of_a_table", exchanged(page(), "xref\n0 6", "xref\n30000000 6")},
        Claim{"of_a_table_behind_another", continued("xref\n0 0\ntrailer\n<</Root 1 0 R/Prev " +
                                                     std::to_string(page().size() + 100) + ">>" +
                                                     std::string(100, ' ') + "xref\n30000000 1\n")},
        Claim{"of_a_cross_reference_stream",
              continued("9 0 obj\n<</Type/XRef/Size 30000000/W[1 2 1]/Root 1 0 R/Length 0>>stream\n"
                        "\nendstream\nendobj")},
        Claim{"of_a_cross_reference_stream_with_a_name_in_disguise",
              continued("9 0 obj\n<</Type/XRef/S#69ze 30000000/W[1 2 1]/Length 0>>stream\n"
                        "\nendstream\nendobj")},
        Claim{"of_a_section_of_such_a_stream",
              continued("9 0 obj\n<</Type/XRef/Size 9/Index[30000000 1]/W[1 2 1]/Length 0>>stream\n"
                        "\nendstream\nendobj")},
        Claim{"of_an_object_where_the_table_is_lost",
              exchanged(exchanged(page(), "xref\n0 6", "lost"), "5 0 obj", "30000000 0 obj")},
        Claim{"of_an_object_far_from_its_keyword",
              exchanged(page(), "5 0 obj",
                        "30000000" + std::string(90, ' ') + '0' + std::string(90, '\t') + "obj")},
        Claim{"of_more_digits_than_a_number_has",
              exchanged(page(), "5 0 obj", "99999999999999999999999 0 obj")}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(PdfHostile, the_size_of_an_attached_file_is_no_number_of_objects) {
  auto const parsed = parse_bytes(continued(
      "9 0 obj\n<</Type/EmbeddedFile/Params<</Size 30000000>>/Length 0>>stream\n\nendstream\n"
      "endobj"));
  EXPECT_EQ(parsed.main(), "text");
}

// The library would make room for the pages and for hints about them, and be asked for each page.
TEST(PdfHostile, pages_and_hints_of_a_file_laid_out_for_the_network_are_not_believed) {
  test::PdfBuilder pdf;
  pdf.add("<</Linearized 1/L 000000/H[100 4000000000]/N 2000000000/O 3/E 100/T 200>>");
  pdf.add("<</Type/Catalog/Pages 3 0 R>>");
  pdf.add("<</Type/Pages/Kids[]/Count 1>>");
  auto const bytes = exchanged(pdf.bytes(), "/Root 1 0 R", "/Root 2 0 R");
  auto const length = "/L 000" + std::to_string(bytes.size());
  auto const parsed = parse_bytes(exchanged(bytes, "/L 000000", length));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "no page can be read");
}

/// A page whose font has that map of characters.
std::string with_map(std::string const& map) {
  auto pdf = one_page(show("text"),
                      "<</Type/Font/Subtype/Type0/BaseFont/X/Encoding 7 0 R/DescendantFonts[6 0 "
                      "R]/ToUnicode 8 0 R>>");
  pdf.add(
      "<</Type/Font/Subtype/CIDFontType2/CIDSystemInfo<</Registry(Adobe)/Ordering(Identity)"
      "/Supplement 0>>>>");
  pdf.add_stream(map, "/Type/CMap");
  pdf.add_stream(map);
  return pdf.bytes();
}

class PdfCharacterMap : public testing::TestWithParam<Claim> {};

// The library would write down each code, or not come to an end.
TEST_P(PdfCharacterMap, without_end_is_a_bound) {
  auto const parsed = parse_bytes(with_map(GetParam().bytes));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a map of too many characters");
}

INSTANTIATE_TEST_SUITE_P(
    , PdfCharacterMap,
    testing::Values(
        Claim{"of_all_codes", "1 begincidrange <00000000> <fffffeff> 0 endcidrange"},
        Claim{"up_to_the_last_code", "1 begincidrange <ffffff00> <ffffffff> 0 endcidrange"},
        Claim{"with_a_sign", "1 begincidrange <00> <-1> 0 endcidrange"},
        Claim{"behind_a_comment", "begincidrange %endcidrange\n<00000000> < ff fff eff> 0"},
        Claim{"behind_a_string", "(\\) begincidrange) begincidrange <00000000> <fffffeff> 0"},
        Claim{"of_the_last_code", "1 begincidchar <ffffffff> 0 endcidchar"},
        Claim{"to_unicode", "1 beginbfrange <00000000> <00ffffff> <0041> endbfrange"},
        Claim{"to_unicode_behind_a_list",
              "beginbfrange <00> <01> [<0041> <0042>] <00000000> <00ffffff> <0041>"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(PdfHostile, a_map_may_have_codes_of_any_length) {
  auto const parsed =
      parse_bytes(with_map("1 begincodespacerange <00000000> <ffffffff> endcodespacerange "
                           "1 begincidrange <81308130> <8130813f> 1 endcidrange "
                           "1 beginbfrange <0020> <007e> <4e00> endbfrange"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

/// A stream that unpacks to four thousand times its size.
std::string swollen() {
  return std::string(1024, '\x81');
}
constexpr auto packed_twice = "/Filter[/RunLengthDecode/RunLengthDecode]";

Orlec::ParseLimits limits_of_a_megabyte() {
  Orlec::ParseLimits limits;
  limits.i_expanded_bytes = 1 << 20;
  return limits;
}

TEST(PdfHostile, what_draws_a_page_keeps_to_the_bound_on_unpacked_bytes) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  auto pdf = one_page(show("text"), test::helvetica, "", "/Contents 6 0 R");
  pdf.add_stream(swollen(), packed_twice);
  EXPECT_EQ(parse_bytes(exchanged(pdf.bytes(), "/Contents 4 0 R", "")).outcome,
            ParseOutcome::limit_reached);
}

TEST(PdfHostile, the_program_of_a_font_keeps_to_the_bound_on_unpacked_bytes) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  auto pdf = one_page(show("text"),
                      "<</Type/Font/Subtype/Type1/BaseFont/X/FontDescriptor<</FontFile 6 0 R>>>>");
  pdf.add_stream(swollen(), packed_twice);
  EXPECT_EQ(parse_bytes(pdf.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(PdfHostile, a_shading_of_too_many_pieces_is_a_bound) {
  auto pdf =
      one_page(show("text") + "/S sh", test::helvetica, "", "/Resources<</Shading<</S 6 0 R>>>>");
  pdf.add_stream(swollen(),
                 std::string(packed_twice) +
                     "/ShadingType 6/ColorSpace/DeviceGray/BitsPerCoordinate 1/BitsPerComponent "
                     "1/BitsPerFlag 2/Decode[0 1 0 1 0 1]");
  auto const bytes = exchanged(pdf.bytes(), "/Resources<</Font<</F1 5 0 R>>>>", "");
  EXPECT_EQ(parse_bytes(bytes).reason, "a shading of too many pieces");
}

// The library takes the filter of a file that stands elsewhere for the stream's own.
TEST(PdfHostile, filters_under_their_other_name_keep_to_the_bound_on_unpacked_bytes) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  auto pdf = one_page(show("text"), test::helvetica, "", "/Contents 6 0 R");
  pdf.add_stream(swollen(), "/F[/RunLengthDecode/RunLengthDecode]");
  EXPECT_EQ(parse_bytes(exchanged(pdf.bytes(), "/Contents 4 0 R", "")).outcome,
            ParseOutcome::limit_reached);
}

// A row of which there is one byte is as long as it is said to be.
TEST(PdfHostile, rows_that_are_filled_up_keep_to_the_bound_on_unpacked_bytes) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  auto pdf = one_page(show("text"), test::helvetica, "", "/Contents 6 0 R");
  pdf.add_stream("\x80\x18\x4C\x50\x10",
                 "/Filter/LZWDecode/DecodeParms<</Predictor 12/Columns 4000000>>");
  EXPECT_EQ(parse_bytes(exchanged(pdf.bytes(), "/Contents 4 0 R", "")).outcome,
            ParseOutcome::limit_reached);
}

/// A document that needs its object 6, a stream with those entries, to draw its page.
std::string drawn_with(std::string const& font, std::string const& resources,
                       std::string const& entries) {
  auto pdf = one_page(show("text"), font, "",
                      "/Contents 4 0 R/Resources<</Font<</F1 5 0 R>>" + resources + ">>");
  pdf.add_stream("nothing", entries);
  return exchanged(pdf.bytes(), "/Contents 4 0 R/Resources<</Font<</F1 5 0 R>>>>", "");
}

std::string content_packed(std::string const& entries) {
  auto pdf = one_page(show("text"), test::helvetica, "", "/Contents[6 0 R]");
  pdf.add_stream("nothing", entries);
  return exchanged(pdf.bytes(), "/Contents 4 0 R", "");
}

class PdfPackedAsPicture : public testing::TestWithParam<Claim> {};

// A few bytes of a picture make any amount of memory, before the first of them is given.
TEST_P(PdfPackedAsPicture, is_damage_and_not_opened) {
  auto const parsed = parse_bytes(GetParam().bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "what pages are drawn with is packed as a picture");
}

constexpr auto as_fax = "/Filter/CCITTFaxDecode/DecodeParms<</K -1/Columns 80000>>";

INSTANTIATE_TEST_SUITE_P(
    , PdfPackedAsPicture,
    testing::Values(
        Claim{"content_as_a_fax", content_packed(as_fax)},
        Claim{"content_as_a_fax_by_its_short_name", content_packed("/F/CCF")},
        Claim{"content_as_a_photograph", content_packed("/Filter/DCTDecode")},
        Claim{"content_as_a_photograph_by_its_short_name", content_packed("/Filter/DCT")},
        Claim{"content_as_a_scan", content_packed("/Filter/JBIG2Decode")},
        Claim{"content_as_wavelets", content_packed("/Filter/JPXDecode")},
        Claim{"content_among_other_ways", content_packed("/Filter[/AHx/JPXDecode]")},
        Claim{"content_in_long_rows",
              content_packed("/Filter/LZWDecode/DecodeParms<</Predictor 12/Columns 70000000>>")},
        Claim{"content_in_rows_of_many_colors",
              content_packed("/F[/Fl]/DP[<</Predictor 2/Columns 9000000/Colors 8>>]")},
        Claim{"program_of_a_font",
              drawn_with("<</Type/Font/Subtype/Type1/BaseFont/X/FontDescriptor<</FontFile 6 0 "
                         "R>>>>",
                         "", as_fax)},
        Claim{"glyphs_of_a_font",
              drawn_with("<</Type/Font/Subtype/Type0/BaseFont/X/Encoding/Identity-H"
                         "/DescendantFonts[<</Type/Font/Subtype/CIDFontType2/CIDToGIDMap 6 0 R>>]"
                         ">>",
                         "", as_fax)},
        Claim{"codes_of_a_font",
              drawn_with("<</Type/Font/Subtype/Type1/BaseFont/X/ToUnicode 6 0 R>>", "", as_fax)},
        Claim{"character_of_a_font",
              drawn_with("<</Type/Font/Subtype/Type3/CharProcs<</a 6 0 R>>>>", "", as_fax)},
        Claim{"form", drawn_with(test::helvetica, "/XObject<</X 6 0 R>>",
                                 std::string("/Subtype/Form") + as_fax)},
        Claim{"shading", drawn_with(test::helvetica, "/Shading<</S 6 0 R>>",
                                    std::string("/ShadingType 6") + as_fax)}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(PdfHostile, a_font_that_a_state_of_its_own_names_is_gone_through_once) {
  auto const font =
      "<</Type/Font/Subtype/Type3/FontBBox[0 0 1 1]/FontMatrix[1 0 0 1 0 0]/CharProcs<<>>"
      "/Encoding<</Differences[0/a]>>/FirstChar 0/LastChar 0/Widths[1]"
      "/Resources<</ExtGState<</G<</Font[5 0 R 1]>>>>>>>>";
  EXPECT_NE(parse_bytes(one_page(show("text"), font).bytes()).outcome, ParseOutcome::timed_out);
}

TEST(PdfHostile, resources_of_a_font_that_stands_in_them_are_gone_through_once) {
  auto pdf = one_page(show("text"), test::helvetica, "", "/Resources 6 0 R");
  pdf.add("<</Font<</F1 5 0 R/F2<</Type/Font/Subtype/Type3/CharProcs<<>>/Resources 6 0 R>>>>>>");
  auto const bytes = exchanged(pdf.bytes(), "/Resources<</Font<</F1 5 0 R>>>>", "");
  EXPECT_NE(parse_bytes(bytes).outcome, ParseOutcome::timed_out);
}

TEST(PdfHostile, what_was_named_as_a_font_is_looked_into_as_a_form) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  auto pdf = one_page(show("text"), test::helvetica, "/AcroForm<</DR<</Font<</F 6 0 R>>>>>>",
                      "/Resources<</XObject<</X 6 0 R>>>>");
  pdf.add_stream(swollen(), std::string("/Subtype/Form") + packed_twice);
  auto const bytes = exchanged(pdf.bytes(), "/Resources<</Font<</F1 5 0 R>>>>", "");
  EXPECT_EQ(parse_bytes(bytes).outcome, ParseOutcome::limit_reached);
}

/// Forty pages with that content, which is object 4, is packed twice and unpacks to 50,000 bytes.
std::string pages_of_one_content(std::string const& content) {
  constexpr int pages = 40;
  std::string kids;
  test::PdfBuilder pdf;
  for (int page = 0; page < pages; ++page) {
    kids += std::to_string(page + 6) + " 0 R ";
  }
  pdf.add("<</Type/Catalog/Pages 2 0 R>>");
  pdf.add("<</Type/Pages/MediaBox[0 0 600 800]/Resources<</Font<</F1 5 0 R>>>>/Count " +
          std::to_string(pages) + "/Kids[" + kids + "]>>");
  pdf.add("null");
  std::string hexadecimal;
  for (char const byte : show("text")) {
    constexpr auto digits = "0123456789abcdef";
    auto const value = static_cast<unsigned char>(byte);
    hexadecimal += std::string("00") + digits[value / 16] + digits[value % 16];
  }
  for (int i = 0; i < 400; ++i) {
    hexadecimal += "8120";
  }
  pdf.add_stream(hexadecimal + "80>", "/Filter[/ASCIIHexDecode/RunLengthDecode]");
  pdf.add(test::helvetica);
  for (int page = 0; page < pages; ++page) {
    pdf.add("<</Type/Page/Parent 2 0 R/Contents " + content + ">>");
  }
  return pdf.bytes();
}

class PdfSharedContent : public testing::TestWithParam<char const*> {};

TEST_P(PdfSharedContent, is_counted_once_as_unpacked) {
  test::ScopedLimits const limits(limits_of_a_megabyte());
  EXPECT_EQ(parse_bytes(pages_of_one_content(GetParam())).outcome, ParseOutcome::text);
}

INSTANTIATE_TEST_SUITE_P(, PdfSharedContent, testing::Values("4 0 R", "[4 0 R]"));

}  // namespace
