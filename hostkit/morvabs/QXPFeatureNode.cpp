#include "host/QXPFeatureNode.h"

QXPFeatureNode::QXPFeatureNode() = default;
