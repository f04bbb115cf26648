#include "numeric/internal/division.h"

#include <cmath>
#include <stdexcept>

namespace morva {

namespace {

// The first of the rows that belong to the parts from `part` on.
std::size_t border(std::size_t count, std::size_t part, std::size_t parts, Division::Shape shape) {
  if (part == 0 || part == parts) {
    return part == 0 ? 0 : count;
  }
  double const share = static_cast<double>(part) / static_cast<double>(parts);
  // Of a triangle, what is left behind the border is the square of the rows there.
  double const place = shape == Division::Shape::even ? share : 1.0 - std::sqrt(1.0 - share);
  return static_cast<std::size_t>(place * static_cast<double>(count));
}

}  // namespace

Rows Division::rows_of(std::size_t process, std::size_t count, Shape shape, Turn turn) const {
  std::size_t const part = turn.number * size() + process;
  std::size_t const parts = turn.turns * size();
  return {border(count, part, parts, shape), border(count, part + 1, parts, shape)};
}

void Division::expect_same(bool is_same) {
  if (!is_same) {
    throw std::runtime_error("the processes that share this work do not do the same");
  }
}

std::vector<std::string> Division::gather_bytes(std::string mine, std::size_t unit) const {
  std::vector<std::string> all;
  if (is_alone()) {
    all.push_back(std::move(mine));
  } else {
    all = group_->all_gather(mine);
  }
  expect_same(all.size() == size());
  for (std::string const& one : all) {
    expect_same(one.size() % unit == 0);
  }
  return all;
}

}  // namespace morva
