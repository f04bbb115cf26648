#include "host/HFileMD5.h"

#include <cstdint>
#include <vector>

#include "host/native_path.h"
#include "morvabs/file_access.h"
#include "morvabs/md5.h"

bool HFileMD5::get_file_md5(HString const& path, HString& md5) {
  // The path and the result may be one object.
  auto const bytes = morvabs::to_path(path);
  md5.clear();
  if (!bytes) {
    return false;
  }
  morvabs::OpenedFile const file = morvabs::open_regular_file(*bytes);
  if (file.error != 0) {
    return false;
  }
  morvabs::Md5 digest;
  std::vector<char> chunk(std::size_t{1} << 16);
  auto const wanted = static_cast<std::int64_t>(chunk.size());
  std::int64_t got = wanted;
  while (got == wanted) {
    got = morvabs::read_bytes(file.descriptor.get(), chunk.data(), wanted);
    if (got < 0) {
      return false;
    }
    digest.update(chunk.data(), static_cast<std::size_t>(got));
  }
  auto const digits = digest.digits();
  md5 = HString(digits.data(), static_cast<int>(digits.size()));
  return true;
}
