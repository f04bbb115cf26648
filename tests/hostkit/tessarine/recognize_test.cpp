#include <array>
#include <string>

#include <gtest/gtest.h>

#include "host/HTessarineResult.h"
#include "hostkit/tessarine/samples.h"

#include "support/temporary_directory.h"

namespace {

using tessarine::FileType;
using test::recognize;
using namespace std::string_literals;

TEST(Recognize, an_empty_file_is_empty) {
  EXPECT_EQ(recognize("").type, FileType::empty);
}

TEST(Recognize, bytes_that_are_no_text_and_no_known_format_are_unknown) {
  EXPECT_EQ(recognize("\1\2\3\0\0\4\5\6\xff\xfe\xfd"s).type, FileType::unknown);
}

TEST(Recognize, a_picture_named_docx_is_a_picture) {
  EXPECT_EQ(recognize("\x89PNG\r\n\x1a\n\0\0\0\rIHDR"s, "letter.docx").type, FileType::image);
}

TEST(Recognize, a_word_document_named_txt_is_a_word_document) {
  auto const bytes = test::office_package("word/document.xml", test::word_type).bytes();
  EXPECT_EQ(recognize(bytes, "letter.txt").type, FileType::docx);
}

TEST(Recognize, the_header_of_a_pdf_may_stand_behind_other_bytes) {
  EXPECT_EQ(recognize("junk\n%PDF-1.4\n1 0 obj\n<<>>\nendobj\nstartxref\n0\n%%EOF\n").type,
            FileType::pdf);
}

TEST(Recognize, a_pdf_that_lost_its_header_is_a_pdf) {
  EXPECT_EQ(
      recognize("%\xe2\xe3\xcf\xd3\n1 0 obj\n<<>>\nendobj\ntrailer\n<<>>\nstartxref\n0\n").type,
      FileType::pdf);
}

TEST(Recognize, a_text_about_pdf_headers_is_a_text) {
  EXPECT_EQ(recognize("A file begins with %PDF-1.4 and then has objects.", "notes.txt").type,
            FileType::plain_text);
}

TEST(Recognize, rich_text_is_recognised_behind_blanks) {
  EXPECT_EQ(recognize("\r\n{\\rtf1\\ansi text}").type, FileType::rtf);
}

TEST(Recognize, words_that_begin_like_signatures_are_text) {
  for (auto const* const text :
       {"BMW builds cars.", "MZ was a maker of motorcycles.", "RIFF is a word"}) {
    EXPECT_EQ(recognize(text).type, FileType::plain_text) << text;
  }
}

struct Signature {
  std::string bytes;
  FileType type;
  std::string suffix;
};

class RecognizeSignature : public testing::TestWithParam<Signature> {};

TEST_P(RecognizeSignature, tells_type_and_suffix) {
  auto const recognition = recognize(GetParam().bytes + std::string(600, '\0'));
  EXPECT_EQ(recognition.type, GetParam().type);
  EXPECT_EQ(recognition.suffix, GetParam().suffix);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, RecognizeSignature,
    testing::Values(
        Signature{"\xff\xd8\xff\xe0"s, FileType::image, "jpg"},
        Signature{"GIF89a"s, FileType::image, "gif"},
        Signature{"II*\0\x08\0\0\0"s, FileType::image, "tif"},
        Signature{"BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0"s, FileType::image, "bmp"},
        Signature{"RIFF\x24\0\0\0WEBPVP8 "s, FileType::image, "webp"},
        Signature{"RIFF\x24\0\0\0WAVEfmt "s, FileType::media, "wav"},
        Signature{"\0\0\0\x18"
                  "ftypmp42"s,
                  FileType::media, "mp4"},
        Signature{"ID3\3\0"s, FileType::media, "mp3"},
        Signature{"OggS\0\2"s, FileType::media, "ogg"},
        Signature{"\x7f"
                  "ELF\2\1\1"s,
                  FileType::executable, "elf"},
        Signature{"MZ\x90\0\3\0\0\0"s, FileType::executable, "exe"},
        Signature{"\xcf\xfa\xed\xfe\7\0\0\1"s, FileType::executable, "macho"},
        Signature{"7z\xbc\xaf\x27\x1c"s, FileType::other_archive, "7z"},
        Signature{"Rar!\x1a\7\1\0"s, FileType::other_archive, "rar"},
        Signature{"\xfd"
                  "7zXZ\0"s,
                  FileType::other_archive, "xz"},
        Signature{"\x28\xb5\x2f\xfd"s, FileType::other_archive, "zst"},
        Signature{"BZh91AY&SY"s, FileType::other_archive, "bz2"},
        Signature{"\x1f\x8b\x08\0"s, FileType::gzip, "gz"},
        Signature{"LZIP\1\x0c"s, FileType::other_archive, "lz"},
        Signature{"\x04\x22\x4d\x18"s, FileType::other_archive, "lz4"},
        Signature{"MSCF\0\0\0\0"s, FileType::other_archive, "cab"},
        Signature{"!<arch>\na.txt/"s, FileType::other_archive, "ar"},
        Signature{"070707" + std::string(70, '0') + "a.txt", FileType::other_archive, "cpio"},
        Signature{"070701" + std::string(104, 'A') + "a.txt", FileType::other_archive, "cpio"},
        Signature{"SQLite format 3\0"s, FileType::other_binary, "sqlite"}));

TEST(Recognize, a_tar_is_known_by_its_header_sum) {
  auto header = "notes.txt" + std::string(503, '\0');
  header.replace(148, 8, "        ");
  unsigned sum = 0;
  for (auto const byte : header) {
    sum += static_cast<unsigned char>(byte);
  }
  std::array<char, 8> digits{};
  std::snprintf(digits.data(), digits.size(), "%06o", sum);
  header.replace(148, 8, digits.data(), 8);
  EXPECT_EQ(recognize(header + std::string(1024, '\0')).type, FileType::tar);
}

TEST(Recognize, a_list_of_numbers_is_no_cpio) {
  EXPECT_EQ(recognize("070707\n070708\n" + std::string(100, '0') + "\n").type,
            FileType::plain_text);
}

TEST(HTessarine, fills_path_suffix_and_encryption_only) {
  test::TemporaryDirectory const directory;
  auto const path = directory.write("list.bin", "first line\nsecond line\n");
  HTessarineResult result;
  result.str_main = L"kept";
  EXPECT_TRUE(HTessarine::recognize(path, result));
  EXPECT_EQ(result.str_path, path);
  EXPECT_TRUE(result.str_suffix == L"txt");
  EXPECT_FALSE(result.b_encrypt);
  EXPECT_TRUE(result.str_main == L"kept");
}

TEST(HTessarine, tells_nothing_of_an_unknown_type_but_the_path) {
  test::TemporaryDirectory const directory;
  auto const path = directory.write("blob", "\1\2\3\0\0\4\5\6\xff\xfe\xfd"s);
  HTessarineResult result;
  EXPECT_FALSE(HTessarine::recognize(path, result));
  EXPECT_EQ(result.str_path, path);
  EXPECT_TRUE(result.str_suffix.empty());
}

TEST(HTessarine, a_missing_file_is_not_recognised) {
  HTessarineResult result;
  EXPECT_FALSE(HTessarine::recognize(L"/nowhere/at/all", result));
}

TEST(HTessarine, an_encrypted_document_is_told) {
  test::TemporaryDirectory const directory;
  auto const path = directory.write(
      "plan.xlsx", test::make_ole({{"EncryptedPackage", "xxxx"}, {"EncryptionInfo", "x"}}));
  HTessarineResult result;
  EXPECT_TRUE(HTessarine::recognize(path, result));
  EXPECT_TRUE(result.b_encrypt);
  EXPECT_TRUE(result.str_suffix == L"xlsx");
}

}  // namespace
