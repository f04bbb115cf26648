#include "host/HDirSnap.h"

#include <algorithm>
#include <memory>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include "host/native_path.h"
#include "morvabs/file_access.h"

namespace {

constexpr int deepest = 128;

struct FoundEntry {
  HDirSnapEntry entry;
  bool is_link = false;
};

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

FoundEntry look_at(int directory, char const* name) {
  FoundEntry found;
  found.entry.str_name = morvabs::from_path(name);
  struct stat itself {};
  struct stat target {};
  bool const is_known = ::fstatat(directory, name, &itself, AT_SYMLINK_NOFOLLOW) == 0 &&
                        ::fstatat(directory, name, &target, 0) == 0;
  found.is_link = is_known && S_ISLNK(itself.st_mode);
  found.entry.mb_dir = is_known && S_ISDIR(target.st_mode);
  found.entry.mb_skip = !is_known || (!S_ISDIR(target.st_mode) && !S_ISREG(target.st_mode));
  return found;
}

/// The entries of a directory in order; none when it cannot be read. The directory is closed before
/// the walk goes deeper, so that depth costs no descriptors.
std::vector<FoundEntry> read_entries(HString const& path, bool follow_link) {
  std::vector<FoundEntry> entries;
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return entries;
  }
  int const flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (follow_link ? 0 : O_NOFOLLOW);
  morvabs::FileDescriptor opened(::open(bytes->c_str(), flags));
  std::unique_ptr<DIR, CloseDirectory> const directory(::fdopendir(opened.get()));
  if (!directory) {
    return entries;
  }
  int const descriptor = opened.release();
  while (dirent const* const item = ::readdir(directory.get())) {
    std::string_view const name = item->d_name;
    if (name != "." && name != "..") {
      entries.push_back(look_at(descriptor, item->d_name));
    }
  }
  HString const prefix = HString(path).dir_fit(true);
  for (FoundEntry& found : entries) {
    found.entry.str_path = prefix + found.entry.str_name;
  }
  std::sort(entries.begin(), entries.end(), [](FoundEntry const& a, FoundEntry const& b) {
    return a.entry.str_name < b.entry.str_name;
  });
  return entries;
}

}  // namespace

HDirSnapCallback::~HDirSnapCallback() = default;

HDirSnap::HDirSnap() = default;

HDirSnap::~HDirSnap() = default;

void HDirSnap::set_callback(HDirSnapCallback* callback, bool with_files) {
  callback_ = callback;
  with_files_ = with_files;
}

void HDirSnap::set_file(HString const& path) {
  path_ = path;
}

void HDirSnap::snap() {
  auto const bytes = morvabs::to_path(path_);
  struct stat status {};
  if (callback_ == nullptr || !bytes || ::stat(bytes->c_str(), &status) != 0) {
    return;
  }
  if (S_ISDIR(status.st_mode)) {
    report_directory(path_, 1);
  } else if (S_ISREG(status.st_mode) && with_files_) {
    HDirSnapEntry entry;
    entry.str_path = path_;
    entry.str_name = path_.get_short_name();
    callback_->on_snap_file(entry);
  }
}

bool HDirSnap::report_directory(HString const& path, int depth) {
  for (auto const& [entry, is_link] : read_entries(path, depth == 1)) {
    if ((entry.mb_dir || with_files_) && callback_->on_snap_file(entry) != 0) {
      return false;
    }
    bool const is_entered = mb_recursive && entry.mb_dir && !is_link && depth < deepest;
    if (is_entered && !report_directory(entry.str_path, depth + 1)) {
      return false;
    }
  }
  return true;
}
