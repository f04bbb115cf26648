#include "host/QXPPolicyMorvaClustBox.h"

#include <cerrno>
#include <optional>
#include <string>

#include "host/box_file.h"
#include "host/native_path.h"
#include "morvabs/atomic_file.h"
#include "morvabs/box_format.h"

namespace {

int read_box_file(HString const& path, std::string& content) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return -ENOENT;
  }
  return morvabs::read_file(*bytes, content, morvabs::largest_box_file) ? 0 : -errno;
}

int write_box_file(HString const& path, std::string const& content) {
  auto const bytes = morvabs::to_path(path);
  if (!bytes) {
    return -ENOENT;
  }
  morvabs::AtomicFile file(*bytes, morvabs::AtomicFile::Access::keep);
  return file.write(content) && file.commit() ? 0 : -file.error();
}

}  // namespace

QXPPolicyMorvaClustBox::QXPPolicyMorvaClustBox() = default;

int QXPPolicyMorvaClustBox::from_file(HString const& path) {
  std::string content;
  int const result = read_box_file(path, content);
  return result < 0 ? result : morvabs::decode_box(content, *this);
}

int QXPPolicyMorvaClustBox::to_file(HString const& path) const {
  std::optional<std::string> const content = morvabs::encode_box(*this);
  return content ? write_box_file(path, *content) : -EFBIG;
}

int morvabs::copy_box_file(HString const& from, HString const& to) {
  std::string content;
  int result = read_box_file(from, content);
  if (result == 0) {
    QXPPolicyMorvaClustBox box;
    result = decode_box(content, box);
  }
  return result < 0 ? result : write_box_file(to, content);
}
