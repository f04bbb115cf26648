#include "numeric/internal/center_finder.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <utility>

#include "numeric/internal/ascending.h"

namespace morva {

namespace {

// The values of one column in ascending order, together with the zeros of the members that have
// none there. Only what is asked for is sorted out.
class ColumnOrder {
 public:
  ColumnOrder(std::span<double> values, std::size_t members)
      : values_(values), zeros_(members - values.size()) {
    for (double const value : values) {
      below_zero_ += static_cast<std::size_t>(comes_before(value, 0.0));
    }
  }

  double at(std::size_t position) const {
    if (position < below_zero_) {
      return select(values_, position);
    }
    return position < below_zero_ + zeros_ ? 0.0 : select(values_, position - zeros_);
  }

 private:
  std::span<double> values_;
  std::size_t zeros_;
  std::size_t below_zero_ = 0;
};

double median_of(ColumnOrder const& order, std::size_t members) {
  std::size_t const middle = members / 2;
  if (members % 2 == 1 || members == 2) {
    return order.at(middle);
  }
  return 0.5 * (order.at(middle) + order.at(middle + 1));
}

void append(double value, std::size_t column, std::vector<std::uint32_t>& columns,
            std::vector<double>& values) {
  if (std::bit_cast<std::uint64_t>(value) != 0) {
    columns.push_back(static_cast<std::uint32_t>(column));
    values.push_back(value);
  }
}

// The number of columns up to the last that a member has a value in, and of the values.
struct Extent {
  std::size_t columns = 0;
  std::size_t values = 0;
};

Extent extent_of(std::span<SparsePoint const* const> members) {
  Extent extent;
  for (SparsePoint const* member : members) {
    if (!member->columns.empty()) {
      extent.columns = std::max(extent.columns, std::size_t{member->columns.back()} + 1);
      extent.values += member->values.size();
    }
  }
  return extent;
}

// Without working memory for the columns.
SparsePoint sorted_mean(long long n, std::span<SparsePoint const* const> adding, double divisor) {
  std::vector<std::pair<std::uint32_t, double>> all;
  for (SparsePoint const* member : adding) {
    for (std::size_t i = 0; i < member->columns.size(); ++i) {
      all.emplace_back(member->columns[i], member->values[i]);
    }
  }
  // Within a column in the order of the members.
  std::stable_sort(all.begin(), all.end(),
                   [](auto const& a, auto const& b) { return a.first < b.first; });
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  for (std::size_t i = 0; i < all.size();) {
    std::uint32_t const column = all[i].first;
    double sum = 0.0;
    for (; i < all.size() && all[i].first == column; ++i) {
      sum += all[i].second;
    }
    append(divisor == 0.0 ? sum : sum / divisor, column, columns, values);
  }
  return {std::max(n, 0LL), std::move(columns), std::move(values)};
}

}  // namespace

void CenterFinder::mark_columns(long long n, std::span<SparsePoint const* const> members) {
  marks_.clear();
  for (SparsePoint const* member : members) {
    for (std::uint32_t const column : member->columns) {
      if (column >= n) {
        break;
      }
      marks_.make_room_for(column);
      marks_.insert(column);
    }
  }
}

SparsePoint CenterFinder::mean(long long n, std::span<SparsePoint const* const> members,
                               double divisor) {
  std::vector<SparsePoint const*> adding;
  std::copy_if(members.begin(), members.end(), std::back_inserter(adding),
               [n](SparsePoint const* member) { return member->n == n; });
  Extent const extent = extent_of(adding);
  // Walking over all columns costs less than marking those that are used.
  if (extent.columns != 0 && extent.values >= extent.columns / 2) {
    return dense_mean(n, extent.columns, adding, divisor);
  }
  // Sorting few values costs less than working memory, which is not there yet.
  constexpr std::size_t few_values = 4096;
  constexpr std::size_t price_of_sorting = 64;
  if (extent.values <= few_values &&
      extent.columns > sums_.size() + price_of_sorting * extent.values) {
    return sorted_mean(n, adding, divisor);
  }
  mark_columns(n, adding);
  sums_.resize(std::max(sums_.size(), marks_.room()), 0.0);
  for (SparsePoint const* member : adding) {
    for (std::size_t i = 0; i < member->columns.size(); ++i) {
      sums_[member->columns[i]] += member->values[i];
    }
  }
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  marks_.for_each([&](std::size_t column) {
    double const sum = std::exchange(sums_[column], 0.0);
    append(divisor == 0.0 ? sum : sum / divisor, column, columns, values);
  });
  return {std::max(n, 0LL), std::move(columns), std::move(values)};
}

SparsePoint CenterFinder::dense_mean(long long n, std::size_t column_count,
                                     std::span<SparsePoint const* const> adding, double divisor) {
  sums_.resize(std::max(sums_.size(), column_count), 0.0);
  for (SparsePoint const* member : adding) {
    if (member->columns.empty()) {
      continue;
    }
    double const* const x = member->values.data();
    if (member->values.size() == member->columns.back() + std::size_t{1}) {
      for (std::size_t column = 0; column < member->values.size(); ++column) {
        sums_[column] += x[column];
      }
      continue;
    }
    for (std::size_t i = 0; i < member->columns.size(); ++i) {
      sums_[member->columns[i]] += x[i];
    }
  }
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  columns.reserve(column_count);
  values.reserve(column_count);
  for (std::size_t column = 0; column < column_count; ++column) {
    double const sum = std::exchange(sums_[column], 0.0);
    append(divisor == 0.0 ? sum : sum / divisor, column, columns, values);
  }
  return {std::max(n, 0LL), std::move(columns), std::move(values)};
}

void CenterFinder::group_values(std::span<SparsePoint const* const> members) {
  ends_.resize(std::max(ends_.size(), marks_.room()));
  marks_.for_each([this](std::size_t column) { ends_[column] = 0; });
  auto const is_marked = [this](std::uint32_t column) {
    return column < marks_.room() && marks_.contains(column);
  };
  for (SparsePoint const* member : members) {
    for (std::uint32_t const column : member->columns) {
      if (is_marked(column)) {
        ++ends_[column];
      }
    }
  }
  std::size_t total = 0;
  marks_.for_each([&](std::size_t column) {
    std::size_t const count = ends_[column];
    ends_[column] = total;
    total += count;
  });
  grouped_.resize(total);
  for (SparsePoint const* member : members) {
    for (std::size_t i = 0; i < member->columns.size(); ++i) {
      if (is_marked(member->columns[i])) {
        grouped_[ends_[member->columns[i]]++] = member->values[i];
      }
    }
  }
}

SparsePoint CenterFinder::median(long long n, std::span<SparsePoint const* const> members) {
  mark_columns(n, members);
  group_values(members);
  std::vector<std::uint32_t> columns;
  std::vector<double> values;
  std::size_t begin = 0;
  marks_.for_each([&](std::size_t column) {
    std::span<double> const group(grouped_.data() + begin, ends_[column] - begin);
    begin = ends_[column];
    append(median_of(ColumnOrder(group, members.size()), members.size()), column, columns, values);
  });
  return {std::max(n, 0LL), std::move(columns), std::move(values)};
}

}  // namespace morva
