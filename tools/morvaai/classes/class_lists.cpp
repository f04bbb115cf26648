#include "classes/class_lists.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <system_error>

#include <fmt/format.h>

#include "documents/inputs.h"
#include "terminal/output.h"

namespace tool {

namespace {

constexpr wchar_t const* unclassified_name = L"unclassified.txt";

bool is_list_name(HString const& name) {
  int constexpr prefix = 6;
  int constexpr suffix = 4;
  HString number = name;
  number.cut_first(prefix);
  number.cut_last(suffix);
  return name == unclassified_name || (name.get_first(prefix) == L"class-" &&
                                       name.get_last(suffix) == L".txt" && number.is_all_number());
}

bool write_list(HString const& path, std::vector<HString> const& files) {
  HString text;
  for (HString const& file : files) {
    text << file << L"\n";
  }
  return HFile::write_to_file(path, text, false, false);
}

bool is_same_folder(HString const& first, HString const& second) {
  auto const a = morvabs::to_path(first);
  auto const b = morvabs::to_path(second);
  std::error_code error;
  return a && b && std::filesystem::equivalent(*a, *b, error);
}

}  // namespace

ClassLists::ClassLists(HString const& folder) : folder_(folder) {
  folder_.dir_fit(true);
}

bool ClassLists::is_list(HString const& path) const {
  HString const folder = path.get_path(true);
  return is_list_name(path.get_short_name()) &&
         is_same_folder(folder.empty() ? HString(L"./") : folder, folder_);
}

ClassLists::Written ClassLists::write(std::vector<std::vector<HString>> const& classes,
                                      std::vector<HString> const& unclassified) const {
  Written written;
  if (!HFile::make_dir(folder_)) {
    written.problem = printable(folder_) + ": the folder cannot be made: " + std::strerror(errno);
    return written;
  }
  auto const add = [&](HString const& name, std::vector<HString> const& files) {
    HString const path = folder_ + name;
    if (write_list(path, files)) {
      written.paths.push_back(path);
    } else if (!written.problem) {
      written.problem = printable(path) + ": the list cannot be written: " + std::strerror(errno);
    }
  };
  std::size_t const digits =
      fmt::formatted_size("{}", std::max<std::size_t>(classes.size(), 1) - 1);
  for (std::size_t i = 0; i < classes.size(); ++i) {
    add(HString(fmt::format("class-{:0{}}.txt", i, digits).c_str()), classes[i]);
  }
  if (!unclassified.empty()) {
    add(HString(unclassified_name), unclassified);
  }
  return written;
}

std::vector<HString> ClassLists::others_than(std::vector<HString> const& written) const {
  std::set<HString> const newer(written.begin(), written.end());
  std::vector<HString> older;
  for (HString const& path : files_in(folder_, false)) {
    if (is_list(path) && !newer.contains(path)) {
      older.push_back(path);
    }
  }
  return older;
}

}  // namespace tool
