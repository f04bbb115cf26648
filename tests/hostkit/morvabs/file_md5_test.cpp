#include <string>

#include <gtest/gtest.h>

#include "host/HFileMD5.h"

#include "support/temporary_directory.h"

namespace {

HString md5_of(HString const& path) {
  HString md5(L"old");
  HFileMD5::get_file_md5(path, md5);
  return md5;
}

TEST(HFileMD5, is_that_of_the_bytes_in_upper_case) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(md5_of(directory.write("a", "abc")), HString(L"900150983CD24FB0D6963F7D28E17F72"));
}

TEST(HFileMD5, an_empty_file_has_one) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(md5_of(directory.write("a", "")), HString(L"D41D8CD98F00B204E9800998ECF8427E"));
}

TEST(HFileMD5, takes_all_of_a_large_file) {
  test::TemporaryDirectory const directory;
  EXPECT_EQ(md5_of(directory.write("a", std::string(1000000, 'a'))),
            HString(L"7707D6AE4E027C70EEA2A935C2296F21"));
}

TEST(HFileMD5, a_file_that_cannot_be_read_leaves_it_empty) {
  HString md5(L"old");
  EXPECT_FALSE(HFileMD5::get_file_md5(L"/no/such/file", md5));
  EXPECT_TRUE(md5.empty());
}

TEST(HFileMD5, a_directory_has_none) {
  HString md5(L"old");
  EXPECT_FALSE(HFileMD5::get_file_md5(L"/", md5));
  EXPECT_TRUE(md5.empty());
}

TEST(HFileMD5, the_path_may_be_replaced_by_the_result) {
  test::TemporaryDirectory const directory;
  HString text = directory.write("a", "abc");
  EXPECT_TRUE(HFileMD5::get_file_md5(text, text));
  EXPECT_EQ(text, HString(L"900150983CD24FB0D6963F7D28E17F72"));
}

}  // namespace
