#include <cstdlib>
#include <sstream>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include "command_line/command_line.h"
#include "command_line/usage_error.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace {

// `failure` is the status after an exception.
int run(int argc, char** argv, int& failure) {
  CLI::App app{std::string(), "morvaai"};
  tool::Commands all;
  tool::add_commands(app, all);
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    if (error.get_exit_code() != 0) {
      tool::complain(tool::explain_wrong_use(error, app));
      return tool::wrong_use;
    }
    std::ostringstream help;
    app.exit(error, help);
    return tool::write_output(help.str()) ? tool::all_done : tool::some_failed;
  } catch (...) {
    // There, 1 says that no file has a class.
    failure = app.got_subcommand("match") ? tool::wrong_use : failure;
    throw;
  }
  return all.status;
}

// Where standard input, output or error is closed, the next file that is opened would take its
// place, and what is printed would go into that file. What stands there instead can be neither read
// nor written, as a closed one.
void keep_standard_places() {
  for (int const place : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(place, F_GETFD) < 0) {
      open("/dev/null", place == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  keep_standard_places();
  // Every problem has its own line on standard error; the library's log is for those who ask for
  // it.
  if (std::getenv("MORVA_LOG_LEVEL") == nullptr) {
    HFileLog::ins()->mi_level = 0;
  }
  int failure = tool::some_failed;
  try {
    return run(argc, argv, failure);
  } catch (std::exception const& error) {
    tool::complain(error.what());
    return failure;
  }
}
