#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/tessarine/compound_image.h"
#include "hostkit/tessarine/memory_reader.h"
#include "hostkit/tessarine/ole_builder.h"

namespace {

using Orlec::ParseOutcome;
using Orlec::ParseTextType_other;
using Orlec::ParseTextType_property;
using test::little;
using test::parse_bytes;
using namespace std::string_literals;

using Streams = std::vector<std::pair<std::string, std::string>>;

std::string const properties = "__properties_version1.0";

std::string wide(std::string const& ascii) {
  std::string bytes;
  for (char const character : ascii) {
    bytes += character;
    bytes += '\0';
  }
  return bytes;
}

std::string fixed(unsigned id, unsigned type, std::uint64_t value) {
  return little(type, 2) + little(id, 2) + little(6, 4) + little(value, 8);
}

std::string variable(std::string const& tag) {
  return "__substg1.0_" + tag;
}

/// A message of the given properties of fixed size and streams.
std::string message(std::string const& numbers, Streams streams) {
  streams.insert(streams.begin(), {properties, std::string(32, '\0') + numbers});
  return test::make_ole(streams);
}

/// The classic example of packed RTF: "{\rtf1\ansi\ansicpg1252\pard hello world}".
std::string packed_rtf() {
  return "\x2d\0\0\0\x2b\0\0\0\x4c\x5a\x46\x75\xf1\xc5\xc7\xa7\x03\0\x0a\0\x72\x63\x70\x67\x31\x32"
         "\x35\x42\x32\x0a\xf3\x20\x68\x65\x6c\x09\0\x20\x62\x77\x05\xb0\x6c\x64\x7d\x0a\x80\x0f"
         "\xa0"s;
}

TEST(Msg, subject_and_body_are_main_text) {
  auto const parsed = parse_bytes(message("", {{variable("0037001F"), wide("Title")},
                                               {variable("1000001F"), wide("One.\r\n\r\nTwo.\r\n")},
                                               {variable("10130102"), "<p>no</p>"}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "Title\nOne.\n\nTwo.");
}

TEST(Msg, text_in_eight_bits_is_read_in_the_code_page_of_the_message) {
  EXPECT_EQ(
      parse_bytes(message(fixed(0x3ffd, 3, 936), {{variable("1000001E"), "\xd6\xd0\xce\xc4"}}))
          .main(),
      "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Msg, html_is_read_where_there_is_no_plain_text) {
  EXPECT_EQ(parse_bytes(
                message(fixed(0x3fde, 3, 936), {{variable("1000001F"), wide(" \r\n")},
                                                {variable("10130102"), "<p>\xd6\xd0\xce\xc4</p>"}}))
                .main(),
            "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Msg, packed_rtf_is_read_where_there_is_no_other_text) {
  auto const parsed = parse_bytes(message("", {{variable("10090102"), packed_rtf()}}));
  EXPECT_EQ(parsed.main(), "hello world");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
}

TEST(Msg, rtf_that_is_not_packed_is_read) {
  auto const rtf = "{\\rtf1 hello}"s;
  auto const form = little(rtf.size() + 12, 4) + little(rtf.size(), 4) + "MELA" + little(0, 4);
  EXPECT_EQ(parse_bytes(message("", {{variable("10090102"), form + rtf}})).main(), "hello");
}

TEST(Msg, packed_rtf_with_a_wrong_checksum_is_damage) {
  auto rtf = packed_rtf();
  rtf[12] = '\0';
  auto const parsed = parse_bytes(message("", {{variable("10090102"), rtf}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "hello world");
}

TEST(Msg, packed_rtf_that_is_cut_is_damage) {
  auto const parsed =
      parse_bytes(message("", {{variable("10090102"), packed_rtf().substr(0, 40)}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
}

TEST(Msg, people_and_dates_are_properties) {
  std::uint64_t const time = 128895426960000000;
  auto const recipient = "__recip_version1.0_#00000000/"s;
  auto const parsed = parse_bytes(message(
      fixed(0x39, 0x40, time), {{variable("0C1A001F"), wide("Some One")},
                                {recipient + properties, std::string(8, '\0') + fixed(0xc15, 3, 2)},
                                {recipient + variable("3001001F"), wide("Other")},
                                {recipient + variable("39FE001F"), wide("o@example.org")}}));
  EXPECT_EQ(parsed.kind(ParseTextType_property),
            "sender: Some One\ndate: 2009-06-15T12:31:36Z\ncc: Other o@example.org");
}

TEST(Msg, a_recipient_without_a_name_is_left_out) {
  auto const recipient = "__recip_version1.0_#00000000/"s;
  EXPECT_EQ(parse_bytes(message("", {{variable("1000001F"), wide("text")},
                                     {recipient + properties, std::string(8, '\0')}}))
                .kind(ParseTextType_property),
            "");
}

TEST(Msg, the_headers_that_a_message_came_with_are_other_text) {
  EXPECT_EQ(parse_bytes(message("", {{variable("007D001F"), wide("Received: x\r\n")}}))
                .kind(ParseTextType_other),
            "Received: x");
}

TEST(Msg, named_texts_are_other_text) {
  EXPECT_EQ(parse_bytes(message("", {{variable("8001001F"), wide("place")},
                                     {variable("8002101F-00000000"), wide("class")},
                                     {variable("80030102"), "binary"}}))
                .kind(ParseTextType_other),
            "place\nclass");
}

TEST(Msg, attachments_follow_the_text) {
  auto const attachment = "__attach_version1.0_#00000000/"s;
  auto const parsed =
      parse_bytes(message("", {{variable("1000001F"), wide("text")},
                               {attachment + variable("37010102"), "file"},
                               {attachment + variable("3707001F"), wide("name.txt")}}));
  EXPECT_EQ(parsed.main(), "text\nfile");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Msg, a_picture_of_the_text_is_counted) {
  auto const attachment = "__attach_version1.0_#00000000/"s;
  auto const parsed =
      parse_bytes(message("", {{attachment + variable("37010102"), "\x89PNG\r\n\x1a\n"},
                               {attachment + variable("3712001F"), wide("picture@x")}}));
  EXPECT_EQ(parsed.counts.i_img, 1);
  EXPECT_EQ(parsed.counts.i_embed, 0);
}

TEST(Msg, an_attached_message_is_a_document_of_its_own) {
  auto const inner = "__attach_version1.0_#00000000/__substg1.0_3701000D/"s;
  auto const parsed =
      parse_bytes(message("", {{variable("0037001F"), wide("Outer")},
                               {inner + properties, std::string(24, '\0') + fixed(0x3ffd, 3, 936)},
                               {inner + variable("1000001E"), "\xd6\xd0\xce\xc4"}}));
  EXPECT_EQ(parsed.main(), "Outer\n\xe4\xb8\xad\xe6\x96\x87");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Msg, a_signed_message_is_read_from_its_mail) {
  auto const attachment = "__attach_version1.0_#00000000/"s;
  EXPECT_EQ(parse_bytes(message("", {{attachment + variable("370E001F"), wide("multipart/signed")},
                                     {attachment + variable("37010102"),
                                      "Content-Type: text/plain\r\n\r\nwithin\r\n"}}))
                .main(),
            "within");
}

TEST(Msg, a_protected_message_needs_a_password) {
  auto const attachment = "__attach_version1.0_#00000000/"s;
  EXPECT_EQ(parse_bytes(message("", {{variable("8001001F"), wide("rpmsg.message")},
                                     {attachment + variable("370E001F"),
                                      wide("application/x-microsoft-rpmsg-message")},
                                     {attachment + variable("37010102"), "x"}}))
                .outcome,
            ParseOutcome::encrypted);
}

/// An encrypted mail, and behind it a text file.
Streams encrypted_and_text() {
  auto const first = "__attach_version1.0_#00000000/"s;
  auto const second = "__attach_version1.0_#00000001/"s;
  return {{first + variable("370E001F"), wide("application/pkcs7-mime")},
          {first + variable("37010102"),
           "\x30\x0e\x06\x09\x2a\x86\x48\x86\xf7\x0d\x01\x07\x03\xa0\x01x"},
          {second + variable("37010102"), "file"}};
}

TEST(Msg, an_encrypted_message_needs_a_password) {
  auto streams = encrypted_and_text();
  streams.insert(streams.begin(), {variable("001A001F"), wide("IPM.Note.SMIME")});
  EXPECT_EQ(parse_bytes(message("", streams)).outcome, ParseOutcome::encrypted);
}

TEST(Msg, an_encrypted_mail_among_the_files_is_noted) {
  auto streams = encrypted_and_text();
  streams.insert(streams.begin(), {variable("001A001F"), wide("IPM.Note")});
  auto const parsed = parse_bytes(message("", streams));
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "an attached mail is encrypted");
  EXPECT_EQ(parsed.main(), "file");
}

TEST(Msg, a_long_blank_body_gives_way_to_html) {
  EXPECT_EQ(parse_bytes(message("", {{variable("1000001E"), std::string(200000, ' ')},
                                     {variable("10130102"), "<p>rich</p>"}}))
                .main(),
            "rich");
}

TEST(Msg, a_body_that_begins_with_many_blanks_is_read) {
  auto const parsed =
      parse_bytes(message("", {{variable("1000001E"), std::string(100000, ' ') + "x"},
                               {variable("10130102"), "<p>rich</p>"}}));
  EXPECT_TRUE(parsed.main().ends_with(" x"));
}

TEST(Msg, a_property_that_is_too_long_is_noted) {
  auto const parsed =
      parse_bytes(message("", {{variable("0037001E"), std::string((1U << 20) + 1, 'x')}}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a property of a message over 1048576 bytes");
}

// The file itself can be read: what fails is what its directory says of it.
TEST(Msg, a_body_whose_sectors_are_lost_is_damage) {
  test::CompoundImage image;
  image.add_stream(properties, std::string(4096, '\0'));
  auto const first = image.next.size();
  image.add_stream(variable("1000001F"), wide(std::string(4096, 'x')));
  image.next[first + 1] = test::CompoundImage::none;
  auto const parsed = parse_bytes(image.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the file cannot be read");
}

TEST(Msg, flipped_bytes_do_no_harm) {
  constexpr int variants = 200;
  auto const attachment = "__attach_version1.0_#00000000/"s;
  auto const whole = message(fixed(0x3ffd, 3, 936), {{variable("0037001F"), wide("Title")},
                                                     {variable("10090102"), packed_rtf()},
                                                     {attachment + variable("37010102"), "file"}});
  std::mt19937 random(7);
  for (int i = 0; i < variants; ++i) {
    auto bytes = whole;
    for (int flip = 0; flip < 8; ++flip) {
      bytes[8 + random() % (bytes.size() - 8)] = static_cast<char>(random());
    }
    parse_bytes(bytes);
  }
}

TEST(Msg, flipped_bytes_of_packed_rtf_do_no_harm) {
  constexpr int variants = 200;
  std::mt19937 random(7);
  for (int i = 0; i < variants; ++i) {
    auto rtf = packed_rtf();
    rtf[16 + random() % (rtf.size() - 16)] = static_cast<char>(random());
    parse_bytes(message("", {{variable("10090102"), rtf}}));
  }
}

}  // namespace
