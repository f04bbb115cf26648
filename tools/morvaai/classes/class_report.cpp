#include "classes/class_report.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "terminal/output.h"
#include "terminal/style.h"

namespace tool {

namespace {

std::string counted(std::size_t count, char const* one, char const* several) {
  return fmt::format("{} {}", count, count == 1 ? one : several);
}

std::string indented(std::vector<HString> const& files) {
  std::string text;
  for (HString const& file : files) {
    text += "  " + shown_path(file, 2) + "\n";
  }
  return text;
}

nlohmann::ordered_json names(std::vector<HString> const& files) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (HString const& file : files) {
    list.push_back(utf8(file));
  }
  return list;
}

}  // namespace

std::string ClassReport::as_text() const {
  std::string text =
      fmt::format("{} of {} by {}", method, counted(file_count, "file", "files"),
                  is_by_dna ? std::string("fingerprint") : counted(word_count, "word", "words"));
  for (auto const& [name, parameter] : parameters) {
    text += ", " + name + " " +
            std::visit([](auto const& value) { return fmt::format("{}", value); }, parameter);
  }
  text += fmt::format(": {}\n", counted(classes.size(), "class", "classes"));
  for (Class const& one : classes) {
    text += fmt::format("\n{}: {}, radius {:.3f}\n", styled(Role::name, printable(one.label)),
                        counted(one.files.size(), "file", "files"), one.radius);
    if (one.description.not_empty()) {
      text += "  " + styled(Role::faint, fmt::format("[{}]", printable(one.description))) + "\n";
    }
    text += indented(one.files);
  }
  if (!unclassified.empty()) {
    text += fmt::format("\nunclassified: {}\n", counted(unclassified.size(), "file", "files")) +
            indented(unclassified);
  }
  if (lists && !lists->empty()) {
    text += "\nlists written:\n" + indented(*lists);
  }
  if (box) {
    text +=
        fmt::format("\nbox {}: {}\n", styled(Role::name, printable(box->id)), printable(box->file));
  }
  if (page) {
    text += "report: " + printable(*page) + "\n";
  }
  return text;
}

std::string ClassReport::as_json() const {
  nlohmann::ordered_json object;
  object["method"] = method;
  for (auto const& [name, parameter] : parameters) {
    object["parameters"][name] =
        std::visit([](auto const& value) { return nlohmann::ordered_json(value); }, parameter);
  }
  object["by"] = is_by_dna ? "fingerprint" : "words";
  object["file_count"] = file_count;
  object["word_count"] = word_count;
  object["classes"] = nlohmann::ordered_json::array();
  for (Class const& one : classes) {
    nlohmann::ordered_json shown;
    if (one.id.not_empty()) {
      shown["id"] = utf8(one.id);
    }
    shown["name"] = utf8(one.label);
    shown["description"] = utf8(one.description);
    shown["radius"] = one.radius;
    shown["file_count"] = one.files.size();
    shown["files"] = names(one.files);
    object["classes"].push_back(std::move(shown));
  }
  object["unclassified"] = names(unclassified);
  object["failed"] = json_of(failed);
  if (lists) {
    object["lists"] = names(*lists);
  }
  if (box) {
    object["box"] = {{"id", utf8(box->id)}, {"file", utf8(box->file)}};
  }
  if (page) {
    object["report"] = utf8(*page);
  }
  // A reason may quote the bytes of a document.
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace tool
