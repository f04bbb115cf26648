#include <algorithm>
#include <memory>
#include <vector>

#include "dna/HFileDNA.h"
#include "dna/HFileDNAList.h"
#include "dna/HFileMatchDNA.h"
#include "morvaai_c.h"

#include "c/internal/call.h"
#include "c/internal/dna_text.h"

using morva::c::checked_dna;
using morva::c::Failure;
using morva::c::needed;

namespace morva::c {

HString checked_dna(char const* text, char const* name) {
  if (!is_dna(needed(text, name))) {
    throw Failure(MORVA_INVALID_ARGUMENT,
                  std::string(name) + " is no fingerprint: it is of digits and A to F");
  }
  return HString(text);
}

}  // namespace morva::c

struct morva_dna_list {
  HFileDNAList dnas;
};

morva_status morva_dna_similarity(char const* a, char const* b, double* similarity) {
  return morva::c::status_of([&] {
    double& result = morva::c::emptied(similarity, "similarity");
    result = HFileMatchDNA::get_dna_similarity(checked_dna(a, "a"), checked_dna(b, "b"));
  });
}

morva_status morva_dna_point(char const* wide_dna, double values[128]) {
  return morva::c::status_of([&] {
    constexpr int wide_length = 1024;
    needed(values, "values");
    HString const dna = checked_dna(wide_dna, "wide_dna");
    if (dna.length() != wide_length) {
      throw Failure(MORVA_INVALID_ARGUMENT, "wide_dna is not of 1024 digits");
    }
    HPointN const point = HFileDNA::get_pointn(HString(), dna);
    std::copy(point.vt_data.begin(), point.vt_data.end(), values);
  });
}

morva_status morva_dna_list_new(morva_dna_list** list) {
  return morva::c::status_of([&] {
    morva_dna_list*& result = morva::c::emptied(list, "list");
    result = std::make_unique<morva_dna_list>().release();
  });
}

void morva_dna_list_free(morva_dna_list* list) {
  std::unique_ptr<morva_dna_list> const ended(list);
}

morva_status morva_dna_list_append(morva_dna_list* list, char const* const* dnas, size_t count) {
  return morva::c::status_of([&] {
    needed(list, "list");
    for (std::size_t i = 0; i < count; ++i) {
      std::string const name = "fingerprint " + std::to_string(i);
      list->dnas.append(checked_dna(needed(dnas, "dnas")[i], name.c_str()));
    }
  });
}

size_t morva_dna_list_size(morva_dna_list const* list) {
  return list == nullptr ? 0 : list->dnas.size();
}

morva_status morva_dna_list_similarities(morva_dna_list const* list, char const* dna,
                                         double* similarities, size_t count) {
  return morva::c::status_of([&] {
    HString const asked = checked_dna(dna, "dna");
    if (count != needed(list, "list")->dnas.size()) {
      throw Failure(MORVA_INVALID_ARGUMENT, "count is not the size of the list");
    }
    if (count == 0) {
      return;
    }
    needed(similarities, "similarities");
    for (HFileDNAFound const& found : list->dnas.get_similar(asked, 0.0)) {
      similarities[found.index] = found.similarity;
    }
  });
}

morva_status morva_dna_list_most_similar(morva_dna_list const* list, char const* dna, size_t count,
                                         size_t* positions, double* similarities, size_t* found) {
  return morva::c::status_of([&] {
    std::size_t& number = morva::c::emptied(found, "found");
    HString const asked = checked_dna(dna, "dna");
    auto const nearest = needed(list, "list")->dnas.get_most_similar(asked, count);
    if (nearest.empty()) {
      return;
    }
    needed(positions, "positions");
    needed(similarities, "similarities");
    for (std::size_t i = 0; i < nearest.size(); ++i) {
      positions[i] = nearest[i].index;
      similarities[i] = nearest[i].similarity;
    }
    number = nearest.size();
  });
}
