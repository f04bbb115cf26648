#include "classes/shard_corpus.h"

#include <utility>

#include "exit_status.h"
#include "shards/shard_merge.h"
#include "terminal/output.h"

namespace tool {

namespace {

HFeatureNode node_of(ShardRecord const& record, HString const& path) {
  HFeatureNode node;
  node.str_file_name = path.get_short_name_no_suffix();
  for (std::size_t i = 0; i < record.words.size(); ++i) {
    HString const& word = node.vt_words.emplace_back(text_of(record.words[i]));
    node.map_word_weight[word] = record.weights[i];
  }
  node.vt_counts = record.counts;
  node.vt_weight = record.weights;
  return node;
}

// Tells what was wrong with a document, and notes it where it gave nothing. Of `all` there are a
// status and a list of those that failed.
template <typename Result>
void tell(ShardRecord const& record, HString const& path, Result& all) {
  std::string problem = problem_of(record);
  if (problem.empty()) {
    return;
  }
  complain(printable(path) + ": " + problem);
  all.status = some_failed;
  if (record.words.empty()) {
    all.failed.push_back({path, std::move(problem)});
  }
}

}  // namespace

Corpus corpus_of_shards(std::vector<std::string> const& shards, Samples* samples) {
  MergedShards merged(shards);
  int const root_length = morvabs::from_path(merged.common_folder()).length();
  Corpus corpus;
  merged.take_all([&](ShardRecord const& record) {
    HString const path = morvabs::from_path(record.path);
    if (samples != nullptr && !add_sample(path, root_length, *samples)) {
      return;
    }
    tell(record, path, corpus);
    if (!record.words.empty()) {
      corpus.files.push_back(path);
      corpus.data.add(node_of(record, path));
    }
  });
  if (samples != nullptr) {
    fail_strays(*samples, corpus);
  }
  return corpus;
}

void load_fingerprints_of_shards(std::vector<std::string> const& shards, Fingerprints& all) {
  MergedShards(shards).take_all([&](ShardRecord const& record) {
    HString const path = morvabs::from_path(record.path);
    tell(record, path, all);
    if (!record.dna.empty()) {
      all.files.push_back(path);
      all.dnas.emplace_back(record.dna.c_str());
    }
  });
}

}  // namespace tool
