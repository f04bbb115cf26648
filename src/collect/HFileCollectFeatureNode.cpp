#include "collect/HFileCollectFeatureNode.h"

HFileCollectFeatureNode::HFileCollectFeatureNode() = default;
