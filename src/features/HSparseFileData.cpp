#include "features/HSparseFileData.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "dna/HFileDNA.h"
#include "features/HClusterFileData.h"

namespace {

constexpr std::uint32_t no_place = std::numeric_limits<std::uint32_t>::max();

HSparsePoints points_of_fingerprints(std::vector<HFeatureNode> const& features) {
  std::vector<HPointN> points;
  points.reserve(features.size());
  for (HFeatureNode const& node : features) {
    points.push_back(HFileDNA::get_pointn(node.str_file_id, node.str_dna));
  }
  return HSparsePoints(points);
}

}  // namespace

HSparseFileData::HSparseFileData() = default;
HSparseFileData::~HSparseFileData() = default;

void HSparseFileData::format_data(std::vector<HFeatureNode> const& vt_feature,
                                  std::vector<HString>& vt_words, HSparsePoints& points,
                                  bool use_dna) {
  if (use_dna) {
    HClusterFileData::get_words(vt_feature, vt_words);
    points = points_of_fingerprints(vt_feature);
    return;
  }
  HSparseFileData data;
  for (HFeatureNode const& node : vt_feature) {
    data.add(node);
  }
  data.format_data(vt_words, points);
}

std::uint32_t HSparseFileData::place_of(HString const& word) {
  auto const next = static_cast<std::uint32_t>(texts_.size());
  auto const [found, is_new] = places_.try_emplace(text_view(word), next);
  if (!is_new) {
    return found->second;
  }
  try {
    // The text is shared with the record's, so that the view stays good.
    texts_.push_back(word);
  } catch (...) {
    places_.erase(found);
    throw;
  }
  return next;
}

void HSparseFileData::add(HFeatureNode const& node) {
  Record all;
  all.reserve(node.map_word_weight.size() + node.vt_words.size());
  for (auto const& [word, weight] : node.map_word_weight) {
    all.push_back({place_of(word), false, weight});
  }
  for (HString const& word : node.vt_words) {
    all.push_back({place_of(word), true, 0.0});
  }
  std::sort(all.begin(), all.end(), [](Entry const& a, Entry const& b) {
    return a.word != b.word ? a.word < b.word : a.is_listed < b.is_listed;
  });
  // Of one word, what the map says of it stands first.
  auto last = all.begin();
  for (Entry const& entry : all) {
    if (entry.word == last->word) {
      last->is_listed = last->is_listed || entry.is_listed;
    } else {
      *++last = entry;
    }
  }
  records_.emplace_back(all.begin(), all.empty() ? all.end() : last + 1);
}

std::size_t HSparseFileData::size() const {
  return records_.size();
}

void HSparseFileData::format_data(std::vector<HString>& vt_words, HSparsePoints& points) const {
  std::vector<Record const*> records;
  records.reserve(records_.size());
  for (Record const& record : records_) {
    records.push_back(&record);
  }
  format(records, vt_words, points);
}

void HSparseFileData::format_data(std::vector<int> const& members, std::vector<HString>& vt_words,
                                  HSparsePoints& points) const {
  std::vector<Record const*> records;
  for (int const member : members) {
    if (member >= 0 && static_cast<std::size_t>(member) < records_.size()) {
      records.push_back(&records_[static_cast<std::size_t>(member)]);
    }
  }
  format(records, vt_words, points);
}

// Fills in the words of the records in order, and returns for each text its position there.
HSparseFileData::Places HSparseFileData::vocabulary(std::vector<Record const*> const& records,
                                                    std::vector<HString>& words) const {
  Places position_of(texts_.size(), no_place);
  Places listed;
  for (Record const* record : records) {
    for (Entry const& entry : *record) {
      if (entry.is_listed && position_of[entry.word] == no_place) {
        position_of[entry.word] = 0;
        listed.push_back(entry.word);
      }
    }
  }
  std::sort(listed.begin(), listed.end(),
            [this](std::uint32_t a, std::uint32_t b) { return texts_[a] < texts_[b]; });
  words.clear();
  words.reserve(listed.size());
  for (std::uint32_t const place : listed) {
    position_of[place] = static_cast<std::uint32_t>(words.size());
    words.push_back(texts_[place]);
  }
  return position_of;
}

void HSparseFileData::format(std::vector<Record const*> const& records, std::vector<HString>& words,
                             HSparsePoints& points) const {
  Places const position_of = vocabulary(records, words);
  std::vector<HSparsePoints::Row> rows;
  rows.reserve(records.size());
  std::vector<std::pair<std::uint32_t, double>> weights;
  for (Record const* record : records) {
    weights.clear();
    for (Entry const& entry : *record) {
      if (position_of[entry.word] != no_place) {
        weights.emplace_back(position_of[entry.word], entry.weight);
      }
    }
    // By position alone: weights can be without an order.
    std::sort(weights.begin(), weights.end(),
              [](auto const& a, auto const& b) { return a.first < b.first; });
    HSparsePoints::Row& row = rows.emplace_back();
    row.n = static_cast<long long>(words.size());
    row.indices.reserve(weights.size());
    row.values.reserve(weights.size());
    for (auto const& [position, weight] : weights) {
      row.indices.push_back(position);
      row.values.push_back(weight);
    }
  }
  points = HSparsePoints(std::move(rows));
}
