#include "tessarine/zip_archive.h"

#include <cstdint>
#include <string>
#include <string_view>

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

/// What comes of the first entry before a fault or its end.
std::string content_of_first(std::string const& bytes) {
  auto const reader = reader_of(bytes);
  ZipArchive const zip(reader, {});
  auto part = zip.open(0);
  std::string content;
  char buffer[64];
  for (auto got = part.read(buffer, 64); got > 0; got = part.read(buffer, 64)) {
    content.append(buffer, static_cast<std::size_t>(got));
  }
  return content;
}

/// A ZIP of one entry whose record in the directory is changed.
template <typename Change>
std::string with_record(std::string bytes, Change change) {
  auto const at = bytes.find("PK\1\2");
  auto const end = bytes.size() - end_size;
  auto record = bytes.substr(at, end - at);
  change(record);
  return bytes.substr(0, at) + record + "PK\5\6" + test::little(0, 4) + test::little(1, 2) +
         test::little(1, 2) + test::little(record.size(), 4) + test::little(at, 4) +
         test::little(0, 2);
}

/// "content" by its own name, packed by a method other than storing it.
std::string packed_zip(char method, std::string const& packed) {
  return with_record(with_method(test::ZipBuilder().add("a", packed).bytes(), method),
                     [](std::string& record) {
                       constexpr std::uint32_t checksum_of_content = 0xfec530a9;
                       record.replace(16, 4, test::little(checksum_of_content, 4));
                       record.replace(24, 4, test::little(7, 4));
                     });
}

std::string const deflated_content("\x4b\xce\xcf\x2b\x49\xcd\x2b\x01\x00", 9);

std::string const bzip2_content(
    "\x42\x5a\x68\x39\x31\x41\x59\x26\x53\x59\x23\x0d\xca\xfd\x00\x00\x00\x01\x80\x0a"
    "\x01\x84\x00\x20\x00\x21\x83\x41\x9a\x01\x53\x0b\x8b\xb9\x22\x9c\x28\x48\x11\x86"
    "\xe5\x7e\x80",
    43);

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

TEST(ZipArchive, a_deflated_entry_is_unpacked) {
  EXPECT_EQ(content_of_first(packed_zip(8, deflated_content)), "content");
  EXPECT_EQ(fault_of_first(packed_zip(8, deflated_content)), ZipFault::none);
}

TEST(ZipArchive, an_entry_in_bzip2_is_unpacked) {
  EXPECT_EQ(content_of_first(packed_zip(12, bzip2_content)), "content");
}

TEST(ZipArchive, of_a_deflated_entry_that_is_cut_its_beginning_is_read) {
  auto const cut = packed_zip(8, deflated_content.substr(0, 6));
  EXPECT_TRUE(std::string_view("content").starts_with(content_of_first(cut)));
  EXPECT_EQ(fault_of_first(cut), ZipFault::damaged);
}

TEST(ZipArchive, an_entry_that_claims_more_than_the_file_holds_is_damaged) {
  EXPECT_EQ(fault_of_first(with_record(
                test::ZipBuilder().add("a", "content").bytes(),
                [](std::string& record) { record.replace(20, 4, test::little(10000, 4)); })),
            ZipFault::damaged);
}

TEST(ZipArchive, an_entry_that_stands_behind_the_end_of_the_file_is_damaged) {
  EXPECT_EQ(fault_of_first(with_record(
                test::ZipBuilder().add("a", "content").bytes(),
                [](std::string& record) { record.replace(42, 4, test::little(0xfffffff0, 4)); })),
            ZipFault::damaged);
}

TEST(ZipArchive, sizes_and_place_may_stand_in_the_large_fields) {
  auto const bytes =
      with_record(test::ZipBuilder().add("a", "content").bytes(), [](std::string& record) {
        record.replace(20, 8, std::string(8, '\xff'));
        record.replace(30, 2, test::little(28, 2));
        record.replace(42, 4, std::string(4, '\xff'));
        record += test::little(1, 2) + test::little(24, 2) + test::little(7, 8) +
                  test::little(7, 8) + test::little(0, 8);
      });
  EXPECT_EQ(content_of_first(bytes), "content");
}

TEST(ZipArchive, large_fields_that_are_missing_are_damage) {
  EXPECT_EQ(state_of(with_record(
                test::ZipBuilder().add("a", "content").bytes(),
                [](std::string& record) { record.replace(42, 4, std::string(4, '\xff')); })),
            ZipState::damaged);
}

TEST(ZipArchive, a_second_name_in_unicode_counts) {
  auto const bytes =
      with_record(test::ZipBuilder().add("a", "content").bytes(), [](std::string& record) {
        constexpr std::uint32_t checksum_of_a = 0xe8b7be43;
        record.replace(30, 2, test::little(11, 2));
        record += test::little(0x7075, 2) + test::little(7, 2) + test::little(1, 1) +
                  test::little(checksum_of_a, 4) + "\xc3\xa4";
      });
  auto const reader = reader_of(bytes);
  EXPECT_EQ(ZipArchive(reader, {}).entry(0).name, "\xc3\xa4");
}

TEST(ZipArchive, of_several_directories_the_last_one_counts) {
  auto const first = test::ZipBuilder().add("a", "").bytes();
  auto bytes = first + with_record(test::ZipBuilder().add("b", "").bytes(), [](auto&) {});
  bytes.replace(bytes.size() - 6, 4, test::little(first.size() + 31, 4));
  auto const reader = reader_of(bytes);
  EXPECT_EQ(ZipArchive(reader, {}).entry(0).name, "b");
}

TEST(ZipArchive, an_end_record_without_its_directory_hides_no_other) {
  auto bytes = small_zip();
  bytes.replace(bytes.size() - 2, 2, test::little(end_size, 2));
  bytes += "PK\5\6" + test::little(0, 4) + test::little(1, 2) + test::little(1, 2) +
           test::little(46, 4) + test::little(0, 4) + test::little(0, 2);
  EXPECT_EQ(state_of(bytes), ZipState::open);
}

TEST(ZipArchive, a_record_that_is_cut_is_damage) {
  EXPECT_EQ(state_of(with_record(test::ZipBuilder().add("a", "content").bytes(),
                                 [](std::string& record) { record.pop_back(); })),
            ZipState::damaged);
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
