#include "documents/inputs.h"

#include <iostream>

namespace tool {

namespace {

class FileCollector : public HDirSnapCallback {
 public:
  explicit FileCollector(std::vector<HString>& files) : files_(files) {}

  int on_snap_file(HDirSnapEntry const& entry) override {
    if (!entry.mb_skip && !entry.mb_dir) {
      files_.push_back(entry.str_path);
    }
    return 0;
  }

 private:
  std::vector<HString>& files_;
};

void add_path(std::vector<HString>& files, std::string const& argument) {
  HString const path = morvabs::from_path(argument);
  if (!HFile::IsFileExistDir(path)) {
    files.push_back(path);
    return;
  }
  std::vector<HString> const found = files_in(path, true);
  files.insert(files.end(), found.begin(), found.end());
}

}  // namespace

std::vector<HString> files_in(HString const& folder, bool is_recursive) {
  std::vector<HString> files;
  FileCollector collector(files);
  HDirSnap walk;
  walk.mb_recursive = is_recursive;
  walk.set_callback(&collector, true);
  walk.set_file(folder);
  walk.snap();
  return files;
}

std::vector<HString> expand_inputs(std::vector<std::string> const& arguments) {
  std::vector<HString> files;
  for (std::string const& argument : arguments) {
    if (argument != "-") {
      add_path(files, argument);
      continue;
    }
    for (std::string line; std::getline(std::cin, line);) {
      // A list may come from a system that ends its lines in two characters.
      if (line.ends_with('\r') && !HFile::IsFileExist(morvabs::from_path(line))) {
        line.pop_back();
      }
      if (!line.empty()) {
        add_path(files, line);
      }
    }
  }
  return files;
}

}  // namespace tool
