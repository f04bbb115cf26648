#include "box/HClusterResultDBScanNode.h"

HClusterResultDBScanNode::HClusterResultDBScanNode() = default;
