#pragma once

#include "documents.h"
#include "endurance/round.h"
#include "support/temporary_directory.h"

namespace test {

/// The small documents as files, in two classes, for a round of a host's work.
inline endurance::Samples made_samples(TemporaryDirectory const& directory) {
  endurance::Samples samples;
  for (MadeDocument const& document : small_documents()) {
    samples.documents.push_back(directory.write(document.name.c_str(), document.bytes));
  }
  samples.undecided = samples.documents;
  for (std::size_t i = 0; i < samples.documents.size(); ++i) {
    samples.classes[i % 2 == 0 ? L"one" : L"other"].push_back(samples.documents[i]);
  }
  return samples;
}

}  // namespace test
