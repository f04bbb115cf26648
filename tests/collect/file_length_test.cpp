#include <limits>

#include <gtest/gtest.h>

#include "collect/HFileCollectMgr.h"
#include "host/HFile.h"

namespace {

long long length = 0;

}  // namespace

/// Takes the place of the base library's own, which never gives a negative length.
long long HFile::GetFileLen(HString const& /*path*/) {
  return length;
}

namespace {

long long kb_size_of(long long bytes) {
  length = bytes;
  return HFileCollectMgr().get_file_kb_size(L"file");
}

TEST(FileLength, of_a_file_that_cannot_be_read_counts_as_none) {
  EXPECT_EQ(kb_size_of(-1), 1);
  EXPECT_EQ(kb_size_of(-1023), 1);
}

TEST(FileLength, below_zero_is_cut_toward_zero) {
  EXPECT_EQ(kb_size_of(-1024), 0);
  EXPECT_EQ(kb_size_of(-2047), 0);
  EXPECT_EQ(kb_size_of(-2048), -1);
}

TEST(FileLength, may_be_the_largest) {
  EXPECT_EQ(kb_size_of(std::numeric_limits<long long>::max()), 9007199254740992LL);
  EXPECT_EQ(kb_size_of(std::numeric_limits<long long>::min()), -9007199254740991LL);
}

TEST(FileLength, stands_in_the_record_in_decimal) {
  length = -5000;
  HFileCollectBase node;
  HFileCollectMgr().get_file_base_info(L"file", &node);
  EXPECT_EQ(node.str_kb_size, HString(L"-3"));
}

}  // namespace
