#pragma once

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "support/temporary_directory.h"

namespace test {

/// What a run of the program left.
struct Finished {
  int status;
  std::string output;
  std::string errors;

  std::vector<std::string> lines() const {
    std::vector<std::string> all;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);) {
      all.push_back(line);
    }
    return all;
  }
};

/// Tests that run the program, MORVAAI_PROGRAM, on samples and on files of their own.
class Program : public testing::Test {
 protected:
  Finished run(std::vector<std::string> const& arguments, std::string const& input = {}) const {
    directory_.write("input", input);
    std::string command = MORVAAI_PROGRAM;
    for (std::string const& argument : arguments) {
      command += " '" + argument + "'";
    }
    command += " <" + path("input") + " >" + path("output") + " 2>" + path("errors");
    int const status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, directory_.read("output"),
            directory_.read("errors")};
  }
  std::string path(char const* name) const { return (directory_.path() / name).string(); }
  std::string write(char const* name, std::string const& content) const {
    directory_.write(name, content);
    return path(name);
  }
  std::string read(char const* name) const { return directory_.read(name); }
  static std::string sample(char const* name) { return std::string(SAMPLES_DIR "/") + name; }

 private:
  TemporaryDirectory directory_;
};

}  // namespace test
