#include "command_line.h"

#include <algorithm>
#include <cstddef>
#include <thread>

namespace tool {

void add_run_options(CLI::App& command, RunOptions& options, char const* json_help) {
  options.jobs = std::max(1U, std::thread::hardware_concurrency());
  command
      .add_option("FILE", options.inputs,
                  "Files, folders, or - for a list of paths on standard input")
      ->required();
  command.add_flag("--json", options.json, json_help);
  command
      .add_option("-j,--jobs", options.jobs,
                  "Worker processes; the number of processors if not given")
      ->check(CLI::Range(std::size_t{1}, std::size_t{256}));
}

}  // namespace tool
