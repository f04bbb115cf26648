#include "morvajieba/word_table.h"

#include <algorithm>

#include <sys/random.h>

#include "morvajieba/characters.h"

namespace morvajieba {

namespace {

constexpr unsigned character_bits = 21;
constexpr std::uint32_t greatest_character = (1u << character_bits) - 1;
constexpr std::size_t start_length = 3;
constexpr std::size_t least_slots = 1024;

std::uint64_t make_process_number() {
  std::uint64_t number = 0;
  // A system without randomness leaves 0, which is as good for every text but a hostile one.
  return ::getrandom(&number, sizeof(number), GRND_NONBLOCK) == sizeof(number) ? number : 0;
}

/// The document decides the words, so that each process scatters them in its own way: no document
/// can fill one spot of a table. No result depends on it.
std::uint64_t const process_number = make_process_number();

std::uint32_t hash_of(std::wstring_view text, WordStart const& start) {
  std::uint64_t hash = (start.number() ^ process_number) * 0x9E3779B97F4A7C15u;
  hash ^= hash >> 29;
  for (std::size_t i = start_length; i < text.size(); ++i) {
    hash = (hash ^ code_point(text[i])) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
  }
  return static_cast<std::uint32_t>((hash ^ process_number) * 0xBF58476D1CE4E5B9u >> 32);
}

}  // namespace

bool is_before(std::wstring_view left, std::wstring_view right) {
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(),
      [](wchar_t a, wchar_t b) { return code_point(a) < code_point(b); });
}

WordStart::WordStart(std::wstring_view text) : is_all_(text.size() <= start_length) {
  for (std::size_t i = 0; i < start_length; ++i) {
    std::uint32_t const code = i < text.size() ? code_point(text[i]) : 0;
    number_ = number_ << character_bits | std::min(code, greatest_character);
    is_all_ = is_all_ && code < greatest_character;
  }
}

std::uint32_t WordTable::add(std::wstring_view text) {
  if (words_.size() * 2 >= slots_.size()) grow();
  WordStart const start(text);
  std::uint32_t const hash = hash_of(text, start);
  Slot& slot = slots_[find_slot(text, start, hash)];
  if (slot.number != 0) {
    ++words_[slot.number - 1].count;
    return slot.number - 1;
  }
  words_.push_back(
      {start.number(), texts_.size(), static_cast<std::uint32_t>(text.size()), 1, false});
  texts_.append(text);
  slot = {hash, static_cast<std::uint32_t>(words_.size())};
  return slot.number - 1;
}

bool WordTable::contains(std::wstring_view text) const {
  if (slots_.empty()) return false;
  WordStart const start(text);
  return slots_[find_slot(text, start, hash_of(text, start))].number != 0;
}

std::size_t WordTable::find_slot(std::wstring_view text, WordStart const& start,
                                 std::uint32_t hash) const {
  std::size_t const mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot].number != 0) {
    std::uint32_t const number = slots_[slot].number - 1;
    Word const& word = words_[number];
    if (slots_[slot].hash == hash && word.start == start.number() && word.length == text.size() &&
        (start.is_all() || this->text(number) == text)) {
      break;
    }
    slot = (slot + 1) & mask;
  }
  return slot;
}

void WordTable::grow() {
  std::vector<Slot> old(std::max(least_slots, slots_.size() * 2));
  old.swap(slots_);
  std::size_t const mask = slots_.size() - 1;
  for (Slot const& moved : old) {
    if (moved.number == 0) continue;
    std::size_t slot = moved.hash & mask;
    while (slots_[slot].number != 0) slot = (slot + 1) & mask;
    slots_[slot] = moved;
  }
}

}  // namespace morvajieba
