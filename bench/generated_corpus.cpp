#include "generated_corpus.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <utility>

#include "generated_documents.h"

namespace bench {

namespace {

using Words = std::vector<std::pair<GeneratedWord, double>>;

constexpr std::size_t dna_bits = 128;

// Each word has a fixed sign in each coordinate, as a fingerprint gives it.
HPointN fingerprint(Words const& words) {
  std::vector<double> sums(dna_bits);
  for (auto const& [word, weight] : words) {
    std::uint64_t const halves[] = {mixed(2 * std::uint64_t{word}),
                                    mixed(2 * std::uint64_t{word} + 1)};
    for (std::size_t i = 0; i < sums.size(); ++i) {
      sums[i] += (halves[i / 64] >> (i % 64) & 1) != 0 ? weight : -weight;
    }
  }
  return HPointN(sums);
}

std::vector<Words> draw(std::size_t documents) {
  GeneratedDocuments const source;
  std::vector<Words> drawn;
  drawn.reserve(documents);
  for (std::size_t i = 0; i < documents; ++i) {
    drawn.push_back(strongest_words(source.document(i)));
    drawn.back().shrink_to_fit();
  }
  return drawn;
}

// In an order that has nothing to do with their frequencies, as that of their spellings.
std::unordered_map<GeneratedWord, std::uint32_t> columns_of(std::vector<Words> const& drawn) {
  std::unordered_map<GeneratedWord, std::uint32_t> columns;
  for (Words const& words : drawn) {
    for (auto const& entry : words) {
      columns.try_emplace(entry.first, 0);
    }
  }
  std::vector<std::pair<std::uint64_t, GeneratedWord>> order;
  order.reserve(columns.size());
  for (auto const& entry : columns) {
    order.emplace_back(mixed(entry.first), entry.first);
  }
  std::sort(order.begin(), order.end());
  for (std::size_t i = 0; i < order.size(); ++i) {
    columns[order[i].second] = static_cast<std::uint32_t>(i);
  }
  return columns;
}

std::vector<HSparsePoints::Row> rows_of(std::vector<Words> const& drawn) {
  auto const columns = columns_of(drawn);
  std::vector<HSparsePoints::Row> rows;
  rows.reserve(drawn.size());
  std::vector<std::pair<std::uint32_t, double>> entries;
  for (Words const& words : drawn) {
    entries.clear();
    for (auto const& [word, weight] : words) {
      entries.emplace_back(columns.at(word), weight);
    }
    std::sort(entries.begin(), entries.end());
    HSparsePoints::Row& row = rows.emplace_back();
    row.n = static_cast<long long>(columns.size());
    for (auto const& [column, weight] : entries) {
      row.indices.push_back(column);
      row.values.push_back(weight);
    }
  }
  return rows;
}

}  // namespace

std::vector<HSparsePoints::Row> generate_words(std::size_t documents) {
  return rows_of(draw(documents));
}

GeneratedCorpus generate_corpus(std::size_t documents) {
  auto const drawn = draw(documents);
  GeneratedCorpus corpus;
  corpus.words = rows_of(drawn);
  for (Words const& words : drawn) {
    corpus.dna.push_back(fingerprint(words));
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
