#include "generated_documents.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace bench {

namespace {

constexpr std::uint32_t topic_count = 60;
constexpr std::uint32_t last_rank = (1U << 30) - 1;
constexpr std::size_t most_words = 100;

// Steele, Lea, Flood, Fast splittable pseudorandom number generators, 2014.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() { return mixed(state_ += 0x9E3779B97F4A7C15U); }
  double uniform() { return static_cast<double>(next() >> 11U) * 0x1p-53; }
  bool chance(double share) { return uniform() < share; }
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }
  // Of exponent 5/3 the inverse of the distribution needs a root alone, which is exactly rounded.
  std::uint32_t zipf(double shift) {
    double const left = 1.0 - uniform();
    double const rank = shift / (left * std::sqrt(left)) - shift;
    return rank < last_rank ? static_cast<std::uint32_t>(rank) : last_rank;
  }

 private:
  std::uint64_t state_;
};

GeneratedWord word_of(std::uint32_t rank, bool is_latin) {
  return 2 * rank + (is_latin ? 1 : 0);
}

// Topics have their words from the middle of the vocabulary, each in an order of its own.
std::uint32_t topic_rank(std::uint32_t topic, std::uint32_t place) {
  constexpr std::uint32_t first = 200;
  constexpr std::uint32_t count = 60'000;
  std::uint64_t const key = (std::uint64_t{topic} << 32U) + place;
  return first + static_cast<std::uint32_t>(mixed(key) % count);
}

GeneratedWord draw_word(GeneratedDocument const& document, Random& random) {
  constexpr double general_shift = 120.0;
  constexpr double topic_shift = 15.0;
  bool const is_latin = random.chance(0.06) ? !document.is_latin : document.is_latin;
  if (random.chance(0.35)) {
    return word_of(topic_rank(document.topic, random.zipf(topic_shift)), is_latin);
  }
  return word_of(random.zipf(general_shift), is_latin);
}

// A product of many factors is nearly log-normal; of these seven, the deviation is 0.8.
std::size_t draw_length(Random& random) {
  constexpr int factors = 7;
  double length = 420.0;
  for (int i = 0; i < factors; ++i) {
    length *= 0.5 + random.uniform();
  }
  return static_cast<std::size_t>(length);
}

GeneratedDocument new_document(Random& random) {
  constexpr double topic_sizes_shift = 4.0;
  GeneratedDocument document;
  document.is_latin = random.chance(0.3);
  document.topic = random.zipf(topic_sizes_shift) % topic_count;
  std::size_t const length = draw_length(random);
  document.words.reserve(length);
  while (document.words.size() < length) {
    bool const is_repeated = !document.words.empty() && random.chance(0.15);
    document.words.push_back(is_repeated ? document.words[random.below(document.words.size())]
                                         : draw_word(document, random));
  }
  return document;
}

void revise(GeneratedDocument& document, Random& random) {
  double const share = 0.05 * random.uniform();
  for (GeneratedWord& word : document.words) {
    if (random.chance(share)) {
      word = draw_word(document, random);
    }
  }
}

}  // namespace

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
  value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
  return value ^ (value >> 31U);
}

GeneratedDocument GeneratedDocuments::document(std::size_t number) const {
  Random random(mixed(seed_) ^ mixed(~std::uint64_t{number}));
  if (number == 0 || !random.chance(0.06)) {
    return new_document(random);
  }
  GeneratedDocument revision = document(random.below(number));
  revise(revision, random);
  return revision;
}

std::vector<std::pair<GeneratedWord, double>> strongest_words(GeneratedDocument const& document) {
  std::map<GeneratedWord, double> counts;
  for (GeneratedWord const word : document.words) {
    counts[word] += 1.0;
  }
  std::vector<std::pair<GeneratedWord, double>> words(counts.begin(), counts.end());
  // A ranking hardly ever gives two words the same weight: neighbours in the text decide.
  for (auto& [word, weight] : words) {
    std::uint64_t const bits = mixed(word ^ mixed(document.words.size()));
    weight *= 0.8 + 0.2 * (static_cast<double>(bits >> 11U) * 0x1p-53);
  }
  std::sort(words.begin(), words.end(), [](auto const& a, auto const& b) {
    return a.second != b.second ? a.second > b.second : a.first < b.first;
  });
  words.resize(std::min(words.size(), most_words));
  double const greatest = words.empty() ? 1.0 : words.front().second;
  for (auto& [word, weight] : words) {
    weight /= greatest;
  }
  return words;
}

}  // namespace bench
