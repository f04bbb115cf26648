#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace tool {

/// XXH3 of bytes, 64 bits: for finding damage, not for keeping out who wants to deceive.
std::uint64_t checksum_of(std::string_view bytes);

/// The same of bytes that come piece by piece.
class Checksum {
 public:
  Checksum();
  ~Checksum();
  Checksum(Checksum const&) = delete;
  Checksum& operator=(Checksum const&) = delete;

  void add(std::string_view bytes);
  std::uint64_t value() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tool
