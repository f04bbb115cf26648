#include "box/HClusterResultKMeansNode.h"

HClusterResultKMeansNode::HClusterResultKMeansNode() = default;
