#pragma once

#include <vector>

#include "features/HClusterFileParser.h"
#include "host/HString.h"

namespace morva {

/// The text files that documents are turned into for the segmenter, and their directories. They go
/// with the object, however its scope is left.
class TextFiles {
 public:
  TextFiles() = default;
  ~TextFiles() { HClusterFileParser::del_parse_out_file(files_, directories_); }
  TextFiles(TextFiles const&) = delete;
  TextFiles& operator=(TextFiles const&) = delete;

  void add(HString const& document) {
    HString& directory = directories_.emplace_back();
    directory = HClusterFileParser::parse_to_txt(document, files_);
  }
  std::vector<HString> const& files() const { return files_; }

 private:
  std::vector<HString> files_;
  std::vector<HString> directories_;
};

}  // namespace morva
