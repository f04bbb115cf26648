#pragma once

#include <string>

#include "report.h"

namespace tool {

/// `morvaai features`: the words that characterise each file.
struct FeaturesOptions : RunOptions {
  int words = 20;
};
int run_features(FeaturesOptions const& options);

/// `morvaai dna`: the fingerprint of each file.
struct DnaOptions : RunOptions {
  bool wide = false;
  bool count = false;
};
int run_dna(DnaOptions const& options);

/// `morvaai compare`: how like two files are.
struct CompareOptions {
  std::string first;
  std::string second;
  int words = 20;
  bool json = false;
};
int run_compare(CompareOptions const& options);

/// `morvaai text`: the text of each file.
struct TextOptions : RunOptions {
  std::string kind = "main";
};
int run_text(TextOptions const& options);
/// The kinds of text by the names that `--kind` takes.
std::vector<std::string> text_kind_names();

/// `morvaai version`: versions and where the dictionary lies.
int run_version(bool json);

}  // namespace tool
