#include "report.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <nlohmann/json.hpp>

#include "inputs.h"
#include "progress.h"
#include "worker_pool.h"

namespace tool {

namespace {

std::string pack(FileReport const& report) {
  return std::to_string(report.output.size()) + ":" + report.output + report.problem;
}

FileReport unpack(std::string const& packed) {
  std::size_t const colon = packed.find(':');
  std::size_t const size = std::stoull(packed.substr(0, colon));
  return {packed.substr(colon + 1, size), packed.substr(colon + 1 + size)};
}

}  // namespace

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

std::string printable(HString const& text) {
  std::wstring wide = text.get_ws();
  for (wchar_t& c : wide) {
    auto const code = static_cast<char32_t>(c);
    if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
      c = L'\xFFFD';
    }
  }
  return morvabs::to_utf8(wide);
}

std::string json_failure(HString const& path, std::string const& outcome,
                         std::string const& reason) {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["error"] = {{"outcome", outcome}, {"reason", reason}};
  return object.dump() + "\n";
}

void complain(std::string const& problem) {
  std::fprintf(stderr, "morvaai: %s\n", problem.c_str());
}

bool write_output(std::string const& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) {
    return true;
  }
  std::fprintf(stderr, "morvaai: standard output: %s\n", std::strerror(errno));
  return false;
}

int run_on_files(std::vector<HString> const& files, std::size_t jobs,
                 std::function<FileReport(HString const&)> const& work,
                 std::function<bool(std::size_t, FileReport)> const& take, Words words) {
  if (words == Words::needed) {
    // Mapped before the workers are forked, so that all share it.
    HStutterDict::pins()->set_dict_path(Orlec::LocateMgr::pins()->get_dict_path(false));
    HJieba::pins()->Init();
  }
  Progress const progress(files.size());
  int status = all_done;
  auto const done = [&](std::size_t index, WorkerPool::Outcome const& outcome) {
    FileReport report =
        outcome.result ? unpack(*outcome.result) : FileReport{std::string(), outcome.failure};
    progress.clear();
    if (!report.problem.empty()) {
      std::fprintf(stderr, "morvaai: %s: %s\n", printable(files[index]).c_str(),
                   report.problem.c_str());
      status = some_failed;
    }
    if (!take(index, std::move(report))) {
      status = some_failed;
    }
    progress.show(index + 1, files[index]);
  };
  WorkerPool pool;
  pool.jobs = jobs;
  bool const ran = pool.run(
      files.size(), [&](std::size_t i) { return pack(work(files[i])); }, done);
  progress.clear();
  if (!ran) {
    std::fprintf(stderr, "morvaai: no worker process can be started: %s\n", std::strerror(errno));
    return some_failed;
  }
  return status;
}

int print_on_files(RunOptions const& options, std::function<FileReport(HString const&)> const& work,
                   Words words) {
  std::vector<HString> const files = expand_inputs(options.inputs);
  bool is_written = true;
  auto const take = [&](std::size_t index, FileReport report) {
    if (options.json && report.output.empty()) {
      report.output = json_failure(files[index], "failed", report.problem);
    }
    is_written = is_written && write_output(report.output);
    return is_written;
  };
  return run_on_files(files, options.jobs, work, take, words);
}

}  // namespace tool
