#include "classify/internal/weight_lists.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace morva {

namespace {

// So much of a box is looked at whole to see whether it is the same; of more, samples.
constexpr std::size_t most_words_compared = 64;
constexpr std::size_t most_weights_compared = 4096;
constexpr std::size_t weight_samples = 512;

constexpr std::uint32_t column_of(Vocabulary::Place place) {
  return 2 * place.rank + static_cast<std::uint32_t>(place.is_word);
}

bool is_same(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

bool is_same(SparsePoint const& a, SparsePoint const& b) {
  return a.columns == b.columns &&
         std::equal(a.values.begin(), a.values.end(), b.values.begin(), b.values.end(),
                    [](double x, double y) { return is_same(x, y); });
}

bool is_same_memory(std::span<double const> a, std::span<double const> b) {
  return a.data() == b.data() && a.size() == b.size();
}

}  // namespace

Lists lists_of(std::vector<QXPKMeansNode> const& classes) {
  Lists lists;
  lists.reserve(classes.size());
  for (QXPKMeansNode const& each : classes) {
    lists.emplace_back(each.vt_weight);
  }
  return lists;
}

Lists lists_of(std::span<QXPDBScanNode const> classes) {
  Lists lists;
  for (QXPDBScanNode const& each : classes) {
    for (QXPFeatureNode const& member : each.vt_file_node) {
      lists.emplace_back(member.vt_weight);
    }
  }
  return lists;
}

WeightLists::WeightLists(std::vector<HString> const& words, Lists const& lists)
    : vocabulary_(words),
      words_from_(words.data()),
      lists_from_(lists),
      points_(
          [&] {
            std::vector<SparsePoint> points;
            points.reserve(lists.size());
            for (std::span<double const> const list : lists) {
              points.push_back(point_of(list));
            }
            return points;
          }(),
          // A document may have several words in one gap, under one index.
          DistanceTable::Form::sparse) {}

SparsePoint WeightLists::point_of(std::span<double const> list) const {
  if (list.size() != vocabulary_.words().size()) {
    return {};
  }
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  std::vector<std::uint32_t> const& positions = vocabulary_.positions();
  for (std::uint32_t rank = 0; rank < positions.size(); ++rank) {
    double const weight = list[positions[rank]];
    if (weight != 0.0) {
      columns.push_back(column_of({rank, true}));
      values.push_back(weight);
    }
  }
  return {0, std::move(columns), std::move(values)};
}

SparsePoint WeightLists::point_of(HFeatureNode const& node) const {
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  std::optional<Vocabulary> own_words;
  std::uint32_t from = 0;
  for (auto const& [word, weight] : node.map_word_weight) {
    if (weight == 0.0) {
      continue;
    }
    Vocabulary::Place const place = vocabulary_.place_of(word, from);
    from = place.rank;
    if (!place.is_word) {
      if (!own_words) {
        own_words.emplace(node.vt_words);
      }
      if (!own_words->contains(word)) {
        continue;
      }
    }
    columns.push_back(column_of(place));
    values.push_back(weight);
  }
  return {0, std::move(columns), std::move(values)};
}

bool WeightLists::is_of(std::vector<HString> const& words, Lists const& lists) const {
  return words.data() == words_from_ && words.size() == vocabulary_.words().size() &&
         std::equal(lists.begin(), lists.end(), lists_from_.begin(), lists_from_.end(),
                    is_same_memory) &&
         has_equal_words(words) && has_equal_values(lists);
}

bool WeightLists::has_equal_words(std::vector<HString> const& words) const {
  std::size_t const step = 1 + words.size() / (most_words_compared + 1);
  for (std::size_t i = 0; i < words.size(); i += step) {
    if (!(words[i] == vocabulary_.words()[i])) {
      return false;
    }
  }
  return true;
}

bool WeightLists::has_equal_values(Lists const& lists) const {
  if (lists.size() * vocabulary_.words().size() > most_weights_compared) {
    return has_equal_samples(lists);
  }
  for (std::size_t j = 0; j < lists.size(); ++j) {
    if (!is_same(point_of(lists[j]), points_[j])) {
      return false;
    }
  }
  return true;
}

bool WeightLists::has_equal_samples(Lists const& lists) const {
  std::size_t const samples_of_list = 1 + weight_samples / lists.size();
  for (std::size_t j = 0; j < lists.size(); ++j) {
    SparsePoint const& point = points_[j];
    std::size_t const step = 1 + point.values.size() / samples_of_list;
    for (std::size_t i = step / 2; i < point.values.size(); i += step) {
      std::uint32_t const position = vocabulary_.positions()[point.columns[i] / 2];
      if (!is_same(lists[j][position], point.values[i])) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace morva
