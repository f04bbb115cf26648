#pragma once

namespace morva {

/// What the version banner states; fixed when a release is made.
struct Version {
  /// The first number of the version; with another one, programs are built anew.
  int major = 3;
  /// The second number.
  int minor = 2306;
  /// The third number.
  int patch = 4;
  /// Number of the build.
  int build = 13;
  /// Number of its revision.
  int revision = 1;
  /// Build stamp.
  int year = 2024, month = 6, day = 24, hour = 20, minute = 42, second = 3;
};

inline constexpr Version version;

}  // namespace morva
