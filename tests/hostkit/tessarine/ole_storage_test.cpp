#include "tessarine/ole_storage.h"

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "hostkit/tessarine/compound_image.h"
#include "hostkit/tessarine/ole_builder.h"

#include "tessarine/byte_reader.h"

namespace {

using test::CompoundImage;
using test::MemoryReader;

std::string counted_bytes(std::size_t size) {
  std::string bytes;
  for (std::uint32_t i = 0; bytes.size() < size; ++i) {
    bytes += test::little(i, 4);
  }
  return bytes.substr(0, size);
}

enum class Link { left, right, child };

/// Entries that hang on each other in one line.
std::string line_of_entries(std::size_t count, Link link) {
  CompoundImage image;
  image.link({"0", CompoundImage::storage});
  for (std::size_t i = 1; i < count; ++i) {
    auto& last = image.entries.back();
    (link == Link::left    ? last.left
     : link == Link::right ? last.right
                           : last.child) = static_cast<std::uint32_t>(image.entries.size());
    image.entries.push_back({std::to_string(i), CompoundImage::storage});
  }
  return image.bytes();
}

/// Reads all that can be reached, a bounded number of storages deep.
void read_everything(tessarine::OleStorage const& storage, int depth) {
  for (auto const& entry : storage.entries()) {
    if (entry.is_storage && depth > 0) {
      read_everything(storage.storage(entry.name), depth - 1);
    } else if (auto const stream = storage.stream(entry.name); stream != nullptr) {
      tessarine::read_piece(*stream, 0, stream->GetSize());
      tessarine::read_piece(*stream, stream->GetSize() / 2, 100);
    }
  }
}

}  // namespace

TEST(OleStorage, reads_what_another_writer_wrote) {
  auto const large = counted_bytes(100001);
  MemoryReader const file(test::make_ole({{"large", large}, {"small", "a few bytes"}}), "x");
  tessarine::OleStorage const root(file);
  EXPECT_EQ(root.fault(), "");
  EXPECT_EQ(root.content("large", 1 << 20), large);
  EXPECT_EQ(root.content("small", 1 << 20), "a few bytes");
}

TEST(OleStorage, names_are_found_in_any_case) {
  MemoryReader const file(test::make_ole({{"Workbook", "x"}}), "x");
  EXPECT_EQ(tessarine::OleStorage(file).content("WORKBOOK", 9), "x");
}

TEST(OleStorage, a_name_that_is_not_there_is_neither_stream_nor_storage) {
  MemoryReader const file(test::make_ole({{"a", "x"}}), "x");
  tessarine::OleStorage const root(file);
  EXPECT_EQ(root.stream("b"), nullptr);
  EXPECT_FALSE(root.storage("a").is_open());
  EXPECT_FALSE(root.storage("b").is_open());
}

TEST(OleStorage, a_stream_in_scattered_sectors_is_read_at_any_offset) {
  auto const bytes = counted_bytes(70000);
  CompoundImage image;
  image.add_stream("backwards", bytes, true);
  MemoryReader const file(image.bytes(), "x");
  auto const stream = tessarine::OleStorage(file).stream("backwards");
  ASSERT_NE(stream, nullptr);
  std::mt19937 random(5);
  for (int i = 0; i < 2000; ++i) {
    auto const offset = random() % bytes.size();
    auto const size = random() % (i % 2 == 0 ? 10U : 20000U) + 1;
    ASSERT_EQ(tessarine::read_piece(*stream, static_cast<std::int64_t>(offset),
                                    static_cast<std::int64_t>(size)),
              bytes.substr(offset, size));
  }
}

TEST(OleStorage, a_stream_outlives_its_storage) {
  MemoryReader const file(test::make_ole({{"a", "bytes"}}), "x");
  auto const stream = tessarine::OleStorage(file).stream("a");
  EXPECT_EQ(tessarine::read_piece(*stream, 0, 10), "bytes");
}

TEST(OleStorage, of_too_many_entries_the_first_are_there) {
  for (auto const link : {Link::left, Link::right}) {
    MemoryReader const file(line_of_entries(100000, link), "x");
    tessarine::OleStorage const root(file);
    EXPECT_EQ(root.entries().size(), 19999U);
    EXPECT_TRUE(root.is_over_bound());
    EXPECT_EQ(root.fault(), "the OLE2 directory has over 20000 entries");
  }
}

TEST(OleStorage, entries_in_one_long_line_are_listed) {
  for (auto const link : {Link::left, Link::right}) {
    MemoryReader const file(line_of_entries(19000, link), "x");
    EXPECT_EQ(tessarine::OleStorage(file).entries().size(), 19000U);
  }
}

TEST(OleStorage, storages_are_nested_as_deep_as_the_directory_has_entries) {
  MemoryReader const file(line_of_entries(19000, Link::child), "x");
  tessarine::OleStorage storage(file);
  int depth = 0;
  for (; storage.is_open() && !storage.entries().empty(); ++depth) {
    storage = storage.storage(storage.entries().front().name);
  }
  EXPECT_EQ(depth, 19000);
}

TEST(OleStorage, a_directory_in_a_circle_is_refused) {
  CompoundImage image;
  image.add_stream("a", counted_bytes(5000));
  image.place_directory();
  image.next[image.directory] = image.directory;
  MemoryReader const file(image.bytes(), "x");
  tessarine::OleStorage const root(file);
  EXPECT_FALSE(root.is_open());
  EXPECT_EQ(root.fault(), "the OLE2 directory runs in a circle");
}

TEST(OleStorage, entries_in_a_circle_are_listed_once) {
  CompoundImage image;
  image.add_stream("a", counted_bytes(5000));
  image.add_stream("b", counted_bytes(5000));
  image.entries.back().right = 1;
  image.entries.back().left = 2;
  MemoryReader const file(image.bytes(), "x");
  tessarine::OleStorage const root(file);
  EXPECT_EQ(root.entries().size(), 2U);
  EXPECT_EQ(root.fault(), "the OLE2 directory is damaged");
}

TEST(OleStorage, two_entries_of_one_name_are_a_fault) {
  CompoundImage image;
  image.add_stream("Data", counted_bytes(5000));
  image.add_stream("DATA", counted_bytes(5000));
  MemoryReader const file(image.bytes(), "x");
  tessarine::OleStorage const root(file);
  EXPECT_EQ(root.entries().size(), 2U);
  EXPECT_EQ(root.fault(), "two OLE2 entries have one name");
}

TEST(OleStorage, entries_of_one_name_in_two_storages_are_no_fault) {
  MemoryReader const file(test::make_ole({{"a/x", "1"}, {"b/x", "2"}, {"x", "3"}}), "x");
  EXPECT_EQ(tessarine::OleStorage(file).fault(), "");
}

TEST(OleStorage, an_entry_of_no_known_type_leaves_those_that_hang_on_it) {
  CompoundImage image;
  image.add_stream("a", counted_bytes(5000));
  image.link({"lost", static_cast<CompoundImage::Type>(7)});
  image.add_stream("b", counted_bytes(5000));
  MemoryReader const file(image.bytes(), "x");
  tessarine::OleStorage const root(file);
  EXPECT_EQ(root.entries().size(), 2U);
  EXPECT_EQ(root.content("b", 1 << 20), counted_bytes(5000));
  EXPECT_EQ(root.fault(), "an OLE2 entry is neither stream nor storage");
}

TEST(OleStorage, a_storage_within_itself_is_empty) {
  CompoundImage image;
  image.link({"a", CompoundImage::storage});
  image.entries.back().child = 0;
  MemoryReader const file(image.bytes(), "x");
  EXPECT_TRUE(tessarine::OleStorage(file).storage("a").entries().empty());
}

TEST(OleStorage, a_stream_that_claims_more_than_the_file_falls_short) {
  auto const bytes = counted_bytes(5120);
  CompoundImage image;
  image.add_stream("a", bytes);
  image.entries.back().size = 0xffffffff;
  auto const whole = image.bytes();
  MemoryReader const file(whole, "x");
  auto const stream = tessarine::OleStorage(file).stream("a");
  EXPECT_LE(stream->GetSize(), file.GetSize());
  EXPECT_EQ(tessarine::read_piece(*stream, 0, stream->GetSize()), bytes);
  char buffer[16];
  EXPECT_EQ(stream->ReadAt(6000, buffer, 16), -1);
}

TEST(OleStorage, a_stream_in_a_circle_ends) {
  CompoundImage image;
  image.add_stream("a", counted_bytes(5120));
  image.entries.back().size = 0xffffffff;
  image.next[9] = 0;
  MemoryReader const file(image.bytes(), "x");
  auto const stream = tessarine::OleStorage(file).stream("a");
  EXPECT_LE(tessarine::read_piece(*stream, 0, 1 << 30).size(),
            static_cast<std::size_t>(file.GetSize()));
}

TEST(OleStorage, small_streams_without_their_table_fall_short) {
  CompoundImage image;
  image.entries.front().first_sector = image.add_chain(counted_bytes(1024));
  image.entries.front().size = 1024;
  image.link({"a", CompoundImage::stream, 0, 200});
  image.small_table = 0x00ffffff;
  MemoryReader const file(image.bytes(), "x");
  EXPECT_EQ(tessarine::OleStorage(file).content("a", 200), counted_bytes(64));
}

TEST(OleStorage, a_small_stream_in_a_circle_ends) {
  CompoundImage image;
  image.entries.front().first_sector = image.add_chain(counted_bytes(1024));
  image.entries.front().size = 1024;
  image.small_table = image.add_chain(std::string(512, '\0'));
  image.link({"a", CompoundImage::stream, 0, 4000});
  MemoryReader const file(image.bytes(), "x");
  EXPECT_EQ(tessarine::OleStorage(file).content("a", 4000).size(), 1024U);
}

TEST(OleStorage, small_streams_without_their_sectors_are_empty) {
  CompoundImage image;
  image.small_table = image.add_chain(std::string(512, '\0'));
  image.link({"a", CompoundImage::stream, 0, 4000});
  MemoryReader const file(image.bytes(), "x");
  EXPECT_EQ(tessarine::OleStorage(file).content("a", 4000), "");
}

TEST(OleStorage, a_list_of_tables_in_a_circle_ends) {
  auto bytes = line_of_entries(60000, Link::right);
  auto const last_number = bytes.size() - 4;
  auto const first_list = tessarine::little32(bytes, 68);
  bytes.replace(last_number, 4, test::little(first_list, 4));
  bytes.replace(44, 4, test::little(0xffffffff, 4));
  MemoryReader const file(bytes, "x");
  EXPECT_TRUE(tessarine::OleStorage(file).is_over_bound());
}

TEST(OleStorage, a_header_with_senseless_sector_sizes_is_refused) {
  auto const good = test::make_ole({{"a", "x"}});
  for (auto const size : {0, 1, 6, 17, 32, 63, 64, 0xffff}) {
    for (auto const place : {30U, 32U}) {
      auto bytes = good;
      bytes.replace(place, 2, test::little(static_cast<std::uint64_t>(size), 2));
      MemoryReader const file(bytes, "x");
      read_everything(tessarine::OleStorage(file), 3);
    }
  }
  auto bytes = good;
  bytes.replace(30, 2, test::little(0, 2));
  MemoryReader const file(bytes, "x");
  EXPECT_EQ(tessarine::OleStorage(file).fault(), "the OLE2 header is damaged");
}

TEST(OleStorage, small_sectors_of_a_few_bytes_are_refused) {
  for (auto const power : {0U, 2U, 5U}) {
    auto bytes = test::make_ole({{"a", "x"}});
    bytes.replace(32, 2, test::little(power, 2));
    MemoryReader const file(bytes, "x");
    EXPECT_EQ(tessarine::OleStorage(file).fault(), "the OLE2 header is damaged");
  }
}

TEST(OleStorage, a_long_stream_has_sectors_of_its_own_whatever_the_header_says) {
  auto const long_stream = counted_bytes(64 << 10);
  auto bytes = test::make_ole({{"a", long_stream}, {"b", "x"}});
  bytes.replace(56, 4, test::little(0xffffffff, 4));
  MemoryReader const file(bytes, "x");
  EXPECT_EQ(tessarine::OleStorage(file).content("a", 1 << 20), long_stream);
}

TEST(OleStorage, every_truncation_is_survived) {
  auto const whole = test::make_ole({{"a", "x"}, {"b", counted_bytes(5000)}});
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    MemoryReader const file(whole.substr(0, length), "x");
    read_everything(tessarine::OleStorage(file), 3);
  }
}

TEST(OleStorage, random_changes_are_survived) {
  std::mt19937 random(77);
  CompoundImage image;
  image.entries.front().first_sector = image.add_chain(counted_bytes(2048));
  image.entries.front().size = 2048;
  image.small_table = image.add_chain(test::little(1, 4) + test::little(2, 4) +
                                      test::little(CompoundImage::chain_end, 4));
  image.link({"small", CompoundImage::stream, 0, 190});
  image.add_stream("a", counted_bytes(5000), true);
  image.link({"b", CompoundImage::storage});
  image.entries.back().child = 4;
  image.entries.push_back({"c", CompoundImage::stream, 5, 6000});
  auto const whole = image.bytes();
  for (int round = 0; round < 2000; ++round) {
    auto bytes = whole;
    for (auto changes = random() % 8 + 1; changes != 0; --changes) {
      // The tables and the directory are small numbers: a new one is most likely to lead somewhere.
      auto const value = random() % 4 == 0 ? random() : random() % 20;
      auto const reach = random() % 2 == 0 ? bytes.size() : std::size_t{512};
      bytes[random() % reach] = static_cast<char>(value);
    }
    MemoryReader const file(bytes, "x");
    read_everything(tessarine::OleStorage(file), 5);
  }
}
