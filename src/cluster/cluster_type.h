#pragma once

#include "host/export.h"

/// How K-means forms the new centers in this process: 0 by arithmetic means, 1 (at load) by
/// medians.
MORVA_EXPORT extern int gi_K_ClusterType;
