#include "box/internal/load_count.h"

#include <map>

namespace morva {

namespace {

std::map<HString, std::uint64_t>& counts() {
  static std::map<HString, std::uint64_t> by_box;
  return by_box;
}

}  // namespace

std::uint64_t load_count(HString const& box_id) {
  auto const found = counts().find(box_id);
  return found == counts().end() ? 0 : found->second;
}

void count_load(HString const& box_id) {
  ++counts()[box_id];
}

}  // namespace morva
