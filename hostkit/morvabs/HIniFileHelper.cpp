#include "host/HIniFileHelper.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "host/HFile.h"
#include "host/native_path.h"
#include "morvabs/atomic_file.h"
#include "morvabs/ini_text.h"

namespace {

/// A path that no file can have fails like one where there is none.
std::string file_path(HString const& path) {
  return morvabs::to_path(path).value_or(std::string());
}

bool is_within_limits(std::string const& text) {
  bool const is_within =
      text.size() <= morvabs::largest_ini_file && morvabs::is_within_ini_limits(text);
  if (!is_within) {
    errno = EFBIG;
  }
  return is_within;
}

std::optional<morvabs::IniDocument> load(HString const& path) {
  std::string content;
  if (!morvabs::read_file(file_path(path), content, morvabs::largest_ini_file)) {
    return std::nullopt;
  }
  std::string const text = morvabs::decode_ini(content);
  if (!is_within_limits(text)) {
    return std::nullopt;
  }
  return morvabs::parse_ini(text);
}

bool store(HString const& path, morvabs::IniDocument const& document) {
  std::string const text = morvabs::format_ini(document);
  if (!is_within_limits(text)) {
    return false;
  }
  morvabs::AtomicFile file(file_path(path), morvabs::AtomicFile::Access::keep);
  return file.write(text) && file.commit();
}

HIniSection& section_of(morvabs::IniDocument& document, HString const& name) {
  auto const found =
      std::find_if(document.sections.begin(), document.sections.end(),
                   [&name](HIniSection const& section) { return section.str_name == name; });
  if (found != document.sections.end()) {
    return *found;
  }
  HIniSection added;
  added.str_name = name;
  // Keys without a section stand in front.
  auto const place = name.empty() ? document.sections.begin() : document.sections.end();
  return *document.sections.insert(place, added);
}

HIniKey& key_of(HIniSection& section, HString const& name) {
  auto const found = std::find_if(section.vt_key.begin(), section.vt_key.end(),
                                  [&name](HIniKey const& key) { return key.str_key == name; });
  if (found != section.vt_key.end()) {
    return *found;
  }
  HIniKey added;
  added.str_key = name;
  return section.vt_key.emplace_back(added);
}

}  // namespace

HIniFileHelper::HIniFileHelper() = default;

HIniFileHelper::~HIniFileHelper() = default;

void HIniFileHelper::setFile(HString const& path) {
  path_ = path;
  unread_ = 0;
}

bool HIniFileHelper::read_string(HString const& section, HString const& key, HString& value) const {
  auto const document = load(path_);
  if (!document) {
    return false;
  }
  for (HIniSection const& entry : document->sections) {
    for (HIniKey const& found : entry.vt_key) {
      if (entry.str_name == section && found.str_key == key) {
        value = found.str_value;
        return true;
      }
    }
  }
  return false;
}

bool HIniFileHelper::write_string(HString const& section, HString const& key,
                                  HString const& value) {
  auto document = load(path_);
  if (!document) {
    // What is there but cannot be read is not to be lost.
    if (int const error = errno; HFile::IsFileExist(path_)) {
      errno = error;
      return false;
    }
    document.emplace();
  }
  key_of(section_of(*document, section), key).str_value = value;
  return store(path_, *document);
}

bool HIniFileHelper::read_all() {
  // Memory may run out on the way, and the file is not to be lost then.
  unread_ = ENOMEM;
  auto document = load(path_);
  bool const is_read = document.has_value();
  int const error = errno;
  int const unread = !is_read && HFile::IsFileExist(path_) ? error : 0;
  morvabs::IniDocument found = std::move(document).value_or(morvabs::IniDocument());
  trailing_comment_ = found.trailing_comment;
  vt_section = std::move(found.sections);
  unread_ = unread;
  errno = is_read ? errno : error;
  return is_read;
}

bool HIniFileHelper::write_all() {
  if (unread_ != 0) {
    errno = unread_;
    return false;
  }
  return store(path_, {vt_section, trailing_comment_});
}
