#include "boxes/box_store.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "boxes/box_change.h"

#include "documents/inputs.h"
#include "terminal/output.h"

namespace tool {

namespace {

constexpr wchar_t const* suffix = L".box";

HString directory() {
  return Orlec::LocateMgr::pins()->get_box_path(true);
}

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

/// The bytes of a path in the directory of boxes; links in it are followed where that can be.
std::string real_path(HString const& path) {
  std::string const bytes = morvabs::to_path(path).value_or(std::string());
  std::error_code error;
  std::filesystem::path const real = std::filesystem::canonical(bytes, error);
  return error ? bytes : real.string();
}

void set_value(HIniSection& section, wchar_t const* name, HString const& value) {
  auto& keys = section.vt_key;
  auto found = std::find_if(keys.begin(), keys.end(),
                            [name](HIniKey const& key) { return key.str_key == name; });
  if (found == keys.end()) {
    found = keys.emplace(found);
    found->str_key = name;
  }
  found->str_value = value;
}

/// Replaces the index once, as a whole.
BoxStore::Problem change_index(std::function<void(std::vector<HIniSection>&)> const& change) {
  HIniFileHelper index;
  index.setFile(HFileClusterBoxIni::mstr_box_ini);
  index.read_all();
  change(index.vt_section);
  if (index.write_all()) {
    return std::nullopt;
  }
  return about(HFileClusterBoxIni::mstr_box_ini,
               std::string("the index of boxes cannot be written: ") + std::strerror(errno));
}

/// Enters a box in the index as `HFileClusterBoxIni::add_box_file` does, but at once: nobody ever
/// finds half an entry there.
BoxStore::Problem enter(HString const& id, HString const& file) {
  QXPPolicyMorvaClustBox box;
  if (BoxStore::Problem unread = BoxStore::read(file, box)) {
    return unread;
  }
  HString md5;
  if (!HFileMD5::get_file_md5(file, md5) || md5.empty()) {
    return about(file, std::string("it cannot be read again: ") + std::strerror(errno));
  }
  std::vector<HString> class_ids;
  HFileClusterBoxMgr::pins()->get_vt_class_id(box, class_ids);
  return change_index([&](std::vector<HIniSection>& sections) {
    auto found = std::find_if(sections.begin(), sections.end(),
                              [&id](HIniSection const& section) { return section.str_name == id; });
    if (found == sections.end()) {
      found = sections.emplace(found);
      found->str_name = id;
    }
    set_value(*found, L"MD5", md5);
    set_value(*found, L"CLASS", HString(class_ids));
  });
}

/// Takes a box out of the index; one that cannot be read is not written either.
BoxStore::Problem strike_out(HString const& id) {
  return change_index([&id](std::vector<HIniSection>& sections) {
    std::erase_if(sections, [&id](HIniSection const& section) { return section.str_name == id; });
  });
}

/// Has the file of a box written, and enters it in the index.
BoxStore::Problem put(HString const& id,
                      std::function<BoxStore::Problem(HString const&)> const& write) {
  if (!HFile::make_dir(directory())) {
    return about(directory(),
                 std::string("the directory of boxes cannot be made: ") + std::strerror(errno));
  }
  BoxLock const lock(real_path(directory()));
  if (lock.problem()) {
    return about(directory(), *lock.problem());
  }
  HString const target = BoxStore::file_of(id).value_or(HString());
  FormerFile const former(real_path(target));
  if (former.problem()) {
    return about(target, *former.problem());
  }
  try {
    if (BoxStore::Problem unwritten = write(target)) {
      return unwritten;
    }
    BoxStore::Problem unlisted = enter(id, target);
    if (unlisted) {
      former.restore();
    }
    return unlisted;
  } catch (...) {
    // Memory may run out, also behind the writing: the box is loaded once more.
    former.restore();
    throw;
  }
}

}  // namespace

BoxStore::Problem BoxStore::refuse_index() {
  HString const& path = HFileClusterBoxIni::mstr_box_ini;
  if (!HFile::IsFileExistFile(path)) {
    return std::nullopt;
  }
  HIniFileHelper index;
  index.setFile(path);
  if (index.read_all()) {
    return std::nullopt;
  }
  return about(path, std::string("the index of boxes cannot be read: ") + std::strerror(errno));
}

std::vector<HClusterBoxLocalNode> BoxStore::entries() {
  if (Problem const unread = refuse_index()) {
    throw std::runtime_error(*unread);
  }
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

std::string BoxStore::no_such_box(HString const& id) {
  return "there is no box " + printable(id) + "; morvaai box list shows those there are";
}

BoxStore::Problem BoxStore::refuse_name(HString const& id) {
  if (id.empty()) {
    return "a box id must not be empty";
  }
  if (text_view(id).find(L'/') != std::wstring_view::npos) {
    return "a box id must not hold a slash: " + printable(id);
  }
  return file_of(id) ? std::nullopt : Problem("a box id must be a file name: " + printable(id));
}

BoxStore::Problem BoxStore::refuse_id(HString const& id) {
  constexpr std::size_t longest = 200;
  std::wstring const text = id.get_ws();
  if (id.empty()) {
    return refuse_name(id);
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
  if (Problem unread = refuse_index()) {
    return unread;
  }
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
  BoxLock const lock(real_path(directory()));
  if (lock.problem()) {
    return about(directory(), *lock.problem());
  }
  if (Problem unread = refuse_index()) {
    return unread;
  }
  if (!has(id)) {
    return no_such_box(id);
  }
  FormerFile const former(real_path(HFileClusterBoxIni::mstr_box_ini));
  if (former.problem()) {
    return about(HFileClusterBoxIni::mstr_box_ini, *former.problem());
  }
  if (HFile::IsFileExist(HFileClusterBoxIni::mstr_box_ini)) {
    if (Problem unwritten = strike_out(id)) {
      return unwritten;
    }
  }
  auto const file = file_of(id);
  if (file && HFile::IsFileExist(*file) && !HFile::delete_file(*file)) {
    int const error = errno;
    former.restore();
    return about(*file, std::strerror(error));
  }
  return std::nullopt;
}

BoxStore::Problem BoxStore::read(HString const& file, QXPPolicyMorvaClustBox& box) {
  int const result = box.from_file(file);
  return result < 0 ? Problem(about(file, reason(result))) : std::nullopt;
}

}  // namespace tool
