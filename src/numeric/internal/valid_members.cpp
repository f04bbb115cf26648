#include "numeric/internal/valid_members.h"

namespace morva {

std::vector<SparsePoint const*> valid_members(std::vector<SparsePoint> const& points,
                                              std::vector<int> const& members) {
  std::vector<SparsePoint const*> result;
  result.reserve(members.size());
  for (int const member : members) {
    if (is_point(points, member)) {
      result.push_back(&points[static_cast<std::size_t>(member)]);
    }
  }
  return result;
}

}  // namespace morva
