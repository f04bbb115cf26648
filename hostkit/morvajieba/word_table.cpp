#include "morvajieba/word_table.h"

#include <algorithm>

#include <sys/random.h>

#include "morvajieba/characters.h"

namespace morvajieba {

namespace {

constexpr unsigned character_bits = 21;
constexpr std::uint32_t greatest_character = (1u << character_bits) - 1;
constexpr std::size_t start_length = 3;
constexpr std::uint64_t hash_mark = std::uint64_t{1} << 63;
constexpr std::size_t least_slots = 1024;

std::uint64_t make_process_number() {
  std::uint64_t number = 0;
  // A system without randomness leaves 0, which is as good for every text but a hostile one.
  return ::getrandom(&number, sizeof(number), GRND_NONBLOCK) == sizeof(number) ? number : 0;
}

/// The document decides the words, so that each process scatters them in its own way: no document
/// can fill one spot of a table. No result depends on it.
std::uint64_t const process_number = make_process_number();

std::uint64_t scatter(std::uint64_t key) {
  key = (key ^ process_number) * 0xBF58476D1CE4E5B9u;
  return key ^ key >> 31;
}

/// Whether the packed start says all of a text: nothing is cut off or out of range, and a NUL is no
/// missing character.
bool is_all_in_start(std::wstring_view text) {
  return text.size() <= start_length &&
         std::all_of(text.begin(), text.end(), [](wchar_t character) {
           return code_point(character) - 1 < greatest_character - 1;
         });
}

std::uint64_t key_of(std::wstring_view text) {
  std::uint64_t key = pack_start(text);
  if (is_all_in_start(text)) return key;
  for (wchar_t const character : text) key = scatter(key) + code_point(character);
  return key | hash_mark;
}

}  // namespace

bool is_before(std::wstring_view left, std::wstring_view right) {
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(),
      [](wchar_t a, wchar_t b) { return code_point(a) < code_point(b); });
}

std::uint64_t pack_start(std::wstring_view text) {
  std::uint64_t packed = 0;
  for (std::size_t i = 0; i < start_length; ++i) {
    std::uint32_t const code = i < text.size() ? code_point(text[i]) : 0;
    packed = packed << character_bits | std::min(code, greatest_character);
  }
  return packed;
}

std::uint32_t WordTable::add(std::wstring_view text) {
  if (size() * 2 >= slots_.size()) grow();
  std::uint64_t const key = key_of(text);
  Slot& slot = slots_[find_slot(text, key)];
  if (slot.number == 0) {
    places_.push_back({texts_.size(), text.size()});
    texts_.append(text);
    counts_.push_back(0);
    slot = {key, static_cast<std::uint32_t>(size())};
  }
  ++counts_[slot.number - 1];
  return slot.number - 1;
}

bool WordTable::contains(std::wstring_view text) const {
  return !slots_.empty() && slots_[find_slot(text, key_of(text))].number != 0;
}

std::size_t WordTable::find_slot(std::wstring_view text, std::uint64_t key) const {
  std::size_t const mask = slots_.size() - 1;
  std::size_t slot = scatter(key) & mask;
  while (slots_[slot].number != 0) {
    if (slots_[slot].key == key &&
        ((key & hash_mark) == 0 || this->text(slots_[slot].number - 1) == text)) {
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
    std::size_t slot = scatter(moved.key) & mask;
    while (slots_[slot].number != 0) slot = (slot + 1) & mask;
    slots_[slot] = moved;
  }
}

}  // namespace morvajieba
