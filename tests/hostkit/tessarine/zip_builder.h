#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "hostkit/tessarine/memory_reader.h"

namespace test {

/// Builds a ZIP of stored entries, and lets a test break the rules.
class ZipBuilder {
 public:
  ZipBuilder& add(std::string const& name, std::string const& content, unsigned flags = 0) {
    auto const common = little(20, 2) + little(flags, 2) + little(0, 2) + little(0, 4) +
                        little(checksum(content), 4) + little(content.size(), 4) +
                        little(content.size(), 4) + little(name.size(), 2) + little(0, 2);
    directory_ += "PK\1\2" + little(20, 2) + common + little(0, 6) + little(0, 4) +
                  little(entries_.size(), 4) + name;
    entries_ += "PK\3\4" + common + name + content;
    ++count_;
    return *this;
  }

  std::string entries() const { return entries_; }
  std::string bytes() const {
    return entries_ + directory_ + "PK\5\6" + little(0, 4) + little(count_, 2) + little(count_, 2) +
           little(directory_.size(), 4) + little(entries_.size(), 4) + little(0, 2);
  }

 private:
  static std::uint32_t checksum(std::string_view bytes) {
    std::uint32_t sum = 0xffffffff;
    for (auto const byte : bytes) {
      sum ^= static_cast<unsigned char>(byte);
      for (int i = 0; i < 8; ++i) {
        sum = sum >> 1U ^ ((sum & 1U) != 0 ? 0xedb88320U : 0U);
      }
    }
    return ~sum;
  }

  std::string entries_;
  std::string directory_;
  unsigned count_ = 0;
};

}  // namespace test
