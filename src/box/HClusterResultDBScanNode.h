#pragma once

#include <cstdint>

#include "box/HClusterResultBase.h"
#include "host/export.h"

/// A class of a DBSCAN run, with the parameters of the run.
class MORVA_EXPORT HClusterResultDBScanNode : public HClusterResultBase {
 public:
  /// Radius of the run.
  double d_eps = 0.0;
  /// Neighbours, the point itself included, that the run asked for.
  std::int32_t i_minpts = 0;

  HClusterResultDBScanNode();
};
