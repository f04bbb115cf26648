#include "box/HClusterResultNode.h"

HClusterResultNode::HClusterResultNode() = default;
