#include "morvajieba/text_rank.h"

#include <algorithm>
#include <array>
#include <span>

namespace morvajieba {

namespace {

constexpr double damping = 0.85;
constexpr int rounds = 10;
/// How many rows are on their way from memory at a time.
constexpr std::size_t rows_ahead = 8;

bool looks_like_word(std::wstring_view token) {
  return token.size() >= 2 && std::any_of(token.begin(), token.end(), [](wchar_t character) {
           return is_letter_or_digit(classify(character));
         });
}

/// The graph, ready for the rounds. Words are ranks in code-point order, and each word's edges are
/// in that order too, so that a sum over them rounds as one over an ordered map does. A word hands
/// the same to all neighbours near which it stands equally often: this is a link, and an edge is
/// the number of the link by which it is fed.
struct Network {
  std::vector<std::size_t> edge_ends;    // per word, where its edges end
  std::vector<std::uint32_t> edges;      // links of the neighbours
  std::vector<std::uint32_t> link_ends;  // per word, where its links end
  std::vector<double> shares;  // per link, its share of all the weight that leaves the word
};

/// Numbers the links of one word after the other.
class LinkNumbers {
 public:
  explicit LinkNumbers(Network& network) : network_(&network) {}

  void begin_word(std::span<NeighbourCounts::Neighbour const> neighbours) {
    first_ = network_->shares.size();
    std::uint64_t sum = 0;
    for (auto const& [neighbour, count] : neighbours) sum += count;
    sum_ = static_cast<double>(sum);
  }
  std::uint32_t link_for(std::uint32_t count) {
    // The great counts are few, and have links of their own.
    if (count >= known_.size()) return add(count);
    if (known_[count] <= first_) known_[count] = add(count) + 1u;
    return known_[count] - 1;
  }
  void end_word() {
    network_->link_ends.push_back(static_cast<std::uint32_t>(network_->shares.size()));
  }

 private:
  std::uint32_t add(std::uint32_t count) {
    network_->shares.push_back(count / sum_);
    return static_cast<std::uint32_t>(network_->shares.size() - 1);
  }

  Network* network_;
  std::size_t first_ = 0;
  double sum_ = 0.0;
  std::array<std::uint32_t, 256> known_{};  // per count its link + 1, below that of an earlier word
};

/// `sorted` are the words' numbers by rank. Going through them in order and telling each neighbour
/// sorts all edges in linear time, as every edge is there from both its ends.
Network make_network(NeighbourCounts const& counts, std::vector<std::uint32_t> const& sorted,
                     std::size_t numbers) {
  Network network;
  network.edges.resize(counts.size());
  network.edge_ends.reserve(sorted.size());
  network.link_ends.reserve(sorted.size());
  network.shares.reserve(2 * sorted.size());
  std::vector<std::size_t> places(numbers);  // by number, where its next edge goes
  std::size_t place = 0;
  for (std::uint32_t const number : sorted) {
    places[number] = place;
    place += counts.of(number).size();
    network.edge_ends.push_back(place);
  }
  LinkNumbers links(network);
  for (std::size_t rank = 0; rank < sorted.size(); ++rank) {
    // The rows lie in the order of the numbers: each is somewhere else.
    __builtin_prefetch(counts.of(sorted[std::min(rank + rows_ahead, sorted.size() - 1)]).data());
    auto const neighbours = counts.of(sorted[rank]);
    links.begin_word(neighbours);
    for (auto const& [neighbour, count] : neighbours) {
      network.edges[places[neighbour]++] = links.link_for(count);
    }
    links.end_word();
  }
  return network;
}

std::vector<double> compute_weights(Network const& network) {
  std::size_t const words = network.edge_ends.size();
  std::vector<double> weights(words, 1.0 / static_cast<double>(words));
  std::vector<double> flows(network.shares.size());  // what each link hands over
  std::transform(network.shares.begin(), network.shares.end(), flows.begin(),
                 [&weights](double share) { return share * weights.front(); });
  for (int round = 0; round < rounds; ++round) {
    std::size_t edge = 0;
    std::size_t link = 0;
    for (std::size_t word = 0; word < words; ++word) {
      double sum = 0.0;
      for (; edge < network.edge_ends[word]; ++edge) sum += flows[network.edges[edge]];
      weights[word] = (1.0 - damping) + damping * sum;
      for (; link < network.link_ends[word]; ++link) {
        flows[link] = network.shares[link] * weights[word];
      }
    }
  }
  return weights;
}

/// Maps the weights so that the best word has 1.
void normalise(std::vector<double>& weights) {
  auto const [least, greatest] = std::minmax_element(weights.begin(), weights.end());
  double const offset = *least / 10.0;
  double const range = *greatest - offset;
  for (double& weight : weights) weight = (weight - offset) / range;
}

/// The places of the greatest weights, the greatest first, in order of place where they are equal.
std::vector<std::uint32_t> find_best(std::vector<double> const& weights, std::size_t most) {
  struct Entry {
    double weight;
    std::uint32_t place;
  };
  auto const is_better = [](Entry const& a, Entry const& b) {
    return a.weight != b.weight ? a.weight > b.weight : a.place < b.place;
  };
  std::vector<Entry> entries;
  entries.reserve(weights.size());
  for (double const weight : weights) {
    entries.push_back({weight, static_cast<std::uint32_t>(entries.size())});
  }
  if (most < entries.size()) {
    auto const end = entries.begin() + static_cast<std::ptrdiff_t>(most);
    std::nth_element(entries.begin(), end, entries.end(), is_better);
    entries.erase(end, entries.end());
  }
  std::sort(entries.begin(), entries.end(), is_better);
  std::vector<std::uint32_t> places(entries.size());
  std::transform(entries.begin(), entries.end(), places.begin(),
                 [](Entry const& entry) { return entry.place; });
  return places;
}

}  // namespace

void TextRank::token(std::wstring_view text) {
  if (!looks_like_word(text)) return;
  std::uint32_t const number = words_.add(text);
  if (number == is_stop_word_.size()) is_stop_word_.push_back(stop_words_->contains(text));
  if (!is_stop_word_[number]) neighbours_.add(number);
}

std::vector<std::uint32_t> TextRank::sort_words() const {
  struct Key {
    std::uint64_t start;
    std::uint32_t number;
  };
  std::vector<Key> keys;
  keys.reserve(words_.size());
  for (std::uint32_t number = 0; number < words_.size(); ++number) {
    if (!is_stop_word_[number]) keys.push_back({pack_start(words_.text(number)), number});
  }
  std::sort(keys.begin(), keys.end(), [this](Key const& a, Key const& b) {
    return a.start != b.start ? a.start < b.start
                              : is_before(words_.text(a.number), words_.text(b.number));
  });
  std::vector<std::uint32_t> sorted(keys.size());
  std::transform(keys.begin(), keys.end(), sorted.begin(),
                 [](Key const& key) { return key.number; });
  return sorted;
}

std::vector<Keyword> TextRank::rank(std::size_t top) {
  neighbours_.finish();
  std::vector<std::uint32_t> const sorted = sort_words();
  if (sorted.empty()) return {};
  std::vector<double> weights = compute_weights(make_network(neighbours_, sorted, words_.size()));
  normalise(weights);
  std::vector<Keyword> keywords;
  for (std::uint32_t const rank : find_best(weights, top)) {
    std::uint32_t const number = sorted[rank];
    keywords.push_back({words_.text(number), words_.count(number), weights[rank]});
  }
  return keywords;
}

}  // namespace morvajieba
