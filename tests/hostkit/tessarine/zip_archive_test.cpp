#include "tessarine/zip_archive.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/samples.h"

namespace {

using tessarine::ZipArchive;
using tessarine::ZipBounds;
using tessarine::ZipFault;
using tessarine::ZipState;

constexpr std::size_t end_size = 22;

test::MemoryReader reader_of(std::string const& bytes) {
  return {bytes, "file.zip"};
}

ZipState state_of(std::string const& bytes, ZipBounds bounds = {}) {
  auto const reader = reader_of(bytes);
  return ZipArchive(reader, bounds).state();
}

std::string small_zip() {
  return test::ZipBuilder().add("Word\\A.xml", "content").add("b", "").bytes();
}

/// The ZIP with a large end record that claims so many entries and bytes of a directory.
std::string with_claim(std::string bytes, std::uint64_t entries, std::uint64_t directory_bytes) {
  auto const end = bytes.substr(bytes.size() - end_size);
  bytes.resize(bytes.size() - end_size);
  auto const place = bytes.size();
  bytes += "PK\6\6" + test::little(44, 8) + test::little(45, 2) + test::little(45, 2) +
           test::little(0, 8) + test::little(entries, 8) + test::little(entries, 8) +
           test::little(directory_bytes, 8) + test::little(0, 8);
  bytes += "PK\6\7" + test::little(0, 4) + test::little(place, 8) + test::little(1, 4);
  return bytes + end.substr(0, 8) + std::string(12, '\xff') + test::little(0, 2);
}

/// Changes the header of the only entry, which stands in front of it and in the directory.
std::string with_method(std::string bytes, char method) {
  bytes[bytes.find("PK\3\4") + 8] = method;
  bytes[bytes.find("PK\1\2") + 10] = method;
  return bytes;
}

ZipFault fault_of_first(std::string const& bytes) {
  auto const reader = reader_of(bytes);
  ZipArchive const zip(reader, {});
  auto part = zip.open(0);
  char buffer[64];
  while (part.read(buffer, sizeof(buffer)) > 0) {
  }
  return part.fault();
}

/// Serves nothing.
class FailingReader : public test::MemoryReader {
 public:
  using MemoryReader::MemoryReader;
  std::int64_t ReadAt(std::int64_t /*offset*/, void* /*buffer*/,
                      std::int64_t /*size*/) const override {
    return -1;
  }
};

}  // namespace

TEST(ZipArchive, entries_are_told_as_the_directory_has_them) {
  auto const reader = reader_of(small_zip());
  ZipArchive const zip(reader, {});
  auto const entry = zip.entry(0);
  EXPECT_EQ(zip.count(), 2U);
  EXPECT_EQ(entry.name, "Word\\A.xml");
  EXPECT_EQ(entry.unpacked, 7);
  EXPECT_EQ(entry.packed, 7);
  EXPECT_TRUE(entry.is_supported);
  EXPECT_FALSE(entry.is_encrypted);
}

TEST(ZipArchive, an_entry_is_read_in_pieces) {
  auto const reader = reader_of(small_zip());
  ZipArchive const zip(reader, {});
  auto part = zip.open(0);
  std::string content;
  char buffer[4];
  for (auto got = part.read(buffer, 4); got > 0; got = part.read(buffer, 4)) {
    content.append(buffer, static_cast<std::size_t>(got));
  }
  EXPECT_EQ(content, "content");
  EXPECT_EQ(part.fault(), ZipFault::none);
}

TEST(ZipArchive, outside_the_directory_there_is_no_entry) {
  auto const reader = reader_of(small_zip());
  ZipArchive const zip(reader, {});
  EXPECT_TRUE(zip.entry(2).name.empty());
  EXPECT_EQ(zip.open(2).fault(), ZipFault::damaged);
}

TEST(ZipArchive, a_wrong_checksum_is_damage) {
  auto bytes = test::ZipBuilder().add("a", "content").bytes();
  bytes[bytes.find("content")] = 'C';
  EXPECT_EQ(fault_of_first(bytes), ZipFault::damaged);
}

TEST(ZipArchive, an_unknown_way_of_packing_is_not_supported) {
  EXPECT_EQ(fault_of_first(with_method(test::ZipBuilder().add("a", "x").bytes(), 77)),
            ZipFault::unsupported);
}

TEST(ZipArchive, an_entry_with_a_password_is_encrypted) {
  EXPECT_EQ(fault_of_first(test::ZipBuilder().add("a", "content", 1).bytes()), ZipFault::encrypted);
}

TEST(ZipArchive, a_file_without_a_directory_has_none) {
  EXPECT_EQ(state_of(test::ZipBuilder().add("a", "content").entries()), ZipState::no_directory);
}

TEST(ZipArchive, a_directory_that_reaches_behind_its_end_record_is_damaged) {
  auto bytes = small_zip();
  bytes.replace(bytes.size() - end_size + 12, 4, test::little(10000, 4));
  EXPECT_EQ(state_of(bytes), ZipState::damaged);
}

TEST(ZipArchive, a_reader_that_fails_makes_it_unreadable) {
  FailingReader const reader(small_zip(), "file.zip");
  EXPECT_EQ(ZipArchive(reader, {}).state(), ZipState::unreadable);
}

TEST(ZipArchive, more_entries_than_the_bound_are_too_many) {
  EXPECT_EQ(state_of(small_zip(), {1}), ZipState::too_many_entries);
}

TEST(ZipArchive, as_many_entries_as_the_bound_are_read) {
  EXPECT_EQ(state_of(small_zip(), {2}), ZipState::open);
}

TEST(ZipArchive, a_claim_of_more_entries_than_memory_holds_is_not_believed) {
  EXPECT_EQ(state_of(with_claim(small_zip(), std::uint64_t{1} << 40, 100)),
            ZipState::too_many_entries);
}

TEST(ZipArchive, a_claim_of_a_directory_over_the_bound_is_not_believed) {
  EXPECT_EQ(state_of(with_claim(small_zip(), 2, std::uint64_t{1} << 40)),
            ZipState::directory_too_large);
}

TEST(ZipArchive, the_directories_of_many_end_records_count_together) {
  auto bytes = small_zip();
  auto const end = bytes.substr(bytes.size() - end_size);
  for (int i = 0; i < 100; ++i) {
    bytes += end;
  }
  EXPECT_EQ(state_of(bytes, {100, 1000}), ZipState::directory_too_large);
}

TEST(ZipArchive, entries_beyond_what_the_end_record_counts_are_bounded_too) {
  test::ZipBuilder zip;
  for (int i = 0; i < 5; ++i) {
    zip.add("a" + std::to_string(i), "");
  }
  auto bytes = zip.bytes();
  bytes.replace(bytes.size() - end_size + 8, 4, std::string(4, '\0'));
  EXPECT_NE(state_of(bytes, {3}), ZipState::open);
}

TEST(RecognizeZip, a_document_whose_directory_claims_too_much_is_told_by_its_entries) {
  auto const bytes = with_claim(test::office_package("word/document.xml", test::word_type).bytes(),
                                std::uint64_t{1} << 40, std::uint64_t{1} << 40);
  EXPECT_EQ(test::recognize(bytes).type, tessarine::FileType::docx);
}
