#include "documents/failure.h"

#include <vector>

#include <nlohmann/json.hpp>

#include "terminal/output.h"

namespace tool {

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

std::string json_failure(HString const& path, std::string const& outcome,
                         std::string const& reason) {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["error"] = {{"outcome", outcome}, {"reason", reason}};
  // A reason may quote the bytes of a document.
  return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace tool
