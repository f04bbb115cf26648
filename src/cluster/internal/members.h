#pragma once

#include <vector>

#include "numeric/internal/valid_members.h"

namespace morva {

/// For each of the values in turn, erases the first element of the list that equals it: in one
/// pass.
void remove_each(std::vector<int> const& values, std::vector<int>& list);

}  // namespace morva
