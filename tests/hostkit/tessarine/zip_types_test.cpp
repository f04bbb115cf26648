#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/samples.h"

namespace {

using tessarine::FileType;
using test::office_package;
using test::open_document;
using test::recognize;
using test::ZipBuilder;

struct Variant {
  std::string part;
  std::string content_type;
  FileType type;
  std::string suffix;
};

class OfficeVariant : public testing::TestWithParam<Variant> {};

TEST_P(OfficeVariant, is_told_by_its_content_type) {
  auto const& variant = GetParam();
  auto const recognition = recognize(office_package(variant.part, variant.content_type).bytes());
  EXPECT_EQ(recognition.type, variant.type);
  EXPECT_EQ(recognition.suffix, variant.suffix);
}

std::string const open_xml = "application/vnd.openxmlformats-officedocument.";

INSTANTIATE_TEST_SUITE_P(
    Variants, OfficeVariant,
    testing::Values(
        Variant{"word/document.xml", test::word_type, FileType::docx, "docx"},
        Variant{"word/document.xml", "application/vnd.ms-word.document.macroEnabled.main+xml",
                FileType::docx, "docm"},
        Variant{"word/document.xml", open_xml + "wordprocessingml.template.main+xml",
                FileType::docx, "dotx"},
        Variant{"word/document.xml",
                "application/vnd.ms-word.template.macroEnabledTemplate.main+xml", FileType::docx,
                "dotm"},
        Variant{"xl/workbook.xml", open_xml + "spreadsheetml.sheet.main+xml", FileType::xlsx,
                "xlsx"},
        Variant{"xl/workbook.xml", "application/vnd.ms-excel.sheet.macroEnabled.main+xml",
                FileType::xlsx, "xlsm"},
        Variant{"xl/workbook.xml", open_xml + "spreadsheetml.template.main+xml", FileType::xlsx,
                "xltx"},
        Variant{"xl/workbook.xml", "application/vnd.ms-excel.template.macroEnabled.main+xml",
                FileType::xlsx, "xltm"},
        Variant{"xl/workbook.bin", "application/vnd.ms-excel.sheet.binary.macroEnabled.main",
                FileType::xlsb, "xlsb"},
        Variant{"ppt/presentation.xml", open_xml + "presentationml.presentation.main+xml",
                FileType::pptx, "pptx"},
        Variant{"ppt/presentation.xml",
                "application/vnd.ms-powerpoint.presentation.macroEnabled.main+xml", FileType::pptx,
                "pptm"},
        Variant{"ppt/presentation.xml", open_xml + "presentationml.template.main+xml",
                FileType::pptx, "potx"},
        Variant{"ppt/presentation.xml", open_xml + "presentationml.slideshow.main+xml",
                FileType::pptx, "ppsx"},
        Variant{"ppt/presentation.xml",
                "application/vnd.ms-powerpoint.slideshow.macroEnabled.main+xml", FileType::pptx,
                "ppsm"},
        Variant{"FixedDocSeq.fdseq", "application/vnd.ms-package.xps-fixeddocumentsequence+xml",
                FileType::xps, "xps"}));

class OpenDocumentVariant : public testing::TestWithParam<Variant> {};

TEST_P(OpenDocumentVariant, is_told_by_its_media_type) {
  auto const recognition =
      recognize(open_document("application/" + GetParam().content_type).bytes());
  EXPECT_EQ(recognition.type, GetParam().type);
  EXPECT_EQ(recognition.suffix, GetParam().suffix);
}

INSTANTIATE_TEST_SUITE_P(
    Variants, OpenDocumentVariant,
    testing::Values(Variant{"", "vnd.oasis.opendocument.text", FileType::odt, "odt"},
                    Variant{"", "vnd.oasis.opendocument.text-template", FileType::odt, "ott"},
                    Variant{"", "vnd.oasis.opendocument.spreadsheet", FileType::ods, "ods"},
                    Variant{"", "vnd.oasis.opendocument.spreadsheet-template", FileType::ods,
                            "ots"},
                    Variant{"", "vnd.oasis.opendocument.presentation", FileType::odp, "odp"},
                    Variant{"", "vnd.oasis.opendocument.graphics", FileType::odg, "odg"},
                    Variant{"", "vnd.sun.xml.writer", FileType::odt, "sxw"},
                    Variant{"", "vnd.sun.xml.calc", FileType::ods, "sxc"},
                    Variant{"", "epub+zip", FileType::epub, "epub"}));

TEST(RecognizeZip, the_standardised_form_of_xps_has_a_suffix_of_its_own) {
  auto const bytes =
      ZipBuilder()
          .add("[Content_Types].xml",
               "<Types><Default Extension=\"fdseq\" ContentType="
               "\"application/vnd.ms-package.xps-fixeddocumentsequence+xml\"/></Types>")
          .add("_rels/.rels",
               "<Relationships><Relationship Target=\"/F.fdseq\" "
               "Type=\"http://schemas.openxps.org/oxps/v1.0/fixedrepresentation\"/>"
               "</Relationships>")
          .bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::xps);
  EXPECT_STREQ(recognize(bytes).suffix, "oxps");
}

TEST(RecognizeZip, xps_in_pieces_is_told_by_the_name_of_its_root) {
  auto const bytes = ZipBuilder()
                         .add("[Content_Types].xml/[0].piece", "<Types>")
                         .add("FixedDocumentSequence.fdseq/[0].last.piece", "<x/>")
                         .bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::xps);
}

TEST(RecognizeZip, a_plain_archive_is_a_zip) {
  EXPECT_EQ(recognize(ZipBuilder().add("a.txt", "text").bytes()).type, FileType::zip);
}

TEST(RecognizeZip, an_archive_of_documents_is_a_zip) {
  auto const inner = office_package("word/document.xml", test::word_type).bytes();
  EXPECT_EQ(recognize(ZipBuilder().add("letter.docx", inner).bytes()).type, FileType::zip);
}

TEST(RecognizeZip, the_order_of_the_parts_does_not_matter) {
  auto const bytes = ZipBuilder()
                         .add("word/document.xml", "<main/>")
                         .add("[Content_Types].xml",
                              "<Types><Override PartName=\"/word/document.xml\" ContentType=\"" +
                                  test::word_type + "\"/></Types>")
                         .bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::docx);
}

TEST(RecognizeZip, relationships_decide_between_two_main_types) {
  auto const bytes =
      ZipBuilder()
          .add("[Content_Types].xml", "<Types><Override PartName=\"/x.xml\" ContentType=\"" +
                                          test::word_type +
                                          "\"/><Override PartName=\"/y.xml\" ContentType=\"" +
                                          open_xml + "spreadsheetml.sheet.main+xml\"/></Types>")
          .add("_rels/.rels",
               "<Relationships><Relationship "
               "Type=\"http://purl.oclc.org/ooxml/officeDocument/relationships/"
               "officeDocument\" Target=\"y.xml\"/></Relationships>")
          .bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::xlsx);
}

TEST(RecognizeZip, names_with_backslashes_are_understood) {
  auto const bytes = ZipBuilder().add("xl\\workbook.xml", "<main/>").bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::xlsx);
}

TEST(RecognizeZip, a_word_document_without_its_directory_is_a_word_document) {
  auto const bytes = office_package("word/document.xml", test::word_type).entries();
  EXPECT_EQ(recognize(bytes).type, FileType::docx);
}

TEST(RecognizeZip, an_open_document_without_its_directory_is_one) {
  auto const bytes = open_document("application/vnd.oasis.opendocument.spreadsheet").entries();
  EXPECT_EQ(recognize(bytes).type, FileType::ods);
}

TEST(RecognizeZip, a_package_cut_behind_its_description_is_told_by_name) {
  auto const bytes = ZipBuilder().add("[Content_Types].xml", "<Types/>").entries();
  EXPECT_EQ(recognize(bytes, "talk.pptx").type, FileType::pptx);
}

TEST(RecognizeZip, an_open_document_without_media_type_is_told_by_its_manifest) {
  auto const bytes =
      ZipBuilder()
          .add("content.xml", "<x/>")
          .add("META-INF/manifest.xml",
               "<m:manifest><m:file-entry m:full-path=\"/\" m:media-type=\"application/"
               "vnd.oasis.opendocument.presentation\"/></m:manifest>")
          .bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::odp);
}

TEST(RecognizeZip, an_encrypted_open_document_is_told_by_its_manifest) {
  auto const bytes = ZipBuilder()
                         .add("mimetype", "application/vnd.oasis.opendocument.text")
                         .add("content.xml", "xxxx")
                         .add("META-INF/manifest.xml",
                              "<manifest:file-entry manifest:full-path=\"content.xml\">"
                              "<manifest:encryption-data/></manifest:file-entry>")
                         .bytes();
  EXPECT_TRUE(recognize(bytes).encrypted);
}

TEST(RecognizeZip, an_open_document_with_an_encrypted_picture_is_not_encrypted) {
  auto const bytes = ZipBuilder()
                         .add("mimetype", "application/vnd.oasis.opendocument.text")
                         .add("content.xml", "<x/>")
                         .add("META-INF/manifest.xml",
                              "<m:file-entry m:full-path=\"content.xml\"/>"
                              "<m:file-entry m:full-path=\"Pictures/a.png\">"
                              "<m:encryption-data/></m:file-entry><!-- encryption-data -->")
                         .bytes();
  EXPECT_FALSE(recognize(bytes).encrypted);
}

TEST(RecognizeZip, an_archive_with_a_locked_member_is_not_encrypted_as_a_whole) {
  auto const bytes =
      ZipBuilder().add("content.xml", "xxxxxxxxxxxxxxxx", 1).add("open.txt", "text").bytes();
  EXPECT_EQ(recognize(bytes).type, FileType::zip);
  EXPECT_FALSE(recognize(bytes).encrypted);
}

TEST(RecognizeZip, tags_that_never_end_are_looked_at_once) {
  std::string tags;
  for (int i = 0; i < 300000; ++i) {
    tags += "<t";
  }
  EXPECT_EQ(recognize(ZipBuilder().add("[Content_Types].xml", tags + ">").bytes()).type,
            FileType::zip);
}

TEST(RecognizeZip, a_main_part_locked_by_a_zip_password_is_encrypted) {
  auto const bytes = ZipBuilder().add("word/document.xml", "xxxxxxxxxxxxxxxx", 1).bytes();
  EXPECT_TRUE(recognize(bytes).encrypted);
}

TEST(RecognizeZip, ofd_is_told_by_its_root_part) {
  EXPECT_EQ(
      recognize(ZipBuilder().add("Doc_0/Document.xml", "").add("OFD.xml", "<OFD/>").bytes()).type,
      FileType::ofd);
}

}  // namespace
