#pragma once

#include <array>
#include <cstddef>

namespace morvabs {

/// An MD5 digest in the making.
class Md5 {
 public:
  Md5();
  void update(char const* bytes, std::size_t size);
  /// The digest as 32 upper-case hexadecimal digits. Ends the computation.
  std::array<wchar_t, 32> digits();

 private:
  // Holds the package's state, whose header stays in one source.
  alignas(std::max_align_t) std::array<unsigned char, 128> state_;
};

}  // namespace morvabs
