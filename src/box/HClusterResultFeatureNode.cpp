#include "box/HClusterResultFeatureNode.h"

HClusterResultFeatureNode::HClusterResultFeatureNode() = default;
