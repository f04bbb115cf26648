#include "report/report_page.h"

#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

#include "no_signals.h"
#include "report/report_template.h"
#include "terminal/output.h"

namespace tool {

std::string script_text(nlohmann::ordered_json const& data) {
  std::string text;
  for (char const c : data.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace)) {
    switch (c) {
      case '<':
        text += "\\u003c";
        break;
      case '>':
        text += "\\u003e";
        break;
      case '&':
        text += "\\u0026";
        break;
      default:
        text += c;
    }
  }
  return text;
}

std::string fill_template(std::string_view page, nlohmann::ordered_json const& data) {
  std::size_t const at = page.find(report_data_mark);
  if (at == std::string_view::npos) {
    return {};
  }
  std::string filled(page.substr(0, at));
  filled += script_text(data);
  return filled.append(page.substr(at + report_data_mark.size()));
}

std::optional<std::string> refuse_any_report() {
  if (report_template().empty()) {
    return "this program was built without reports: run scripts/setup --report and build again";
  }
  return std::nullopt;
}

std::optional<std::string> refuse_report(HString const& path) {
  if (auto refused = refuse_any_report()) {
    return refused;
  }
  if (path == L"-") {
    return "standard output has the results: name a file for the report, or ./- for one named -";
  }
  auto const bytes = morvabs::to_path(path);
  if (!bytes || bytes->empty()) {
    return "no file can have the name " + printable(path);
  }
  if (struct stat there{}; lstat(bytes->c_str(), &there) == 0 && !HFile::IsFileExistFile(path)) {
    char const* const what =
        HFile::IsFileExistDir(path) ? "a folder" : "no file, nor a link to one";
    return printable(path) + ": " + what + ": name a file for the report";
  }
  std::size_t const slash = bytes->rfind('/');
  std::string const folder = slash == std::string::npos ? "." : bytes->substr(0, slash + 1);
  if (access(folder.c_str(), W_OK | X_OK) != 0) {
    return printable(path) + ": the report cannot be written there: " + std::strerror(errno);
  }
  return std::nullopt;
}

std::optional<std::string> write_report(HString const& path, nlohmann::ordered_json const& data) {
  HString const page(morvabs::from_utf8(fill_template(report_template(), data)).c_str());
  NoSignals const whole;
  if (HFile::write_to_file(path, page, false, false)) {
    return std::nullopt;
  }
  return printable(path) + ": the report cannot be written: " + std::strerror(errno);
}

bool print_report(nlohmann::ordered_json const& data) {
  return write_output(fill_template(report_template(), data));
}

}  // namespace tool
