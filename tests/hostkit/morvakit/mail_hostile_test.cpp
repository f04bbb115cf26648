#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseOutcome;
using test::parse_bytes;

std::string const head = "Received: x\nFrom: a@example.org\nSubject: S\n";

std::string sample() {
  return "From a@example.org Mon Jun 01 10:00:00 2009\n" + head +
         "To: =?gbk?B?1tDOxA==?= <b@example.org>\n"
         "Content-Type: multipart/mixed; boundary=\"b\"; x*0*=utf-8''%41; x*1=b\n\n"
         "--b\nContent-Type: multipart/alternative; boundary=c\n\n--c\n"
         "Content-Type: text/plain; charset=utf-8; format=flowed\n"
         "Content-Transfer-Encoding: quoted-printable\n\n> caf=C3=A9 \n> x=\ny\n"
         "--c\nContent-Type: text/html\n\n<p>rich</p>\n--c--\n"
         "--b\nContent-Type: application/octet-stream; name=a.txt\n"
         "Content-Transfer-Encoding: base64\nContent-Disposition: attachment\n\naGVsbG8=\n"
         "--b\nContent-Transfer-Encoding: x-uuencode\nContent-Type: image/png; name=p\n\n"
         "begin 644 a\n#0V%T\n`\nend\n"
         "--b\nContent-Type: application/pkcs7-mime\n\n\x30\x12\x06\x02\x2a\x86\xa0\x03\x30\x01x\n"
         "--b\nContent-Type: text/calendar\n\nSUMMARY:x\\n\n y\n--b--\n";
}

TEST(MailHostile, a_mail_cut_anywhere_is_read) {
  auto const whole = sample();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    parse_bytes(whole.substr(0, length), "x.eml");
  }
}

TEST(MailHostile, flipped_bytes_do_no_harm) {
  constexpr int variants = 200;
  std::mt19937 random(7);
  for (int i = 0; i < variants; ++i) {
    auto bytes = sample();
    for (int flip = 0; flip < 5; ++flip) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    parse_bytes(bytes, "x.eml");
  }
}

TEST(MailHostile, parts_nested_without_end_reach_a_limit) {
  std::string bytes = head;
  for (int i = 0; i < 20000; ++i) {
    auto const boundary = "b" + std::to_string(i);
    bytes += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  auto const parsed = parse_bytes(bytes + "Content-Type: text/plain\n\nx\n");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "parts of a mail nested over 100 deep");
}

TEST(MailHostile, more_parts_than_allowed_reach_the_limit) {
  Orlec::ParseLimits limits;
  limits.i_entries = 3;
  test::ScopedLimits const scoped(limits);
  auto const parsed = parse_bytes(head +
                                  "Content-Type: multipart/mixed; boundary=b\n\n--b\n\none\n"
                                  "--b\n\ntwo\n--b\n\nthree\n--b--\n");
  EXPECT_EQ(parsed.main(), "S\none\ntwo");
  EXPECT_EQ(parsed.reason, "over 3 parts in a mail");
}

TEST(MailHostile, messages_attached_to_each_other_without_end_reach_the_limit) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) {
    bytes += head + "Content-Type: message/rfc822\n\n";
  }
  EXPECT_EQ(parse_bytes(bytes).outcome, ParseOutcome::limit_reached);
}

TEST(MailHostile, a_field_without_end_is_cut) {
  auto const parsed = parse_bytes("Received: x\nFrom: a@example.org\nSubject: " +
                                  std::string(std::size_t{3} << 20, 'x') + "\n\ntext\n");
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_LT(parsed.main().size(), std::size_t{2} << 20);
}

TEST(MailHostile, a_line_without_end_is_read) {
  auto const parsed = parse_bytes(head + "\n" + std::string(std::size_t{1} << 20, 'x'));
  EXPECT_EQ(parsed.main().size(), (std::size_t{1} << 20) + 2);
}

TEST(MailHostile, unclosed_encoded_words_take_linear_time) {
  std::string subject;
  while (subject.size() < (std::size_t{1} << 19)) {
    subject += "=?a?q?x";
  }
  EXPECT_EQ(parse_bytes("Received: x\nFrom: a@example.org\nSubject: " + subject + "\n\n").outcome,
            ParseOutcome::text);
}

std::string repeat(std::string const& piece, std::size_t size) {
  std::string text;
  while (text.size() < size) {
    text += piece;
  }
  return text;
}

TEST(MailHostile, many_pieces_of_a_field_in_an_unknown_encoding_are_looked_at_once) {
  constexpr std::size_t size = std::size_t{1} << 19;
  for (auto const* const piece : {"\xe9=?", "=?x?q?=E9?=\xe9", "\x1b$\xe9=?"}) {
    auto const parsed = parse_bytes(head + "X-A: " + repeat(piece, size) + "\n\ntext", "x.eml");
    EXPECT_EQ(parsed.main(), "S\ntext");
  }
}

TEST(MailHostile, many_parameters_in_an_unknown_encoding_are_looked_at_once) {
  auto const parameters = repeat(";a=\xe9", std::size_t{1} << 19);
  EXPECT_EQ(
      parse_bytes(head + "Content-Type: text/plain" + parameters + "\n\ntext", "x.eml").main(),
      "S\ntext");
}

}  // namespace
