#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <archive.h>
#include <archive_entry.h>

namespace test {

/// Files of an archive: name and content.
using ArchiveFiles = std::vector<std::pair<std::string, std::string>>;

/// Makes an archive with the archive library: `format` is its name, `filter` its code and `options`
/// its options, as "compression=store".
inline std::string make_archive(char const* format, int filter, ArchiveFiles const& files,
                                char const* options = nullptr) {
  std::string bytes;
  auto* const archive = archive_write_new();
  auto const check = [archive](int result) {
    if (result != ARCHIVE_OK) {
      throw std::runtime_error(archive_error_string(archive));
    }
  };
  check(archive_write_set_format_by_name(archive, format));
  check(archive_write_add_filter(archive, filter));
  if (options != nullptr) {
    check(archive_write_set_options(archive, options));
  }
  check(archive_write_set_bytes_in_last_block(archive, 1));
  check(archive_write_open2(
      archive, &bytes, nullptr,
      [](struct archive* /*archive*/, void* target, void const* piece, std::size_t size) {
        static_cast<std::string*>(target)->append(static_cast<char const*>(piece), size);
        return static_cast<la_ssize_t>(size);
      },
      nullptr, nullptr));
  for (auto const& [name, content] : files) {
    auto* const entry = archive_entry_new();
    archive_entry_set_pathname(entry, name.c_str());
    archive_entry_set_filetype(entry, name.ends_with('/') ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(entry, 0644);
    archive_entry_set_size(entry, static_cast<la_int64_t>(content.size()));
    check(archive_write_header(archive, entry));
    archive_write_data(archive, content.data(), content.size());
    archive_entry_free(entry);
  }
  check(archive_write_close(archive));
  archive_write_free(archive);
  return bytes;
}

inline std::string make_tar(ArchiveFiles const& files, int filter = ARCHIVE_FILTER_NONE) {
  return make_archive("ustar", filter, files);
}

/// One file, packed by itself.
inline std::string pack(std::string const& content, int filter) {
  return make_archive("raw", filter, {{"data", content}});
}

}  // namespace test
