#include "documents/document.h"

#include <limits>
#include <system_error>

#include <nlohmann/json.hpp>

#include "documents/failure.h"
#include "terminal/output.h"

namespace tool {

namespace {

FileReport failure_report(HString const& path, bool json, std::string const& outcome,
                          std::string const& reason) {
  return {json ? json_failure(path, outcome, reason) : std::string(),
          reason.empty() ? outcome : outcome + ": " + reason};
}

// Words cannot be taken without a dictionary, nor from a document that was given up before any.
FileReport without_words(HString const& path, bool json) {
  return HStutterDict::pins()->is_exist_dict() ? no_words(path, json) : no_dictionary(path, json);
}

}  // namespace

Document::Document(HString const& path)
    : file_(path, false), parser_(Orlec::GetParser(&file_, false)) {
  if (parser_ == nullptr) {
    reason_ = explain_missing_parser(path);
    return;
  }
  parser_->SetMask(1);
  parser_->SetCallBack(&callback_, false);
  is_read_ = parser_->InitFile();
  outcome_ = parser_->GetOutcome();
  reason_ = utf8(parser_->GetReason());
}

std::string Document::explain_missing_parser(HString const& path) {
  if (!file_.IsOpen()) {
    outcome_ = Orlec::ParseOutcome::failed;
    return std::system_category().message(file_.GetError());
  }
  HTessarineResult recognised;
  if (!HTessarine::recognize(path, recognised)) {
    return "the type of the file is not known";
  }
  return "there is no reader for files of the type " + printable(recognised.str_suffix);
}

std::optional<FileReport> Document::failure(HString const& path, bool json) const {
  if (is_read_ && outcome_ != Orlec::ParseOutcome::no_text) {
    return std::nullopt;
  }
  return failure_report(path, json, outcome_name(), reason_);
}

std::string Document::incompleteness() const {
  bool const complete =
      outcome_ == Orlec::ParseOutcome::text || outcome_ == Orlec::ParseOutcome::no_text;
  return complete ? std::string() : read_in_part + reason_;
}

std::optional<FileReport> Document::take_words(HString const& path, HFeatureNode& record) const {
  if (auto report = failure(path, false)) {
    return report;
  }
  bool const is_taken = HFileFeature::get_file_feature(parser(), record);
  return is_taken && !record.vt_words.empty() ? std::nullopt
                                              : std::optional(without_words(path, false));
}

nlohmann::ordered_json json_head(HString const& path, Document const& document) {
  nlohmann::ordered_json object;
  object["file"] = utf8(path);
  object["outcome"] = document.outcome_name();
  if (!document.reason().empty()) {
    object["reason"] = document.reason();
  }
  return object;
}

std::string no_dictionary_reason() {
  HString const directory = Orlec::LocateMgr::pins()->get_dict_path(false);
  return "there is no dictionary in " + printable(directory) +
         "; MORVA_DICT_PATH names another directory";
}

FileReport no_dictionary(HString const& path, bool json) {
  return failure_report(path, json, "failed", no_dictionary_reason());
}

FileReport no_words(HString const& path, bool json) {
  return failure_report(path, json, "no words", "there are no words in its text");
}

std::optional<FileReport> take_dna(Document const& document, HString const& path, int digits,
                                   bool json, HString& dna, int* character_count) {
  if (HFileDNA::get_file_dna(document.parser(), dna, character_count, digits)) {
    return std::nullopt;
  }
  return without_words(path, json);
}

HString Document::text(Orlec::ParseTextType type) const {
  Orlec::ParseText* const text = callback_.GetTextByType(type);
  if (text == nullptr) {
    return {};
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  text->GetTextBuff(&buffer, length, std::numeric_limits<int>::max());
  return {buffer, length};
}

}  // namespace tool
