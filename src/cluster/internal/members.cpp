#include "cluster/internal/members.h"

#include <unordered_map>

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

void remove_each(std::vector<int> const& values, std::vector<int>& list) {
  std::unordered_map<int, int> surplus;
  for (int const value : values) {
    ++surplus[value];
  }
  std::erase_if(list, [&surplus](int element) {
    auto const found = surplus.find(element);
    return found != surplus.end() && found->second-- > 0;
  });
}

}  // namespace morva
