#include "box/HClusterOut.h"

HClusterOut::HClusterOut() = default;
