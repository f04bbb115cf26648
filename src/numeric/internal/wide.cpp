#include "numeric/internal/wide.h"

#include <array>
#include <cstring>

// On x86-64 each loop is compiled for several widths, of which the loader picks one; not under the
// sanitizers, which start up after the loader has picked.

namespace morva::wide {

namespace {

using Vector [[gnu::vector_size(64)]] = double;
constexpr std::size_t width = sizeof(Vector) / sizeof(double);
using Group = std::array<Vector, lanes / width>;

}  // namespace

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void add_square_differences(std::span<double const> x, double const* group, double* sums) {
  Group total;
  std::memcpy(total.data(), sums, sizeof total);
  for (double const a : x) {
    Group column;
    std::memcpy(column.data(), group, sizeof column);
    for (std::size_t i = 0; i < total.size(); ++i) {
      Vector const difference = a - column[i];
      total[i] += difference * difference;
    }
    group += lanes;
  }
  std::memcpy(sums, total.data(), sizeof total);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void add_products(std::span<double const> x, double const* group, double* sums) {
  Group total;
  std::memcpy(total.data(), sums, sizeof total);
  for (double const a : x) {
    Group column;
    std::memcpy(column.data(), group, sizeof column);
    for (std::size_t i = 0; i < total.size(); ++i) {
      total[i] += a * column[i];
    }
    group += lanes;
  }
  std::memcpy(sums, total.data(), sizeof total);
}

#if defined(__x86_64__) && !defined(MORVA_SANITIZED)
[[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
void add_to_all(double value, std::span<double> out) {
  for (double& sum : out) {
    sum += value;
  }
}

}  // namespace morva::wide
