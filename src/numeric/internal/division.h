#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "numeric/internal/distance_table.h"
#include "numeric/internal/rows.h"

namespace morva {

/// How the work on a table is divided among the processes of its group, as one of them sees it, and
/// how they bring together what they found. A table without a group is one process's own.
class Division {
 public:
  /// How much work there is on a row: as much as on each other, or on row i of n as for the n - i
  /// rows from it on.
  enum class Shape { even, triangle };
  /// Of so many turns, that rows are searched in, the one with a number from 0 up.
  struct Turn {
    std::size_t number = 0;
    std::size_t turns = 1;
  };

  explicit Division(DistanceTable const& table) : group_(table.group().get()) {}

  bool is_alone() const { return group_ == nullptr; }
  std::size_t rank() const { return is_alone() ? 0 : static_cast<std::size_t>(group_->rank()); }
  std::size_t size() const { return is_alone() ? 1 : static_cast<std::size_t>(group_->size()); }
  /// Those of so many rows that are this process's part, or that of another. In order are the rows
  /// of one turn, of which those of the processes by rank, and then those of the next.
  Rows rows(std::size_t count, Shape shape = Shape::even) const {
    return rows_of(rank(), count, shape, {});
  }
  Rows rows_of(std::size_t process, std::size_t count, Shape shape, Turn turn) const;

  /// Throws `std::runtime_error` where what a process has brought is not what this one awaits.
  static void expect_same(bool is_same);

  /// What each process has found, by their ranks. Throws as `expect_same` where one of them has not
  /// brought such values.
  template <typename T>
  std::vector<std::vector<T>> gather(std::vector<T> mine) const {
    static_assert(std::is_trivially_copyable_v<T>);
    std::vector<std::vector<T>> all;
    std::string own = as_bytes(mine);
    std::vector<T>().swap(mine);
    for (std::string& bytes : gather_bytes(std::move(own), sizeof(T))) {
      std::vector<T>& one = all.emplace_back(bytes.size() / sizeof(T));
      if (!one.empty()) {
        std::memcpy(one.data(), bytes.data(), bytes.size());
      }
      std::string().swap(bytes);
    }
    return all;
  }
  /// The same, one behind the other; `count` in all where it is given.
  template <typename T>
  std::vector<T> join(std::vector<T> mine, std::optional<std::size_t> count = {}) const {
    if (is_alone()) {
      return mine;
    }
    std::vector<T> all;
    for (std::vector<T> const& one : gather(std::move(mine))) {
      all.insert(all.end(), one.begin(), one.end());
    }
    expect_same(all.size() == count.value_or(all.size()));
    return all;
  }

 private:
  template <typename T>
  static std::string as_bytes(std::vector<T> const& values) {
    std::string bytes(values.size() * sizeof(T), '\0');
    if (!values.empty()) {
      std::memcpy(bytes.data(), values.data(), bytes.size());
    }
    return bytes;
  }
  std::vector<std::string> gather_bytes(std::string mine, std::size_t unit) const;

  HProcessGroup* group_;
};

}  // namespace morva
