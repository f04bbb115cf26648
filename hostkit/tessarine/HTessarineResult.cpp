#include "host/HTessarineResult.h"

#include "tessarine/file_type.h"

bool HTessarine::recognize(HString const& path, HTessarineResult& result) {
  result.str_path = path;
  Orlec::IFile const file(path, false);
  if (!file.IsOpen()) {
    return false;
  }
  auto const recognition = tessarine::recognize(file);
  if (recognition.type == tessarine::FileType::unknown) {
    return false;
  }
  result.str_suffix = HString(recognition.suffix);
  result.b_encrypt = recognition.encrypted;
  return true;
}
