#pragma once

namespace morva {

/// What the version banner states; fixed when a release is made.
struct Version {
  int major = 3;
  int minor = 2306;
  int patch = 4;
  int build = 13;
  int revision = 1;
  /// Build stamp.
  int year = 2024, month = 6, day = 24, hour = 20, minute = 42, second = 3;
};

inline constexpr Version version;

}  // namespace morva
