#include "box/HClusterResultBase.h"

HClusterResultBase::HClusterResultBase() = default;
