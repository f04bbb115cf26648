#include "morvajieba/word_table.h"

#include <algorithm>

#include <sys/random.h>

namespace morvajieba {

namespace {

std::uint64_t make_process_number() {
  std::uint64_t number = 0;
  // A system without randomness leaves 0, which is as good for every text but a hostile one.
  return ::getrandom(&number, sizeof(number), GRND_NONBLOCK) == sizeof(number) ? number : 0;
}

std::uint32_t hash_of(std::wstring_view text) {
  std::uint64_t hash = text.size();
  for (wchar_t const character : text) {
    hash = (hash ^ static_cast<std::uint32_t>(character)) * 0x9E3779B97F4A7C15u;
    hash ^= hash >> 29;
  }
  return static_cast<std::uint32_t>(scatter(hash) >> 32);
}

}  // namespace

std::uint64_t const process_number = make_process_number();

bool is_before(std::wstring_view left, std::wstring_view right) {
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(), [](wchar_t a, wchar_t b) {
        return static_cast<std::uint32_t>(a) < static_cast<std::uint32_t>(b);
      });
}

std::uint32_t WordTable::add(std::wstring_view text) {
  if (words_.size() * 2 >= slots_.size()) grow();
  std::uint32_t const hash = hash_of(text);
  std::size_t const mask = slots_.size() - 1;
  for (std::size_t slot = hash & mask;; slot = (slot + 1) & mask) {
    if (slots_[slot] == 0) {
      words_.push_back({texts_.size(), static_cast<std::uint32_t>(text.size()), 1, hash, false});
      texts_.append(text);
      slots_[slot] = static_cast<std::uint32_t>(words_.size());
      return slots_[slot] - 1;
    }
    std::uint32_t const number = slots_[slot] - 1;
    if (words_[number].hash == hash && this->text(number) == text) {
      ++words_[number].count;
      return number;
    }
  }
}

void WordTable::grow() {
  slots_.assign(std::max<std::size_t>(1024, slots_.size() * 2), 0);
  std::size_t const mask = slots_.size() - 1;
  for (std::uint32_t number = 0; number < words_.size(); ++number) {
    std::size_t slot = words_[number].hash & mask;
    while (slots_[slot] != 0) slot = (slot + 1) & mask;
    slots_[slot] = number + 1;
  }
}

}  // namespace morvajieba
