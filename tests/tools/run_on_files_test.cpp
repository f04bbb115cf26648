#include "documents/run_on_files.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "documents/failure.h"
#include "exit_status.h"
#include "support/temporary_directory.h"
#include "support/worker_socket.h"

namespace {

using testing::HasSubstr;

/// A worker that was taken over, and sends what it likes instead of a report.
void answer_with(std::string const& bytes) {
  test::write_answer(1, bytes.size());
  static_cast<void>(!write(test::worker_socket(), bytes.data(), bytes.size()));
  _exit(0);
}

class RunOnFiles : public testing::Test {
 protected:
  /// What is reported of a file whose worker sends that.
  tool::FileReport reported(std::string const& bytes) const {
    tool::FileReport kept;
    testing::internal::CaptureStderr();
    tool::run_on_files(
        {path}, 1,
        [&](HString const&) {
          answer_with(bytes);
          return tool::FileReport();
        },
        [&](std::size_t, tool::FileReport report) {
          kept = std::move(report);
          return true;
        });
    testing::internal::GetCapturedStderr();
    return kept;
  }

  /// What is printed for a file of which a worker makes that.
  std::string printed(std::string const& output, bool json) const {
    tool::RunOptions options;
    options.inputs = {(directory.path() / "a.txt").string()};
    options.json = json;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    status = tool::print_on_files(options, [&](HString const&) {
      return tool::FileReport{output, {}};
    });
    errors = testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout();
  }

  test::TemporaryDirectory const directory;
  HString const path = directory.write("a.txt", "text");
  mutable std::string errors;
  mutable int status = 0;
};

TEST_F(RunOnFiles, a_report_that_is_none_is_a_problem) {
  for (char const* bytes : {"", "7", ":", "x:", "-1:a", "99999999999999999999999:a", "3:ab"}) {
    tool::FileReport const report = reported(bytes);
    EXPECT_EQ(report.output, "") << bytes;
    EXPECT_EQ(report.problem, tool::senseless_answer) << bytes;
  }
}

TEST_F(RunOnFiles, a_problem_cannot_steer_the_terminal) {
  EXPECT_EQ(reported("0:\x1B[2J\xFF").problem, "\xEF\xBF\xBD[2J\xEF\xBF\xBD");
}

TEST_F(RunOnFiles, lines_that_steer_the_terminal_are_not_printed) {
  for (char const* output : {"a\x1B[2J\n", "a\rb\n",
                             "\xC2\x9B"
                             "2J\n",
                             "\x9B"
                             "2J\n",
                             "a\x7F\n"}) {
    EXPECT_EQ(printed(output, false), "");
    EXPECT_THAT(errors, HasSubstr(tool::senseless_answer));
    EXPECT_EQ(status, tool::some_failed);
  }
}

TEST_F(RunOnFiles, plain_lines_are_printed) {
  EXPECT_EQ(printed("合同 1\né 2\n", false), "合同 1\né 2\n");
  EXPECT_EQ(status, tool::all_done);
}

TEST_F(RunOnFiles, one_file_gives_one_object) {
  EXPECT_THAT(printed("{\"file\":\"a\"}\n{\"file\":\"b\"}\n", true),
              HasSubstr(tool::senseless_answer));
}

}  // namespace
