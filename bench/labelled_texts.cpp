#include "labelled_texts.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "dna/HFileDNA.h"
#include "features/HFileFeature.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr int wide_length = 1024;

std::vector<fs::path> entries_of(fs::path const& folder) {
  std::vector<fs::path> paths;
  for (auto const& entry : fs::directory_iterator(folder)) {
    paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

// Empty where there are none.
std::vector<fs::path> set_folders() {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  fs::path const folder = fs::path(corpus == nullptr ? "" : corpus) / "text";
  return corpus != nullptr && fs::is_directory(folder) ? entries_of(folder)
                                                       : std::vector<fs::path>();
}

HString read_text(fs::path const& path) {
  std::ifstream in(path, std::ios::binary);
  std::string const content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  return HString(content.c_str());
}

void add(LabelledTexts& set, HString const& text, int label) {
  HFeatureNode record;
  HFileFeature::get_file_centent_feature(text, HString(), record);
  HFileDNA::get_file_centent_dna(text, HString(), record.str_dna, nullptr, wide_length);
  if (record.vt_words.empty() || record.str_dna.length() != wide_length) {
    ++set.failed_count;
    return;
  }
  set.records.push_back(std::move(record));
  set.labels.push_back(label);
}

std::vector<fs::path> some_of(fs::path const& class_folder, int most) {
  std::vector<fs::path> paths = entries_of(class_folder);
  paths.resize(std::min(paths.size(), static_cast<std::size_t>(most)));
  return paths;
}

LabelledTexts read_set(fs::path const& folder, int most_per_class) {
  LabelledTexts set;
  set.name = folder.filename();
  for (fs::path const& class_folder : entries_of(folder)) {
    for (fs::path const& path : some_of(class_folder, most_per_class)) {
      add(set, read_text(path), set.class_count);
    }
    set.class_names.push_back(class_folder.filename());
    ++set.class_count;
  }
  return set;
}

// The text without every fifth of its sentences, from the given one on.
HString without_sentences(HString const& text, int first) {
  std::wstring const sentences = text.get_ws();
  std::wstring kept;
  int sentence = 0;
  for (wchar_t const c : sentences) {
    if (sentence % 5 != first) {
      kept += c;
    }
    sentence += c == L'.' || c == L'。' || c == L'\n' ? 1 : 0;
  }
  return HString(kept.c_str());
}

}  // namespace

std::vector<LabelledTexts> load_labelled_texts(int most_per_class) {
  std::vector<LabelledTexts> sets;
  for (fs::path const& folder : set_folders()) {
    sets.push_back(read_set(folder, most_per_class));
  }
  return sets;
}

LabelledTexts load_versions(int texts_per_class) {
  LabelledTexts set;
  set.name = "versions";
  for (fs::path const& folder : set_folders()) {
    for (fs::path const& class_folder : entries_of(folder)) {
      for (fs::path const& path : some_of(class_folder, texts_per_class)) {
        HString const text = read_text(path);
        add(set, text, set.class_count);
        for (int version = 0; version < 3; ++version) {
          add(set, without_sentences(text, version), set.class_count);
        }
        ++set.class_count;
      }
    }
  }
  return set;
}

}  // namespace bench
