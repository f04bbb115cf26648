#include "documents/word_record.h"

#include <cmath>
#include <cstdint>

#include "host/packed_bytes.h"

namespace tool {

namespace {

bool is_fingerprint(HString const& text) {
  return morvabs::to_utf8(text.get_ws()).find_first_not_of("0123456789abcdefABCDEF") ==
         std::string::npos;
}

}  // namespace

std::string pack(WordRecord const& record) {
  std::string packed;
  morvabs::pack_text(packed, record.dna);
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    morvabs::pack_text(packed, record.words[i]);
    morvabs::pack_number(packed, static_cast<std::int32_t>(record.counts[i]));
    morvabs::pack_number(packed, record.weights[i]);
  }
  return packed;
}

std::optional<WordRecord> unpack_record(std::string_view packed) {
  morvabs::Unpacker taker(packed);
  WordRecord record;
  record.dna = taker.take_text();
  taker.expect(is_fingerprint(record.dna));
  while (taker.is_good() && !taker.is_at_end()) {
    record.words.push_back(taker.take_text());
    record.counts.push_back(taker.take_number<std::int32_t>());
    record.weights.push_back(taker.take_number<double>());
    taker.expect(record.counts.back() >= 0 && std::isfinite(record.weights.back()));
  }
  if (!taker.is_good()) {
    return std::nullopt;
  }
  return record;
}

}  // namespace tool
