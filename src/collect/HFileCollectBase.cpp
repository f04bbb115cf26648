#include "collect/HFileCollectBase.h"

HFileCollectBase::HFileCollectBase() = default;
