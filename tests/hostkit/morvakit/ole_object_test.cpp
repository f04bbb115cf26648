#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/word_builder.h"

namespace {

using namespace std::string_literals;
using Orlec::ParseOutcome;
using test::little;
using test::make_ole;

using Streams = std::vector<std::pair<std::string, std::string>>;

/// A document in which these streams are embedded.
test::Parsed parse_with(Streams const& streams) {
  test::WordBuilder document;
  document.add(u"outer\r");
  for (auto const& [name, content] : streams) {
    document.streams.emplace_back("ObjectPool/_1/" + name, content);
  }
  return test::parse_bytes(document.bytes());
}

std::string wide(std::u16string_view text) {
  std::string bytes;
  for (char16_t const unit : text) {
    bytes += little(unit, 2);
  }
  return bytes;
}

std::string wide_field(std::u16string_view text) {
  return little(text.size(), 4) + wide(text);
}

/// What a packager's object holds, with its length in front.
std::string packaged(std::string const& label, std::string const& file,
                     std::string const& behind = {}) {
  auto const data = little(2, 2) + label + '\0' + "C:\\dir\\" + label + '\0' + little(3, 4) +
                    little(4, 4) + "C:\\\0"s + little(file.size(), 4) + file + behind;
  return little(data.size(), 4) + data;
}

/// A file whose fault is told with its name.
std::string const damaged_document = make_ole({{"WordDocument", std::string(5000, 'x')}});

}  // namespace

TEST(OleObject, a_package_is_read_as_the_file_that_it_is) {
  auto const parsed = parse_with({{"Package", "<html><body>inner</body></html>"}});
  EXPECT_EQ(parsed.main(), "outer\ninner");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(OleObject, other_programs_contents_are_read_too) {
  for (auto const* const stream : {"CONTENTS", "EmbeddedOdf", "package_stream"}) {
    EXPECT_EQ(parse_with({{stream, "<html><body>inner</body></html>"}}).main(), "outer\ninner");
  }
}

TEST(OleObject, a_packaged_file_is_read_and_counted_once) {
  auto const parsed = parse_with({{"\1Ole10Native", packaged("a.txt", "inner")}});
  EXPECT_EQ(parsed.main(), "outer\ninner");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(OleObject, the_fault_of_a_packaged_file_is_told_with_its_own_name) {
  EXPECT_EQ(parse_with({{"\1Ole10Native", packaged("b.doc", damaged_document)}}).reason,
            "\"b.doc\": the document's header is missing");
}

TEST(OleObject, a_packaged_file_has_its_name_in_unicode_where_that_is_stated) {
  auto const names =
      wide_field(u"C:\\Temp\\x") + wide_field(u"报告.doc") + wide_field(u"C:\\dir\\报告.doc");
  EXPECT_EQ(parse_with({{"\1Ole10Native", packaged("????.doc", damaged_document, names)}}).reason,
            "\"报告.doc\": the document's header is missing");
}

TEST(OleObject, native_data_that_are_no_package_are_the_file_itself) {
  auto const file = "<html><body>inner</body></html>"s;
  EXPECT_EQ(parse_with({{"\1Ole10Native", little(file.size(), 4) + file}}).main(), "outer\ninner");
}

TEST(OleObject, an_object_of_no_known_type_is_counted_and_passed_over) {
  auto const parsed = parse_with({{"Equation Native", "xxxx"}});
  EXPECT_EQ(parsed.main(), "outer");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(OleObject, an_embedded_file_that_only_wraps_another_is_counted_once) {
  auto const wrapper = make_ole({{"\1Ole10Native", packaged("a.txt", "inner")}});
  auto const parsed = parse_with({{"Package", wrapper}});
  EXPECT_EQ(parsed.main(), "outer\ninner");
}

TEST(OleObject, a_file_that_only_wraps_another_has_no_parser) {
  EXPECT_FALSE(
      test::parse_bytes(make_ole({{"\1Ole10Native", packaged("a.txt", "inner")}})).has_parser);
}

TEST(OleObject, wrappings_within_wrappings_have_a_bound) {
  auto file = "innermost"s;
  for (int depth = 0; depth < 24; ++depth) {
    file = make_ole({{"\1Ole10Native", packaged("a.txt", file)}});
  }
  auto const parsed = parse_with({{"Package", file}});
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.main(), "outer");
}

TEST(OleObject, packaged_data_cut_anywhere_are_survived) {
  auto const data = packaged("a.txt", "inner", wide_field(u"x") + wide_field(u"y"));
  for (std::size_t length = 0; length < data.size(); ++length) {
    EXPECT_EQ(parse_with({{"\1Ole10Native", data.substr(0, length)}}).main().substr(0, 5), "outer");
  }
}

TEST(OleObject, lengths_that_claim_too_much_are_survived) {
  auto data = packaged("a.txt", "inner");
  auto const file_length = data.find("inner") - 4;
  for (std::size_t at : {std::size_t{0}, file_length, file_length - 8}) {
    auto changed = data;
    changed.replace(at, 4, little(0xFFFFFFFF, 4));
    EXPECT_EQ(parse_with({{"\1Ole10Native", changed}}).main().substr(0, 5), "outer");
  }
}
