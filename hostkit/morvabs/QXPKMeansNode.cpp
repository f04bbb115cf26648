#include "host/QXPKMeansNode.h"

QXPKMeansNode::QXPKMeansNode() = default;
