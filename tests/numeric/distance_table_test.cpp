#include "numeric/internal/distance_table.h"

#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace {

using morva::DistanceTable;
using morva::SparsePoint;
using Form = DistanceTable::Form;

DistanceTable table_without_zeros(std::size_t points) {
  return DistanceTable(std::vector(points, SparsePoint(3, {0, 1, 2}, {1.0, 2.0, 3.0})));
}

TEST(DistanceTable,
     points_with_few_zeros_are_interleaved_only_where_they_fill_a_third_of_the_room) {
  EXPECT_EQ(table_without_zeros(2).form(), Form::sparse);
  EXPECT_EQ(table_without_zeros(10).form(), Form::sparse);
  EXPECT_EQ(table_without_zeros(11).form(), Form::dense);
  EXPECT_EQ(table_without_zeros(33).form(), Form::dense);
}

TEST(DistanceTable, more_values_than_are_counted_are_refused) {
  EXPECT_NO_THROW(morva::require_countable(0xFFFF'FFFF));
  EXPECT_THROW(morva::require_countable(0x1'0000'0000), std::length_error);
}

}  // namespace
