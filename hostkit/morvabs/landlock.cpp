#include "morvabs/landlock.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "morvabs/file_access.h"

namespace morvabs {

namespace {

// What the kernel's headers may be too old to know, as versions 2 to 6 brought it.
constexpr std::uint64_t access_refer = std::uint64_t{1} << 13;
constexpr std::uint64_t access_truncate = std::uint64_t{1} << 14;
constexpr std::uint64_t access_ioctl_dev = std::uint64_t{1} << 15;
constexpr std::uint64_t access_first_version = (std::uint64_t{1} << 13) - 1;
constexpr std::uint64_t bind_and_connect_tcp = 3;
constexpr std::uint64_t abstract_sockets_and_signals = 3;

struct Ruleset {
  std::uint64_t files = access_first_version;
  std::uint64_t network = 0;
  std::uint64_t scope = 0;
};

Ruleset everything_in(int version) {
  Ruleset all;
  all.files |= version >= 2 ? access_refer : 0;
  all.files |= version >= 3 ? access_truncate : 0;
  all.files |= version >= 5 ? access_ioctl_dev : 0;
  all.network = version >= 4 ? bind_and_connect_tcp : 0;
  all.scope = version >= 6 ? abstract_sockets_and_signals : 0;
  return all;
}

/// A kernel takes what it does not know only as long as it is not there.
std::size_t size_in(int version) {
  if (version < 4) {
    return offsetof(Ruleset, network);
  }
  return version < 6 ? offsetof(Ruleset, scope) : sizeof(Ruleset);
}

std::uint64_t access_of(OpenFolder::Use use) {
  std::uint64_t const read = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
  switch (use) {
    case OpenFolder::Use::read:
      return read;
    case OpenFolder::Use::work:
      return read | LANDLOCK_ACCESS_FS_WRITE_FILE | access_truncate | LANDLOCK_ACCESS_FS_MAKE_REG |
             LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
             LANDLOCK_ACCESS_FS_REMOVE_DIR;
  }
  return 0;
}

bool add_folder(int ruleset, OpenFolder const& folder, std::uint64_t known_access) {
  FileDescriptor const opened(::open(folder.path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!opened.is_open()) {
    return true;
  }
  landlock_path_beneath_attr const rule{access_of(folder.use) & known_access, opened.get()};
  return ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

}  // namespace

int landlock_version() {
  long const version =
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
  return version > 0 ? static_cast<int>(version) : 0;
}

bool close_landlock(int version, std::span<OpenFolder const> folders) {
  Ruleset const all = everything_in(version);
  FileDescriptor const ruleset(
      static_cast<int>(::syscall(SYS_landlock_create_ruleset, &all, size_in(version), 0)));
  if (!ruleset.is_open()) {
    return false;
  }
  for (OpenFolder const& folder : folders) {
    if (!add_folder(ruleset.get(), folder, all.files)) {
      return false;
    }
  }
  return ::syscall(SYS_landlock_restrict_self, ruleset.get(), 0) == 0;
}

}  // namespace morvabs
