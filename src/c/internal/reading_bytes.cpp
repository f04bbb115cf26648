#include "c/internal/reading_bytes.h"

#include <algorithm>
#include <cmath>

#include "host/packed_bytes.h"

#include "c/internal/dna_text.h"
#include "c/internal/shown.h"

namespace morva::c {

namespace {

using morvabs::Unpacker;

std::string take_dna(Unpacker& taker, bool is_wanted) {
  std::string_view const dna = taker.take_utf8();
  taker.expect(is_dna(dna) && (is_wanted || dna.empty()));
  return std::string(dna);
}

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

void take_words(Unpacker& taker, Wants const& wants, Reading& reading) {
  while (taker.is_good() && !taker.is_at_end()) {
    WordNode& node = reading.words.emplace_back();
    node.word = taker.take_text();
    node.tag = taker.take_text();
    node.count = taker.take_number<std::int32_t>();
    node.weight = taker.take_number<double>();
    taker.expect(node.word.not_empty() && node.count >= 0 && std::isfinite(node.weight));
  }
  std::size_t const most = std::max(wants.most_words, record_words);
  taker.expect(reading.words.empty() ||
               (wants.words() && (wants.most_words == 0 || reading.words.size() <= most)));
}

}  // namespace

std::string pack(Reading const& reading) {
  using morvabs::pack_number;
  using morvabs::pack_text;
  std::string bytes;
  pack_number(bytes, static_cast<std::int32_t>(reading.status));
  pack_number(bytes, static_cast<std::int32_t>(reading.outcome));
  pack_number(bytes, static_cast<std::int32_t>(reading.error));
  pack_number(bytes, reading.covered);
  pack_text(bytes, reading.reason);
  pack_text(bytes, reading.dna);
  pack_text(bytes, reading.wide_dna);
  for (std::string const& text : reading.texts) {
    pack_text(bytes, text);
  }
  for (WordNode const& node : reading.words) {
    pack_text(bytes, node.word);
    pack_text(bytes, node.tag);
    pack_number(bytes, node.count);
    pack_number(bytes, node.weight);
  }
  return bytes;
}

std::optional<Reading> unpack(std::string_view bytes, Wants const& wants) {
  Unpacker taker(bytes);
  Reading reading;
  reading.status = taker.take_number<std::int32_t>();
  reading.outcome = taker.take_number<std::int32_t>();
  reading.error = taker.take_number<std::int32_t>();
  reading.covered = taker.take_number<std::int64_t>();
  reading.reason = shown(taker.take_text());
  taker.expect(is_possible(reading) && reading.covered >= 0);
  reading.dna = take_dna(taker, wants.dna());
  reading.wide_dna = take_dna(taker, wants.wide_dna());
  for (std::string& text : reading.texts) {
    text = taker.take_utf8();
    taker.expect(wants.text() || text.empty());
  }
  take_words(taker, wants, reading);
  if (!taker.is_good()) {
    return std::nullopt;
  }
  return reading;
}

}  // namespace morva::c
