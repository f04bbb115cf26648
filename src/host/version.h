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
  int year = 2024;  ///< Build stamp: the date,
  int month = 6;    ///< 1 to 12,
  int day = 24;     ///< 1 to 31,
  int hour = 20;    ///< and the time of day.
  int minute = 42;  ///< 0 to 59.
  int second = 3;   ///< 0 to 59.
};

/// That of this release.
inline constexpr Version version;

}  // namespace morva
