#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;
using test::parse_bytes;

TEST(Xml, elements_end_lines_and_blanks_run_together) {
  EXPECT_EQ(parse_bytes("<?xml version=\"1.0\"?><a><b>one  two\n three</b><c>four</c></a>").main(),
            "one two three\nfour\n");
}

TEST(Xml, markup_is_no_text) {
  EXPECT_EQ(parse_bytes("<?xml version=\"1.0\"?><a x=\"1\"><!-- no --><?no no?>yes</a>").main(),
            "yes\n");
}

TEST(Xml, attributes_that_carry_text_are_other_text) {
  auto const parsed = parse_bytes("<?xml version=\"1.0\"?><a id=\"17\" title=\"A title\">x</a>");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "A title");
}

TEST(Xml, style_sheets_in_drawings_are_no_text) {
  EXPECT_EQ(
      parse_bytes(
          "<svg xmlns=\"http://www.w3.org/2000/svg\"><style>a{b:c}</style><text>word</text></svg>")
          .main(),
      "word\n");
}

TEST(Xml, the_declared_encoding_counts) {
  EXPECT_EQ(
      parse_bytes("<?xml version=\"1.0\" encoding=\"GB2312\"?><a>\xd6\xd0\xce\xc4</a>").main(),
      "\xe4\xb8\xad\xe6\x96\x87\n");
}

TEST(Xml, a_document_that_is_not_well_formed_is_damaged_and_gives_what_was_there) {
  auto const parsed = parse_bytes("<?xml version=\"1.0\"?><a><b>text</c></a>");
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Xml, entities_that_multiply_are_stopped) {
  std::string bytes = "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e0 \"wordwordword\">";
  for (int i = 1; i < 30; ++i) {
    auto const inner = "&e" + std::to_string(i - 1) + ";";
    bytes.append("<!ENTITY e").append(std::to_string(i)).append(" \"");
    bytes.append(inner).append(inner).append(inner).append(inner).append("\">");
  }
  auto const parsed = parse_bytes(bytes + "]><a>&e29;</a>");
  EXPECT_NE(parsed.outcome, ParseOutcome::text);
}

TEST(Xml, a_file_named_by_an_entity_is_not_read) {
  auto const parsed = parse_bytes(
      "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e SYSTEM "
      "\"file:///etc/passwd\">]><a>x&e;y</a>");
  EXPECT_EQ(parsed.main().find("root"), std::string::npos);
}

TEST(Xml, elements_nested_without_end_reach_the_limit) {
  std::string bytes = "<?xml version=\"1.0\"?>";
  for (int i = 0; i < 5000; ++i) {
    bytes += "<a>";
  }
  EXPECT_EQ(parse_bytes(bytes).outcome, ParseOutcome::limit_reached);
}

}  // namespace
