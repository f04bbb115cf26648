#pragma once

#include "host/export.h"

namespace morvajieba {

/// The natural logarithm, rounded correctly in all cases that matter in practice, and the same bits
/// on every platform: it is computed with additions and multiplications alone and asks no math
/// library. Which of two ways to cut a sentence wins can hang on the last bit.
///
/// Zero gives minus infinity, a negative number or NaN gives NaN, infinity stays.
MORVA_EXPORT double exact_log(double value);

}  // namespace morvajieba
