#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/samples.h"

namespace {

using tessarine::FileType;
using test::recognize;

std::string const message =
    "Received: from a by b\r\nFrom: A <a@example.org>\r\nTo: b@example.org\r\n"
    "Subject: Report\r\nMIME-Version: 1.0\r\n\r\nBody\r\n";

TEST(RecognizeMail, a_header_block_makes_a_message) {
  EXPECT_EQ(recognize(message).type, FileType::eml);
}

TEST(RecognizeMail, a_header_that_goes_on_in_the_next_line_is_one) {
  EXPECT_EQ(recognize("Received: from a\r\n\tby b\r\nSubject: x\r\n\r\ntext").type, FileType::eml);
}

TEST(RecognizeMail, a_letter_with_two_fields_is_a_text) {
  EXPECT_EQ(recognize("From: the board\nTo: all\n\nWe are moving.\n", "letter.txt").type,
            FileType::plain_text);
}

TEST(RecognizeMail, three_fields_with_an_address_make_a_message) {
  EXPECT_EQ(recognize("From: a@example.org\nTo: b@example.org\nSubject: x\n\ntext\n").type,
            FileType::eml);
}

TEST(RecognizeMail, three_fields_without_an_address_are_a_text) {
  EXPECT_EQ(recognize("From: the board\nTo: all\nSubject: x\n\ntext\n", "letter.txt").type,
            FileType::plain_text);
}

TEST(RecognizeMail, a_mark_in_front_of_the_first_field_is_passed_over) {
  EXPECT_EQ(recognize("\xef\xbb\xbf" + message).type, FileType::eml);
}

TEST(RecognizeMail, a_message_in_its_transport_form_is_one) {
  EXPECT_EQ(recognize("\x78\x9f\x3e\x22" + std::string(100, '\0')).type, FileType::tnef);
}

TEST(RecognizeMail, a_separator_line_makes_a_mailbox) {
  EXPECT_EQ(recognize("From a@example.org Mon Jun 01 10:00:00 2009\n" + message).type,
            FileType::mbox);
}

TEST(RecognizeMail, one_message_with_a_separator_named_eml_is_a_message) {
  EXPECT_EQ(recognize("From a@example.org Mon Jun 01 10:00:00 2009\n" + message, "x.eml").type,
            FileType::eml);
}

TEST(RecognizeMail, a_page_with_its_parts_is_a_web_archive) {
  EXPECT_EQ(recognize("From: <Saved by a browser>\r\nSubject: Page\r\nMIME-Version: 1.0\r\n"
                      "Content-Type: multipart/related;\r\n\ttype=\"text/html\"\r\n\r\n")
                .type,
            FileType::mhtml);
}

}  // namespace
