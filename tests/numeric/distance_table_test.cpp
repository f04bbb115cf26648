#include "numeric/internal/distance_table.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

using morva::DistanceTable;

TEST(DistanceTable, more_values_than_are_counted_are_refused) {
  EXPECT_NO_THROW(morva::require_countable(0xFFFF'FFFF));
  EXPECT_THROW(morva::require_countable(0x1'0000'0000), std::length_error);
}

}  // namespace
