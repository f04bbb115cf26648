#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/temporary_directory.h"
#include "tools/program.h"

namespace {

using test::EnvironmentVariable;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

// What stands before the name of a file, and nowhere in the progress of a slow machine.
constexpr char const* escape = "\x1B[1m";
constexpr char const* cleared_line = "\r\x1B[K";

/// Runs the program on a terminal, in which lines end as they do in files.
class OnTerminal : public test::Program {
 protected:
  struct Run {
    pid_t process = -1;
    int terminal = -1;
  };
  static Run start(std::vector<std::string> arguments, unsigned short columns = 80) {
    struct termios mode {};
    cfmakeraw(&mode);
    struct winsize size {};
    size.ws_col = columns;
    Run run;
    run.process = forkpty(&run.terminal, nullptr, &mode, &size);
    if (run.process == 0) {
      std::vector<char*> argv{const_cast<char*>(MORVAAI_PROGRAM)};
      for (std::string& argument : arguments) {
        argv.push_back(argument.data());
      }
      argv.push_back(nullptr);
      execv(MORVAAI_PROGRAM, argv.data());
      _exit(127);
    }
    return run;
  }
  /// All that is shown until the program ends.
  static std::string rest_of(Run const& run, int& status) {
    std::string shown;
    char buffer[4096];
    for (ssize_t size = 0; (size = ::read(run.terminal, buffer, sizeof buffer)) > 0;) {
      shown.append(buffer, static_cast<std::size_t>(size));
    }
    close(run.terminal);
    waitpid(run.process, &status, 0);
    return shown;
  }
  static std::string shown(std::vector<std::string> arguments, unsigned short columns = 80) {
    int status = 0;
    return rest_of(start(std::move(arguments), columns), status);
  }
  std::string file_with_long_name() const {
    return write("xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx-end.txt",
                 "red blue");
  }
  std::vector<std::string> features() const { return {"features", write("a.txt", "red blue")}; }

 private:
  EnvironmentVariable term_{"TERM", "xterm"};
  EnvironmentVariable no_color_{"NO_COLOR", ""};
  EnvironmentVariable force_{"CLICOLOR_FORCE", ""};
  EnvironmentVariable columns_{"COLUMNS", ""};
};

TEST_F(OnTerminal, there_are_colours) {
  EXPECT_THAT(shown(features()), HasSubstr(escape));
}

TEST_F(OnTerminal, failures_have_colours) {
  EXPECT_THAT(shown({"dna", "/missing"}), HasSubstr("\x1B[31mmorvaai:\x1B[0m /missing: failed"));
}

TEST_F(OnTerminal, there_are_no_colours_with_NO_COLOR) {
  EnvironmentVariable const no_color("NO_COLOR", "1");
  EXPECT_THAT(shown(features()), Not(HasSubstr(escape)));
}

TEST_F(OnTerminal, there_are_no_colours_where_it_has_none) {
  EnvironmentVariable const term("TERM", "dumb");
  EXPECT_THAT(shown(features()), Not(HasSubstr(escape)));
}

TEST_F(OnTerminal, there_are_no_colours_if_never_wanted) {
  std::vector<std::string> arguments = features();
  arguments.insert(arguments.end(), {"--color", "never"});
  EXPECT_THAT(shown(arguments), Not(HasSubstr(escape)));
}

TEST_F(OnTerminal, there_are_no_colours_in_json) {
  EXPECT_THAT(shown({"features", "--json", write("a.txt", "red blue")}), Not(HasSubstr(escape)));
}

TEST_F(OnTerminal, columns_have_titles) {
  EnvironmentVariable const no_color("NO_COLOR", "1");
  EXPECT_THAT(shown(features()), HasSubstr("  weight  count  tag   word\n"));
}

TEST_F(OnTerminal, a_name_that_is_too_long_is_cut_in_the_middle) {
  std::string const file = file_with_long_name();
  EXPECT_THAT(shown({"dna", file}, 60), HasSubstr("…"));
  EXPECT_THAT(shown({"dna", file}, 60), HasSubstr("xxx-end.txt\n"));
}

TEST_F(OnTerminal, COLUMNS_goes_before_what_it_says) {
  EnvironmentVariable const columns("COLUMNS", "300");
  std::string const file = file_with_long_name();
  EXPECT_THAT(shown({"dna", file}, 60), HasSubstr(file + "\n"));
}

TEST_F(OnTerminal, the_text_of_a_document_cannot_steer_it) {
  std::string const file = write("a.txt", "red \u009B2J \u202E blue\n");
  EXPECT_THAT(shown({"text", file}), HasSubstr("red \uFFFD2J \uFFFD blue\n"));
}

TEST_F(OnTerminal, long_work_has_progress_that_a_signal_takes_away) {
  test::TemporaryDirectory const boxes;
  EnvironmentVariable const box_path("MORVA_BOX_PATH", boxes.path());
  std::filesystem::create_directories(path("samples/colours"));
  write("samples/colours/a.txt", "red blue");
  // As long as another run changes the boxes, this one waits.
  int const lock = open(boxes.path().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  Run const run = start({"learn", path("samples"), "--by-folder", "--box", "a"});
  std::string first;
  for (char c = 0; !first.ends_with("writing the box, 0:0") && ::read(run.terminal, &c, 1) == 1;) {
    first += c;
  }
  kill(run.process, SIGINT);
  int status = 0;
  EXPECT_THAT(rest_of(run, status), EndsWith(cleared_line));
  close(lock);
  EXPECT_THAT(first, EndsWith(std::string(cleared_line) + "writing the box, 0:0"));
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGINT);
}

class OffTerminal : public OnTerminal {};

TEST_F(OffTerminal, there_are_no_colours) {
  EXPECT_THAT(run(features()).output, Not(HasSubstr(escape)));
}

TEST_F(OffTerminal, there_are_colours_if_always_wanted) {
  EXPECT_THAT(run({"--color", "always", "dna", "/missing"}).errors, HasSubstr("\x1B[31m"));
}

TEST_F(OffTerminal, there_are_colours_with_CLICOLOR_FORCE) {
  EnvironmentVariable const force("CLICOLOR_FORCE", "1");
  EXPECT_THAT(run(features()).output, HasSubstr(escape));
}

TEST_F(OffTerminal, names_are_whole) {
  EnvironmentVariable const columns("COLUMNS", "20");
  std::string const file = file_with_long_name();
  EXPECT_THAT(run({"dna", file}).output, EndsWith(file + "\n"));
}

TEST_F(OffTerminal, the_text_of_a_document_is_as_it_is) {
  std::string const file = write("a.txt", "red \u009B2J \u202E blue\n");
  EXPECT_THAT(run({"text", file}).output, HasSubstr("red \u009B2J \u202E blue\n"));
}

TEST_F(OffTerminal, a_reader_that_goes_is_no_failure_to_tell) {
  std::string const errors = path("errors");
  std::string const command =
      std::string(MORVAAI_PROGRAM) + " text '" + sample("") + "' 2>'" + errors + "' | true";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_THAT(read("errors"), Not(HasSubstr("standard output")));
}

}  // namespace
