#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "host/Orlec/IFile.h"

namespace test {

/// A document that was built in memory.
class MemoryReader : public Orlec::Reader {
 public:
  MemoryReader(std::string bytes, char const* name) : bytes_(std::move(bytes)), name_(name) {}

  std::int64_t ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const override {
    auto const length = static_cast<std::int64_t>(bytes_.size());
    if (offset < 0 || offset >= length) {
      return 0;
    }
    auto const count = std::min(size, length - offset);
    std::memcpy(buffer, bytes_.data() + offset, static_cast<std::size_t>(count));
    return count;
  }
  std::int64_t GetSize() const override { return static_cast<std::int64_t>(bytes_.size()); }
  HString const& GetPath() const override { return name_; }

 private:
  std::string bytes_;
  HString name_;
};

/// Little-endian integer of `count` bytes.
inline std::string little(std::uint64_t value, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    bytes += static_cast<char>(value & 0xffU);
    value >>= 8U;
  }
  return bytes;
}

}  // namespace test
