#include "documents/run_on_files.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/worker_pool.h"

#include "documents/inputs.h"
#include "documents/work_directory.h"
#include "terminal/columns.h"
#include "terminal/progress.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

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

/// Whether the character makes what follows it look other than it is: ends the line, or has it read
/// from the other side.
bool turns_line(char32_t c) {
  return (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
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

/// UTF-8 of the text with U+FFFD for each character that steers a terminal, but for those to keep.
std::string harmless(std::wstring text, std::wstring_view kept) {
  for (wchar_t& c : text) {
    auto const code = static_cast<char32_t>(c);
    bool const is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    if ((is_control || turns_line(code) || is_style_mark(code)) &&
        kept.find(c) == std::wstring_view::npos) {
      c = L'\xFFFD';
    }
  }
  return morvabs::to_utf8(text);
}

/// Writes the text of a document: as it is, but to a terminal without what would steer that.
bool write_document(std::string const& text) {
  return write_output(output_screen().is_terminal ? harmless(morvabs::from_utf8(text), L"\n\t")
                                                  : text);
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

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

std::string printable(HString const& text) {
  return harmless(text.get_ws(), L"");
}

std::string shown_path(HString const& path, std::size_t columns_before) {
  constexpr std::size_t narrowest = 16;
  std::size_t const width = output_screen().columns.value_or(0);
  std::string const whole = printable(path);
  return width < columns_before + narrowest ? whole : cut_middle(whole, width - columns_before);
}

std::string weighted_words(std::string line,
                           std::vector<std::pair<std::string, double>> const& words,
                           std::size_t columns_before) {
  std::size_t columns = columns_before + columns_of(line);
  for (auto const& [word, weight] : words) {
    std::string const next = fmt::format(" {}({:.3g})", word, weight);
    columns += columns_of(next);
    if (columns > output_screen().columns.value_or(columns)) {
      break;
    }
    line += next;
  }
  return line + "\n";
}

std::string json_failure(HString const& path, std::string const& outcome,
                         std::string const& reason) {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["error"] = {{"outcome", outcome}, {"reason", reason}};
  // A reason may quote the bytes of a document.
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

Failure failure_of(std::string const& problem) {
  std::vector<std::string> words = {"no words"};
  for (int code = 0; code <= static_cast<int>(Orlec::ParseOutcome::failed); ++code) {
    words.push_back(utf8(Orlec::GetOutcomeName(static_cast<Orlec::ParseOutcome>(code))));
  }
  for (std::string const& word : words) {
    if (problem == word) {
      return {word, std::string()};
    }
    if (problem.starts_with(word + ": ")) {
      return {word, problem.substr(word.size() + 2)};
    }
  }
  return {"failed", problem};
}

NoComplaints::NoComplaints(bool holds) : before_(holds_) {
  holds_ = holds_ || holds;
}

NoComplaints::~NoComplaints() {
  holds_ = before_;
}

void complain(std::string const& problem) {
  if (NoComplaints::holds_) {
    return;
  }
  Role const role = problem.starts_with("warning: ") ? Role::warning : Role::error;
  std::string const line = styled(role, "morvaai:") + " " + problem + "\n";
  Hush const hush;
  std::fputs((error_screen().has_colors ? with_colors(line) : without_styles(line)).c_str(),
             stderr);
}

bool write_output(std::string const& text) {
  {
    Hush const hush;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
      return true;
    }
  }
  if (errno != EPIPE) {
    complain(std::string("standard output: ") + std::strerror(errno));
  }
  return false;
}

bool show(std::string const& text) {
  return write_output(output_screen().has_colors ? with_colors(text) : without_styles(text));
}

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
