#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/HString.h"
#include "host/WordNode.h"
#include "morvaai_c.h"

namespace morva::c {

/// What a document is read for.
struct Wants {
  unsigned flags = 0;
  /// 0 is all.
  std::size_t most_words = 0;

  bool words() const { return (flags & MORVA_WANT_WORDS) != 0; }
  bool dna() const { return (flags & MORVA_WANT_DNA) != 0; }
  bool wide_dna() const { return (flags & MORVA_WANT_WIDE_DNA) != 0; }
  bool text() const { return (flags & MORVA_WANT_TEXT) != 0; }
  /// Anything for which the text is cut into words.
  bool segmenting() const { return words() || dna() || wide_dna(); }
};

/// A failure where the flags are not those that there are.
Wants checked_wants(unsigned flags, std::size_t most_words);

/// Words by which a document is matched.
inline constexpr std::size_t record_words = 100;
/// Kinds of text are counted from 1.
inline constexpr std::size_t text_kinds = 9;

/// What was found in a document. What was not wanted is empty.
struct Reading {
  morva_status status = MORVA_OK;
  int outcome = MORVA_OUTCOME_FAILED;
  std::string reason;
  /// The system's error number.
  int error = 0;
  /// At least those by which it is matched, even where fewer are wanted.
  std::vector<WordNode> words;
  std::string dna;
  std::string wide_dna;
  std::int64_t covered = 0;
  std::array<std::string, text_kinds> texts;
};

/// Reads a file in this process.
Reading read_file(HString const& path, Wants const& wants);
/// Reads a text.
Reading read_text(std::string_view utf8, Wants const& wants);

/// The line for `morva_last_error`; `path` is empty for a text.
std::string failure_line(HString const& path, Reading const& reading);

}  // namespace morva::c
