#pragma once

#include <vector>

#include "box/HClusterResultBase.h"
#include "host/export.h"

/// A class of a K-means run.
class MORVA_EXPORT HClusterResultKMeansNode : public HClusterResultBase {
 public:
  /// The coordinates of the members' mean point.
  std::vector<double> vt_center;
  /// The largest distance from the center to a member.
  double d_radius = 0.0;

  HClusterResultKMeansNode();
};
