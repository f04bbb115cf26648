#include "generated_corpus.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <utility>

namespace bench {

namespace {

using Random = std::mt19937_64;
using Word = std::uint32_t;
using Document = std::vector<std::pair<Word, double>>;

constexpr std::size_t words_per_document = 100;
constexpr Word topic_count = 20;
constexpr Word common_words = 3'000;
constexpr Word topic_words = 1'500;
constexpr Word rare_words = 100'000;
constexpr int dna_bits = 128;

// The library's distributions may differ from one implementation to the next.
double uniform(Random& random) {
  return static_cast<double>(random() >> 11) * 0x1p-53;
}

// Ranks by the law of Zipf and Mandelbrot with exponent 1: the inverse of the logarithm that sums
// it. The shift stands for the stop words, which are gone from the top.
Word zipf(Random& random, Word count) {
  constexpr double shift = 8.0;
  double const rank = shift * std::pow((count + shift) / shift, uniform(random)) - shift;
  return std::min(static_cast<Word>(rank), count - 1);
}

Word draw_word(Random& random, Word topic) {
  double const kind = uniform(random);
  if (kind < 0.35) {
    return zipf(random, common_words);
  }
  if (kind < 0.91) {
    return common_words + topic * topic_words + zipf(random, topic_words);
  }
  return common_words + topic_count * topic_words + static_cast<Word>(uniform(random) * rare_words);
}

Document draw_document(std::size_t index) {
  Random random(index);
  Word const topic = static_cast<Word>(random() % topic_count);
  double const fall = 0.25 + 0.35 * uniform(random);
  std::set<Word> seen;
  Document document;
  while (document.size() < words_per_document) {
    Word const word = draw_word(random, topic);
    if (seen.insert(word).second) {
      double const rank = static_cast<double>(document.size());
      double const noise = document.empty() ? 1.0 : 0.9 + 0.1 * uniform(random);
      document.emplace_back(word, std::pow(1.0 + rank, -fall) * noise);
    }
  }
  return document;
}

// Each word has a fixed sign in each coordinate, as a fingerprint gives it.
HPointN fingerprint(Document const& document) {
  std::vector<double> sums(dna_bits);
  for (auto const& [word, weight] : document) {
    Random bits(word);
    std::uint64_t const halves[] = {bits(), bits()};
    for (std::size_t i = 0; i < sums.size(); ++i) {
      sums[i] += (halves[i / 64] >> (i % 64) & 1) != 0 ? weight : -weight;
    }
  }
  return HPointN(sums);
}

}  // namespace

GeneratedCorpus generate_corpus(std::size_t documents) {
  std::vector<Document> drawn;
  std::map<Word, std::size_t> vocabulary;
  for (std::size_t i = 0; i < documents; ++i) {
    drawn.push_back(draw_document(i));
    for (auto const& entry : drawn.back()) {
      vocabulary.try_emplace(entry.first, 0);
    }
  }
  std::size_t next = 0;
  for (auto& entry : vocabulary) {
    entry.second = next++;
  }
  GeneratedCorpus corpus;
  for (Document const& document : drawn) {
    HSparsePoints::Row& row = corpus.words.emplace_back();
    row.n = static_cast<long long>(vocabulary.size());
    for (auto const& [word, weight] : std::map<Word, double>(document.begin(), document.end())) {
      row.indices.push_back(static_cast<std::uint32_t>(vocabulary.at(word)));
      row.values.push_back(weight);
    }
    corpus.dna.push_back(fingerprint(document));
  }
  return corpus;
}

std::vector<HSparsePoints::Row> to_rows(std::vector<HPointN> const& points) {
  std::vector<HSparsePoints::Row> rows;
  for (HPointN const& point : points) {
    HSparsePoints::Row& row = rows.emplace_back();
    row.n = point.n;
    for (std::size_t i = 0; i < point.vt_data.size(); ++i) {
      if (point.vt_data[i] != 0.0) {
        row.indices.push_back(static_cast<std::uint32_t>(i));
        row.values.push_back(point.vt_data[i]);
      }
    }
  }
  return rows;
}

std::vector<HPointN> to_points(std::vector<HSparsePoints::Row> const& rows) {
  std::vector<HPointN> points;
  points.reserve(rows.size());
  for (HSparsePoints::Row const& row : rows) {
    HPointN& point = points.emplace_back();
    point.resize(row.n);
    for (std::size_t k = 0; k < row.indices.size(); ++k) {
      point.vt_data[row.indices[k]] = row.values[k];
    }
  }
  return points;
}

}  // namespace bench
