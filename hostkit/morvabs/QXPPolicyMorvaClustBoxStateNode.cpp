#include "host/QXPPolicyMorvaClustBoxStateNode.h"

QXPPolicyMorvaClustBoxStateNode::QXPPolicyMorvaClustBoxStateNode()
    : p_box(std::make_shared<QXPPolicyMorvaClustBox>()) {}
