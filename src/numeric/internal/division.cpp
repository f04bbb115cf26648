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

Rows Division::rows(std::size_t count, Shape shape) const {
  return {border(count, rank(), size(), shape), border(count, rank() + 1, size(), shape)};
}

std::vector<std::string> Division::gather_bytes(std::string mine, std::size_t unit) const {
  std::vector<std::string> all;
  if (is_alone()) {
    all.push_back(std::move(mine));
  } else {
    all = group_->all_gather(mine);
  }
  bool is_whole = all.size() == size();
  for (std::string const& one : all) {
    is_whole = is_whole && one.size() % unit == 0;
  }
  if (!is_whole) {
    throw std::runtime_error("the processes that share this work do not do the same");
  }
  return all;
}

}  // namespace morva
