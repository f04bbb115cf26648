#include "boxes/box_classes.h"

namespace tool {

QXPKMeansNode class_of_center(HString const& id, HString const& name, HSparsePoints const& points,
                              std::vector<int> const& members) {
  QXPKMeansNode node;
  node.str_class_id = id;
  node.str_class_name = name;
  node.d_radius = points.get_max_radius(members);
  node.vt_weight = points.get_center_point(members).vt_data;
  return node;
}

QXPDBScanNode class_of_members(HString const& id, HString const& name,
                               Neighbourhood const& neighbourhood, HSparsePoints const& points,
                               std::vector<int> const& members) {
  QXPDBScanNode node;
  node.str_class_id = id;
  node.str_class_name = name;
  node.d_eps = neighbourhood.eps;
  node.i_minpts = neighbourhood.minpts;
  node.vt_file_node.reserve(members.size());
  for (int const member : members) {
    node.vt_file_node.emplace_back().vt_weight = points.at(member).vt_data;
  }
  return node;
}

}  // namespace tool
