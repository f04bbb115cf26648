#include "numeric/internal/mean_products.h"

#include <algorithm>
#include <utility>

#include "numeric/internal/wide.h"

namespace morva {

namespace {

// By measurement: more rows are mostly zeros and save no time, fewer leave more to the lists.
constexpr std::size_t one_of = 4;
constexpr std::uint32_t no_row = static_cast<std::uint32_t>(-1);

}  // namespace

struct MeanProducts::Parts {
  std::size_t columns = 0;
  std::size_t stride = 0;
  std::vector<std::uint32_t> row_of;
  std::vector<double> rows;
  std::vector<SparsePoint> rest;
};

MeanProducts::MeanProducts(std::span<SparsePoint const* const> means)
    : MeanProducts(split(means)) {}

MeanProducts::MeanProducts(Parts parts)
    : columns_(parts.columns),
      stride_(parts.stride),
      row_of_(std::move(parts.row_of)),
      rows_(std::move(parts.rows)),
      lists_(parts.rest, columns_),
      sums_(stride_) {}

MeanProducts::Parts MeanProducts::split(std::span<SparsePoint const* const> means) {
  Parts parts;
  parts.stride = (means.size() + wide::lanes - 1) / wide::lanes * wide::lanes;
  for (SparsePoint const* mean : means) {
    parts.columns = std::max(parts.columns, column_count({mean, 1}));
  }
  std::vector<std::uint32_t> counts(parts.columns);
  for (SparsePoint const* mean : means) {
    for (std::uint32_t const column : mean->columns) {
      ++counts[column];
    }
  }
  // The counts become the numbers of rows.
  std::uint32_t row_count = 0;
  for (std::uint32_t& count : counts) {
    count = count * one_of >= means.size() ? row_count++ : no_row;
  }
  parts.row_of = std::move(counts);
  parts.rows.resize(row_count * parts.stride);
  for (std::size_t k = 0; k < means.size(); ++k) {
    SparsePoint const& mean = *means[k];
    SparsePoint& rest = parts.rest.emplace_back();
    for (std::size_t i = 0; i < mean.columns.size(); ++i) {
      std::uint32_t const row = parts.row_of[mean.columns[i]];
      if (row == no_row) {
        rest.columns.push_back(mean.columns[i]);
        rest.values.push_back(mean.values[i]);
      } else {
        parts.rows[row * parts.stride + k] = mean.values[i];
      }
    }
  }
  return parts;
}

void MeanProducts::multiply(SparsePoint const& x, std::span<double> out) {
  std::fill(out.begin(), out.end(), 0.0);
  added_.clear();
  factors_.clear();
  for (std::size_t i = 0; i < x.columns.size() && x.columns[i] < columns_; ++i) {
    std::uint32_t const column = x.columns[i];
    double const a = x.values[i];
    if (row_of_[column] != no_row) {
      added_.push_back(rows_.data() + row_of_[column] * stride_);
      factors_.push_back(a);
      continue;
    }
    for (std::size_t p = lists_.start[column]; p < lists_.start[column + 1]; ++p) {
      out[lists_.point[p]] += a * lists_.value[p];
    }
  }
  wide::sum_of_multiples(factors_, added_, sums_);
  for (std::size_t k = 0; k < out.size(); ++k) {
    out[k] += sums_[k];
  }
}

}  // namespace morva
