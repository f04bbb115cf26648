#include "shards/file_stamp.h"

#include <sys/stat.h>

namespace tool {

namespace {

std::uint64_t nanoseconds(timespec const& time) {
  constexpr std::uint64_t in_a_second = 1000000000;
  return static_cast<std::uint64_t>(time.tv_sec) * in_a_second +
         static_cast<std::uint64_t>(time.tv_nsec);
}

}  // namespace

FileStamp FileStamp::of(std::string const& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return {};
  }
  return {static_cast<std::uint64_t>(status.st_size), nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

}  // namespace tool
