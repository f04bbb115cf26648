#include "documents/run_on_files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "host/worker_pool.h"

#include "documents/failure.h"
#include "documents/inputs.h"
#include "documents/work_directory.h"
#include "exit_status.h"
#include "terminal/output.h"
#include "terminal/progress.h"

namespace tool {

namespace {

std::string pack(FileReport const& report) {
  return std::to_string(report.output.size()) + ":" + report.output + report.problem;
}

/// What was packed, if it was: a worker may have been taken over. The problem is fit for a
/// terminal.
FileReport unpack(std::string const& packed) {
  std::size_t size = 0;
  char const* const end = packed.data() + packed.size();
  auto const [colon, error] = std::from_chars(packed.data(), end, size);
  if (error != std::errc() || colon == end || *colon != ':' ||
      size > static_cast<std::size_t>(end - colon - 1)) {
    return {std::string(), senseless_answer};
  }
  return {std::string(colon + 1, size),
          printable(HString(std::string(colon + 1 + size, end).c_str()))};
}

/// Whether a terminal takes all of the text for characters and line ends.
bool is_plain(std::string_view text) {
  bool is_behind_c2 = false;
  for (char const c : text) {
    auto const byte = static_cast<unsigned char>(c);
    bool const is_control = (byte < 0x20 && byte != '\n') || byte == 0x7F;
    if (is_control || (is_behind_c2 && byte < 0xA0)) {
      return false;
    }
    is_behind_c2 = byte == 0xC2;
  }
  return morvabs::is_utf8(text);
}

/// One line, of which others read no more than one result.
bool is_json_line(std::string_view text) {
  auto const is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  return text.ends_with('\n') && std::none_of(text.begin(), text.end() - 1, is_control) &&
         morvabs::is_utf8(text);
}

/// The number that the environment sets, or what stands there now.
template <typename Number>
void set_from_environment(char const* variable, Number unit, Number& value) {
  char const* const text = std::getenv(variable);
  if (text == nullptr) {
    return;
  }
  Number number = 0;
  auto const [end, error] = std::from_chars(text, text + std::strlen(text), number);
  if (error == std::errc() && *end == '\0' && number > 0 &&
      number <= std::numeric_limits<Number>::max() / unit) {
    value = number * unit;
  }
}

/// Time by the clock for so much of the processor: a fifth more, for what is waited for.
int with_waiting(int cpu_seconds) {
  int const more = cpu_seconds / 5;
  constexpr int most = std::numeric_limits<int>::max();
  return cpu_seconds < most - more ? cpu_seconds + more : most;
}

/// Of a single file there is nothing to count.
Progress progress_over(std::vector<HString> const& files) {
  return files.size() == 1 ? Progress("reading " + printable(files.front().get_short_name()))
                           : Progress(files.size());
}

morvabs::WorkerPool make_pool(std::size_t jobs, WorkerNeeds const& needs) {
  morvabs::WorkerPool pool;
  pool.jobs = jobs;
  set_from_environment("MORVA_WORKER_MEMORY", std::uint64_t{1} << 20, pool.limits.memory);
  set_from_environment("MORVA_WORKER_SECONDS", 1, pool.limits.cpu_seconds);
  pool.limits.seconds = std::max(pool.limits.seconds, with_waiting(pool.limits.cpu_seconds));
  if (needs.words) {
    HString const dictionary = Orlec::LocateMgr::pins()->get_dict_path(false);
    // Mapped before the workers are forked, so that all share it; each looks whether it is there.
    HStutterDict::pins()->set_dict_path(dictionary);
    HJieba::pins()->Init();
    pool.readable_folders.push_back(dictionary);
  }
  if (needs.directory != nullptr) {
    pool.working_folder = morvabs::from_path(needs.directory->path().string());
    pool.kept_descriptors = needs.directory->descriptors();
  }
  return pool;
}

}  // namespace

int run_on_files(std::vector<HString> const& files, std::size_t jobs,
                 std::function<FileReport(HString const&)> const& work,
                 std::function<bool(std::size_t, FileReport)> const& take,
                 WorkerNeeds const& needs) {
  Progress const progress = progress_over(files);
  int status = all_done;
  auto const done = [&](std::size_t index, morvabs::WorkerPool::Outcome const& outcome) {
    FileReport report =
        outcome.result ? unpack(*outcome.result) : FileReport{std::string(), outcome.failure};
    if (!report.problem.empty()) {
      complain(printable(files[index]) + ": " + report.problem);
      status = some_failed;
    }
    if (!take(index, std::move(report))) {
      status = some_failed;
    }
    progress.show(index + 1, files[index]);
  };
  bool const ran = make_pool(jobs, needs)
                       .run(
                           files, [&](std::size_t i) { return pack(work(files[i])); }, done);
  if (!ran) {
    complain(std::string("no worker process can be started: ") + std::strerror(errno));
    return some_failed;
  }
  return status;
}

int print_on_files(RunOptions const& options, std::function<FileReport(HString const&)> const& work,
                   WorkerNeeds const& needs, Printed printed) {
  std::vector<HString> const files = expand_inputs(options.inputs);
  bool is_written = true;
  auto const is_right = [&](std::string const& output) {
    return output.empty() ||
           (options.json ? is_json_line(output) : printed == Printed::document || is_plain(output));
  };
  auto const write = options.json                ? &write_output
                     : printed == Printed::lines ? &show
                                                 : &write_document;
  auto const take = [&](std::size_t index, FileReport report) {
    bool const is_good = is_right(report.output);
    if (!is_good) {
      report = {std::string(), senseless_answer};
      complain(printable(files[index]) + ": " + report.problem);
    }
    if (options.json && report.output.empty()) {
      auto const [outcome, reason] = failure_of(report.problem);
      report.output = json_failure(files[index], outcome, reason);
    }
    is_written = is_written && write(report.output);
    return is_good && is_written;
  };
  return run_on_files(files, options.jobs, work, take, needs);
}

}  // namespace tool
