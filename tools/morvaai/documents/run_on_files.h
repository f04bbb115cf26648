#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "morvaai.h"

namespace tool {

class WorkDirectory;

/// Exit status of the program.
enum Status : int { all_done = 0, some_failed = 1, wrong_use = 2 };

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

/// UTF-8 of the text as it may stand in a line on a terminal: control characters, those that turn
/// the direction of what stands behind them, and marks of style become U+FFFD.
std::string printable(HString const& text);

/// A path as it may stand in a line of standard output behind so many columns: printable, and cut
/// in the middle where standard output is a terminal that has no room for all of it.
std::string shown_path(HString const& path, std::size_t columns_before = 0);

/// A line that has words with their weights behind its beginning, which stands behind so many
/// columns: all of them, but on a terminal no more than there is room for.
std::string weighted_words(std::string line,
                           std::vector<std::pair<std::string, double>> const& words,
                           std::size_t columns_before);

/// UTF-8 of the text as it is; what is no Unicode text becomes U+FFFD.
std::string utf8(HString const& text);

/// One JSON object a line for a file that gave nothing: its name, the outcome and the reason.
std::string json_failure(HString const& path, std::string const& outcome,
                         std::string const& reason);

/// A problem of a file, taken apart: how reading it ended, as a word, and why. A problem that
/// begins with no such word is "failed".
struct Failure {
  std::string outcome;
  std::string reason;
};
Failure failure_of(std::string const& problem);

/// What is said of a worker whose result is not what it should be.
inline constexpr char const* senseless_answer = "the answer of its worker process makes no sense";

/// Writes a line with the program's name to standard error; one that begins with "warning: " is of
/// something that is no failure.
void complain(std::string const& problem);

/// Where it holds, nothing is complained of while it lives: another process says the same.
class NoComplaints {
 public:
  explicit NoComplaints(bool holds);
  ~NoComplaints();
  NoComplaints(NoComplaints const&) = delete;
  NoComplaints& operator=(NoComplaints const&) = delete;

 private:
  friend void complain(std::string const& problem);

  static inline bool holds_ = false;
  bool before_;
};

/// Writes to standard output; false, with a message on standard error, when that fails. There is no
/// message where nobody reads any more.
bool write_output(std::string const& text);
/// The same with a text that has styles.
bool show(std::string const& text);

}  // namespace tool
