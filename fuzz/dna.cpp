#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "dna/HFileDNA.h"
#include "dna/HFileDNAList.h"
#include "dna/HFileMatchDNA.h"
#include "dna/HFileSimHash.h"
#include "host/HFileLog.h"

#include "fuzz/require.h"
#include "fuzz/wide_text.h"
#include "reference/simhash.h"
#include "reference/similarity.h"

// Fingerprints that are any text: likenesses are those of the plain form to the last bit, alone and
// in lists, and fingerprints of any words are those of the plain form.

namespace {

using fuzz::require;
using Dnas = std::vector<HString>;
using Pairs = std::vector<std::pair<std::size_t, double>>;

Pairs pairs(std::vector<HFileDNAFound> const& found) {
  Pairs result;
  for (HFileDNAFound const& one : found) {
    result.emplace_back(one.index, one.similarity);
  }
  return result;
}

Pairs plain_similar(Dnas const& dnas, HString const& dna, double threshold) {
  Pairs result;
  for (std::size_t i = 0; i < dnas.size(); ++i) {
    double const similarity = reference::similarity(dna, dnas[i]);
    if (similarity >= threshold) {
      result.emplace_back(i, similarity);
    }
  }
  return result;
}

Pairs plain_most_similar(Dnas const& dnas, HString const& dna, std::size_t count) {
  Pairs result = plain_similar(dnas, dna, 0.0);
  std::stable_sort(result.begin(), result.end(),
                   [](auto const& a, auto const& b) { return a.second > b.second; });
  result.resize(std::min(count, result.size()));
  return result;
}

void check_similarity(HString const& a, HString const& b) {
  double const similarity = HFileMatchDNA::get_dna_similarity(a, b);
  require(similarity == reference::similarity(a, b), "a likeness is that of the plain form");
  require(similarity == HFileMatchDNA::get_dna_similarity(b, a),
          "a likeness is the same both ways");
  require(similarity >= 0.0 && similarity <= 100.0, "a likeness is in percent");
  require(a.empty() || HFileMatchDNA::get_dna_similarity(a, a) == 100.0, "a text is like itself");
}

void check_list(Dnas const& dnas, double threshold, std::size_t count) {
  HFileDNAList list;
  for (HString const& dna : dnas) {
    list.append(dna);
  }
  require(list.size() == dnas.size(), "a list has what was appended");
  for (HString const& dna : dnas) {
    require(pairs(list.get_similar(dna, threshold)) == plain_similar(dnas, dna, threshold),
            "a list finds what the plain form finds");
    require(pairs(list.get_most_similar(dna, count)) == plain_most_similar(dnas, dna, count),
            "a list finds the most similar ones of the plain form");
  }
}

/// A wide fingerprint of this text's beginning.
HString widened(HString const& text) {
  constexpr int wide = 1024;
  HString dna = text.get_first(wide);
  while (dna.length() < wide) {
    dna += HString(L"7FFFFFFF").get_first(wide - dna.length());
  }
  return dna;
}

void check_points(HString const& dna) {
  constexpr int dimensions = 128;
  HPointN const point = HFileDNA::get_pointn(L"label", dna);
  require(point.get_n() == dimensions, "a wide fingerprint is a point");
  HString const back = HFileDNA::get_dna(point);
  require(back.is_all_good_0x() && back.size() >= dimensions, "a point is a fingerprint");
  HPointN const other = HFileDNA::get_pointn(L"label", back);
  require(other.get_n() == dimensions || other.get_n() == 0, "fields may have lost their zeros");
}

void check_words(std::map<HString, double> const& words) {
  for (int const length : {32, 1024}) {
    HFileDNA::mi_dna_length = length;
    HString dna;
    HFileSimHash::simhashDNA(words, dna);
    require(dna.get_ws() == reference::simhash(words, length == 1024),
            "a fingerprint is that of the plain form");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  HFileLog::ins()->mi_level = 0;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  double const threshold = input.ConsumeBool() ? input.ConsumeFloatingPoint<double>()
                                               : input.ConsumeFloatingPointInRange(-1.0, 101.0);
  auto const count = input.ConsumeIntegralInRange<std::size_t>(0, 8);
  Dnas dnas(input.ConsumeIntegralInRange<std::size_t>(1, 6));
  std::map<HString, double> words;
  for (HString& dna : dnas) {
    bool const is_fresh = input.ConsumeBool();
    dna = is_fresh ? fuzz::any_string(input.ConsumeRandomLengthString(80)) : dnas.front();
    words[dna] = input.ConsumeFloatingPointInRange(-3000.0, 3000.0);
  }
  check_similarity(dnas.front(), dnas.back());
  check_list(dnas, threshold, count);
  check_points(widened(dnas.front()));
  check_words(words);
  return 0;
}
