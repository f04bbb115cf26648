#include <gtest/gtest.h>

#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"
#include "hostkit/morvakit/zip_writer.h"

namespace {

using Orlec::ParseLimits;
using Orlec::ParseOutcome;

ZipWriter::Options packed() {
  ZipWriter::Options options;
  options.deflate = true;
  return options;
}

ZipWriter::Options locked() {
  ZipWriter::Options options;
  options.encrypted = true;
  return options;
}

std::string names_of(std::string const& bytes) {
  return test::parse_bytes(bytes).kind(Orlec::ParseTextType_other);
}

/// The archive in itself, `depth` times.
std::string nested(std::string bytes, int depth) {
  for (int i = 0; i < depth; ++i) {
    bytes = ZipWriter().add("inner.zip", bytes, packed()).bytes();
  }
  return bytes;
}

}  // namespace

TEST(Zip, the_text_of_each_member_follows_that_of_the_one_before) {
  auto const document = OfficeDocument::word("<w:p><w:r><w:t>document</w:t></w:r></w:p>").bytes();
  auto const bytes = ZipWriter()
                         .add("a.txt", "text")
                         .add("b.docx", document, packed())
                         .add("c.html", "<html><body>page</body></html>", packed())
                         .bytes();
  EXPECT_EQ(test::parse_bytes(bytes).main(), "text\ndocument\npage");
}

TEST(Zip, members_are_counted_as_embedded) {
  auto const bytes = ZipWriter().add("a.txt", "one").add("d/b.txt", "two").bytes();
  EXPECT_EQ(test::parse_bytes(bytes).counts.i_embed, 2);
}

TEST(Zip, names_of_members_are_other_text) {
  EXPECT_EQ(names_of(ZipWriter().add("a.txt", "one").add("d/b.txt", "two").bytes()),
            "a.txt\nd/b.txt");
}

TEST(Zip, directories_and_empty_members_are_passed_over) {
  auto const parsed = test::parse_bytes(ZipWriter().add("d/", "").add("d/a.txt", "").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
  EXPECT_EQ(parsed.counts.i_embed, 0);
}

TEST(Zip, an_archive_without_members_has_no_text) {
  EXPECT_EQ(test::parse_bytes(ZipWriter().bytes()).outcome, ParseOutcome::no_text);
}

TEST(Zip, names_in_utf8_are_read) {
  EXPECT_EQ(names_of(ZipWriter().add("合同.txt", "x").bytes()), "合同.txt");
}

TEST(Zip, names_in_chinese_encodings_are_read) {
  EXPECT_EQ(names_of(ZipWriter().add("\xBA\xCF\xCD\xAC.txt", "x").bytes()), "合同.txt");
}

TEST(Zip, names_in_shift_jis_are_read) {
  EXPECT_EQ(names_of(ZipWriter()
                         .add("\x8C\x5F\x96\xF1\x8F\x91\x82\xCC\x83\x52\x83\x73\x81\x5B.txt", "x")
                         .bytes()),
            "契約書のコピー.txt");
}

TEST(Zip, names_of_dos_are_read) {
  EXPECT_EQ(names_of(ZipWriter().add("\x82t\x82.txt", "x").bytes()), "été.txt");
}

TEST(Zip, the_suffix_of_a_member_tells_what_its_content_does_not) {
  EXPECT_EQ(test::parse_bytes(ZipWriter().add("a.csv", "a,b\nc,d\n").bytes()).main(), "a,b\nc,d\n");
}

TEST(Zip, a_locked_member_is_named) {
  auto const parsed =
      test::parse_bytes(ZipWriter().add("a.txt", "text").add("b.txt", "x", locked()).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"b.txt\" needs a password");
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Zip, an_archive_all_of_whose_files_are_locked_is_encrypted) {
  auto const parsed =
      test::parse_bytes(ZipWriter().add("d/", "").add("d/b.txt", "x", locked()).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::encrypted);
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "d/\nd/b.txt");
}

TEST(Zip, a_member_that_cannot_be_unpacked_leaves_the_others_readable) {
  ZipWriter::Options unknown;
  unknown.stated_method = 77;
  auto const parsed =
      test::parse_bytes(ZipWriter().add("a.txt", "x", unknown).add("b.txt", "text").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"a.txt\": packed by method 77");
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Zip, a_member_with_a_wrong_checksum_is_read_and_noted) {
  ZipWriter::Options wrong;
  wrong.wrong_checksum = true;
  auto const parsed = test::parse_bytes(ZipWriter().add("a.txt", "text", wrong).bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::incomplete);
  EXPECT_EQ(parsed.reason, "\"a.txt\": cannot be unpacked");
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Zip, two_members_of_one_name_are_both_read) {
  auto const parsed =
      test::parse_bytes(ZipWriter().add("a.txt", "one").add("a.txt", "two").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one\ntwo");
}

TEST(Zip, names_that_lead_out_of_the_archive_are_only_names) {
  auto const parsed = test::parse_bytes(ZipWriter().add("../../etc/motd.txt", "text").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Zip, an_archive_without_directory_is_read_by_the_headers_of_its_members) {
  auto const bytes = ZipWriter().add("a.txt", "one").add("b.txt", "two").bytes();
  auto const parsed = test::parse_bytes(bytes.substr(0, bytes.find("PK\x01\x02")));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main(), "one\ntwo");
}

TEST(Zip, archives_in_each_other_are_read_to_a_bounded_depth) {
  ParseLimits limits;
  limits.i_nesting = 4;
  test::ScopedLimits const scope(limits);
  auto const text = ZipWriter().add("a.txt", "text").bytes();
  EXPECT_EQ(test::parse_bytes(nested(text, 3)).main(), "text");
  auto const parsed = test::parse_bytes(nested(text, 4));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_NE(parsed.reason.find("files embedded in each other over 4 deep"), std::string::npos);
}

TEST(Zip, an_archive_of_too_many_members_is_not_read) {
  ParseLimits limits;
  limits.i_entries = 2;
  test::ScopedLimits const scope(limits);
  auto const parsed =
      test::parse_bytes(ZipWriter().add("a", "x").add("b", "x").add("c", "x").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a container of over 2 entries");
}

TEST(Zip, a_member_over_the_bound_on_files_is_noted_and_the_rest_is_read) {
  ParseLimits limits;
  limits.i_input_bytes = 100000;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes(
      ZipWriter().add("a.txt", std::string(100001, 'a'), packed()).add("b.txt", "text").bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "\"a.txt\": over 100000 bytes");
  EXPECT_EQ(parsed.main(), "text");
}

TEST(Zip, bombs_side_by_side_share_one_bound) {
  ParseLimits limits;
  limits.i_expanded_bytes = 2000000;
  test::ScopedLimits const scope(limits);
  auto const bomb = ZipWriter().add("a.txt", std::string(300000, 'a'), packed()).bytes();
  ZipWriter outer;
  for (int i = 0; i < 10; ++i) {
    outer.add("bomb" + std::to_string(i) + ".zip", bomb, packed());
  }
  auto const parsed = test::parse_bytes(outer.bytes());
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "unpacked parts over 2000000 bytes");
}

TEST(Zip, members_that_share_their_data_are_bounded_by_what_they_unpack_to) {
  ParseLimits limits;
  limits.i_expanded_bytes = 1000000;
  test::ScopedLimits const scope(limits);
  auto const one = ZipWriter().add("a.txt", std::string(100000, 'a')).bytes();
  auto const start = one.find("PK\x01\x02");
  auto const end = one.find("PK\x05\x06");
  auto bytes = one.substr(0, start);
  for (int i = 0; i < 100; ++i) {
    bytes += one.substr(start, end - start);
  }
  bytes += one.substr(end, 8) + test::little(100, 2) + test::little(100, 2) +
           test::little(100 * (end - start), 4) + test::little(start, 4) + test::little(0, 2);
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "unpacked parts over 1000000 bytes");
}

TEST(Zip, an_archive_cut_anywhere_does_no_harm) {
  auto const bytes =
      ZipWriter().add("a.txt", "one").add("b.txt", std::string(500, 'b'), packed()).bytes();
  for (std::size_t length = 1; length < bytes.size(); ++length) {
    auto const parsed = test::parse_bytes(bytes.substr(0, length), "cut.zip");
    EXPECT_NE(parsed.outcome, ParseOutcome::failed) << length;
  }
}

TEST(Zip, an_archive_with_any_byte_changed_does_no_harm) {
  auto const bytes =
      ZipWriter().add("a.txt", "one").add("b.txt", std::string(500, 'b'), packed()).bytes();
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    auto changed = bytes;
    changed[at] = static_cast<char>(changed[at] ^ 0xFF);
    auto const parsed = test::parse_bytes(changed, "changed.zip");
    EXPECT_NE(parsed.outcome, ParseOutcome::failed) << at;
  }
}
