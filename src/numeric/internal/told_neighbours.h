#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morva {

/// The neighbours of points, each among itself and the points behind it, as processes tell them to
/// each other: of a row its length, and its neighbours or one bit for each point that may be one,
/// whichever is shorter.
class ToldNeighbours {
 public:
  /// Of so many points, fewer than 2^31.
  explicit ToldNeighbours(std::size_t size) : size_(size) {}

  /// Adds row i to what is told: ascending, from i on, each below `size`.
  void tell(std::size_t i, std::span<std::uint32_t const> near,
            std::vector<std::uint32_t>& message) const;
  /// Takes row i off the front of what was told; good until the next call. Throws what
  /// `Division::expect_same` does where that is no such row.
  std::span<std::uint32_t const> hear(std::size_t i, std::span<std::uint32_t const>& message);

 private:
  std::size_t size_;
  std::vector<std::uint32_t> near_;
};

}  // namespace morva
