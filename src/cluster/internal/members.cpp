#include "cluster/internal/members.h"

#include <unordered_map>

namespace morva {

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
