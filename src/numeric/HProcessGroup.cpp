#include "numeric/HProcessGroup.h"

HProcessGroup::HProcessGroup() = default;
HProcessGroup::~HProcessGroup() = default;
