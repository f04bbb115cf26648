#include <random>

#include <gtest/gtest.h>
#include <zlib.h>

#include "hostkit/morvakit/archive_writer.h"
#include "hostkit/morvakit/missing_component.h"
#include "hostkit/morvakit/office_documents.h"
#include "hostkit/morvakit/parse_bytes.h"
#include "hostkit/morvakit/scoped_limits.h"

namespace {

using Orlec::ParseLimits;
using Orlec::ParseOutcome;
using test::little;

test::ArchiveFiles const two_files{{"a.txt", "one"}, {"d/b.txt", "two"}};

std::uint32_t checksum(std::string const& bytes) {
  return static_cast<std::uint32_t>(
      crc32(0, reinterpret_cast<Bytef const*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

/// A block of RAR 2.9 to 4 with its checksum.
std::string rar_block(int type, int flags, std::string const& fields) {
  auto const rest = little(static_cast<std::uint64_t>(type), 1) +
                    little(static_cast<std::uint64_t>(flags), 2) + little(7 + fields.size(), 2) +
                    fields;
  return little(checksum(rest) & 0xFFFFU, 2) + rest;
}

std::string make_rar(std::string const& name, std::string const& content, int flags = 0) {
  auto const file = little(content.size(), 4) + little(content.size(), 4) + little(3, 1) +
                    little(checksum(content), 4) + little(0x58210000, 4) + little(20, 1) +
                    little(0x30, 1) + little(name.size(), 2) + little(0x81A4, 4) + name;
  return "Rar!\x1A\x07" + std::string(1, '\0') + rar_block(0x73, 0, little(0, 6)) +
         rar_block(0x74, 0x8000 | flags, file) + content + rar_block(0x7B, 0x4000, "");
}

/// A block of RAR 5 with its size and checksum; all numbers here are below 128.
std::string rar5_block(std::string const& fields) {
  auto const rest = little(fields.size(), 1) + fields;
  return little(checksum(rest), 4) + rest;
}

/// The file has no more than a mode of access, without the kind of file.
std::string make_rar5(std::string const& name, std::string const& content) {
  auto const file = little(2, 1) + little(2, 1) + little(content.size(), 1) + little(4, 1) +
                    little(content.size(), 1) + little(0, 1) + little(checksum(content), 4) +
                    little(0, 1) + little(1, 1) + little(name.size(), 1) + name;
  return "Rar!\x1A\x07\x01" + std::string(1, '\0') + rar5_block(little(1, 3)) + rar5_block(file) +
         content + rar5_block(little(5, 3));
}

std::string make_cabinet(std::string const& name, std::string const& content) {
  auto const file = little(content.size(), 4) + little(0, 4) + little(0, 2) +
                    little(0x58210000, 4) + little(0x20, 2) + name + std::string(1, '\0');
  auto const files_at = 36 + 8;
  auto const data_at = files_at + file.size();
  auto const folder = little(data_at, 4) + little(1, 2) + little(0, 2);
  auto const data = little(0, 4) + little(content.size(), 2) + little(content.size(), 2) + content;
  auto const size = data_at + data.size();
  return "MSCF" + little(0, 4) + little(size, 4) + little(0, 4) + little(files_at, 4) +
         little(0, 4) + little(0x0103, 2) + little(1, 2) + little(1, 2) + little(0, 2) +
         little(0, 2) + little(0, 2) + folder + file + data;
}

}  // namespace

TEST(Archive, the_files_of_a_tar_are_read_in_their_order) {
  auto const parsed = test::parse_bytes(test::make_tar(two_files));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one\ntwo");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "a.txt\nd/b.txt");
  EXPECT_EQ(parsed.counts.i_embed, 2);
}

TEST(Archive, all_variants_of_tar_are_read) {
  for (auto const* const format : {"ustar", "pax", "gnutar", "v7tar"}) {
    auto const bytes = test::make_archive(format, ARCHIVE_FILTER_NONE, two_files);
    EXPECT_EQ(test::parse_bytes(bytes).main(), "one\ntwo") << format;
  }
}

TEST(Archive, a_packed_tar_is_read_through) {
  for (int const filter : {ARCHIVE_FILTER_GZIP, ARCHIVE_FILTER_BZIP2, ARCHIVE_FILTER_XZ,
                           ARCHIVE_FILTER_ZSTD, ARCHIVE_FILTER_LZ4, ARCHIVE_FILTER_LZIP}) {
    auto const parsed = test::parse_bytes(test::make_tar(two_files, filter));
    EXPECT_EQ(parsed.main(), "one\ntwo") << filter;
    EXPECT_EQ(parsed.counts.i_embed, 2) << filter;
  }
}

TEST(Archive, a_packed_document_is_read) {
  auto const document = OfficeDocument::word("<w:p><w:r><w:t>document</w:t></w:r></w:p>").bytes();
  for (int const filter : {ARCHIVE_FILTER_GZIP, ARCHIVE_FILTER_BZIP2, ARCHIVE_FILTER_XZ,
                           ARCHIVE_FILTER_ZSTD, ARCHIVE_FILTER_LZ4}) {
    auto const parsed = test::parse_bytes(test::pack(document, filter));
    EXPECT_EQ(parsed.main(), "document") << filter;
    EXPECT_EQ(parsed.text.count(Orlec::ParseTextType_other), 0U) << filter;
  }
}

TEST(Archive, a_packed_file_is_known_by_the_name_without_the_suffix) {
  auto const parsed =
      test::parse_bytes(test::pack("Rar!\x1A\x07", ARCHIVE_FILTER_GZIP), "dir/broken.rar.gz");
  EXPECT_EQ(parsed.reason, "\"broken.rar\": the archive is broken or cut short");
}

TEST(Archive, packed_nothing_is_no_text) {
  EXPECT_EQ(test::parse_bytes(test::pack("", ARCHIVE_FILTER_GZIP)).outcome, ParseOutcome::no_text);
}

TEST(Archive, layers_of_packing_count_as_depth) {
  std::string bytes = "text";
  for (int i = 0; i < 20; ++i) {
    bytes = test::pack(bytes, ARCHIVE_FILTER_GZIP);
  }
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.main(), "");
}

TEST(Archive, cpio_and_ar_are_read) {
  for (auto const* const format : {"odc", "newc", "argnu"}) {
    auto const bytes = test::make_archive(format, ARCHIVE_FILTER_NONE, {{"a.txt", "one"}});
    EXPECT_EQ(test::parse_bytes(bytes).main(), "one") << format;
  }
}

TEST(Archive, rar_is_read) {
  auto const parsed = test::parse_bytes(make_rar("a.txt", "one"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "a.txt");
}

TEST(Archive, rar_5_is_read) {
  auto const parsed = test::parse_bytes(make_rar5("合同.txt", "one"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "合同.txt");
}

TEST(Archive, a_rar_whose_files_are_locked_is_encrypted) {
  EXPECT_EQ(test::parse_bytes(make_rar("a.txt", "one", 4)).outcome, ParseOutcome::encrypted);
}

TEST(Archive, a_cabinet_is_read) {
  auto const parsed = test::parse_bytes(make_cabinet("a.txt", "one"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), "one");
}

TEST(Archive, names_in_legacy_encodings_are_read) {
  auto const names = [](std::string const& name) {
    return test::parse_bytes(test::make_tar({{name, "x"}})).kind(Orlec::ParseTextType_other);
  };
  EXPECT_EQ(names("\xBA\xCF\xCD\xAC.txt"), "合同.txt");
  EXPECT_EQ(names("合同.txt"), "合同.txt");
}

TEST(Archive, links_and_directories_hold_no_text) {
  auto bytes = test::make_tar({{"d/", ""}, {"link.txt", ""}, {"a.txt", "one"}});
  // The second header becomes that of a symbolic link, and its sum grows with it.
  bytes[512 + 156] = '2';
  bytes[512 + 153] = static_cast<char>(bytes[512 + 153] + 2);
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.counts.i_embed, 1);
}

TEST(Archive, a_tar_that_is_cut_short_is_damaged_and_keeps_its_text) {
  auto const bytes = test::make_tar({{"a.txt", "one"}, {"b.txt", std::string(2000, 'b')}});
  auto const parsed = test::parse_bytes(bytes.substr(0, 2000));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_EQ(parsed.main().substr(0, 5), "one\nb");
}

TEST(Archive, a_packed_file_that_is_cut_short_is_damaged_and_keeps_its_text) {
  std::string text;
  for (int i = 0; i < 60000; ++i) {
    text += std::to_string(i) + " ";
  }
  auto const bytes = test::pack(text, ARCHIVE_FILTER_GZIP);
  auto const parsed = test::parse_bytes(bytes.substr(0, bytes.size() / 2));
  EXPECT_EQ(parsed.outcome, ParseOutcome::damaged);
  EXPECT_TRUE(parsed.main().starts_with("0 1 2 3"));
}

TEST(Archive, an_archive_of_too_many_entries_is_read_up_to_there) {
  ParseLimits limits;
  limits.i_entries = 1;
  test::ScopedLimits const scope(limits);
  auto const parsed = test::parse_bytes(test::make_tar(two_files));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a container of over 1 entries");
  EXPECT_EQ(parsed.main(), "one");
}

TEST(Archive, what_is_unpacked_is_bounded) {
  ParseLimits limits;
  limits.i_expanded_bytes = 1000000;
  test::ScopedLimits const scope(limits);
  for (int const filter : {ARCHIVE_FILTER_GZIP, ARCHIVE_FILTER_BZIP2, ARCHIVE_FILTER_XZ,
                           ARCHIVE_FILTER_ZSTD, ARCHIVE_FILTER_LZ4}) {
    auto const parsed = test::parse_bytes(test::pack(std::string(2000000, 'a'), filter));
    EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached) << filter;
    EXPECT_EQ(parsed.reason, "unpacked parts over 1000000 bytes") << filter;
  }
}

TEST(Archive, an_xz_with_a_huge_dictionary_is_not_unpacked) {
  auto bytes = test::pack("text", ARCHIVE_FILTER_XZ);
  // The size of the dictionary stands in the header of the block, which has a checksum.
  bytes[12 + 4] = 40;
  auto const header = bytes.substr(12, (static_cast<std::size_t>(bytes[12]) + 1) * 4 - 4);
  bytes.replace(12 + header.size(), 4, little(checksum(header), 4));
  auto const parsed = test::parse_bytes(bytes);
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.reason, "a dictionary over 201326592 bytes");
}

TEST(Archive, archives_cut_anywhere_do_no_harm) {
  auto const files = test::ArchiveFiles{{"a.txt", "one"}};
  for (auto const& bytes :
       {test::make_tar(files, ARCHIVE_FILTER_GZIP), test::make_tar(files, ARCHIVE_FILTER_XZ),
        make_rar("a.txt", "one"), make_cabinet("a.txt", "one")}) {
    for (std::size_t length = 1; length < bytes.size(); ++length) {
      EXPECT_NE(test::parse_bytes(bytes.substr(0, length)).outcome, ParseOutcome::failed) << length;
    }
  }
}

TEST(Archive, archives_with_bytes_changed_do_no_harm) {
  std::mt19937 random(7);
  auto const files = test::ArchiveFiles{{"a.txt", "one"}, {"b.txt", std::string(3000, 'b')}};
  for (auto const& bytes : {test::make_tar(files), test::make_tar(files, ARCHIVE_FILTER_ZSTD),
                            test::make_tar(files, ARCHIVE_FILTER_BZIP2), make_rar("a.txt", "one"),
                            make_cabinet("a.txt", "one")}) {
    for (int round = 0; round < 200; ++round) {
      auto changed = bytes;
      for (int i = 0; i < 3; ++i) {
        changed[random() % std::min<std::size_t>(changed.size(), 2000)] =
            static_cast<char>(random());
      }
      EXPECT_NE(test::parse_bytes(changed).outcome, ParseOutcome::failed) << round;
    }
  }
}

// Runs in a process of its own, started by the test below.
TEST(ArchiveComponent, DISABLED_is_missing) {
  auto const parsed = test::parse_bytes(test::make_tar(two_files));
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::not_supported);
  EXPECT_EQ(parsed.reason, "the archive component is not installed");
}

TEST(ArchiveComponent, that_is_missing_is_told) {
  EXPECT_TRUE(test::passes_without_components("ArchiveComponent.DISABLED_is_missing"));
}
