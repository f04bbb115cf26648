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
  counts()[box_id] = ++loads;
  // The box itself is in the cache only afterwards. Looking through all is for when some have gone.
  if (counts().size() > cache.size() + 1) {
    std::erase_if(counts(), [&](auto const& entry) {
      return entry.first != box_id && !cache.contains(entry.first);
    });
  }
}

}  // namespace morva
