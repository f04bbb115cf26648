#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

#include "support/repeated.h"

namespace {

using Orlec::ParseLimits;
using Orlec::ParseOutcome;
using test::repeated;

std::string run(std::string const& text) {
  return "<w:p><w:r><w:t>" + text + "</w:t></w:r></w:p>";
}

ZipWriter::Options const packed{true, false, -1, false};

/// A word document whose body part is given as it is.
std::string word_with_body_part(std::string const& part, ZipWriter::Options const& options) {
  ZipWriter zip;
  zip.add(
      "[Content_Types].xml",
      R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Override PartName="/word/document.xml" ContentType="application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>)");
  zip.add(
      "_rels/.rels",
      R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships"><Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="word/document.xml"/></Relationships>)");
  zip.add("word/document.xml", part, options);
  return zip.bytes();
}

}  // namespace

TEST(Hostile, a_part_that_unpacks_to_many_times_its_size_ends_the_parse) {
  auto const part =
      word_part("w:document", "<w:body>" + std::string(std::size_t{80} << 20, ' ') + "</w:body>");
  auto const parsed = test::parse_bytes(word_with_body_part(part, packed));
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a part unpacks to over 250 times its size");
}

TEST(Hostile, parts_that_unpack_to_too_much_together_end_the_parse) {
  ParseLimits limits;
  limits.i_expanded_bytes = 4096;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes(OfficeDocument::word(repeated(run("text"), 1000)).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "unpacked parts over 4096 bytes");
}

TEST(Hostile, entities_that_grow_out_of_each_other_end_the_parse) {
  std::string doctype = "<!DOCTYPE w:document [<!ENTITY a0 \"" + std::string(64, 'x') + "\">";
  for (int i = 1; i < 12; ++i) {
    doctype += "<!ENTITY a" + std::to_string(i) + " \"" +
               repeated("&a" + std::to_string(i - 1) + ";", 10) + "\">";
  }
  auto part = word_part("w:document", "<w:body>" + run("&a11;") + "</w:body>");
  part.insert(part.find("?>") + 2, doctype + "]>");
  auto const parsed = test::parse_bytes(word_with_body_part(part, {}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "the expansion of entities is over 8388608 bytes");
}

TEST(Hostile, external_entities_are_not_read) {
  auto part = word_part("w:document", "<w:body>" + run("a&file;b") + "</w:body>");
  part.insert(part.find("?>") + 2, "<!DOCTYPE w:document [<!ENTITY file SYSTEM \"/etc/passwd\">]>");
  EXPECT_EQ(test::parse_bytes(word_with_body_part(part, {})).main(), "ab");
}

TEST(Hostile, deep_nesting_ends_the_parse_with_the_text_so_far) {
  auto const parsed = test::parse_bytes(
      OfficeDocument::word(run("before") + repeated("<w:tbl>", 2000) + repeated("</w:tbl>", 2000))
          .bytes());
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "elements nested over 1000 deep");
  EXPECT_EQ(parsed.main(), "before");
}

TEST(Hostile, a_tag_without_end_does_not_fill_the_memory) {
  auto const part =
      word_part("w:document", "<w:body>" + run("before") + "<w:p w:x=\"" +
                                  std::string(std::size_t{40} << 20, 'x') + "\"/></w:body>");
  auto const parsed = test::parse_bytes(word_with_body_part(part, {}));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "an XML tag over 16777216 bytes");
  EXPECT_EQ(parsed.main(), "before");
}

TEST(Hostile, a_container_of_too_many_entries_is_not_read) {
  ParseLimits limits;
  limits.i_entries = 3;
  test::ScopedLimits const scope(limits);
  auto document = OfficeDocument::word(run("x"));
  document.part("a", "").part("b", "");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a container of over 3 entries");
}

TEST(Hostile, more_than_a_hundred_thousand_entries_are_too_many) {
  auto document = OfficeDocument::word(run("x"));
  for (int i = 0; i < 100001; ++i) {
    document.part("e" + std::to_string(i), "");
  }
  EXPECT_EQ(test::parse_bytes(document.bytes()).outcome, ParseOutcome::limit_reached);
}

TEST(Hostile, a_directory_that_claims_more_entries_than_memory_holds_is_not_believed) {
  auto bytes = OfficeDocument::word(run("x")).bytes();
  auto const end = bytes.substr(bytes.size() - 22);
  bytes.resize(bytes.size() - 22);
  auto const place = bytes.size();
  bytes += "PK\x06\x06" + test::little(44, 8) + test::little(45, 2) + test::little(45, 2) +
           test::little(0, 8) + test::little(std::uint64_t{1} << 40, 8) +
           test::little(std::uint64_t{1} << 40, 8) + test::little(100, 8) + test::little(0, 8);
  bytes += "PK\x06\x07" + test::little(0, 4) + test::little(place, 8) + test::little(1, 4);
  bytes += end.substr(0, 8) + std::string(12, '\xFF') + test::little(0, 2);
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_TRUE(!parsed.has_parser || parsed.outcome == ParseOutcome::limit_reached);
}

TEST(Hostile, names_that_lead_out_of_the_container_are_only_names) {
  auto document = OfficeDocument::word(run("body"));
  document.relation("word/document.xml", "rId7", "header", "../../../../etc/passwd");
  document.part("../../etc/passwd", "root");
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_EQ(parsed.reason, "the part etc/passwd is missing");
  EXPECT_EQ(parsed.text.count(Orlec::ParseTextType_hf), 0U);
}

TEST(Hostile, two_parts_of_one_name_are_damage) {
  auto document = OfficeDocument::word(run("first"));
  document.part("word/document.xml",
                word_part("w:document", "<w:body>" + run("second") + "</w:body>"));
  auto const parsed = test::parse_bytes(document.bytes());
  EXPECT_FALSE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "two parts have the name word/document.xml");
  EXPECT_EQ(parsed.main(), "first");
}

TEST(Hostile, an_encrypted_part_needs_a_password) {
  auto const part = word_part("w:document", "<w:body>" + run("x") + "</w:body>");
  ZipWriter::Options options;
  options.encrypted = true;
  EXPECT_EQ(test::parse_bytes(word_with_body_part(part, options)).outcome, ParseOutcome::encrypted);
}

TEST(Hostile, a_part_that_is_packed_in_an_unknown_way_is_not_supported) {
  auto const part = word_part("w:document", "<w:body>" + run("x") + "</w:body>");
  ZipWriter::Options options;
  options.stated_method = 77;
  auto const parsed = test::parse_bytes(word_with_body_part(part, options));
  EXPECT_FALSE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::not_supported);
  EXPECT_EQ(parsed.reason, "the part word/document.xml is packed by method 77");
}

TEST(Hostile, an_embedded_document_that_is_packed_in_an_unknown_way_is_told) {
  auto const part = word_part("w:document", "<w:body>" + run("x") + "</w:body>");
  ZipWriter::Options options;
  options.stated_method = 77;
  auto const archive = ZipWriter().add("a.docx", word_with_body_part(part, options)).bytes();
  auto const parsed = test::parse_bytes(archive);
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"a.docx\": the part word/document.xml is packed by method 77");
}

TEST(Hostile, an_embedded_container_that_is_broken_is_told) {
  auto const broken = std::string("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", 8) + std::string(2000, '\0');
  auto const parsed = test::parse_bytes(ZipWriter().add("a.bin", broken).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason.substr(0, 9), "\"a.bin\": ");
}

TEST(Hostile, an_embedded_picture_is_no_fault) {
  auto const archive =
      ZipWriter().add("a.png", "\x89PNG\r\n\x1a\n" + std::string(100, 'x')).bytes();
  auto const parsed = test::parse_bytes(archive);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
  EXPECT_EQ(parsed.reason, "");
}

TEST(Hostile, a_tag_of_very_many_attributes_is_read_in_one_go) {
  std::string tag = "<?xml version='1.0'?><a";
  for (int i = 0; i < 200000; ++i) {
    tag += " a" + std::to_string(i) + "=''";
  }
  EXPECT_EQ(test::parse_bytes(tag + ">text</a>", "a.xml").main(), "text\n");
}

TEST(Hostile, a_wrong_checksum_is_damage_behind_the_text) {
  auto const part = word_part("w:document", "<w:body>" + run("x") + "</w:body>");
  ZipWriter::Options options;
  options.wrong_checksum = true;
  auto const parsed = test::parse_bytes(word_with_body_part(part, options));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.reason, "the part word/document.xml cannot be unpacked");
}

TEST(Hostile, a_document_cut_anywhere_is_damaged_or_no_document) {
  auto const bytes = OfficeDocument::word(repeated(run("text"), 20)).bytes();
  for (std::size_t length = 1; length < bytes.size(); length += 97) {
    auto const parsed = test::parse_bytes(bytes.substr(0, length), "cut.docx");
    EXPECT_TRUE(!parsed.has_parser || !parsed.is_ok || parsed.outcome != ParseOutcome::text ||
                length < 30)
        << length;
  }
}

TEST(Hostile, a_document_with_any_byte_changed_does_no_harm) {
  auto const bytes = OfficeDocument::word(run("text")).bytes();
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    auto changed = bytes;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    auto const parsed = test::parse_bytes(changed, "changed.docx");
    EXPECT_TRUE(parsed.has_parser || parsed.text.empty());
  }
}

TEST(Encodings, parts_in_utf16_are_read) {
  auto const part = word_part("w:document", "<w:body>" + run("text") + "</w:body>");
  std::string wide = "\xFF\xFE";
  for (char const c : part) {
    wide += c;
    wide += '\0';
  }
  EXPECT_EQ(test::parse_bytes(word_with_body_part(wide, {})).main(), "text");
}

TEST(Encodings, parts_in_a_declared_chinese_encoding_are_read) {
  auto part = word_part("w:document", "<w:body>" + run("\xD6\xD0\xCE\xC4") + "</w:body>");
  part.replace(part.find("UTF-8"), 5, "GB2312");
  EXPECT_EQ(test::parse_bytes(word_with_body_part(part, {})).main(), "中文");
}

TEST(Encodings, a_part_that_claims_utf16_and_is_utf8_is_read) {
  auto part = word_part("w:document", "<w:body>" + run("é") + "</w:body>");
  part.replace(part.find("UTF-8"), 5, "UTF-16");
  EXPECT_EQ(test::parse_bytes(word_with_body_part(part, {})).main(), "é");
}

TEST(Hostile, a_directory_that_claims_to_be_huge_is_not_read) {
  auto bytes = OfficeDocument::word(run("x")).bytes();
  bytes.replace(bytes.size() - 10, 4, test::little(std::uint64_t{100} << 20, 4));
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_TRUE(!parsed.has_parser || parsed.outcome == ParseOutcome::limit_reached ||
              parsed.outcome == ParseOutcome::damaged);
}
