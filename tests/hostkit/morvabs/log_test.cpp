#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/HFileLog.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using test::LogCapture;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

void log(int level, HString const& text) {
  HStringForLog& record = HFileLog::ins()->get(level, L"../HTest", 7);
  record << text;
  HFileLog::ins()->log(record);
}

/// Does something in a new process, in which the log is still unused, and checks what it writes to
/// standard error.
void in_new_process(void (*action)(), testing::Matcher<std::string const&> const& matcher) {
  EXPECT_EXIT(
      {
        action();
        std::exit(0);
      },
      testing::ExitedWithCode(0), matcher);
}

TEST(HFileLog, there_is_one_under_both_names) {
  EXPECT_EQ(HFileLog::ins(), HFileLog::pins());
}

TEST(HFileLog, a_record_reaches_the_sink_with_level_tag_line_and_text) {
  HFileLog::ins()->set_sink([](int level, HString const& tag, int line, HString const& text) {
    EXPECT_EQ(level, 1);
    EXPECT_EQ(tag, HString(L"../HTest"));
    EXPECT_EQ(line, 7);
    EXPECT_EQ(text, HString(L"faild, make dir: /x"));
  });
  HStringForLog& record = HFileLog::ins()->get(1, L"../HTest", 7);
  record << L"faild, make dir: " << HString(L"/x");
  HFileLog::ins()->log(record);
  HFileLog::ins()->set_sink({});
}

TEST(HFileLog, a_record_of_a_level_that_is_off_takes_no_text) {
  LogCapture const capture(2);
  HStringForLog& record = HFileLog::ins()->get(3, L"../HTest", 1);
  record << L"text";
  EXPECT_FALSE(record.mb_on);
  EXPECT_TRUE(record.str_text.empty());
}

TEST(HFileLog, logging_a_record_that_is_off_has_no_effect) {
  LogCapture const capture(2);
  log(3, L"text");
  EXPECT_THAT(capture.records(), IsEmpty());
}

TEST(HFileLog, levels_up_to_the_current_one_are_on) {
  LogCapture const capture(3);
  for (int level = -1; level <= 5; ++level) {
    log(level, HString(level, false));
  }
  ASSERT_EQ(capture.records().size(), 3U);
  EXPECT_EQ(capture.records().front().text, L"1");
  EXPECT_EQ(capture.records().back().text, L"3");
}

TEST(HFileLog, level_0_is_silent) {
  LogCapture const capture(0);
  log(1, L"text");
  log(0, L"text");
  EXPECT_THAT(capture.records(), IsEmpty());
}

TEST(HFileLog, the_master_switch_turns_everything_off) {
  LogCapture const capture(4);
  HFileLog::ins()->mb_enable = false;
  log(1, L"text");
  HFileLog::ins()->mb_enable = true;
  EXPECT_THAT(capture.records(), IsEmpty());
}

TEST(HFileLog, noise_reaches_the_sink_too) {
  LogCapture const capture(4);
  HStringForLog& record = HFileLog::ins()->get(3, L"../HTest", 1);
  record << L"parse file : ";
  HFileLog::ins()->log_noise(record);
  EXPECT_EQ(capture.records().size(), 1U);
}

TEST(HFileLog, a_record_is_logged_once) {
  LogCapture const capture(4);
  HStringForLog& record = HFileLog::ins()->get(1, L"../HTest", 1);
  record << L"text";
  HFileLog::ins()->log(record);
  HFileLog::ins()->log(record);
  EXPECT_EQ(capture.records().size(), 1U);
}

TEST(HFileLog, records_taken_together_do_not_mix) {
  LogCapture const capture(4);
  std::vector<HStringForLog*> records;
  for (int i = 0; i < 16; ++i) {
    records.push_back(&HFileLog::ins()->get(1, L"../HTest", i));
    *records.back() << HString(i, false);
  }
  for (HStringForLog* record : records) {
    HFileLog::ins()->log(*record);
  }
  ASSERT_EQ(capture.records().size(), 16U);
  EXPECT_EQ(capture.records()[0].text, L"0");
  EXPECT_EQ(capture.records()[15].text, L"15");
}

TEST(HFileLog, threads_have_records_of_their_own) {
  HFileLog::ins()->set_sink(
      [](int, HString const&, int, HString const& text) { EXPECT_EQ(text, HString(L"onetwo")); });
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 500; ++i) {
        HStringForLog& record = HFileLog::ins()->get(1, L"../HTest", i);
        record << L"one" << L"two";
        HFileLog::ins()->log(record);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  HFileLog::ins()->set_sink({});
}

TEST(HFileLog, a_sink_that_logs_does_not_call_itself) {
  int calls = 0;
  HFileLog::ins()->set_sink([&calls](int, HString const&, int, HString const&) {
    ++calls;
    log(1, L"from the sink");
  });
  testing::internal::CaptureStderr();
  log(1, L"first");
  std::string const written = testing::internal::GetCapturedStderr();
  HFileLog::ins()->set_sink({});
  EXPECT_EQ(calls, 1);
  EXPECT_THAT(written, HasSubstr("from the sink"));
}

TEST(HFileLog, a_sink_that_throws_does_not_stop_the_work) {
  HFileLog::ins()->set_sink(
      [](int, HString const&, int, HString const&) { throw std::runtime_error("host"); });
  testing::internal::CaptureStderr();
  EXPECT_NO_THROW(log(1, L"kept"));
  std::string const written = testing::internal::GetCapturedStderr();
  HFileLog::ins()->set_sink({});
  EXPECT_THAT(written, HasSubstr("kept"));
}

TEST(HFileLog, a_sink_may_replace_itself) {
  HFileLog::ins()->set_sink([](int, HString const&, int, HString const&) {
    HFileLog::ins()->set_sink([](int, HString const&, int, HString const&) {});
  });
  EXPECT_NO_THROW(log(1, L"text"));
  HFileLog::ins()->set_sink({});
}

TEST(HFileLogOutput, a_line_has_time_level_tag_line_number_and_text) {
  testing::internal::CaptureStderr();
  log(1, L"文档");
  EXPECT_THAT(
      testing::internal::GetCapturedStderr(),
      testing::MatchesRegex("[0-9-]+T[0-9:.]+[+-][0-9:]+ \\[[0-9]+\\] 1 ../HTest:7 文档\n"));
}

TEST(HFileLogOutput, a_name_from_a_document_cannot_forge_a_line) {
  testing::internal::CaptureStderr();
  log(1, L"a\nb\r\x1b[31m\x85\x2028z");
  std::string const written = testing::internal::GetCapturedStderr();
  EXPECT_THAT(written, testing::EndsWith("a\\nb\\r\\x{1b}[31m\\x{85}\\x{2028}z\n"));
  EXPECT_EQ(std::count(written.begin(), written.end(), '\n'), 1);
}

TEST(HFileLogOutput, format_braces_in_the_text_stay) {
  testing::internal::CaptureStderr();
  log(1, L"{} {0} %s");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("{} {0} %s"));
}

class HFileLogEnvironment : public testing::Test {
 protected:
  HFileLogEnvironment() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

void log_all_levels() {
  for (int level = 1; level <= 4; ++level) {
    log(level, HString(L"record-") + HString(level, false));
  }
}

TEST_F(HFileLogEnvironment, the_level_comes_from_the_environment) {
  test::EnvironmentVariable const level("MORVA_LOG_LEVEL", "3");
  in_new_process(log_all_levels, HasSubstr("record-3"));
}

TEST_F(HFileLogEnvironment, nothing_above_the_level_is_written) {
  test::EnvironmentVariable const level("MORVA_LOG_LEVEL", "3");
  in_new_process(log_all_levels, Not(HasSubstr("record-4")));
}

TEST_F(HFileLogEnvironment, without_a_level_only_failures_are_written) {
  test::EnvironmentVariable const level("MORVA_LOG_LEVEL", "");
  in_new_process(log_all_levels, Not(HasSubstr("record-2")));
}

TEST_F(HFileLogEnvironment, a_level_that_is_none_counts_as_not_set) {
  for (char const* garbage : {"5", "-1", "3x", "many", "99999999999999"}) {
    test::EnvironmentVariable const level("MORVA_LOG_LEVEL", garbage);
    in_new_process(log_all_levels, Not(HasSubstr("record-2")));
  }
}

void log_one() {
  log(1, L"record");
}

TEST_F(HFileLogEnvironment, a_log_file_is_appended_to) {
  // The new process runs this test once more from its beginning, with the variable set already.
  bool const is_new_process = std::getenv("MORVA_LOG_FILE") != nullptr;
  if (is_new_process) {
    in_new_process(log_one, IsEmpty());
    return;
  }
  test::TemporaryDirectory const directory;
  directory.write("log", "before\n");
  test::EnvironmentVariable const file("MORVA_LOG_FILE", directory.path() / "log");
  in_new_process(log_one, IsEmpty());
  EXPECT_THAT(directory.read("log"), testing::StartsWith("before\n"));
  EXPECT_THAT(directory.read("log"), testing::EndsWith("record\n"));
}

TEST_F(HFileLogEnvironment, a_log_file_that_cannot_be_opened_leaves_standard_error) {
  test::EnvironmentVariable const file("MORVA_LOG_FILE", "/");
  in_new_process(log_one, HasSubstr("record"));
}

struct LogsAtTheEnd {
  LogsAtTheEnd() = default;
  ~LogsAtTheEnd() { log(1, L"late"); }
  LogsAtTheEnd(LogsAtTheEnd const&) = delete;
  LogsAtTheEnd& operator=(LogsAtTheEnd const&) = delete;
};

TEST_F(HFileLogEnvironment, logging_while_the_process_ends_does_no_harm) {
  in_new_process(
      [] {
        static LogsAtTheEnd const late;
        log_one();
      },
      HasSubstr("record"));
}

}  // namespace
