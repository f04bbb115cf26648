#pragma once

#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "morvaai.h"

#include "documents/run_on_files.h"
#include "terminal/output.h"

namespace tool {

/// What is said before the reason where a document was not read to its end.
inline constexpr char const* read_in_part = "read only in part: ";

/// A document opened and parsed, its text in memory.
class Document {
 public:
  explicit Document(HString const& path);

  /// There is text to work with, perhaps not all of it.
  bool is_read() const { return is_read_; }
  Orlec::ParseOutcome outcome() const { return outcome_; }
  /// The outcome as a word, as "encrypted".
  std::string outcome_name() const { return utf8(Orlec::GetOutcomeName(outcome_)); }
  /// Why the document was not read, or not whole: a phrase for a person.
  std::string const& reason() const { return reason_; }

  /// What to report of a document that gave no main text at all; nothing where there is some.
  std::optional<FileReport> failure(HString const& path, bool json) const;
  /// What to report of a document that was not read to its end; empty where it was.
  std::string incompleteness() const;

  /// Fills in the words that characterise the document; what to report where there are none.
  std::optional<FileReport> take_words(HString const& path, HFeatureNode& record) const;

  HString main_text() const { return text(Orlec::ParseTextType_main); }
  /// The text of one kind; empty where the document has none.
  HString text(Orlec::ParseTextType type) const;
  /// The parser, after parsing; null where the file has none.
  Orlec::ParseFile* parser() const { return parser_.get(); }

 private:
  std::string explain_missing_parser(HString const& path);

  Orlec::IFile file_;
  Orlec::TextLineCallback callback_;
  std::unique_ptr<Orlec::ParseFile> parser_;
  bool is_read_ = false;
  Orlec::ParseOutcome outcome_ = Orlec::ParseOutcome::not_supported;
  std::string reason_;
};

/// The begin of a result: the file, the outcome, and why it is not the whole text, where it is not.
nlohmann::ordered_json json_head(HString const& path, Document const& document);

/// That there is no dictionary, where one was looked for, and what can be done.
std::string no_dictionary_reason();
/// What to report where words are needed and there is no dictionary, or none were found.
FileReport no_dictionary(HString const& path, bool json);
FileReport no_words(HString const& path, bool json);

/// Digits of the two kinds of fingerprints.
inline constexpr int narrow_dna = 32;
inline constexpr int wide_dna = 1024;

/// Takes the fingerprint of a document that was read, of so many digits, and how many characters it
/// is made of; or tells what to report, as there is no dictionary or there are no words.
std::optional<FileReport> take_dna(Document const& document, HString const& path, int digits,
                                   bool json, HString& dna, int* character_count = nullptr);

}  // namespace tool
