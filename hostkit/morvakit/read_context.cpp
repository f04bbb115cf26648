#include "morvakit/read_context.h"

#include <algorithm>
#include <utility>

#include "host/utf8.h"

namespace morvakit {

namespace {

constexpr std::int64_t ratio_counts_from = std::int64_t{64} << 20;

/// Longest time that can be added to a clock's value without overflow, and longer than any parse.
constexpr std::int64_t longest_milliseconds = std::int64_t{1000} * 3600 * 24 * 365;

/// How far a character sets apart what stands on its two sides.
int separation(char character) {
  switch (character) {
    case ' ':
      return 1;
    case '\t':
      return 2;
    case '\n':
    case '\r':
      return 3;
    default:
      return 0;
  }
}

}  // namespace

ReadContext::ReadContext(Orlec::TextCallback* callback, Orlec::ParseLimits const& limits,
                         Orlec::Reader const* file)
    : own_whole_(std::make_unique<Whole>()), whole_(*own_whole_) {
  whole_.callback = callback;
  whole_.limits = limits;
  whole_.file = file;
  whole_.deadline = Clock::now() + std::chrono::milliseconds(std::clamp<std::int64_t>(
                                       limits.i_milliseconds, 0, longest_milliseconds));
}

ReadContext::ReadContext(Whole& whole, std::int64_t depth) : whole_(whole), depth_(depth) {
  whole_.begins_file.fill(true);
}

bool ReadContext::text(Orlec::ParseTextType type, std::string_view utf8) {
  if (ended()) {
    return false;
  }
  if (utf8.empty()) {
    return true;
  }
  auto const kind = static_cast<std::size_t>(type);
  if (std::exchange(whole_.begins_file[kind], false) && !separate(type, '\n')) {
    return false;
  }
  whole_.last_character[kind] = utf8.back();
  if (type == Orlec::ParseTextType_main) {
    count_lines(utf8);
  }
  if (whole_.callback == nullptr || whole_.callback->OnText(type, utf8)) {
    return true;
  }
  auto const reason = morvabs::to_utf8(whole_.callback->GetStopReason().get_ws());
  if (type == Orlec::ParseTextType_main) {
    return end_all(Orlec::ParseOutcome::limit_reached, reason);
  }
  note(Orlec::ParseOutcome::limit_reached, reason);
  return true;
}

bool ReadContext::separate(Orlec::ParseTextType type, char separator) {
  auto const kind = static_cast<std::size_t>(type);
  char const last = whole_.last_character[kind];
  // A file's first text is set apart from what stands before it, whatever that is.
  if (last == '\0' || whole_.begins_file[kind] || separation(last) >= separation(separator)) {
    return !ended();
  }
  return text(type, std::string_view(&separator, 1));
}

void ReadContext::count_lines(std::string_view utf8) {
  for (char const character : utf8) {
    bool const is_end = separation(character) == separation('\n');
    whole_.counts.i_line += !is_end && whole_.is_line_empty ? 1 : 0;
    whole_.is_line_empty = is_end;
  }
}

void ReadContext::count_pages(std::int64_t number) {
  whole_.counts.i_page += depth_ == 0 ? number : 0;
}

void ReadContext::count_images(std::int64_t number) {
  whole_.counts.i_img += depth_ == 0 ? number : 0;
}

bool ReadContext::keep_going() {
  constexpr std::uint32_t calls_between_looks = 64;
  if (!ended() && whole_.calls++ % calls_between_looks == 0 && Clock::now() >= whole_.deadline) {
    end_all(Orlec::ParseOutcome::timed_out,
            "the time of " + std::to_string(limits().i_milliseconds) + " milliseconds is used up");
  }
  return !ended();
}

bool ReadContext::charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added) {
  whole_.expanded += added;
  if (whole_.expanded > limits().i_expanded_bytes) {
    return end_all(Orlec::ParseOutcome::limit_reached,
                   "unpacked parts over " + std::to_string(limits().i_expanded_bytes) + " bytes");
  }
  if (unpacked >= ratio_counts_from &&
      unpacked / std::max<std::int64_t>(packed, 1) >= limits().i_expansion_ratio) {
    return end(
        Orlec::ParseOutcome::limit_reached,
        "a part unpacks to over " + std::to_string(limits().i_expansion_ratio) + " times its size");
  }
  return !ended();
}

bool ReadContext::charge_memory(std::size_t bytes) {
  whole_.kept += bytes;
  auto const most = limits().i_list_bytes;
  return whole_.kept <= static_cast<std::size_t>(std::max<std::int64_t>(most, 0)) ||
         end_all(Orlec::ParseOutcome::limit_reached,
                 "lists of parts and styles over " + std::to_string(most) + " bytes");
}

bool ReadContext::end(Orlec::ParseOutcome outcome, std::string_view reason) {
  if (!ended()) {
    ended_ = true;
    outcome_ = outcome;
    reason_ = reason;
  }
  return false;
}

bool ReadContext::end_unreadable(Orlec::Reader const& bytes) {
  bool const is_in_container = whole_.file != nullptr && whole_.file != &bytes;
  return end(is_in_container ? Orlec::ParseOutcome::damaged : Orlec::ParseOutcome::failed,
             "the file cannot be read");
}

/// A bound on the whole is used up: no file of those that are open can be read any further.
bool ReadContext::end_all(Orlec::ParseOutcome outcome, std::string_view reason) {
  if (!ended()) {
    whole_.ended = true;
    whole_.outcome = outcome;
    whole_.reason = reason;
  }
  return false;
}

void ReadContext::note(Orlec::ParseOutcome outcome, std::string_view reason) {
  bool const is_first = outcome_ == Orlec::ParseOutcome::not_parsed;
  bool const is_worse =
      outcome == Orlec::ParseOutcome::limit_reached && outcome_ == Orlec::ParseOutcome::incomplete;
  if (!ended() && (is_first || is_worse)) {
    outcome_ = outcome;
    reason_ = reason;
  }
}

Orlec::ParseOutcome ReadContext::outcome() const {
  if (whole_.ended) {
    return whole_.outcome;
  }
  if (outcome_ != Orlec::ParseOutcome::not_parsed) {
    return outcome_;
  }
  bool const has_main_text = whole_.last_character[Orlec::ParseTextType_main] != '\0';
  return has_main_text ? Orlec::ParseOutcome::text : Orlec::ParseOutcome::no_text;
}

std::string const& ReadContext::reason() const {
  return whole_.ended ? whole_.reason : reason_;
}

}  // namespace morvakit
