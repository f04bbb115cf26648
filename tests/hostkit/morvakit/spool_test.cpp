#include "morvakit/spool.h"

#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "hostkit/tessarine/memory_reader.h"

namespace {

using morvakit::ReadContext;
using morvakit::ReaderSlice;
using morvakit::Spool;

std::string all_of(Orlec::Reader const& reader) {
  std::string bytes(static_cast<std::size_t>(reader.GetSize()), '\0');
  auto const got = reader.ReadAt(0, bytes.data(), reader.GetSize());
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

TEST(Spool, gives_back_what_was_appended) {
  ReadContext context(nullptr, {});
  Spool spool("a.txt", context);
  EXPECT_TRUE(spool.append("one "));
  EXPECT_TRUE(spool.append("two"));
  EXPECT_EQ(all_of(spool), "one two");
}

TEST(Spool, gives_back_the_same_when_it_outgrows_the_memory) {
  ReadContext context(nullptr, {});
  Spool spool("a.txt", context);
  std::string expected;
  for (char character = 'a'; character <= 'e'; ++character) {
    std::string const piece(5 << 20, character);
    ASSERT_TRUE(spool.append(piece));
    expected += piece;
  }
  EXPECT_TRUE(all_of(spool) == expected);
}

auto open_files() {
  std::filesystem::directory_iterator const files("/proc/self/fd");
  return std::distance(begin(files), end(files));
}

TEST(Spool, stays_in_the_memory_where_no_file_could_be_made_once) {
  ReadContext context(nullptr, {});
  Spool spool("a.txt", context);
  auto const before = open_files();
  rlimit former{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &former), 0);
  rlimit none = former;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  spool.append(std::string(17 << 20, 'a'));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &former), 0);
  spool.append("b");
  EXPECT_EQ(open_files(), before);
}

TEST(Spool, reads_a_piece_at_its_place) {
  ReadContext context(nullptr, {});
  Spool spool("a.txt", context);
  spool.append("0123456789");
  char piece[4] = {};
  EXPECT_EQ(spool.ReadAt(8, piece, 4), 2);
  EXPECT_EQ(std::string(piece), "89");
}

TEST(Spool, gives_nothing_outside_its_bytes) {
  ReadContext context(nullptr, {});
  Spool spool("a.txt", context);
  spool.append("0123456789");
  char piece[4] = {};
  EXPECT_EQ(spool.ReadAt(10, piece, 4), 0);
  EXPECT_EQ(spool.ReadAt(-1, piece, 4), 0);
}

TEST(Spool, names_the_bound_that_a_file_is_over) {
  Orlec::ParseLimits limits;
  limits.i_input_bytes = 5;
  ReadContext context(nullptr, limits);
  Spool spool("big.txt", context);
  EXPECT_TRUE(spool.append("12345"));
  EXPECT_FALSE(spool.append("6"));
  EXPECT_EQ(context.outcome(), Orlec::ParseOutcome::limit_reached);
  EXPECT_EQ(context.reason(), "\"big.txt\": over 5 bytes");
}

TEST(ReaderSlice, sees_its_part_only) {
  test::MemoryReader const whole("0123456789", "whole");
  ReaderSlice const slice(whole, "part", 3, 4);
  EXPECT_EQ(all_of(slice), "3456");
}

TEST(ReaderSlice, ends_where_the_whole_does) {
  test::MemoryReader const whole("0123456789", "whole");
  ReaderSlice const slice(whole, "part", 8, 40);
  EXPECT_EQ(slice.GetSize(), 2);
  EXPECT_EQ(ReaderSlice(whole, "part", 40, 4).GetSize(), 0);
}

}  // namespace
