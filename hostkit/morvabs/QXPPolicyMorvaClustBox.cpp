#include "host/QXPPolicyMorvaClustBox.h"

#include <cerrno>
#include <optional>
#include <string>

#include "host/native_path.h"
#include "morvabs/atomic_file.h"
#include "morvabs/box_format.h"
#include "morvabs/file_access.h"

QXPPolicyMorvaClustBox::QXPPolicyMorvaClustBox() = default;

int QXPPolicyMorvaClustBox::from_file(HString const& path) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return -ENOENT;
  }
  std::string content;
  if (!morvabs::read_file(*bytes, content, morvabs::largest_box_file)) {
    morvabs::OpenedFile const file = morvabs::open_regular_file(*bytes);
    bool const is_large = file.size > morvabs::largest_box_file;
    return file.error != 0 ? -file.error : -(is_large ? EFBIG : EIO);
  }
  return morvabs::decode_box(content, *this);
}

int QXPPolicyMorvaClustBox::to_file(HString const& path) const {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return -ENOENT;
  }
  std::optional<std::string> const content = morvabs::encode_box(*this);
  if (!content) {
    return -EFBIG;
  }
  morvabs::AtomicFile file(*bytes, morvabs::AtomicFile::Access::keep);
  return file.write(*content) && file.commit() ? 0 : -file.error();
}
