#include "host/file_locks.h"

#include <algorithm>
#include <array>

#include <sys/vfs.h>

namespace morvabs {

namespace {

// As in linux/magic.h, which does not have all of them.
constexpr std::array<unsigned long, 9> shared_file_systems = {
    0x6969,      // NFS
    0x517B,      // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB2
    0x65735546,  // FUSE, virtiofs
    0x01021997,  // 9P
    0x5346414F,  // AFS
    0x6B414653,  // AFS of another maker
    0x00C36400,  // Ceph
};

}  // namespace

bool type_sees_all_locks(unsigned long type) {
  // Numbers of 32 bits come with their sign where the field is signed.
  return std::find(shared_file_systems.begin(), shared_file_systems.end(), type & 0xFFFFFFFFU) ==
         shared_file_systems.end();
}

bool sees_all_locks(int descriptor) {
  struct statfs status {};
  return ::fstatfs(descriptor, &status) == 0 &&
         type_sees_all_locks(static_cast<unsigned long>(status.f_type));
}

}  // namespace morvabs
