#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;
using Orlec::ParseTextType_other;
using Orlec::ParseTextType_property;
using test::parse_bytes;

std::string const head =
    "Received: from a by b\r\nFrom: a@example.org\r\nTo: b@example.org\r\n"
    "MIME-Version: 1.0\r\n";

/// A mail with one more header field and a content.
std::string mail(std::string const& fields, std::string const& content) {
  return head + fields + "\r\n" + content;
}

std::string part(std::string const& fields, std::string const& content) {
  return "--b\r\n" + fields + "\r\n" + content + "\r\n";
}

std::string multipart(std::string const& kind, std::string const& parts) {
  return mail("Subject: S\r\nContent-Type: multipart/" + kind + "; boundary=b\r\n",
              "preamble\r\n" + parts + "--b--\r\nepilogue\r\n");
}

std::string const plain = "Content-Type: text/plain\r\n";
std::string const html = "Content-Type: text/html\r\n";

std::string attachment(std::string const& name, std::string const& content) {
  return part(
      "Content-Type: text/plain\r\nContent-Disposition: attachment; filename=\"" + name + "\"\r\n",
      content);
}

TEST(Mail, the_subject_stands_in_front_of_the_text) {
  auto const parsed = parse_bytes(mail("Subject: Report\r\n", "One.\r\n\r\nTwo.\r\n\r\n"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "Report\nOne.\n\nTwo.");
}

TEST(Mail, fields_about_people_and_content_are_properties) {
  EXPECT_EQ(parse_bytes(mail("Subject: Report\r\nCc: c@example.org,\r\n\td@example.org\r\n", "x"))
                .kind(ParseTextType_property),
            "from: a@example.org\nto: b@example.org\nsubject: Report\n"
            "cc: c@example.org, d@example.org");
}

TEST(Mail, all_other_fields_are_other_text_but_those_about_the_form) {
  EXPECT_EQ(parse_bytes(mail("X-Class: secret\r\nContent-Type: text/plain\r\n", "x"))
                .kind(ParseTextType_other),
            "received: from a by b\nx-class: secret");
}

TEST(Mail, encoded_words_are_decoded_and_joined_within_characters) {
  EXPECT_EQ(parse_bytes(
                mail("Subject: =?UTF-8?Q?caf=C3?= =?utf-8?B?qQ==?= and =?gbk?b?1tDOxA==?=\r\n", ""))
                .main(),
            "caf\xc3\xa9 and \xe4\xb8\xad\xe6\x96\x87");
}

TEST(Mail, an_encoded_word_stands_anywhere_in_a_field) {
  EXPECT_EQ(
      parse_bytes(mail("Subject: a\"=?iso-8859-1?q?=E9t=E9?=\"b =?no word?= \r\n", "")).main(),
      "a\"\xc3\xa9t\xc3\xa9\"b =?no word?=");
}

TEST(Mail, an_encoded_word_in_an_unknown_set_is_taken_as_what_it_looks_like) {
  EXPECT_EQ(parse_bytes(mail("Subject: =?x-none?Q?caf=C3=A9?=\r\n", "")).main(), "caf\xc3\xa9");
}

TEST(Mail, raw_bytes_in_fields_are_decoded_by_their_look) {
  EXPECT_EQ(parse_bytes(mail("Subject: caf\xc3\xa9\r\n", "")).main(), "caf\xc3\xa9");
}

TEST(Mail, quoted_printable_is_decoded) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/plain; charset=utf-8\r\n"
                             "Content-Transfer-Encoding: Quoted-Printable\r\n",
                             "caf=C3=A9 is=20=  \r\n here =zz = =3d\r\n"))
                .main(),
            "caf\xc3\xa9 is  here =zz = =");
}

TEST(Mail, base64_is_decoded_in_its_character_set) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/plain; charset=\"GB2312\"\r\n"
                             "Content-Transfer-Encoding: base64\r\n",
                             "1tA=\r\nzs\r\nQ=\r\n"))
                .main(),
            "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Mail, japanese_in_seven_bits_is_decoded) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/plain; charset=iso-2022-jp\r\n",
                             "\x1b$B$9$_\x1b(B ok\r\n"))
                .main(),
            "\xe3\x81\x99\xe3\x81\xbf ok");
}

TEST(Mail, uuencode_is_decoded) {
  EXPECT_EQ(parse_bytes(mail("Content-Transfer-Encoding: x-uuencode\r\n",
                             "begin 644 a.txt\r\n#0V%T\r\n`\r\nend\r\n"))
                .main(),
            "Cat");
}

TEST(Mail, yenc_is_decoded) {
  EXPECT_EQ(parse_bytes(mail("Content-Transfer-Encoding: x-yenc\r\n",
                             "=ybegin line=128 size=3 name=a\r\nm\x8b\x9e\r\n=yend size=3\r\n"))
                .main(),
            "Cat");
}

TEST(Mail, a_set_that_is_declared_wrongly_gives_way) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/plain; charset=us-ascii\r\n",
                             "caf\xc3\xa9 \xe4\xb8\xad\xe6\x96\x87\r\n"))
                .main(),
            "caf\xc3\xa9 \xe4\xb8\xad\xe6\x96\x87");
}

TEST(Mail, flowed_lines_are_joined) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/plain; format=flowed\r\n",
                             "one \r\ntwo\r\n> three \r\n> four\r\n five\r\n-- \r\nsix\r\n"))
                .main(),
            "one two\n> three four\nfive\n-- \nsix");
}

TEST(Mail, flowed_lines_may_lose_their_blank) {
  EXPECT_EQ(
      parse_bytes(mail("Content-Type: text/plain; format=flowed; delsp=yes\r\n", "one \r\ntwo\r\n"))
          .main(),
      "onetwo");
}

TEST(Mail, of_alternatives_the_plain_text_is_taken) {
  EXPECT_EQ(parse_bytes(multipart("alternative", part(plain, "plain") + part(html, "<p>rich</p>")))
                .main(),
            "S\nplain");
}

TEST(Mail, a_blank_alternative_gives_way_to_html) {
  EXPECT_EQ(parse_bytes(multipart("alternative", part(plain, " \r\n") + part(html, "<p>rich</p>")))
                .main(),
            "S\nrich");
}

TEST(Mail, a_long_blank_alternative_gives_way_to_html) {
  EXPECT_EQ(parse_bytes(multipart("alternative", part(plain, std::string(100000, ' ')) +
                                                     part(html, "<p>rich</p>")))
                .main(),
            "S\nrich");
}

TEST(Mail, an_alternative_that_begins_with_many_blanks_is_a_text) {
  auto const parsed = parse_bytes(multipart(
      "alternative", part(plain, std::string(100000, ' ') + "x") + part(html, "<p>rich</p>")));
  EXPECT_TRUE(parsed.main().ends_with(" x"));
}

TEST(Mail, html_within_related_parts_is_an_alternative) {
  auto const related = part("Content-Type: multipart/related; boundary=c\r\n",
                            "--c\r\n" + html + "\r\n<b>rich</b>\r\n--c--");
  EXPECT_EQ(parse_bytes(multipart("alternative", part(plain, "") + related)).main(), "S\nrich");
}

TEST(Mail, html_is_read_in_the_set_that_the_part_declares) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: text/html; charset=gbk\r\n", "<p>\xd6\xd0\xce\xc4</p>"))
                .main(),
            "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Mail, preamble_and_epilogue_are_no_text) {
  EXPECT_EQ(parse_bytes(multipart("mixed", part(plain, "one") + part(plain, "two"))).main(),
            "S\none\ntwo");
}

TEST(Mail, what_an_invitation_says_is_text) {
  EXPECT_EQ(parse_bytes(multipart("alternative",
                                  part(plain, "Come!") +
                                      part("Content-Type: text/calendar; method=REQUEST\r\n",
                                           "BEGIN:VEVENT\r\nSUMMARY;X=\"a:b\":Plan\\, long\r\n"
                                           " ed\r\nUID:1\r\nLOCATION:Room 1\r\nEND:VEVENT")))
                .main(),
            "S\nCome!\nPlan, longed\nRoom 1");
}

TEST(Mail, attachments_follow_all_text) {
  auto const parsed = parse_bytes(
      multipart("mixed", part(plain, "one") + attachment("a.txt", "file") + part(plain, "two")));
  EXPECT_EQ(parsed.main(), "S\none\ntwo\nfile");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Mail, a_named_text_behind_the_shown_one_is_a_file) {
  auto const named = part("Content-Type: text/plain; name=b.txt\r\n", "file");
  EXPECT_EQ(parse_bytes(multipart("mixed", part(plain, "one") + named)).counts.i_embed, 1);
}

TEST(Mail, a_text_file_is_read_in_the_set_that_the_part_declares) {
  auto const file =
      part("Content-Type: text/plain; charset=iso-2022-jp\r\nContent-Disposition: attachment\r\n",
           "\x1b$B$9$_\x1b(B");
  EXPECT_EQ(parse_bytes(multipart("mixed", part(plain, "one") + file)).main(),
            "S\none\n\xe3\x81\x99\xe3\x81\xbf");
}

TEST(Mail, a_document_that_is_called_a_text_keeps_its_bytes) {
  auto const parsed =
      parse_bytes(multipart("mixed", part("Content-Type: text/plain; charset=koi8-r\r\n"
                                          "Content-Disposition: attachment; filename=a.bin\r\n",
                                          "{\\rtf1\\ansi\\ansicpg1252 caf\xe9}")));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "S\ncaf\xc3\xa9");
}

TEST(Mail, a_property_of_an_invitation_that_is_too_long_is_noted) {
  auto const parsed = parse_bytes(
      multipart("mixed", part("Content-Type: text/calendar\r\n",
                              "BEGIN:VEVENT\r\nSUMMARY:" + std::string(100000, 'x') + "\r\n")));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a property of a calendar over 65536 bytes");
}

TEST(Mail, an_attached_message_is_a_document_of_its_own) {
  auto const parsed = parse_bytes(
      multipart("mixed", part(plain, "outer") + part("Content-Type: message/rfc822\r\n",
                                                     mail("Subject: Inner\r\n", "inner text"))));
  EXPECT_EQ(parsed.main(), "S\nouter\nInner\ninner text");
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Mail, a_file_that_cannot_be_read_is_named) {
  auto const parsed = parse_bytes(multipart(
      "mixed", part(plain, "outer") +
                   part("Content-Type: application/pdf\r\nContent-Disposition: "
                        "attachment; filename*0*=UTF-8''caf%C3%A9; filename*1=\".zip\"\r\n",
                        "PK\x03\x04 broken")));
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason.substr(0, parsed.reason.find(':')), "\"caf\xc3\xa9.zip\"");
}

TEST(Mail, a_shown_picture_is_counted) {
  auto const picture = part("Content-Type: image/png\r\n", "\x89PNG\r\n\x1a\n");
  auto const parsed = parse_bytes(multipart("related", part(html, "x") + picture));
  EXPECT_EQ(parsed.counts.i_img, 1);
  EXPECT_EQ(parsed.counts.i_embed, 0);
}

TEST(Mail, a_document_that_is_called_a_picture_is_read) {
  auto const lie =
      part("Content-Type: image/png; name=x.png\r\n", "<html><body>hidden</body></html>");
  EXPECT_EQ(parse_bytes(multipart("related", part(html, "x") + lie)).main(), "S\nx\nhidden");
}

TEST(Mail, xml_that_is_called_a_picture_is_read) {
  auto const parsed = parse_bytes(multipart(
      "related", part(plain, "text") +
                     part("Content-Type: image/png\r\n", "<?xml version=\"1.0\"?><a>word</a>")));
  EXPECT_EQ(parsed.main(), "S\ntext\nword\n");
  EXPECT_EQ(parsed.counts.i_img, 0);
}

TEST(Mail, a_drawing_in_xml_is_a_picture_whose_words_are_read) {
  auto const parsed = parse_bytes(multipart(
      "related", part(plain, "text") +
                     part("Content-Type: image/svg+xml\r\n",
                          "<svg xmlns=\"http://www.w3.org/2000/svg\"><text>word</text></svg>")));
  EXPECT_EQ(parsed.main(), "S\ntext\nword\n");
  EXPECT_EQ(parsed.counts.i_img, 1);
}

TEST(Mail, a_document_that_is_called_a_signature_is_read) {
  for (auto const* const type : {"application/pgp-signature", "application/applefile"}) {
    auto const fields = std::string("Content-Type: ") + type +
                        "\r\nContent-Disposition: attachment; filename=a.asc\r\n";
    auto const parsed = parse_bytes(
        multipart("mixed", part(plain, "text") + part(fields, "{\\rtf1 word}") +
                               part(fields, "-----BEGIN PGP SIGNATURE-----\r\n\r\nabc")));
    EXPECT_EQ(parsed.main(), "S\ntext\nword") << type;
    EXPECT_EQ(parsed.counts.i_embed, 1) << type;
  }
}

TEST(Mail, a_delivery_report_keeps_its_fields_as_other_text) {
  auto const parsed = parse_bytes(
      multipart("report", part(plain, "It failed.") +
                              part("Content-Type: message/delivery-status\r\n", "Action: failed")));
  EXPECT_EQ(parsed.main(), "S\nIt failed.");
  EXPECT_NE(parsed.kind(ParseTextType_other).find("Action: failed"), std::string::npos);
}

TEST(Mail, a_signed_mail_is_read_without_its_signature) {
  EXPECT_EQ(parse_bytes(multipart("signed", part(plain, "text") +
                                                part("Content-Type: application/pgp-signature\r\n",
                                                     "-----BEGIN PGP SIGNATURE-----")))
                .main(),
            "S\ntext");
}

/// One element of a DER structure.
std::string element(char tag, std::string const& content) {
  return std::string(1, tag) + static_cast<char>(content.size()) + content;
}

std::string smime(char type, std::string const& content) {
  auto const identifier =
      element('\x06', "\x2a\x86\x48\x86\xf7\x0d\x01\x07" + std::string(1, type));
  return mail("Subject: S\r\nContent-Type: application/pkcs7-mime; name=smime.p7m\r\n",
              element('\x30', identifier + element('\xa0', content)));
}

TEST(Mail, the_content_of_an_opaque_signature_is_read) {
  auto const data = element('\x06', "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x01");
  auto const content =
      element('\xa0', element('\x24', element('\x04', plain + "\r\nwi") + element('\x04', "thin")));
  EXPECT_EQ(
      parse_bytes(smime('\x02', element('\x30', element('\x02', "\x01") + element('\x31', "") +
                                                    element('\x30', data + content))))
          .main(),
      "S\nwithin");
}

TEST(Mail, an_encrypted_mail_needs_a_password) {
  EXPECT_EQ(parse_bytes(smime('\x03', element('\x30', "x"))).outcome, ParseOutcome::encrypted);
  EXPECT_EQ(parse_bytes(multipart("encrypted", part("Content-Type: application/pgp-encrypted\r\n",
                                                    "Version: 1")))
                .outcome,
            ParseOutcome::encrypted);
}

TEST(Mail, an_encrypted_part_is_noted) {
  auto const parsed = parse_bytes(multipart(
      "mixed", part(plain, "text") + part(plain, "-----BEGIN PGP MESSAGE-----\r\n\r\nabc")));
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.main(), "S\ntext");
}

TEST(Mail, a_boundary_without_an_empty_line_in_front_is_one) {
  EXPECT_EQ(parse_bytes(head + "Content-Type: multipart/mixed; boundary=\"b\"\r\n--b\r\n\r\none\r\n"
                               "--b--\r\n")
                .main(),
            "one");
}

TEST(Mail, a_multipart_without_parts_is_a_text) {
  EXPECT_EQ(parse_bytes(mail("Content-Type: multipart/mixed; boundary=b\r\n", "text\r\n")).main(),
            "text");
}

TEST(Mail, a_multipart_without_its_end_is_read_and_noted) {
  auto const parsed =
      parse_bytes(mail("Content-Type: multipart/mixed; boundary=b\r\n", part(plain, "one")));
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
}

TEST(Mail, lines_may_end_in_a_carriage_return_only) {
  EXPECT_EQ(parse_bytes("Received: x\rFrom: a@example.org\rSubject: S\r\rone\rtwo\r").main(),
            "S\none\ntwo");
}

TEST(Mailbox, messages_follow_each_other_with_what_is_attached_to_them) {
  std::string const separator = "From a@example.org Mon Jun 01 10:00:00 2009\n";
  auto const first = multipart("mixed", part(plain, "one") + attachment("a.txt", "file"));
  auto const parsed =
      parse_bytes(separator + first + "\n" + separator + "Subject: T\n\nFrom here\n>From there\n");
  EXPECT_EQ(parsed.main(), "S\none\nfile\nT\nFrom here\nFrom there");
}

TEST(Mailbox, messages_behind_an_encrypted_one_are_read) {
  std::string const separator = "From a@example.org Mon Jun  1 10:00:00 2009\r\n";
  auto const wrapped = smime('\x03', element('\x30', "x"));
  auto const armored = mail("Subject: A\r\n", "-----BEGIN PGP MESSAGE-----\r\n\r\nabc");
  auto const last = mail("Subject: L\r\n", "last");
  auto const parsed = parse_bytes(separator + wrapped + "\r\n\r\n" + separator + armored +
                                  "\r\n\r\n" + separator + last);
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "a mail is encrypted");
  EXPECT_EQ(parsed.main(), "S\nA\nL\nlast");
}

TEST(Mailbox, the_separator_is_other_text) {
  EXPECT_EQ(parse_bytes("From a@example.org Mon Jun 01 10:00:00 2009\nReceived: x\n\none\n")
                .kind(ParseTextType_other),
            "envelope: a@example.org Mon Jun 01 10:00:00 2009\nreceived: x");
}

TEST(Mailbox, a_line_that_begins_like_a_separator_is_text) {
  EXPECT_EQ(
      parse_bytes("From a Mon Jun 01 10:00:00 2009\n" + head + "\none\n\nFrom now on\n").main(),
      "one\n\nFrom now on");
}

std::string web_archive(std::string const& parameters, std::string const& parts) {
  return "From: <Saved by a browser>\r\nSubject: Page\r\nMIME-Version: 1.0\r\n"
         "Content-Type: multipart/related; boundary=b" +
         parameters + "\r\n\r\n" + parts + "--b--\r\n";
}

TEST(WebArchive, the_page_and_its_frames_are_read) {
  auto const parsed = parse_bytes(
      web_archive("; start=\"<root@x>\"",
                  part("Content-Type: text/html\r\nContent-ID: <frame@x>\r\n", "<p>frame</p>") +
                      part("Content-Type: text/css\r\n", "p { color: red }") +
                      part("Content-Type: text/html\r\nContent-ID: <root@x>\r\n", "<p>root</p>") +
                      part("Content-Type: image/gif\r\nContent-Location: a.gif\r\n", "GIF89a")));
  EXPECT_EQ(parsed.main(), "root\nframe");
  EXPECT_EQ(parsed.counts.i_img, 1);
}

}  // namespace
