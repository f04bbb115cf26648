#include "classes/samples.h"

#include <algorithm>

#include "documents/inputs.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace tool {

namespace {

void add_folder(HString folder, Samples& samples) {
  folder.dir_fit(true);
  for (HString const& file : files_in(folder, true)) {
    add_sample(file, folder.length(), samples);
  }
}

std::size_t class_of(Samples const& samples, std::size_t file) {
  return samples.class_names.empty() ? 0 : samples.class_of_file[file];
}

// How many files each class has; without classes all are in one.
std::vector<std::size_t> sizes_of(Samples const& samples) {
  std::vector<std::size_t> sizes(std::max<std::size_t>(samples.class_names.size(), 1));
  for (std::size_t i = 0; i < samples.files.size(); ++i) {
    ++sizes[class_of(samples, i)];
  }
  return sizes;
}

}  // namespace

bool add_sample(HString const& file, int folder_length, Samples& samples) {
  HString inside = file;
  inside.cut_first(folder_length);
  std::vector<HString> steps;
  inside.get_vt_str_by_sep(steps, L"/");
  if (steps.size() < 2) {
    samples.strays.push_back(file);
    return false;
  }
  auto const [found, is_new] =
      samples.class_of_name.try_emplace(steps.front().get_ws(), samples.class_names.size());
  samples.class_of_file.push_back(found->second);
  if (is_new) {
    samples.class_names.push_back(steps.front());
  }
  samples.files.push_back(file);
  return true;
}

std::string no_folders_of_classes(std::vector<std::string> const& inputs) {
  for (std::string const& input : inputs) {
    if (!HFile::IsFileExistDir(morvabs::from_path(input))) {
      return printable(morvabs::from_path(input)) + " is no folder: --by-folder needs folders";
    }
  }
  return {};
}

Samples find_samples(std::vector<std::string> const& inputs, bool by_folder) {
  Samples samples;
  if (!by_folder) {
    samples.files = expand_inputs(inputs);
    return samples;
  }
  for (std::string const& input : inputs) {
    add_folder(morvabs::from_path(input), samples);
  }
  return samples;
}

std::size_t most_of_each(Samples const& samples, std::size_t most) {
  std::vector<std::size_t> sizes = sizes_of(samples);
  std::sort(sizes.begin(), sizes.end());
  std::size_t left = most;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    std::size_t const share = left / (sizes.size() - i);
    if (sizes[i] > share) {
      return share;
    }
    left -= sizes[i];
  }
  return most;
}

Samples some_of(Samples const& samples, std::size_t most) {
  std::vector<std::size_t> const sizes = sizes_of(samples);
  std::size_t const wanted = most_of_each(samples, most);
  Samples some;
  some.class_names = samples.class_names;
  some.strays = samples.strays;
  std::vector<std::size_t> places(sizes.size());
  for (std::size_t i = 0; i < samples.files.size(); ++i) {
    std::size_t const own = class_of(samples, i);
    std::size_t const kept = std::min(sizes[own], wanted);
    std::size_t const place = places[own]++;
    if (place * kept % sizes[own] < kept) {
      some.files.push_back(samples.files[i]);
      if (!samples.class_names.empty()) {
        some.class_of_file.push_back(own);
      }
    }
  }
  return some;
}

Corpus read_samples(Samples const& samples, std::size_t jobs, CorpusNeeds const& needs) {
  Corpus corpus = read_corpus(samples.files, jobs, needs);
  fail_strays(samples, corpus);
  return corpus;
}

void fail_strays(Samples const& samples, Corpus& corpus) {
  for (HString const& stray : samples.strays) {
    corpus.failed.push_back({stray, "in no sub-folder, and so in no class"});
    complain(printable(stray) + ": " + corpus.failed.back().reason);
    corpus.status = some_failed;
  }
}

std::vector<std::vector<int>> members_by_folder(Samples const& samples, Corpus const& corpus) {
  std::vector<std::vector<int>> members(samples.class_names.size());
  std::size_t at = 0;
  for (std::size_t i = 0; i < corpus.files.size(); ++i, ++at) {
    at = static_cast<std::size_t>(std::find(samples.files.begin() + static_cast<std::ptrdiff_t>(at),
                                            samples.files.end(), corpus.files[i]) -
                                  samples.files.begin());
    members[samples.class_of_file[at]].push_back(static_cast<int>(i));
  }
  return members;
}

}  // namespace tool
