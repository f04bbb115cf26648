#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "morvaai.h"

namespace tool {

class WorkDirectory;

/// What a command makes of one file.
struct FileReport {
  /// The result; where it goes to standard output, with its line ends.
  std::string output;
  /// One line for standard error, without the file's name; empty when all went well.
  std::string problem;
};

/// Options that the commands over many files share.
struct RunOptions {
  std::vector<std::string> inputs;
  std::size_t jobs = 1;
  bool json = false;
};

/// What the work on files needs of the workers, beside the files.
struct WorkerNeeds {
  /// The dictionary: it is mapped once, for all workers.
  bool words = true;
  /// Where the library may put its working files; null where it makes none.
  WorkDirectory const* directory = nullptr;
};

/// What is printed of a file: lines of the program's own, or the text of the document as it is.
enum class Printed { lines, document };

/// Runs `work` on every file in worker processes, with progress on a terminal, and hands the
/// reports to `take` in order of the files; a worker gets the file opened, and nothing else. Prints
/// the problems; a file whose worker ended early has no output. Returns the exit status: all done
/// when there was no problem and `take` never refused.
///
/// MORVA_WORKER_MEMORY and MORVA_WORKER_SECONDS, whole numbers above 0, set the MiB of memory and
/// the seconds of the processor that a file may take.
int run_on_files(std::vector<HString> const& files, std::size_t jobs,
                 std::function<FileReport(HString const&)> const& work,
                 std::function<bool(std::size_t, FileReport)> const& take,
                 WorkerNeeds const& needs = {});

/// Runs `work` on every file of the inputs in that way and prints the outputs; lines may have
/// styles. An output that no such work gives, as lines with characters that steer a terminal, is a
/// problem of the file.
int print_on_files(RunOptions const& options, std::function<FileReport(HString const&)> const& work,
                   WorkerNeeds const& needs = {}, Printed printed = Printed::lines);

}  // namespace tool
