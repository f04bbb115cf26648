#include "numeric/internal/lanes.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "numeric/internal/wide.h"

namespace morva {

namespace {

using wide::lanes;

}  // namespace

Lanes::Lanes(std::span<SparsePoint const> points) : columns_(column_count(points)) {
  std::size_t const groups = (points.size() + lanes - 1) / lanes;
  data_.assign(groups * columns_ * lanes, 0.0);
  for (std::size_t j = 0; j < points.size(); ++j) {
    std::size_t const first = j / lanes * columns_ * lanes + j % lanes;
    for (std::size_t i = 0; i < points[j].columns.size(); ++i) {
      data_[first + points[j].columns[i] * lanes] = points[j].values[i];
    }
  }
}

std::vector<double> Lanes::in_full(SparsePoint const& x) const {
  std::vector<double> dense(std::max(columns_, column_count({&x, 1})), 0.0);
  for (std::size_t i = 0; i < x.columns.size(); ++i) {
    dense[x.columns[i]] = x.values[i];
  }
  return dense;
}

void Lanes::add_groups(std::span<double const> x, std::size_t first, AddColumns add,
                       std::span<double> out) const {
  std::size_t done = 0;
  while (done < out.size()) {
    std::size_t const lane = (first + done) % lanes;
    std::size_t const count = std::min(lanes - lane, out.size() - done);
    std::array<double, lanes> sums{};
    add(x.first(columns_), data_.data() + (first + done - lane) * columns_, sums.data());
    std::copy_n(sums.begin() + static_cast<std::ptrdiff_t>(lane), count,
                out.begin() + static_cast<std::ptrdiff_t>(done));
    done += count;
  }
}

void Lanes::distances(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  std::vector<double> const dense = in_full(x);
  add_groups(dense, first, wide::add_square_differences, out);
  // Behind the columns of the groups their points have zeros.
  for (double const a : std::span<double const>(dense).subspan(columns_)) {
    wide::add_to_all(a * a, out);
  }
  for (double& sum : out) {
    sum = std::sqrt(sum);
  }
}

void Lanes::dots(SparsePoint const& x, std::size_t first, std::span<double> out) const {
  add_groups(in_full(x), first, wide::add_products, out);
}

}  // namespace morva
