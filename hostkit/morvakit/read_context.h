#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/Orlec/ParseFile.h"
#include "host/Orlec/ParseLimits.h"
#include "morvakit/parse_watch.h"

namespace morvakit {

/// What a format's reader works with beside the bytes: where its text goes, the bounds it has to
/// keep, and how the parse ends. A reader calls `text` as it goes, asks `keep_going` in every loop
/// whose length the file decides, and returns as soon as either says no. The file that the host
/// asked for has one context, and each file embedded in it one of its own, which shares the text,
/// the time and the bounds, and ends by itself.
class ReadContext final : public ParseWatch {
 public:
  /// `file`: what the host asked for; null where it is not known.
  ReadContext(Orlec::TextCallback* callback, Orlec::ParseLimits const& limits,
              Orlec::Reader const* file = nullptr);
  ReadContext(ReadContext const&) = delete;
  ReadContext& operator=(ReadContext const&) = delete;
  /// A context for a file that is embedded in this one's, which has to outlive it. Its text begins
  /// on a new line.
  ReadContext for_embedded() { return ReadContext(whole_, depth_ + 1); }

  Orlec::ParseLimits const& limits() const { return whole_.limits; }
  /// 0 for the file that the host asked for, 1 for a file embedded in it.
  std::int64_t depth() const { return depth_; }

  /// Delivers a piece of UTF-8 text, made of whole sequences; false when reading is to stop. Main
  /// text over its bound ends the parse; other kinds over theirs are dropped and noted.
  bool text(Orlec::ParseTextType type, std::string_view utf8);
  /// Ends a line ('\n'), a cell ('\t') or a word (' '): delivers `separator` unless the kind's text
  /// is empty or already ends in a character that separates as far. False when reading is to stop.
  bool separate(Orlec::ParseTextType type, char separator);

  /// Counts pages (slides, sheets) and pictures of the document. Those of embedded files are not
  /// theirs who embed them, and have no effect.
  void count_pages(std::int64_t number);
  void count_images(std::int64_t number);
  /// Counts one embedded file, at any depth.
  void count_embedded() { ++whole_.counts.i_embed; }
  Orlec::ParseCounts const& counts() const { return whole_.counts; }

  /// False once the parse has ended or its time is used up. Cheap enough for every loop.
  bool keep_going() override;
  /// Counts unpacked bytes of a part that is `packed` bytes long and has unpacked to `unpacked` so
  /// far, `added` of them new. False, with the parse ended, when a bound is passed.
  bool charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added);

  /// Counts bytes that a reader keeps in memory of a list whose length the file decides. False,
  /// with the parse ended, when all lists together are over their bound.
  bool charge_memory(std::size_t bytes);

  /// Ends the parse of this file with an outcome and a reason; the first call counts. Always
  /// returns false.
  bool end(Orlec::ParseOutcome outcome, std::string_view reason) override;
  /// Ends the parse because bytes cannot be read: `failed` where they are those of the host's file,
  /// `damaged` where they lie in a container, whose directory tells of bytes that are not there.
  /// Always returns false.
  bool end_unreadable(Orlec::Reader const& bytes);
  /// Remembers a fault that does not stop the reading: the outcome, unless the parse ends with
  /// another. Of several the first counts, but a bound counts above `incomplete`.
  void note(Orlec::ParseOutcome outcome, std::string_view reason);

  bool ended() const { return ended_ || whole_.ended; }
  /// The outcome so far: what `end` or `note` said, else `text` or `no_text` by the main text.
  Orlec::ParseOutcome outcome() const;
  std::string const& reason() const;

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t kind_count = Orlec::ParseTextType_other + 1;

  /// What the file and all that is embedded in it have in common.
  struct Whole {
    Orlec::TextCallback* callback = nullptr;
    Orlec::ParseLimits limits;
    Orlec::Reader const* file = nullptr;
    Clock::time_point deadline;
    std::uint32_t calls = 0;
    std::int64_t expanded = 0;
    std::size_t kept = 0;
    Orlec::ParseCounts counts;
    std::array<char, kind_count> last_character{};
    /// Kinds whose next text belongs to another file than their last.
    std::array<bool, kind_count> begins_file{};
    bool is_line_empty = true;
    bool ended = false;
    Orlec::ParseOutcome outcome = Orlec::ParseOutcome::not_parsed;
    std::string reason;
  };

  ReadContext(Whole& whole, std::int64_t depth);

  bool end_all(Orlec::ParseOutcome outcome, std::string_view reason);
  void count_lines(std::string_view utf8);

  std::unique_ptr<Whole> own_whole_;
  Whole& whole_;
  std::int64_t depth_ = 0;
  bool ended_ = false;
  Orlec::ParseOutcome outcome_ = Orlec::ParseOutcome::not_parsed;
  std::string reason_;
};

}  // namespace morvakit
