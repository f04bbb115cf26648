#pragma once

#include <string>
#include <vector>

#include "classes/corpus.h"
#include "classes/fingerprints.h"
#include "classes/samples.h"

namespace tool {

/// The corpus that the documents of the shards make: what reading them in the order of shards
/// gives, and the same is said of those that failed. No record is kept. With `samples`, the
/// sub-folders of the folder that holds all documents are classes; documents in none are strays.
/// What cannot be read is a ShardError.
Corpus corpus_of_shards(std::vector<std::string> const& shards, Samples* samples = nullptr);

/// Adds the documents of the shards with their fingerprints, and those that failed; these are told.
void load_fingerprints_of_shards(std::vector<std::string> const& shards, Fingerprints& all);

}  // namespace tool
