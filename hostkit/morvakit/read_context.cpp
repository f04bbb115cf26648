#include "morvakit/read_context.h"

#include <algorithm>

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

ReadContext::ReadContext(Orlec::TextCallback* callback, Orlec::ParseLimits const& limits)
    : callback_(callback),
      limits_(limits),
      deadline_(Clock::now() + std::chrono::milliseconds(std::clamp<std::int64_t>(
                                   limits.i_milliseconds, 0, longest_milliseconds))) {}

bool ReadContext::text(Orlec::ParseTextType type, std::string_view utf8) {
  if (ended_) {
    return false;
  }
  if (utf8.empty()) {
    return true;
  }
  last_character_[static_cast<std::size_t>(type)] = utf8.back();
  has_main_text_ = has_main_text_ || type == Orlec::ParseTextType_main;
  if (callback_ == nullptr || callback_->OnText(type, utf8)) {
    return true;
  }
  auto const reason = morvabs::to_utf8(callback_->GetStopReason().get_ws());
  if (type == Orlec::ParseTextType_main) {
    return end(Orlec::ParseOutcome::limit_reached, reason);
  }
  note(Orlec::ParseOutcome::limit_reached, reason);
  return true;
}

bool ReadContext::separate(Orlec::ParseTextType type, char separator) {
  char const last = last_character_[static_cast<std::size_t>(type)];
  if (last == '\0' || separation(last) >= separation(separator)) {
    return !ended_;
  }
  return text(type, std::string_view(&separator, 1));
}

bool ReadContext::keep_going() {
  constexpr std::uint32_t calls_between_looks = 64;
  if (!ended_ && calls_++ % calls_between_looks == 0 && Clock::now() >= deadline_) {
    end(Orlec::ParseOutcome::timed_out,
        "the time of " + std::to_string(limits_.i_milliseconds) + " milliseconds is used up");
  }
  return !ended_;
}

bool ReadContext::charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added) {
  expanded_ += added;
  if (expanded_ > limits_.i_expanded_bytes) {
    return end(Orlec::ParseOutcome::limit_reached,
               "unpacked parts over " + std::to_string(limits_.i_expanded_bytes) + " bytes");
  }
  if (unpacked >= ratio_counts_from &&
      unpacked / std::max<std::int64_t>(packed, 1) >= limits_.i_expansion_ratio) {
    return end(
        Orlec::ParseOutcome::limit_reached,
        "a part unpacks to over " + std::to_string(limits_.i_expansion_ratio) + " times its size");
  }
  return !ended_;
}

bool ReadContext::charge_memory(std::size_t bytes) {
  constexpr std::size_t most = std::size_t{256} << 20;
  kept_ += bytes;
  return kept_ <= most || end(Orlec::ParseOutcome::limit_reached,
                              "lists of parts and styles over " + std::to_string(most) + " bytes");
}

bool ReadContext::end(Orlec::ParseOutcome outcome, std::string_view reason) {
  if (!ended_) {
    ended_ = true;
    outcome_ = outcome;
    reason_ = reason;
  }
  return false;
}

void ReadContext::note(Orlec::ParseOutcome outcome, std::string_view reason) {
  if (!ended_ && outcome_ == Orlec::ParseOutcome::not_parsed) {
    outcome_ = outcome;
    reason_ = reason;
  }
}

Orlec::ParseOutcome ReadContext::outcome() const {
  if (outcome_ != Orlec::ParseOutcome::not_parsed) {
    return outcome_;
  }
  return has_main_text_ ? Orlec::ParseOutcome::text : Orlec::ParseOutcome::no_text;
}

}  // namespace morvakit
