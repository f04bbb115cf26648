#include "host/QXPDBScanNode.h"

QXPDBScanNode::QXPDBScanNode() = default;
