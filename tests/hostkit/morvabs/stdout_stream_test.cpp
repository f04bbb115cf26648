#include <cstdio>

#include <gtest/gtest.h>

#include "host/HStdOutStream.h"

namespace {

TEST(HStdOutStream, writes_utf8_without_a_line_end_and_chains) {
  testing::internal::CaptureStdout();
  *HStdOutStream::ins() << L"Extract Feature: " << HString(L"文档");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Extract Feature: 文档");
}

TEST(HStdOutStream, keeps_its_place_among_other_output) {
  testing::internal::CaptureStdout();
  std::printf("a");
  *HStdOutStream::ins() << L"b";
  std::printf("c");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc");
}

TEST(HStdOutStream, there_is_one_under_both_names) {
  EXPECT_EQ(HStdOutStream::ins(), HStdOutStream::pins());
}

}  // namespace
