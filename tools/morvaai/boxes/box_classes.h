#pragma once

#include <vector>

#include "morvaai.h"

#include "classes/method.h"

namespace tool {

/// The type of a box whose classes are kept as centers, or as all their files.
inline constexpr int kmeans_box = 0;
inline constexpr int dbscan_box = 1;

/// A class as a box of centers keeps it: the files at these positions in the points.
QXPKMeansNode class_of_center(HString const& id, HString const& name, HSparsePoints const& points,
                              std::vector<int> const& members);

/// A class as a box of files keeps it. The files have no identifiers yet.
QXPDBScanNode class_of_members(HString const& id, HString const& name,
                               Neighbourhood const& neighbourhood, HSparsePoints const& points,
                               std::vector<int> const& members);

}  // namespace tool
