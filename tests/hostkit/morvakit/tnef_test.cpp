#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/tessarine/memory_reader.h"

namespace {

using Orlec::ParseOutcome;
using Orlec::ParseTextType_other;
using Orlec::ParseTextType_property;
using test::little;
using test::parse_bytes;

std::string const file_head = "\x78\x9f\x3e\x22\x01" + std::string(1, '\0');

std::string attribute(char level, unsigned number, std::string const& content) {
  return std::string(1, level) + little(number, 4) + little(content.size(), 4) + content +
         little(0, 2);
}

std::string padded(std::string text) {
  text.resize((text.size() + 3) / 4 * 4);
  return text;
}

/// A property of variable size with one value.
std::string property(unsigned id, unsigned type, std::string const& value) {
  return little(type, 2) + little(id, 2) + little(1, 4) + little(value.size(), 4) + padded(value);
}

std::string named_property(unsigned id, unsigned type, std::string const& value) {
  return little(type, 2) + little(id, 2) + std::string(16, 'g') + little(1, 4) + little(6, 4) +
         padded(std::string("n\0m\0\0\0", 6)) + little(1, 4) + little(value.size(), 4) +
         padded(value);
}

std::string number(unsigned id, unsigned value) {
  return little(3, 2) + little(id, 2) + little(value, 4);
}

std::string row(unsigned count, std::string const& properties) {
  return attribute('\x01', 0x00069003, little(count, 4) + properties);
}

std::string code_page(int page) {
  return attribute('\x01', 0x00069007, little(static_cast<unsigned>(page), 4) + little(0, 4));
}

std::string attachment(std::string const& title, std::string const& content,
                       std::string const& properties = {}) {
  return attribute('\x02', 0x00069002, std::string(14, '\0')) +
         attribute('\x02', 0x00018010, title + '\0') + attribute('\x02', 0x0006800f, content) +
         properties;
}

std::string sample() {
  return file_head + code_page(936) +
         row(4, property(0x37, 0x1e, "Title") + number(0x17, 1) +
                    named_property(0x8001, 0x1e, "named") + property(0x1000, 0x1e, "Body")) +
         attribute('\x01', 0x00069004,
                   little(1, 4) + little(1, 4) + property(0x3001, 0x1e, "Some One")) +
         attachment("a.txt", "file");
}

TEST(Tnef, subject_and_body_are_main_text) {
  EXPECT_EQ(parse_bytes(file_head + attribute('\x01', 0x00018004, "Title") +
                        attribute('\x01', 0x0002800c, "Body\r\n"))
                .main(),
            "Title\nBody");
}

TEST(Tnef, text_is_read_in_the_code_page_of_the_message) {
  EXPECT_EQ(
      parse_bytes(file_head + code_page(936) + row(1, property(0x1000, 0x1e, "\xd6\xd0\xce\xc4")))
          .main(),
      "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Tnef, text_of_named_properties_is_other_text) {
  EXPECT_EQ(parse_bytes(sample()).kind(ParseTextType_other), "named");
}

TEST(Tnef, recipients_are_properties) {
  EXPECT_NE(parse_bytes(sample()).kind(ParseTextType_property).find("to: Some One"),
            std::string::npos);
}

TEST(Tnef, attachments_follow_the_text) {
  auto const parsed = parse_bytes(sample());
  EXPECT_EQ(parsed.main(), "Title\nBody\nfile");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Tnef, an_attached_message_is_read) {
  auto const inner = file_head + attribute('\x01', 0x00018004, "Inner");
  auto const properties = attribute(
      '\x02', 0x00069005, little(1, 4) + property(0x3701, 0x0d, std::string(16, 'i') + inner));
  EXPECT_EQ(parse_bytes(file_head + attachment("x", "", properties)).main(), "Inner");
}

TEST(Tnef, a_mail_is_read_with_the_message_in_its_transport_form) {
  auto const parsed = parse_bytes(
      "Received: x\r\nFrom: a@example.org\r\nSubject: S\r\nContent-Type: application/ms-tnef; "
      "name=winmail.dat\r\n\r\n" +
      sample());
  EXPECT_EQ(parsed.main(), "S\nTitle\nBody\nfile");
}

TEST(Tnef, an_attribute_beyond_the_end_is_damage) {
  auto bytes = file_head + attribute('\x01', 0x00018004, "Title");
  bytes.resize(bytes.size() - 4);
  auto const parsed = parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "Tit");
}

TEST(Tnef, more_attachments_than_allowed_reach_the_limit) {
  Orlec::ParseLimits limits;
  limits.i_entries = 1;
  test::ScopedLimits const scoped(limits);
  EXPECT_EQ(parse_bytes(file_head + attachment("a", "a") + attachment("b", "b")).outcome,
            ParseOutcome::limit_reached);
}

TEST(Tnef, a_row_that_claims_more_than_it_has_ends) {
  EXPECT_EQ(parse_bytes(file_head + row(0xffffffff, property(0x37, 0x1e, "Title"))).main(),
            "Title");
}

TEST(Tnef, recipients_that_are_claimed_but_not_there_take_no_time) {
  Orlec::ParseLimits limits;
  limits.i_milliseconds = 2000;
  test::ScopedLimits const scoped(limits);
  EXPECT_EQ(parse_bytes(file_head + attribute('\x01', 0x00018004, "Title") +
                        attribute('\x01', 0x00069004, little(0xffffffff, 4) + "ab"))
                .outcome,
            ParseOutcome::text);
}

TEST(Tnef, a_file_cut_anywhere_does_no_harm) {
  auto const whole = sample();
  for (std::size_t length = 4; length < whole.size(); ++length) {
    parse_bytes(whole.substr(0, length));
  }
}

TEST(Tnef, flipped_bytes_do_no_harm) {
  constexpr int variants = 300;
  std::mt19937 random(7);
  for (int i = 0; i < variants; ++i) {
    auto bytes = sample();
    bytes[4 + random() % (bytes.size() - 4)] = static_cast<char>(random());
    bytes[4 + random() % (bytes.size() - 4)] = static_cast<char>(random());
    parse_bytes(bytes);
  }
}

}  // namespace
