#include "numeric/internal/mean_products.h"

#include <algorithm>
#include <limits>

#include "numeric/internal/wide.h"

namespace morva {

namespace {

// By measurement: more rows are mostly zeros and save no time, fewer leave more to the lists.
constexpr std::size_t one_of = 4;
// In place of a count.
constexpr std::uint32_t is_row = std::numeric_limits<std::uint32_t>::max();

std::size_t column_count_of(std::span<SparsePoint const* const> points) {
  std::size_t count = 0;
  for (SparsePoint const* point : points) {
    count = std::max(count, column_count({point, 1}));
  }
  return count;
}

}  // namespace

MeanProducts::MeanProducts(std::span<SparsePoint const* const> means)
    : columns_(column_count_of(means)),
      stride_((means.size() + wide::lanes - 1) / wide::lanes * wide::lanes),
      sums_(stride_) {
  lay_out(means);
  fill(means);
}

void MeanProducts::lay_out(std::span<SparsePoint const* const> means) {
  for (SparsePoint const* mean : means) {
    for (std::uint32_t const column : mean->columns) {
      ++columns_[column].count;
    }
  }
  std::uint32_t row_count = 0;
  std::uint32_t entry_count = 0;
  for (Column& column : columns_) {
    if (column.count * one_of >= means.size()) {
      column = {row_count++, is_row};
    } else {
      column.begin = entry_count;
      entry_count += column.count;
    }
  }
  rows_.resize(row_count * stride_);
  entries_.resize(entry_count);
}

void MeanProducts::fill(std::span<SparsePoint const* const> means) {
  // Where the next entry of each list belongs.
  std::vector<std::uint32_t> next(columns_.size());
  std::transform(columns_.begin(), columns_.end(), next.begin(),
                 [](Column const& column) { return column.begin; });
  for (std::size_t k = 0; k < means.size(); ++k) {
    SparsePoint const& mean = *means[k];
    for (std::size_t i = 0; i < mean.columns.size(); ++i) {
      std::uint32_t const column = mean.columns[i];
      if (columns_[column].count == is_row) {
        rows_[columns_[column].begin * stride_ + k] = mean.values[i];
      } else {
        entries_[next[column]++] = {static_cast<std::uint32_t>(k), mean.values[i]};
      }
    }
  }
}

// Asks memory for all that is looked up before the first of it is needed: words are spread wide.
void MeanProducts::look_up(SparsePoint const& x) {
  auto const end = std::lower_bound(x.columns.begin(), x.columns.end(), columns_.size());
  auto const count = static_cast<std::size_t>(end - x.columns.begin());
  for (std::size_t i = 0; i < count; ++i) {
    __builtin_prefetch(&columns_[x.columns[i]]);
  }
  rows_at_hand_.clear();
  factors_.clear();
  lists_at_hand_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    Column const column = columns_[x.columns[i]];
    if (column.count == is_row) {
      rows_at_hand_.push_back(rows_.data() + column.begin * stride_);
      factors_.push_back(x.values[i]);
    } else if (column.count != 0) {
      lists_at_hand_.push_back(
          {x.values[i], std::span(entries_).subspan(column.begin, column.count)});
      __builtin_prefetch(&entries_[column.begin]);
    }
  }
}

void MeanProducts::multiply(SparsePoint const& x, std::span<double> out) {
  look_up(x);
  wide::sum_of_multiples(factors_, rows_at_hand_, sums_);
  std::copy_n(sums_.begin(), out.size(), out.begin());
  for (Multiple const& multiple : lists_at_hand_) {
    for (Entry const& entry : multiple.list) {
      out[entry.mean] += multiple.factor * entry.value;
    }
  }
}

}  // namespace morva
