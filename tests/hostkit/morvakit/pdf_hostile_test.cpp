#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/pdf_builder.h"

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

}  // namespace
