#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "features/HFeatureNode.h"
#include "host/HString.h"
#include "host/export.h"
#include "numeric/HSparsePoints.h"

/// The numeric form of a set of documents, of which only the weights that are not zero are kept.
/// The counterpart of `HClusterFileData`: vocabulary and points are the same to the last bit, and
/// so is what is logged.
///
/// A corpus can also be gathered record by record, so that no record need be kept: 16 bytes for
/// each word of a record, and each text once.
class MORVA_EXPORT HSparseFileData {
 public:
  /// No records.
  HSparseFileData();
  ~HSparseFileData();

  /// As `HClusterFileData::format_data`.
  static void format_data(std::vector<HFeatureNode> const& vt_feature,
                          std::vector<HString>& vt_words, HSparsePoints& points, bool use_dna);

  /// Takes in the words of one more record.
  void add(HFeatureNode const& node);
  /// Number of the records.
  std::size_t size() const;
  /// Vocabulary and points of all records in the order in which they came, as the static form makes
  /// them without fingerprints.
  void format_data(std::vector<HString>& vt_words, HSparsePoints& points) const;
  /// The same of the records at these positions alone, in this order; a position that is none is
  /// passed over.
  void format_data(std::vector<int> const& members, std::vector<HString>& vt_words,
                   HSparsePoints& points) const;

 private:
  // A word of a record, told by its place among the texts.
  struct Entry {
    std::uint32_t word;
    // Whether it stands in the list of words, and so in the vocabulary.
    bool is_listed;
    double weight;
  };
  using Record = std::vector<Entry>;
  using Places = std::vector<std::uint32_t>;

  std::uint32_t place_of(HString const& word);
  Places vocabulary(std::vector<Record const*> const& records, std::vector<HString>& words) const;
  void format(std::vector<Record const*> const& records, std::vector<HString>& words,
              HSparsePoints& points) const;

  std::vector<Record> records_;
  std::vector<HString> texts_;
  // Views of the texts.
  std::unordered_map<std::wstring_view, std::uint32_t> places_;
};
