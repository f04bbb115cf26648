#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "morvaai.h"

#include "classes/corpus.h"

namespace tool {

/// The files that classes are made of, and where folders say which class each is in, the names of
/// the classes and beside each file the position of its own.
struct Samples {
  std::vector<HString> files;
  std::vector<HString> class_names;
  std::vector<std::size_t> class_of_file;
  /// Files in no sub-folder.
  std::vector<HString> strays;
  /// The position of each name of a class, for `add_sample`.
  std::unordered_map<std::wstring, std::size_t> class_of_name;
};

/// Adds a file to the class of the sub-folder that it lies in, below a folder whose name, with the
/// slash at its end, has so many characters; false for one in no sub-folder, which is a stray.
bool add_sample(HString const& file, int folder_length, Samples& samples);

/// Why the inputs cannot be the folders whose sub-folders are classes; empty where they can.
std::string no_folders_of_classes(std::vector<std::string> const& inputs);

/// The files of the inputs; with `by_folder` each sub-folder is a class.
Samples find_samples(std::vector<std::string> const& inputs, bool by_folder);

/// How many files of a class are kept at most for all classes to have so many; 0 where there are
/// more classes than that.
std::size_t most_of_each(Samples const& samples, std::size_t most);

/// At most so many of the samples: evenly spaced in each class, and of large classes less than of
/// small ones, which stay whole.
Samples some_of(Samples const& samples, std::size_t most);

/// Reads the samples; strays are told and count as failed.
Corpus read_samples(Samples const& samples, std::size_t jobs, CorpusNeeds const& needs = {});

/// Notes the strays as failed, and tells them.
void fail_strays(Samples const& samples, Corpus& corpus);

/// For each class the positions of its files in the corpus that was read of the samples.
std::vector<std::vector<int>> members_by_folder(Samples const& samples, Corpus const& corpus);

}  // namespace tool
