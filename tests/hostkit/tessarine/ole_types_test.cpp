#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/compound_image.h"
#include "hostkit/tessarine/samples.h"

namespace {

using tessarine::FileType;
using test::make_ole;
using test::recognize;

TEST(RecognizeOle, a_word_stream_makes_a_word_document) {
  auto const recognition = recognize(make_ole({{"WordDocument", test::word_stream(0)}}));
  EXPECT_EQ(recognition.type, FileType::doc);
  EXPECT_FALSE(recognition.encrypted);
}

TEST(RecognizeOle, a_word_document_says_in_its_flags_that_it_is_encrypted) {
  EXPECT_TRUE(recognize(make_ole({{"WordDocument", test::word_stream(0x100)}})).encrypted);
}

TEST(RecognizeOle, a_word_template_has_its_own_suffix) {
  EXPECT_STREQ(recognize(make_ole({{"WordDocument", test::word_stream(1)}})).suffix, "dot");
}

TEST(RecognizeOle, a_writer_document_of_another_suite_keeps_its_suffix) {
  auto const recognition =
      recognize(make_ole({{"WordDocument", test::word_stream(0)}}), "letter.wps");
  EXPECT_EQ(recognition.type, FileType::doc);
  EXPECT_STREQ(recognition.suffix, "wps");
}

TEST(RecognizeOle, a_workbook_stream_makes_a_spreadsheet) {
  auto const recognition = recognize(make_ole({{"Workbook", test::workbook_stream(false)}}));
  EXPECT_EQ(recognition.type, FileType::xls);
  EXPECT_FALSE(recognition.encrypted);
}

TEST(RecognizeOle, a_workbook_with_a_password_record_is_encrypted) {
  EXPECT_TRUE(recognize(make_ole({{"Workbook", test::workbook_stream(true)}})).encrypted);
}

TEST(RecognizeOle, a_slide_stream_makes_a_presentation) {
  auto const recognition = recognize(make_ole({{"PowerPoint Document", std::string(5000, 'x')},
                                               {"Current User", test::current_user(false)}}));
  EXPECT_EQ(recognition.type, FileType::ppt);
  EXPECT_FALSE(recognition.encrypted);
}

TEST(RecognizeOle, a_presentation_says_by_its_token_that_it_is_encrypted) {
  EXPECT_TRUE(recognize(make_ole({{"PowerPoint Document", std::string(5000, 'x')},
                                  {"Current User", test::current_user(true)}}))
                  .encrypted);
}

TEST(RecognizeOle, a_message_of_too_many_entries_is_still_one) {
  test::CompoundImage image;
  image.link({"__properties_version1.0"});
  for (int i = 0; i < 20100; ++i) {
    image.link({"__substg1.0_" + std::to_string(i)});
  }
  EXPECT_EQ(recognize(image.bytes()).type, FileType::msg);
}

TEST(RecognizeOle, a_message_is_told_by_its_properties) {
  EXPECT_EQ(recognize(make_ole({{"__properties_version1.0", std::string(64, '\0')}})).type,
            FileType::msg);
}

TEST(RecognizeOle, an_encrypted_package_is_what_its_name_says) {
  auto const bytes = make_ole({{"EncryptionInfo", "x"}, {"EncryptedPackage", "xxxx"}});
  EXPECT_EQ(recognize(bytes, "a.docm").type, FileType::docx);
  EXPECT_EQ(recognize(bytes, "a.xlsx").type, FileType::xlsx);
  EXPECT_EQ(recognize(bytes, "a.ppsx").type, FileType::pptx);
  EXPECT_TRUE(recognize(bytes, "a.docm").encrypted);
}

TEST(RecognizeOle, an_encrypted_package_of_unknown_name_counts_as_a_word_document) {
  EXPECT_STREQ(recognize(make_ole({{"EncryptedPackage", "xxxx"}}), "a.bin").suffix, "docx");
}

TEST(RecognizeOle, a_document_wrapped_by_rights_management_is_encrypted) {
  EXPECT_TRUE(
      recognize(make_ole({{"WordDocument", test::word_stream(0)}, {"\tDRMContent", "xxxx"}}))
          .encrypted);
}

TEST(RecognizeOle, a_word_document_cut_before_its_directory_is_told_by_its_first_sector) {
  auto bytes = make_ole({{"WordDocument", test::word_stream(0)}});
  // The writer of the tests puts streams behind the header and the directory behind them.
  bytes.resize(6000);
  EXPECT_EQ(recognize(bytes).type, FileType::doc);
}

TEST(RecognizeOle, other_containers_are_told_as_such) {
  EXPECT_EQ(recognize(make_ole({{"Something", "x"}})).type, FileType::ole_other);
}

TEST(RecognizeOle, a_bare_record_stream_is_a_spreadsheet) {
  EXPECT_EQ(recognize(test::little(0x0009, 2) + test::little(4, 2) + test::little(2, 2) +
                      test::little(0x10, 2) + std::string(64, '\0'))
                .type,
            FileType::xls);
}

}  // namespace
