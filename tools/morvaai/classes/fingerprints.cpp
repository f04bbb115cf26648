#include "classes/fingerprints.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "documents/document.h"
#include "documents/failure.h"
#include "documents/run_on_files.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace tool {

namespace {

using nlohmann::json;

constexpr std::size_t longest_line = std::size_t{1} << 16U;
constexpr std::size_t most_complaints = 20;

bool is_dna(std::wstring_view text) {
  std::wstring_view const digits = L"0123456789ABCDEF";
  return !text.empty() && text.size() <= wide_dna &&
         text.find_first_not_of(digits) == std::wstring_view::npos;
}

FileReport fingerprint(HString const& path) {
  Document const document(path);
  if (auto report = document.failure(path, false)) {
    return *report;
  }
  HString dna;
  if (auto report = take_dna(document, path, narrow_dna, false, dna)) {
    return *report;
  }
  return {utf8(dna), document.incompleteness()};
}

// The text of a member of an object; nothing where there is none.
std::optional<HString> member(json const& object, char const* name) {
  auto const found = object.find(name);
  if (found == object.end() || !found->is_string()) {
    return std::nullopt;
  }
  return text_of(found->get_ref<std::string const&>());
}

// Lines of a list of fingerprints.
class ListReader {
 public:
  ListReader(std::istream& in, std::string name, Fingerprints& all)
      : in_(in), name_(std::move(name)), all_(all) {}

  void read() {
    std::string buffer(longest_line + 1, '\0');
    while (in_.getline(buffer.data(), static_cast<std::streamsize>(buffer.size())) ||
           in_.gcount() > 0) {
      ++line_;
      bool const is_whole = !in_.fail();
      auto const size = static_cast<std::size_t>(in_.gcount()) - (in_.eof() ? 0 : 1);
      if (in_.bad()) {
        break;
      }
      if (is_whole) {
        take(std::string_view(buffer).substr(0, size));
      } else {
        in_.clear();
        skip_line();
        refuse("the line is longer than 65536 bytes");
      }
    }
    if (in_.bad()) {
      complain(name_ + ": cannot be read to its end");
      all_.status = some_failed;
    }
    if (refused_ > most_complaints) {
      complain(fmt::format("{}: {} more lines are left out", name_, refused_ - most_complaints));
    }
  }

 private:
  void skip_line() {
    for (int c = in_.get(); c != '\n' && c != std::istream::traits_type::eof(); c = in_.get()) {
    }
  }

  void refuse(std::string const& why) {
    all_.status = some_failed;
    if (++refused_ <= most_complaints) {
      complain(fmt::format("{}, line {}: {}; left out", name_, line_, why));
    }
  }

  void take(std::string_view line) {
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
      return;
    }
    json const object = json::parse(line, nullptr, false);
    auto const file = object.is_object() ? member(object, "file") : std::nullopt;
    if (!file) {
      refuse("not what `morvaai dna --json` prints");
      return;
    }
    if (auto const dna = member(object, "dna"); dna && is_dna(text_view(*dna))) {
      all_.files.push_back(*file);
      all_.dnas.push_back(*dna);
      return;
    }
    take_failure(*file, object);
  }

  void take_failure(HString const& file, json const& object) {
    auto const error = object.find("error");
    auto const outcome =
        error != object.end() && error->is_object() ? member(*error, "outcome") : std::nullopt;
    if (!outcome) {
      refuse("no fingerprint of " + printable(file));
      return;
    }
    std::string const reason = printable(member(*error, "reason").value_or(HString()));
    std::string const problem =
        printable(*outcome) + (reason.empty() ? std::string() : ": " + reason);
    all_.status = some_failed;
    all_.failed.push_back({file, problem});
    complain(printable(file) + ": " + problem);
  }

  std::istream& in_;
  std::string name_;
  Fingerprints& all_;
  std::size_t line_ = 0;
  std::size_t refused_ = 0;
};

}  // namespace

void read_fingerprints(std::vector<HString> const& files, std::size_t jobs, Fingerprints& all) {
  auto const take = [&](std::size_t index, FileReport report) {
    HString const dna(report.output.c_str());
    if (dna.length() == narrow_dna && is_dna(text_view(dna))) {
      all.files.push_back(files[index]);
      all.dnas.push_back(dna);
      return true;
    }
    bool const is_told = report.output.empty() && !report.problem.empty();
    if (!is_told) {
      report.problem = senseless_answer;
      complain(printable(files[index]) + ": " + report.problem);
    }
    all.failed.push_back({files[index], report.problem});
    return false;
  };
  int const status = run_on_files(files, jobs, &fingerprint, take);
  all.status = std::max(all.status, status);
}

void load_fingerprints(std::string const& list, Fingerprints& all) {
  if (list == "-") {
    ListReader(std::cin, "standard input", all).read();
    return;
  }
  HString const path = morvabs::from_path(list);
  errno = 0;
  std::ifstream in(list, std::ios::binary);
  if (!in || HFile::IsFileExistDir(path)) {
    complain(printable(path) + ": " + (in ? "a folder, no list" : std::strerror(errno)));
    all.status = some_failed;
    return;
  }
  ListReader(in, printable(path), all).read();
}

void keep_first_of_each(Fingerprints& all) {
  std::set<HString> seen;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < all.files.size(); ++i) {
    if (seen.insert(all.files[i]).second) {
      std::swap(all.files[kept], all.files[i]);
      std::swap(all.dnas[kept], all.dnas[i]);
      ++kept;
    }
  }
  all.files.resize(kept);
  all.dnas.resize(kept);
}

}  // namespace tool
