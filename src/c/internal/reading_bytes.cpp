#include "c/internal/reading_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/utf8.h"

#include "c/internal/dna_text.h"
#include "c/internal/shown.h"

namespace morva::c {

namespace {

template <typename Number>
void put(std::string& bytes, Number number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof number);
}

void put_text(std::string& bytes, std::string_view text) {
  put(bytes, static_cast<std::uint64_t>(text.size()));
  bytes += text;
}

/// Takes one thing after the other off bytes that may lie. Over their end, and after the first
/// thing that cannot be, all that is taken is empty.
class Taker {
 public:
  explicit Taker(std::string_view bytes) : rest_(bytes) {}

  bool is_good() const { return is_good_; }
  bool is_at_end() const { return rest_.empty(); }
  void expect(bool is_so) { is_good_ = is_good_ && is_so; }

  template <typename Number>
  Number take() {
    Number number{};
    std::string_view const bytes = take_bytes(sizeof number);
    if (is_good_) {
      std::memcpy(&number, bytes.data(), sizeof number);
    }
    return number;
  }

  std::string_view take_text() {
    std::string_view const text = take_bytes(take<std::uint64_t>());
    expect(morvabs::is_utf8(text));
    return text;
  }

  HString take_word() {
    std::wstring const word = morvabs::from_utf8(take_text());
    expect(word.find(L'\0') == std::wstring::npos);
    return HString(word.data(), static_cast<int>(word.size()));
  }

  std::string take_dna(bool is_wanted) {
    std::string_view const dna = take_text();
    expect(is_dna(dna) && (is_wanted || dna.empty()));
    return std::string(dna);
  }

 private:
  std::string_view take_bytes(std::uint64_t size) {
    expect(size <= rest_.size());
    if (!is_good_) {
      return {};
    }
    std::string_view const taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::string_view rest_;
  bool is_good_ = true;
};

bool is_possible(Reading const& reading) {
  if (reading.outcome < MORVA_OUTCOME_TEXT || reading.outcome > MORVA_OUTCOME_FAILED) {
    return false;
  }
  switch (reading.status) {
    case MORVA_OK:
    case MORVA_NOT_READ:
    case MORVA_NO_DICTIONARY:
      return reading.error == 0;
    case MORVA_CANNOT_OPEN:
      return reading.error > 0 && reading.outcome == MORVA_OUTCOME_FAILED;
    default:
      return false;
  }
}

void take_words(Taker& taker, Wants const& wants, Reading& reading) {
  while (taker.is_good() && !taker.is_at_end()) {
    WordNode& node = reading.words.emplace_back();
    node.word = taker.take_word();
    node.tag = taker.take_word();
    node.count = taker.take<std::int32_t>();
    node.weight = taker.take<double>();
    taker.expect(node.word.not_empty() && node.count >= 0 && std::isfinite(node.weight));
  }
  std::size_t const most = std::max(wants.most_words, record_words);
  taker.expect(reading.words.empty() ||
               (wants.words() && (wants.most_words == 0 || reading.words.size() <= most)));
}

}  // namespace

std::string pack(Reading const& reading) {
  std::string bytes;
  put(bytes, static_cast<std::int32_t>(reading.status));
  put(bytes, static_cast<std::int32_t>(reading.outcome));
  put(bytes, static_cast<std::int32_t>(reading.error));
  put(bytes, reading.covered);
  put_text(bytes, reading.reason);
  put_text(bytes, reading.dna);
  put_text(bytes, reading.wide_dna);
  for (std::string const& text : reading.texts) {
    put_text(bytes, text);
  }
  for (WordNode const& node : reading.words) {
    put_text(bytes, morvabs::to_utf8(text_view(node.word)));
    put_text(bytes, morvabs::to_utf8(text_view(node.tag)));
    put(bytes, node.count);
    put(bytes, node.weight);
  }
  return bytes;
}

std::optional<Reading> unpack(std::string_view bytes, Wants const& wants) {
  Taker taker(bytes);
  Reading reading;
  reading.status = taker.take<std::int32_t>();
  reading.outcome = taker.take<std::int32_t>();
  reading.error = taker.take<std::int32_t>();
  reading.covered = taker.take<std::int64_t>();
  reading.reason = shown(taker.take_word());
  taker.expect(is_possible(reading) && reading.covered >= 0);
  reading.dna = taker.take_dna(wants.dna());
  reading.wide_dna = taker.take_dna(wants.wide_dna());
  for (std::string& text : reading.texts) {
    text = taker.take_text();
    taker.expect(wants.text() || text.empty());
  }
  take_words(taker, wants, reading);
  if (!taker.is_good()) {
    return std::nullopt;
  }
  return reading;
}

}  // namespace morva::c
