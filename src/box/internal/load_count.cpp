#include "box/internal/load_count.h"

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

void count_load(HString const& box_id, std::map<HString, QXPPolicyMorvaClustBox> const& cache) {
  static std::uint64_t loads = 0;
  std::erase_if(counts(), [&cache](auto const& entry) { return !cache.contains(entry.first); });
  counts()[box_id] = ++loads;
}

}  // namespace morva
