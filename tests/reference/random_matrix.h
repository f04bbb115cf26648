#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <span>

#include "reference/measures.h"

namespace reference {

/// What random cases are decided by: a generator, or the bytes of an input as long as they last, so
/// that whoever writes the input decides.
class Choices {
 public:
  using result_type = std::uint64_t;
  static constexpr result_type min() { return 0; }
  static constexpr result_type max() { return std::numeric_limits<result_type>::max(); }

  explicit Choices(std::uint64_t seed) : random_(seed) {}
  explicit Choices(std::span<std::uint8_t const> input) : random_(input.size()), input_(input) {}

  result_type operator()() { return input_.empty() ? random_() : take(max()); }
  /// From 0 to `span` - 1.
  result_type below(std::uint64_t span) {
    return (input_.empty() ? random_() : take(span - 1)) % span;
  }

 private:
  /// As many bytes as the greatest value takes.
  result_type take(std::uint64_t greatest) {
    result_type value = 0;
    for (; greatest != 0 && !input_.empty(); greatest >>= 8U) {
      value = value << 8U | input_.front();
      input_ = input_.subspan(1);
    }
    return value;
  }

  std::mt19937_64 random_;
  std::span<std::uint8_t const> input_;
};

/// Random point sets that are meant to be hard: ties, near ties, sums that round, special values.
class RandomMatrix {
 public:
  static constexpr int kinds = 16;

  explicit RandomMatrix(std::uint64_t seed) : random_(seed) {}
  explicit RandomMatrix(std::span<std::uint8_t const> input) : random_(input) {}

  /// From `low` to `high`, both included.
  int integer(int low, int high) {
    auto const span = static_cast<std::uint64_t>(high - low) + 1;
    return low + static_cast<int>(random_.below(span));
  }
  /// Any value at all.
  double bits() { return std::bit_cast<double>(random_()); }
  /// In [0, 1), a multiple of 2^-53.
  double unit() { return static_cast<double>(random_() >> 11) * 0x1p-53; }
  bool one_in(int n) { return integer(1, n) == 1; }
  template <typename List>
  auto const& pick(List const& list) {
    return list[static_cast<std::size_t>(integer(0, static_cast<int>(list.size()) - 1))];
  }
  /// Mostly small, sometimes around the widths that vector code works in.
  int size() {
    if (one_in(12)) {
      return pick(std::array{15, 16, 17, 31, 32, 33, 47, 63, 64, 65});
    }
    return one_in(3) ? integer(1, 30) : integer(1, 9);
  }

  Matrix points(int kind, int count) {
    switch (kind) {
      case 0:
        return grid(count, integer(1, 4), 4);
      case 1:
        return grid(count, 1, integer(2, 12));
      case 2:
        return duplicates(count);
      case 3:
        return sparse(count, integer(5, 60), 6, true);
      case 4:
        return mixed_dimensions(count);
      case 5:
        return fingerprints(count);
      case 6:
        return sparse(count, integer(100, 2000), 40, false);
      case 7:
        return scaled(count, {1e300, -1e300, 1e154, 1.5e154, 1e150, 1e160, 3.0});
      case 8:
        return scaled(count, {1e-310, -1e-310, 1e-160, 3e-162, 5e-324, 1e-200, 0.0});
      case 9:
        return specials(count);
      case 10:
        return permuted(count);
      case 11:
        return uniform(count, integer(1, 8));
      case 12:
        return simplex(count);
      case 13:
        return scaled(count, {0x1p63, 0x1p62, 0x1.fffffffffffffp62, 0x1p61, 0.0, 1e18});
      case 14:
        return far_from_origin(count);
      default:
        return scaled_copies(count);
    }
  }

  /// A value for a radius: special, random, or a distance of the points or right beside one.
  double radius(Matrix const& points) {
    switch (integer(0, 8)) {
      case 0:
        return pick(std::array{0.0, -0.0, -1.0, 1e300, 1e-310, 1.0, 1e-7,
                               std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(), no_distance});
      case 1:
        return unit() * 4.0;
      default:
        break;
    }
    double const exact = distance(pick(points), pick(points));
    switch (integer(0, 4)) {
      case 0:
        return std::nextafter(exact, 0.0);
      case 1:
        return std::nextafter(exact, std::numeric_limits<double>::infinity());
      case 2:
        return exact * unit();
      default:
        return exact;
    }
  }

 private:
  Matrix grid(int count, int dimensions, int values) {
    return made(count, dimensions,
                [this, values] { return static_cast<double>(integer(0, values - 1)); });
  }
  Matrix uniform(int count, int dimensions) {
    return made(count, dimensions, [this] { return unit() * 2.0 - 1.0; });
  }
  Matrix scaled(int count, std::vector<double> const& scales) {
    return made(count, integer(1, 4), [this, &scales] {
      double const scale = pick(scales);
      return one_in(2) ? scale : scale * unit();
    });
  }
  Matrix specials(int count) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    int const rarity = integer(2, 12);
    return made(count, integer(1, 4), [this, rarity] {
      return one_in(rarity) ? pick(std::array{infinity, -infinity, nan, -0.0, 1e308})
                            : pick(std::array{0.0, -0.0, 1.0, 2.0, -3.0});
    });
  }
  Matrix duplicates(int count) {
    Matrix const originals = uniform(integer(1, 4), integer(1, 6));
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      rows.push_back(pick(originals));
    }
    return rows;
  }
  Matrix sparse(int count, int dimensions, int words, bool zero_rows) {
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      Point row = zero_point(dimensions);
      for (int w = zero_rows && one_in(4) ? words : 0; w < words; ++w) {
        row[static_cast<std::size_t>(integer(0, dimensions - 1))] =
            zero_rows && one_in(2) ? 1.0 : 1.0 - unit();
      }
      rows.push_back(row);
    }
    return rows;
  }
  Matrix mixed_dimensions(int count) {
    int const longest = integer(1, 5);
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      rows.push_back(grid(1, one_in(3) ? integer(0, longest) : longest, 4)[0]);
    }
    return rows;
  }
  Matrix fingerprints(int count) {
    Matrix rows = made(count, 128, [this] { return std::floor(unit() * 4294967296.0); });
    for (std::size_t i = 1; i < rows.size(); ++i) {
      if (one_in(2)) {
        rows[i] = rows[static_cast<std::size_t>(integer(0, static_cast<int>(i) - 1))];
        for (int change = integer(0, 8); change > 0; --change) {
          rows[i][static_cast<std::size_t>(integer(0, 127))] = std::floor(unit() * 4294967296.0);
        }
      }
    }
    return rows;
  }
  /// Rows that hold the same values in another order: equal distances that round apart.
  Matrix permuted(int count) {
    Point row = uniform(1, integer(3, 24))[0];
    if (one_in(2)) {
      row.resize(row.size() * 2, 0.0);
    }
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      std::shuffle(row.begin(), row.end(), random_);
      rows.push_back(one_in(8) ? zero_point(static_cast<long long>(row.size())) : row);
    }
    return rows;
  }
  /// Corners of a simplex, equally far from each other but for last bits.
  Matrix simplex(int count) {
    double const edge = one_in(2) ? 1.0 : unit();
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      Point row = zero_point(count);
      double& x = row[static_cast<std::size_t>(i)];
      x = edge;
      for (int step = integer(0, 6) - 4; step > 0; --step) {
        x = std::nextafter(x, 2.0 * integer(0, 1));
      }
      rows.push_back(row);
    }
    return rows;
  }
  /// Small differences under large norms: bounds from norms say nothing here.
  Matrix far_from_origin(int count) {
    double const offset = pick(std::array{1e8, 1e12, 1e15, -1e10});
    int const step = integer(1, 4);
    return made(count, integer(1, 6), [this, offset, step] {
      return offset + static_cast<double>(integer(0, 5)) / step;
    });
  }
  /// Multiples of one row, some moved by a last bit.
  Matrix scaled_copies(int count) {
    Point const base = uniform(1, integer(1, 40))[0];
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      Point row = base;
      double const factor = integer(0, 5) * (one_in(3) ? 0.1 : 1.0);
      for (double& x : row) {
        x *= factor;
      }
      if (one_in(2)) {
        double& x = row[static_cast<std::size_t>(integer(0, static_cast<int>(row.size()) - 1))];
        x = std::nextafter(x, one_in(2) ? 4.0 : -4.0);
      }
      rows.push_back(row);
    }
    return rows;
  }
  template <typename Coordinate>
  static Matrix made(int count, int dimensions, Coordinate coordinate) {
    Matrix rows;
    for (int i = 0; i < count; ++i) {
      Point row;
      for (int d = 0; d < dimensions; ++d) {
        row.push_back(coordinate());
      }
      rows.push_back(row);
    }
    return rows;
  }

  Choices random_;
};

}  // namespace reference
