#include "classify/internal/prepared_boxes.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

#include "box/HFileClusterBoxMgr.h"
#include "box/internal/load_count.h"

namespace morva {

namespace {

struct Prepared {
  std::uint64_t load;
  WeightLists lists;
};

// What was made of boxes that a host has erased since goes as well. Looking through all is for when
// there would be more than boxes.
void make_room(std::map<HString, Prepared>& boxes, std::size_t added) {
  auto const& cache = HFileClusterBoxMgr::pins()->map_box;
  if (boxes.size() + added <= cache.size()) {
    return;
  }
  std::erase_if(boxes, [&cache](auto const& entry) { return !cache.contains(entry.first); });
}

}  // namespace

WeightLists const& prepared_box(HString const& box_id, QXPPolicyMorvaClustBox const& box) {
  static std::map<HString, Prepared> boxes;
  Lists const lists =
      box.i_cluster_type == 0 ? lists_of(box.vt_kmeans_node) : lists_of(box.vt_dbscan_node);
  auto const known = boxes.find(box_id);
  if (known != boxes.end() && known->second.load == load_count(box_id) &&
      known->second.lists.is_of(box.vt_words, lists)) {
    return known->second.lists;
  }
  make_room(boxes, known == boxes.end() ? 1 : 0);
  Prepared prepared{load_count(box_id), WeightLists(box.vt_words, lists)};
  return boxes.insert_or_assign(box_id, std::move(prepared)).first->second.lists;
}

}  // namespace morva
