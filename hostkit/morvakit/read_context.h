#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/ParseFile.h"
#include "host/Orlec/ParseLimits.h"

namespace morvakit {

/// What a format's reader works with beside the bytes: where its text goes, the bounds it has to
/// keep, and how the parse ends. A reader calls `text` as it goes, asks `keep_going` in every loop
/// whose length the file decides, and returns as soon as either says no.
class ReadContext {
 public:
  ReadContext(Orlec::TextCallback* callback, Orlec::ParseLimits const& limits);

  Orlec::ParseLimits const& limits() const { return limits_; }

  /// Delivers a piece of UTF-8 text, made of whole sequences; false when reading is to stop. Main
  /// text over its bound ends the parse; other kinds over theirs are dropped and noted.
  bool text(Orlec::ParseTextType type, std::string_view utf8);
  /// Ends a line ('\n'), a cell ('\t') or a word (' '): delivers `separator` unless the kind's text
  /// is empty or already ends in a character that separates as far. False when reading is to stop.
  bool separate(Orlec::ParseTextType type, char separator);

  /// False once the parse has ended or its time is used up. Cheap enough for every loop.
  bool keep_going();
  /// Counts unpacked bytes of a part that is `packed` bytes long and has unpacked to `unpacked` so
  /// far, `added` of them new. False, with the parse ended, when a bound is passed.
  bool charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added);

  /// Counts bytes that a reader keeps in memory of a list whose length the file decides. False,
  /// with the parse ended, when all lists together are over their bound.
  bool charge_memory(std::size_t bytes);

  /// Ends the parse with an outcome and a reason; the first call counts. Always returns false.
  bool end(Orlec::ParseOutcome outcome, std::string_view reason);
  /// Remembers a fault that does not stop the reading: the outcome, unless the parse ends with
  /// another.
  void note(Orlec::ParseOutcome outcome, std::string_view reason);

  bool ended() const { return ended_; }
  /// The outcome so far: what `end` or `note` said, else `text` or `no_text` by the main text.
  Orlec::ParseOutcome outcome() const;
  std::string const& reason() const { return reason_; }

 private:
  using Clock = std::chrono::steady_clock;

  Orlec::TextCallback* callback_;
  Orlec::ParseLimits limits_;
  Clock::time_point deadline_;
  std::uint32_t calls_ = 0;
  std::int64_t expanded_ = 0;
  std::size_t kept_ = 0;
  bool has_main_text_ = false;
  char last_character_[16] = {};
  bool ended_ = false;
  Orlec::ParseOutcome outcome_ = Orlec::ParseOutcome::not_parsed;
  std::string reason_;
};

}  // namespace morvakit
