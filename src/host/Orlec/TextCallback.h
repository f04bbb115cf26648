#pragma once

#include <memory>
#include <string_view>

#include "host/HString.h"
#include "host/Orlec/ParseText.h"
#include "host/export.h"

namespace Orlec {

/// Receives the text of a document while it is parsed.
class MORVA_EXPORT TextCallback {
 public:
  virtual ~TextCallback();

  /// Where the main text goes when it is not to stay in memory: a regular file at exactly this
  /// path, in UTF-8, readable by its owner only. Nothing is written under another name.
  virtual void SetOutputFile(HString const& path) = 0;

  /// A parse begins: what an earlier one collected is dropped.
  virtual void OnBegin() = 0;
  /// A piece of text of one kind, in UTF-8, in reading order. False when no more of it is wanted
  /// because a bound is reached.
  virtual bool OnText(ParseTextType type, std::string_view utf8) = 0;
  /// The parse ends. With `keep` false the output file is not to come into being. False when it
  /// could not be written.
  virtual bool OnEnd(bool keep) = 0;
  /// Why `OnText` wanted no more main text or `OnEnd` failed, as "main text over 16777216
  /// characters".
  virtual HString GetStopReason() const;
};

/// Collects what the parser finds, kind by kind, within the bounds of `ParseLimits`. The main text
/// stays in memory or goes to an output file; the other kinds stay in memory in both cases.
class MORVA_EXPORT TextLineCallback : public TextCallback {
 public:
  /// Cleared: the main text goes to the file of `SetOutputFile`; without such a file it stays in
  /// memory.
  bool mb_in_memory = true;

  TextLineCallback();
  ~TextLineCallback() override;
  TextLineCallback(TextLineCallback const&) = delete;
  TextLineCallback& operator=(TextLineCallback const&) = delete;

  /// Counts from the next parse on, while `mb_in_memory` is cleared; an empty path takes it back.
  void SetOutputFile(HString const& path) override;
  /// Drops all texts, and takes the bounds that are in force now.
  void OnBegin() override;
  /// Appends, up to the bounds; a byte that is no part of well-formed UTF-8 becomes U+FFFD.
  bool OnText(ParseTextType type, std::string_view utf8) override;
  /// Brings the output file into being, whole, or removes it.
  bool OnEnd(bool keep) override;
  /// The bound, or why the output file could not be written; empty where all went well.
  HString GetStopReason() const override;

  /// The text of that kind, null when the document has none. A document that was read has a main
  /// text, which may be empty.
  ParseText* GetTextByType(ParseTextType type) const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace Orlec
