#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "features/HFeatureNode.h"
#include "morvaai_c.h"

#include "c/internal/reading.h"

/// What was found in a document, and the words of it in the form in which callers get them.
struct morva_document {
 public:
  morva_document(morva::c::Reading found, morva::c::Wants wants);

  morva::c::Reading const& reading() const { return reading_; }
  morva::c::Wants const& wants() const { return wants_; }

  std::size_t word_count() const { return weights_.size(); }
  char const* const* words() const { return words_.data(); }
  char const* const* tags() const { return tags_.data(); }
  double const* weights() const { return weights_.data(); }
  std::int32_t const* counts() const { return counts_.data(); }

  /// What it is matched by: its first words, or with `all_words` all that it has.
  HFeatureNode record() const;
  void match_by_all_words() { matches_by_all_words_ = true; }

 private:
  morva::c::Reading reading_;
  morva::c::Wants wants_;
  bool matches_by_all_words_ = false;
  /// Words and tags, each ended by a zero.
  std::string texts_;
  std::vector<char const*> words_;
  std::vector<char const*> tags_;
  std::vector<double> weights_;
  std::vector<std::int32_t> counts_;
};
