#include "numeric/internal/lanes.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morva {

namespace {

constexpr std::size_t lanes = 8;
using Sums = std::array<double, lanes>;

// `x` in full, of which the group has as many columns as `common`; behind them its points have
// zeros.
Sums sum_squares(std::span<double const> x, std::size_t common, double const* group) {
  Sums sums{};
  for (double const a : x.first(common)) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      double const difference = a - group[lane];
      sums[lane] += difference * difference;
    }
    group += lanes;
  }
  for (double const a : x.subspan(common)) {
    for (double& sum : sums) {
      sum += a * a;
    }
  }
  for (double& sum : sums) {
    sum = std::sqrt(sum);
  }
  return sums;
}

Sums sum_products(std::span<double const> x, std::size_t common, double const* group) {
  Sums sums{};
  for (double const a : x.first(common)) {
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      sums[lane] += a * group[lane];
    }
    group += lanes;
  }
  return sums;
}

}  // namespace

Lanes::Lanes(std::span<SparsePoint const> points) {
  for (SparsePoint const& point : points) {
    if (!point.columns.empty()) {
      columns_ = std::max(columns_, std::size_t{point.columns.back()} + 1);
    }
  }
  std::size_t const groups = (points.size() + lanes - 1) / lanes;
  data_.assign(groups * columns_ * lanes, 0.0);
  for (std::size_t j = 0; j < points.size(); ++j) {
    double* const group = data_.data() + j / lanes * columns_ * lanes + j % lanes;
    for (std::size_t i = 0; i < points[j].columns.size(); ++i) {
      group[points[j].columns[i] * lanes] = points[j].values[i];
    }
  }
}

template <typename Kernel>
void Lanes::for_each_group(SparsePoint const& x, std::size_t first, std::span<double> out,
                           Kernel const& kernel) const {
  std::size_t const last = x.columns.empty() ? 0 : std::size_t{x.columns.back()} + 1;
  std::vector<double> dense(std::max(columns_, last), 0.0);
  for (std::size_t i = 0; i < x.columns.size(); ++i) {
    dense[x.columns[i]] = x.values[i];
  }
  std::size_t done = 0;
  while (done < out.size()) {
    std::size_t const lane = (first + done) % lanes;
    std::size_t const count = std::min(lanes - lane, out.size() - done);
    Sums const sums = kernel(dense, columns_, data_.data() + (first + done - lane) * columns_);
    std::copy_n(sums.begin() + static_cast<std::ptrdiff_t>(lane), count,
                out.begin() + static_cast<std::ptrdiff_t>(done));
    done += count;
  }
}

void Lanes::distances(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  for_each_group(x, first, out, sum_squares);
}

void Lanes::dots(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  for_each_group(x, first, out, sum_products);
}

}  // namespace morva
