#pragma once

namespace morva {

/// Stands for no distance, and for one larger than any real distance: the distance of points of
/// different size, and the start of every search for a smallest distance.
inline constexpr double no_distance = 9223372036854775808.0;

}  // namespace morva
