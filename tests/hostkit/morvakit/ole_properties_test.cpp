#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/word_builder.h"

namespace {

using namespace std::string_literals;
using test::little;

std::string filled_up(std::string bytes) {
  bytes.resize((bytes.size() + 3) / 4 * 4, '\0');
  return bytes;
}

std::string ansi(std::string const& text) {
  return little(30, 4) + little(text.size() + 1, 4) + filled_up(text + '\0');
}
std::string wide_units(std::u16string_view text) {
  std::string bytes;
  for (char16_t const unit : text) {
    bytes += little(unit, 2);
  }
  return bytes + "\0\0"s;
}
std::string wide(std::u16string_view text) {
  return little(31, 4) + little(text.size() + 1, 4) + filled_up(wide_units(text));
}
std::string number(std::uint32_t value) {
  return little(3, 4) + little(value, 4);
}
std::string code_page(unsigned page) {
  return little(2, 4) + little(page, 4);
}

using Values = std::vector<std::pair<unsigned, std::string>>;

std::string property_set(Values const& values) {
  std::string entries;
  std::string content;
  auto const begin = 8 + 8 * values.size();
  for (auto const& [id, value] : values) {
    entries += little(id, 4) + little(begin + content.size(), 4);
    content += value;
  }
  return little(begin + content.size(), 4) + little(values.size(), 4) + entries + content;
}

std::string stream(std::vector<std::string> const& sets) {
  auto bytes = little(0xFFFE, 2) + std::string(22, '\0') + little(sets.size(), 4);
  auto offset = bytes.size() + sets.size() * 20;
  for (auto const& set : sets) {
    bytes += std::string(16, '\0') + little(offset, 4);
    offset += set.size();
  }
  for (auto const& set : sets) {
    bytes += set;
  }
  return bytes;
}

test::Parsed parse_with(std::string const& name, std::string const& content) {
  test::WordBuilder document;
  document.add(u"body\r").streams = {{name, content}};
  return test::parse_bytes(document.bytes());
}

std::string summary(Values const& values) {
  return parse_with("\5SummaryInformation", stream({property_set(values)}))
      .kind(Orlec::ParseTextType_property);
}

std::string document_summary(std::vector<std::string> const& sets) {
  return parse_with("\5DocumentSummaryInformation", stream(sets))
      .kind(Orlec::ParseTextType_property);
}

std::string dictionary(std::vector<std::pair<unsigned, std::string>> const& names) {
  auto bytes = little(names.size(), 4);
  for (auto const& [id, name] : names) {
    bytes += little(id, 4) + little(name.size() + 1, 4) + name + '\0';
  }
  return filled_up(bytes);
}

}  // namespace

TEST(OleProperties, have_the_names_of_office_open_xml) {
  EXPECT_EQ(summary({{2, ansi("A title")}, {4, ansi("Somebody")}, {5, ansi("a, b")}}),
            "title: A title\ncreator: Somebody\nkeywords: a, b");
}

TEST(OleProperties, are_in_the_code_page_of_their_set) {
  EXPECT_EQ(summary({{2, ansi("\xB1\xA8\xB8\xE6")}, {1, code_page(936)}}), "title: 报告");
  EXPECT_EQ(summary({{1, code_page(65001)}, {2, ansi("报告")}}), "title: 报告");
  EXPECT_EQ(summary({{2, ansi("caf\xE9")}}), "title: café");
}

TEST(OleProperties, may_be_in_unicode) {
  EXPECT_EQ(summary({{2, wide(u"报告")}}), "title: 报告");
  auto const units = wide_units(u"报告");
  EXPECT_EQ(summary({{1, code_page(1200)}, {2, little(30, 4) + little(units.size(), 4) + units}}),
            "title: 报告");
}

TEST(OleProperties, times_are_dates) {
  EXPECT_EQ(summary({{12, little(64, 4) + little(128930364000000000, 8)}}),
            "created: 2009-07-25T23:00:00Z");
}

TEST(OleProperties, times_that_were_never_set_are_left_out) {
  EXPECT_EQ(summary({{11, little(64, 4) + little(0, 8)}, {2, ansi("t")}}), "title: t");
}

TEST(OleProperties, the_stated_number_of_pages_is_counted) {
  auto const parsed =
      parse_with("\5SummaryInformation", stream({property_set({{14, number(12)}})}));
  EXPECT_EQ(parsed.counts.i_page, 12);
}

TEST(OleProperties, lists_become_one_line) {
  auto const titles =
      little(0x101E, 4) + little(2, 4) + little(2, 4) + "a\0"s + little(3, 4) + "bc\0"s + "\0\0\0"s;
  auto const pairs =
      little(0x100C, 4) + little(2, 4) + little(30, 4) + little(6, 4) + "Title\0"s + number(1);
  EXPECT_EQ(document_summary({property_set({{13, titles}, {12, pairs}})}),
            "TitlesOfParts: a bc\nHeadingPairs: Title 1");
}

TEST(OleProperties, those_of_the_user_have_their_own_names) {
  auto const own = property_set({{0, dictionary({{2, "Client"}, {3, "Ratio"}, {4, "Done"}})},
                                 {1, code_page(1252)},
                                 {2, ansi("Somebody")},
                                 {3, little(5, 4) + little(0x3FF8000000000000, 8)},
                                 {4, little(11, 4) + little(0xFFFF, 4)}});
  EXPECT_EQ(document_summary({property_set({{15, ansi("Company")}}), own}),
            "Company: Company\nClient: Somebody\nRatio: 1.5\nDone: true");
}

TEST(OleProperties, names_may_be_in_unicode) {
  auto const name = wide_units(u"客户");
  auto const names = filled_up(little(1, 4) + little(2, 4) + little(name.size() / 2, 4) + name);
  EXPECT_EQ(
      document_summary(
          {property_set({}), property_set({{1, code_page(1200)}, {0, names}, {2, wide(u"某人")}})}),
      "客户: 某人");
}

TEST(OleProperties, names_of_the_programs_own_are_left_out) {
  EXPECT_EQ(document_summary({property_set({}),
                              property_set({{0, dictionary({{2, "_PID_GUID"}})}, {2, ansi("x")}})}),
            "");
}

TEST(OleProperties, values_that_overlap_do_not_make_a_small_set_long) {
  auto const text = ansi(std::string(10000, 'x'));
  std::string entries;
  for (unsigned i = 0; i < 1000; ++i) {
    entries += little(2, 4) + little(8 + 8000, 4);
  }
  auto const set = little(0, 4) + little(1000, 4) + entries + text;
  EXPECT_LT(
      parse_with("\5SummaryInformation", stream({set})).kind(Orlec::ParseTextType_property).size(),
      50000U);
}

TEST(OleProperties, of_a_very_long_one_the_beginning_is_read) {
  std::string const text((3 << 20) + 1, 'x');
  auto const parsed = parse_with("\5SummaryInformation",
                                 stream({property_set({{2, ansi(text)}, {3, ansi("short")}})}));
  auto const properties = parsed.kind(Orlec::ParseTextType_property);
  EXPECT_EQ(properties.size(),
            std::size_t{1 << 20} + std::string("title: \nsubject: short").size());
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a property of the document is over 1048576 bytes");
}

TEST(OleProperties, of_a_very_long_list_the_beginning_is_read) {
  std::string values;
  for (int i = 0; i < 5; ++i) {
    values += little((1 << 19), 4) + std::string(1 << 19, 'x');
  }
  auto const parsed =
      parse_with("\5DocumentSummaryInformation",
                 stream({property_set({{13, little(0x101E, 4) + little(5, 4) + values}})}));
  EXPECT_LT(parsed.kind(Orlec::ParseTextType_property).size(), std::size_t{2 << 20});
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::limit_reached);
}

TEST(OleProperties, a_stream_without_bytes_says_nothing) {
  EXPECT_EQ(parse_with("\5SummaryInformation", "").outcome, Orlec::ParseOutcome::text);
}

TEST(OleProperties, those_that_are_damaged_leave_the_text) {
  auto const parsed = parse_with("\5SummaryInformation", "no properties");
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "the document's properties are damaged");
}

TEST(OleProperties, counts_that_claim_too_much_make_the_text_incomplete) {
  auto set = property_set({{2, ansi("t")}});
  set.replace(4, 4, little(0xFFFFFFFF, 4));
  auto const parsed = parse_with("\5SummaryInformation", stream({set}));
  EXPECT_EQ(parsed.main(), "body");
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "the document's properties are cut short");
}

TEST(OleProperties, cut_anywhere_or_changed_are_survived) {
  auto const own = property_set({{0, dictionary({{2, "Client"}, {3, "Ratio"}})},
                                 {1, code_page(1200)},
                                 {2, wide(u"Somebody")},
                                 {3, little(0x101E, 4) + little(2, 4) + little(2, 4) + "a\0"s}});
  auto const bytes = stream({property_set({{2, ansi("t")}, {14, number(1)}}), own});
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    EXPECT_EQ(parse_with("\5DocumentSummaryInformation", bytes.substr(0, length)).main(), "body");
  }
  std::mt19937 random(3);
  for (int round = 0; round < 1000; ++round) {
    auto changed = bytes;
    for (int change = 0; change < 3; ++change) {
      changed[random() % changed.size()] = static_cast<char>(random());
    }
    EXPECT_EQ(parse_with("\5DocumentSummaryInformation", changed).main(), "body");
  }
}
