#include "shards/record_coding.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "shards/shard_layout.h"

namespace tool {

namespace {

constexpr std::uint8_t has_dna = 0x80;
constexpr std::size_t dna_bytes = 16;
// The strongest word of a text has this weight, which so takes one byte.
constexpr std::uint64_t first_weight = std::bit_cast<std::uint64_t>(1.0);

// Small for a number that is a little above or below 0, taken as one with a sign.
std::uint64_t folded(std::uint64_t number) {
  return (number << 1U) ^ (0U - (number >> 63U));
}

std::uint64_t unfolded(std::uint64_t number) {
  return (number >> 1U) ^ (0U - (number & 1U));
}

unsigned int digit_value(char digit) {
  return static_cast<unsigned int>(digit <= '9' ? digit - '0' : digit - 'A' + 10);
}

void put_dna(std::string& bytes, std::string_view dna) {
  for (std::size_t i = 0; i + 1 < dna.size(); i += 2) {
    bytes += static_cast<char>(digit_value(dna[i]) << 4U | digit_value(dna[i + 1]));
  }
}

std::string digits_of(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  for (char const c : bytes) {
    auto const byte = static_cast<unsigned char>(c);
    text += digits[byte >> 4U];
    text += digits[byte & 0xFU];
  }
  return text;
}

}  // namespace

void RecordEncoder::clear() {
  bytes_.clear();
  count_ = 0;
  path_.clear();
  places_.clear();
}

void RecordEncoder::add(ShardRecord const& record) {
  auto const [differs, ignored] =
      std::mismatch(path_.begin(), path_.end(), record.path.begin(), record.path.end());
  auto const shared = static_cast<std::size_t>(differs - path_.begin());
  put_varint(bytes_, shared);
  put_varint(bytes_, record.path.size() - shared);
  bytes_.append(record.path, shared);
  path_ = record.path;
  std::uint8_t const flag = record.dna.empty() ? 0 : has_dna;
  put_number(bytes_, outcome_code(record.outcome) | flag, 1);
  put_varint(bytes_, record.reason.size());
  bytes_ += record.reason;
  add_words(record.words);
  for (std::int32_t const count : record.counts) {
    put_varint(bytes_, static_cast<std::uint64_t>(count));
  }
  std::uint64_t before = first_weight;
  for (double const weight : record.weights) {
    auto const bits = std::bit_cast<std::uint64_t>(weight);
    put_varint(bytes_, folded(before - bits));
    before = bits;
  }
  put_dna(bytes_, record.dna);
  ++count_;
}

void RecordEncoder::add_words(std::vector<std::string> const& words) {
  put_varint(bytes_, words.size());
  for (std::string const& word : words) {
    auto const [place, is_new] = places_.try_emplace(word, places_.size());
    put_varint(bytes_, place->second);
    if (is_new) {
      put_varint(bytes_, word.size());
      bytes_ += word;
    }
  }
}

bool RecordDecoder::take(ShardRecord& record) {
  if (size_ - reader_.left() >= block_size) {
    return false;
  }
  std::uint64_t const shared = reader_.take_varint();
  std::string_view const rest = reader_.take_bytes(reader_.take_varint());
  if (shared > path_.size() || rest.size() > longest_path - shared) {
    return false;
  }
  path_.resize(static_cast<std::size_t>(shared));
  path_ += rest;
  record.path = path_;
  auto const head = static_cast<std::uint8_t>(reader_.take_number(1));
  auto const outcome = outcome_word(head & static_cast<std::uint8_t>(~has_dna));
  if (!outcome) {
    return false;
  }
  record.outcome = *outcome;
  record.reason = reader_.take_bytes(reader_.take_varint());
  if (!take_words(record) || !take_weights(record)) {
    return false;
  }
  record.dna = digits_of(reader_.take_bytes((head & has_dna) != 0 ? dna_bytes : 0));
  return reader_.is_good() && is_storable(record);
}

bool RecordDecoder::take_words(ShardRecord& record) {
  std::uint64_t const count = reader_.take_varint();
  // Each takes a byte at least.
  if (count > most_words || count > reader_.left()) {
    return false;
  }
  record.words.clear();
  std::size_t texts = 0;
  for (std::uint64_t i = 0; i < count && reader_.is_good(); ++i) {
    std::uint64_t const place = reader_.take_varint();
    if (place == words_.size()) {
      words_.push_back(reader_.take_bytes(reader_.take_varint()));
    }
    // A word that is repeated costs a byte here and its length there.
    if (place >= words_.size() || (texts += words_[place].size()) > largest_texts) {
      return false;
    }
    record.words.emplace_back(words_[place]);
  }
  return reader_.is_good();
}

bool RecordDecoder::take_weights(ShardRecord& record) {
  record.counts.clear();
  record.weights.clear();
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    std::uint64_t const count = reader_.take_varint();
    if (count > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) {
      return false;
    }
    record.counts.push_back(static_cast<std::int32_t>(count));
  }
  std::uint64_t bits = first_weight;
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    bits -= unfolded(reader_.take_varint());
    record.weights.push_back(std::bit_cast<double>(bits));
  }
  return reader_.is_good();
}

}  // namespace tool
