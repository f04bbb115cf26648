#include "shards/shard_record.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <numeric>

#include "morvaai.h"

#include "documents/document.h"
#include "terminal/output.h"

namespace tool {

namespace {

// The numbers are part of the format: what is new comes behind.
constexpr std::array<std::string_view, 10> outcomes = {
    "text",    "no text",       "encrypted", "not supported", "incomplete",
    "damaged", "limit reached", "timed out", "failed",        "no words"};
constexpr std::uint8_t text_code = 0;
constexpr std::uint8_t timed_out_code = 7;
constexpr std::uint8_t failed_code = 8;

bool is_weight_same(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool is_fingerprint(std::string_view dna) {
  constexpr std::size_t digits = 32;
  return dna.empty() || (dna.size() == digits &&
                         dna.find_first_not_of("0123456789ABCDEF") == std::string_view::npos);
}

bool is_path(std::string_view path) {
  return !path.empty() && path.size() <= longest_path && path.find('\0') == std::string_view::npos;
}

}  // namespace

bool operator==(ShardRecord const& a, ShardRecord const& b) {
  return a.path == b.path && a.outcome == b.outcome && a.reason == b.reason && a.words == b.words &&
         a.counts == b.counts && a.dna == b.dna &&
         std::equal(a.weights.begin(), a.weights.end(), b.weights.begin(), b.weights.end(),
                    &is_weight_same);
}

bool is_storable(ShardRecord const& record) {
  std::size_t const count = record.words.size();
  std::size_t const texts = std::transform_reduce(
      record.words.begin(), record.words.end(), record.path.size() + record.reason.size(),
      std::plus<>(), [](std::string const& word) { return word.size(); });
  bool const is_told = count > 0 || record.outcome != outcomes[text_code];
  return is_path(record.path) && is_told && count <= most_words && texts <= largest_texts &&
         record.counts.size() == count && record.weights.size() == count &&
         std::all_of(record.counts.begin(), record.counts.end(), [](auto n) { return n >= 0; }) &&
         std::all_of(record.weights.begin(), record.weights.end(),
                     [](double weight) { return std::isfinite(weight); }) &&
         is_fingerprint(record.dna);
}

bool is_partial(ShardRecord const& record) {
  return !record.words.empty() && record.outcome != outcomes[text_code];
}

bool is_settled(ShardRecord const& record) {
  return !record.words.empty() ||
         (record.outcome != outcomes[failed_code] && record.outcome != outcomes[timed_out_code]);
}

bool path_before(std::string_view a, std::string_view b) {
  auto const rank = [](char c) {
    return c == '/' ? 0 : static_cast<int>(static_cast<unsigned char>(c)) + 1;
  };
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [rank](char x, char y) { return rank(x) < rank(y); });
}

std::uint8_t outcome_code(std::string_view outcome) {
  auto const found = std::find(outcomes.begin(), outcomes.end(), outcome);
  return found == outcomes.end() ? failed_code
                                 : static_cast<std::uint8_t>(found - outcomes.begin());
}

std::optional<std::string_view> outcome_word(std::uint8_t code) {
  return code < outcomes.size() ? std::optional(outcomes[code]) : std::nullopt;
}

std::string problem_of(ShardRecord const& record) {
  std::string const reason = printable(HString(record.reason.c_str()));
  if (!record.words.empty()) {
    return is_partial(record) ? read_in_part + reason : std::string();
  }
  return reason.empty() ? record.outcome : record.outcome + ": " + reason;
}

}  // namespace tool
