#include "terminal/meter.h"

#include <chrono>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "terminal/columns.h"

namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::Not;
using tool::Meter;

Meter::Time at(int milli) {
  return Meter::Time(milliseconds(milli));
}

std::string line(Meter const& meter, int milli) {
  return tool::without_styles(meter.line(at(milli)));
}

TEST(AMeter, says_nothing_in_the_first_second) {
  Meter meter(100, "files", 80, at(0));
  meter.advance(99, "a.txt", at(998));
  EXPECT_EQ(line(meter, 999), "");
  EXPECT_NE(line(meter, 1000), "");
}

TEST(AMeter, shows_bar_count_rate_time_left_and_name) {
  Meter meter(200, "files", 100, at(0));
  meter.advance(50, "合同.docx", at(2000));
  EXPECT_EQ(line(meter, 2000), "[===            ]  50/200 files, 25/s, 0:06 left  合同.docx");
}

TEST(AMeter, shows_the_rate_of_slow_work_in_tenths) {
  Meter meter(10, "files", 80, at(0));
  meter.advance(3, "a", at(2000));
  EXPECT_THAT(line(meter, 2000), HasSubstr(" 3/10 files, 1.5/s, 0:05 left"));
}

TEST(AMeter, tells_no_rate_before_anything_is_done) {
  Meter const meter(10, "files", 80, at(0));
  EXPECT_EQ(line(meter, 5000), "[               ]  0/10 files");
}

TEST(AMeter, goes_by_the_last_half_minute) {
  Meter meter(1000, "files", 80, at(0));
  for (int second = 1; second <= 100; ++second) {
    meter.advance(static_cast<std::size_t>(second), "a", at(second * 1000));
  }
  for (int second = 101; second <= 140; ++second) {
    meter.advance(static_cast<std::size_t>(100 + (second - 100) * 10), "a", at(second * 1000));
  }
  EXPECT_THAT(line(meter, 140000), HasSubstr(", 10/s, 0:50 left"));
}

TEST(AMeter, slows_down_while_nothing_is_done) {
  Meter meter(100, "files", 80, at(0));
  meter.advance(50, "a", at(1000));
  EXPECT_THAT(line(meter, 10000), HasSubstr(", 5.0/s, 0:10 left"));
}

TEST(AMeter, shows_hours) {
  Meter meter(20000, "files", 80, at(0));
  meter.advance(2, "a", at(1000));
  EXPECT_THAT(line(meter, 1000), HasSubstr(" 2:46:39 left"));
}

TEST(AMeter, stays_within_the_terminal) {
  for (std::size_t columns = 1; columns < 120; ++columns) {
    Meter meter(10000, "files", columns, at(0));
    meter.advance(1234, "一份非常长的合同文件名称在这里用于测试截断.docx", at(90000));
    EXPECT_LT(tool::columns_of(line(meter, 100000)), columns);
  }
}

TEST(AMeter, leaves_the_bar_out_of_a_narrow_terminal) {
  Meter meter(100, "files", 40, at(0));
  meter.advance(50, "a.txt", at(1000));
  EXPECT_EQ(line(meter, 1000), " 50/100 files, 50/s, 0:01 left");
}

TEST(AMeter, counts_nothing_of_work_without_an_end) {
  Meter meter("reading a.txt", 80, at(0));
  meter.advance(1, "a.txt", at(1500));
  EXPECT_EQ(line(meter, 2000), "reading a.txt, 0:02");
}

TEST(AMeter, goes_on_where_work_is_renamed) {
  Meter meter("reading", 80, at(0));
  meter.rename("radii: 1 of 14");
  EXPECT_EQ(line(meter, 999), "");
  meter.rename("radii: 2 of 14");
  EXPECT_EQ(line(meter, 1000), "radii: 2 of 14, 0:01");
  meter.rename("radii: 3 of 14");
  EXPECT_EQ(line(meter, 3000), "radii: 3 of 14, 0:03");
}

TEST(AMeter, counts_no_more_once_it_is_renamed) {
  Meter meter(10, "files", 80, at(0));
  meter.advance(10, "a.txt", at(1500));
  meter.rename("writing");
  EXPECT_EQ(line(meter, 2000), "writing, 0:02");
}

TEST(AMeter, tells_for_how_long_work_without_an_end_has_been_going_on) {
  Meter const meter("learning", 80, at(0));
  EXPECT_EQ(line(meter, 999), "");
  EXPECT_EQ(line(meter, 75000), "learning, 1:15");
}

}  // namespace
