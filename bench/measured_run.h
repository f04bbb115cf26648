#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace bench {

/// What a piece of work took.
struct Measured {
  double seconds = 0.0;
  /// Of the processor.
  double cpu_seconds = 0.0;
  /// By how much the process grew at its highest, in bytes.
  double peak_bytes = 0.0;
  /// What the work returned.
  std::uint64_t result = 0;
};

/// The fastest of some runs, and what each of them took.
struct MeasuredRuns {
  Measured best;
  std::vector<double> seconds;
  std::vector<double> cpu_seconds;
  std::vector<double> peak_bytes;
};

/// Runs the work in a forked child, which sees all that this process has in memory without copying
/// it, so that time and memory of one run do not depend on those before it. Short work is run
/// several times, in a child each. Nothing when the work takes longer than
/// the limit, or fails.
std::optional<MeasuredRuns> measure(std::function<std::uint64_t()> const& work,
                                    double limit_seconds);

/// A number that tells lists of clusters, and values, apart.
std::uint64_t fingerprint_of(std::vector<std::vector<int>> const& clusters);
std::uint64_t fingerprint_of(double value);

}  // namespace bench
