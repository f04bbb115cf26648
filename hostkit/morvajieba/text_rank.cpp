#include "morvajieba/text_rank.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <utility>

namespace morvajieba {

namespace {

constexpr double damping = 0.85;
constexpr int rounds = 10;

std::uint64_t hash_of(std::uint32_t first, std::uint32_t second) {
  return scatter(static_cast<std::uint64_t>(first) << 32 | second);
}

bool looks_like_word(std::wstring_view token) {
  return token.size() >= 2 && std::any_of(token.begin(), token.end(), [](wchar_t character) {
           return is_letter_or_digit(classify(character));
         });
}

/// The graph as rows of neighbours, one row per word. Numbers are ranks in code-point order and
/// each row is in that order, so that sums over a row round as sums over an ordered map do.
struct Graph {
  struct Edge {
    std::uint32_t neighbour;
    std::uint32_t weight;
  };

  std::vector<std::size_t> rows;  // where each row begins, and the end of the last one
  std::vector<Edge> edges;
};

/// Rows in the order of the table's slots. A pair of a word with itself joins it in both
/// directions.
Graph collect(std::vector<PairCounts::Pair> const& pairs, std::vector<std::uint32_t> const& ranks,
              std::size_t words) {
  Graph graph;
  graph.rows.assign(words + 1, 0);
  for (auto const& [first, second, count] : pairs) {
    if (count == 0) continue;
    ++graph.rows[ranks[first] + 1u];
    if (first != second) ++graph.rows[ranks[second] + 1u];
  }
  std::partial_sum(graph.rows.begin(), graph.rows.end(), graph.rows.begin());
  graph.edges.resize(graph.rows.back());
  std::vector<std::size_t> ends(graph.rows.begin(), graph.rows.end() - 1);
  for (auto const& [first, second, count] : pairs) {
    if (count == 0) continue;
    std::uint32_t const a = ranks[first];
    std::uint32_t const b = ranks[second];
    if (a == b) {
      graph.edges[ends[a]++] = {a, 2 * count};
    } else {
      graph.edges[ends[a]++] = {b, count};
      graph.edges[ends[b]++] = {a, count};
    }
  }
  return graph;
}

/// The same graph with each row in order: going through the rows in order and telling each
/// neighbour sorts them in linear time, as every edge stands in both its rows.
Graph sort_rows(Graph const& graph) {
  Graph sorted{graph.rows, std::vector<Graph::Edge>(graph.edges.size())};
  std::vector<std::size_t> ends(graph.rows.begin(), graph.rows.end() - 1);
  for (std::uint32_t word = 0; word + 1 < graph.rows.size(); ++word) {
    for (std::size_t i = graph.rows[word]; i < graph.rows[word + 1]; ++i) {
      sorted.edges[ends[graph.edges[i].neighbour]++] = {word, graph.edges[i].weight};
    }
  }
  return sorted;
}

/// Per edge, its share of all the weight that leaves its neighbour.
std::vector<double> compute_shares(Graph const& graph) {
  std::size_t const words = graph.rows.size() - 1;
  std::vector<double> sums(words, 0.0);
  for (std::size_t word = 0; word < words; ++word) {
    for (std::size_t i = graph.rows[word]; i < graph.rows[word + 1]; ++i) {
      sums[word] += graph.edges[i].weight;
    }
  }
  std::vector<double> shares(graph.edges.size());
  std::transform(graph.edges.begin(), graph.edges.end(), shares.begin(),
                 [&sums](Graph::Edge edge) { return edge.weight / sums[edge.neighbour]; });
  return shares;
}

/// Maps the weights so that the best word has 1.
void normalise(std::vector<double>& weights) {
  auto const [least, greatest] = std::minmax_element(weights.begin(), weights.end());
  double const offset = *least / 10.0;
  double const range = *greatest - offset;
  for (double& weight : weights) weight = (weight - offset) / range;
}

}  // namespace

void PairCounts::add(std::uint32_t left, std::uint32_t right) {
  auto const [first, second] = std::minmax(left, right);
  waiting_[waiting_count_++] = {first, second, hash_of(first, second)};
  if (waiting_count_ == waiting_.size()) count_waiting();
}

void PairCounts::count_waiting() {
  if ((used_ + waiting_count_) * 2 > slots_.size()) grow();
  std::span const waiting(waiting_.data(), waiting_count_);
  for (Waiting const& pair : waiting) __builtin_prefetch(&slots_[pair.hash & (slots_.size() - 1)]);
  for (auto const& [first, second, hash] : waiting) {
    Pair& pair = find(first, second, hash);
    if (pair.count == 0) {
      pair.first = first;
      pair.second = second;
      ++used_;
    }
    ++pair.count;
  }
  waiting_count_ = 0;
}

PairCounts::Pair& PairCounts::find(std::uint32_t first, std::uint32_t second, std::uint64_t hash) {
  std::size_t const mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (slots_[slot].count != 0 &&
         (slots_[slot].first != first || slots_[slot].second != second)) {
    slot = (slot + 1) & mask;
  }
  return slots_[slot];
}

void PairCounts::grow() {
  std::vector<Pair> old(std::max<std::size_t>(1024, slots_.size() * 2));
  old.swap(slots_);
  for (Pair const& pair : old) {
    if (pair.count != 0) {
      find(pair.first, pair.second, hash_of(pair.first, pair.second)) = pair;
    }
  }
}

std::vector<PairCounts::Pair> PairCounts::take() {
  count_waiting();
  used_ = 0;
  return std::exchange(slots_, {});
}

void TextRank::token(std::wstring_view text) {
  if (!looks_like_word(text)) return;
  std::uint32_t const number = words_.add(text);
  WordTable::Word& word = words_.word(number);
  if (word.count == 1) word.is_stop_word = stop_words_->contains(text);
  if (word.is_stop_word) return;
  for (std::uint64_t back = 1; back <= std::min<std::uint64_t>(reach, candidates_); ++back) {
    pairs_.add(latest_[(candidates_ - back) % reach], number);
  }
  latest_[candidates_ % reach] = number;
  ++candidates_;
}

void TextRank::sort_words() {
  sorted_.clear();
  for (std::uint32_t number = 0; number < words_.size(); ++number) {
    if (!words_.word(number).is_stop_word) sorted_.push_back(number);
  }
  std::sort(sorted_.begin(), sorted_.end(), [this](std::uint32_t a, std::uint32_t b) {
    return is_before(words_.text(a), words_.text(b));
  });
}

std::vector<double> TextRank::compute_weights() {
  std::size_t const words = sorted_.size();
  std::vector<std::uint32_t> ranks(words_.size(), 0);
  for (std::uint32_t rank = 0; rank < words; ++rank) ranks[sorted_[rank]] = rank;
  Graph const graph = sort_rows(collect(pairs_.take(), ranks, words));
  std::vector<double> const shares = compute_shares(graph);
  std::vector<double> weights(words, 1.0 / static_cast<double>(words));
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t word = 0; word < words; ++word) {
      double sum = 0.0;
      for (std::size_t i = graph.rows[word]; i < graph.rows[word + 1]; ++i) {
        sum += shares[i] * weights[graph.edges[i].neighbour];
      }
      weights[word] = (1.0 - damping) + damping * sum;
    }
  }
  normalise(weights);
  return weights;
}

std::vector<Keyword> TextRank::rank(std::size_t top) {
  sort_words();
  if (sorted_.empty()) return {};
  std::vector<double> const weights = compute_weights();
  std::vector<std::uint32_t> order(sorted_.size());
  std::iota(order.begin(), order.end(), 0u);
  auto const wanted = static_cast<std::ptrdiff_t>(std::min(top, order.size()));
  std::partial_sort(order.begin(), order.begin() + wanted, order.end(),
                    [&weights](std::uint32_t a, std::uint32_t b) {
                      return weights[a] != weights[b] ? weights[a] > weights[b] : a < b;
                    });
  order.resize(static_cast<std::size_t>(wanted));
  std::vector<Keyword> keywords;
  keywords.reserve(order.size());
  for (std::uint32_t const rank : order) {
    std::uint32_t const number = sorted_[rank];
    keywords.push_back({words_.text(number), words_.word(number).count, weights[rank]});
  }
  return keywords;
}

}  // namespace morvajieba
