#pragma once

#include <sys/types.h>

namespace morvabs {

/// What new files and directories are made with, less what the umask takes away: never to be
/// written by everyone, which many services leave to whoever makes a file, their umask being 0.
constexpr mode_t new_file_permissions = 0664;
constexpr mode_t new_directory_permissions = 0775;

/// Of what holds text of documents.
constexpr mode_t private_file_permissions = 0600;

}  // namespace morvabs
