#include "collect/HFileCollectDNANode.h"

HFileCollectDNANode::HFileCollectDNANode() = default;
