#include "box_store.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "inputs.h"
#include "no_signals.h"
#include "report.h"

namespace tool {

namespace {

constexpr wchar_t const* suffix = L".box";

HString directory() {
  return Orlec::LocateMgr::pins()->get_box_path(true);
}

/// Keeps other runs of the program from changing the boxes while it lives.
class Lock {
 public:
  Lock() {
    auto const path = morvabs::to_path(directory());
    descriptor_ = path ? open(path->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    if (descriptor_ >= 0) {
      flock(descriptor_, LOCK_EX);
    }
  }
  ~Lock() {
    if (descriptor_ >= 0) {
      close(descriptor_);
    }
  }
  Lock(Lock const&) = delete;
  Lock& operator=(Lock const&) = delete;

 private:
  int descriptor_ = -1;
};

std::string reason(int result) {
  switch (-result) {
    case EBADMSG:
      return "no box file, or a damaged one";
    case ENOTSUP:
      return "a box file of another version";
    case EFBIG:
      return "a box that is too large";
    default:
      return std::strerror(-result);
  }
}

std::string about(HString const& path, std::string const& problem) {
  return printable(path) + ": " + problem;
}

bool is_same_file(HString const& first, HString const& second) {
  auto const a = morvabs::to_path(first);
  auto const b = morvabs::to_path(second);
  std::error_code error;
  return a && b && std::filesystem::equivalent(*a, *b, error);
}

/// Whether the index now says of the box what its file says.
bool is_entered(HString const& id, HString const& file) {
  HString md5;
  HFileMD5::get_file_md5(file, md5);
  auto const entry = BoxStore::entry(id);
  return entry && md5.not_empty() && entry->str_box_md5 == md5;
}

/// Has the file of a box written, and enters it in the index.
BoxStore::Problem put(HString const& id,
                      std::function<BoxStore::Problem(HString const&)> const& write) {
  if (!HFile::make_dir(directory())) {
    return about(directory(), "the directory of boxes cannot be made");
  }
  Lock const lock;
  NoSignals const no_signals;
  HString const target = BoxStore::file_of(id).value_or(HString());
  bool const is_new = !HFile::IsFileExist(target);
  if (BoxStore::Problem unwritten = write(target)) {
    return unwritten;
  }
  HFileClusterBoxIni::add_box_file(target);
  if (is_entered(id, target)) {
    return std::nullopt;
  }
  if (is_new) {
    HFile::delete_file(target);
  }
  return about(HFileClusterBoxIni::mstr_box_ini, "the index of boxes cannot be written");
}

}  // namespace

std::vector<HClusterBoxLocalNode> BoxStore::entries() {
  std::vector<HClusterBoxLocalNode> all;
  // Before the first box there is no index, which is nothing to log.
  if (HFile::IsFileExistFile(HFileClusterBoxIni::mstr_box_ini)) {
    HFileClusterBoxIni::read_local_box_node(all);
  }
  return all;
}

std::optional<HClusterBoxLocalNode> BoxStore::entry(HString const& id) {
  for (HClusterBoxLocalNode const& node : entries()) {
    if (node.str_box_id == id) {
      return node;
    }
  }
  return std::nullopt;
}

std::vector<HString> BoxStore::unlisted() {
  std::vector<HClusterBoxLocalNode> const listed = entries();
  std::vector<HString> ids;
  for (HString const& path : files_in(directory(), false)) {
    HString const id = path.get_short_name_no_suffix();
    bool const is_box = path.get_short_name() == id + suffix;
    if (is_box && std::none_of(listed.begin(), listed.end(), [&](HClusterBoxLocalNode const& node) {
          return node.str_box_id == id;
        })) {
      ids.push_back(id);
    }
  }
  return ids;
}

bool BoxStore::has(HString const& id) {
  auto const file = file_of(id);
  return (file && HFile::IsFileExist(*file)) || entry(id);
}

std::optional<HString> BoxStore::file_of(HString const& id) {
  auto const name = morvabs::to_path(id);
  if (!name || name->empty() || name->find('/') != std::string::npos) {
    return std::nullopt;
  }
  return directory() + id + suffix;
}

BoxStore::Problem BoxStore::refuse_id(HString const& id) {
  constexpr std::size_t longest = 200;
  std::wstring const text = id.get_ws();
  if (id.empty()) {
    return "a box id must not be empty";
  }
  if (text.find_first_of(L"/.") != std::wstring::npos) {
    return "a box id must not hold a slash or a dot: " + printable(id);
  }
  if (!file_of(id) || printable(id) != utf8(id) || morvabs::from_utf8(utf8(id)) != text) {
    return "a box id must be text without control characters: " + printable(id);
  }
  if (utf8(id).size() > longest) {
    return "a box id must not be longer than " + std::to_string(longest) + " bytes";
  }
  return std::nullopt;
}

BoxStore::Problem BoxStore::refuse_replacing(HString const& id) {
  if (!has(id)) {
    return std::nullopt;
  }
  return "there is a box " + printable(id) + " already: --force replaces it";
}

BoxStore::Problem BoxStore::install(HString const& file, HString const& id, bool may_replace) {
  return put(id, [&](HString const& target) -> Problem {
    if (!may_replace && !is_same_file(file, target)) {
      if (Problem refused = refuse_replacing(id)) {
        return refused;
      }
    }
    int const result = morvabs::copy_box_file(file, target);
    if (result == 0) {
      return std::nullopt;
    }
    QXPPolicyMorvaClustBox box;
    Problem unread = read(file, box);
    return unread ? unread : about(target, reason(result));
  });
}

BoxStore::Problem BoxStore::install(QXPPolicyMorvaClustBox box, HString const& id,
                                    bool may_replace) {
  return put(id, [&](HString const& target) -> Problem {
    if (!may_replace) {
      if (Problem refused = refuse_replacing(id)) {
        return refused;
      }
    }
    int const result = box.to_file(target);
    // To be entered, it is loaded from its file.
    box = {};
    return result == 0 ? std::nullopt : Problem(about(target, reason(result)));
  });
}

BoxStore::Problem BoxStore::remove(HString const& id) {
  Lock const lock;
  NoSignals const no_signals;
  if (!has(id)) {
    return "there is no box " + printable(id);
  }
  HFileClusterBoxIni::delete_local_box_node(id);
  if (entry(id)) {
    return about(HFileClusterBoxIni::mstr_box_ini, "the index of boxes cannot be written");
  }
  auto const file = file_of(id);
  if (file && HFile::IsFileExist(*file) && !HFile::delete_file(*file)) {
    return about(*file, std::strerror(errno));
  }
  return std::nullopt;
}

BoxStore::Problem BoxStore::read(HString const& file, QXPPolicyMorvaClustBox& box) {
  int const result = box.from_file(file);
  return result < 0 ? Problem(about(file, reason(result))) : std::nullopt;
}

}  // namespace tool
