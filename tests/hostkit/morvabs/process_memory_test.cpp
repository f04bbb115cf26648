#include "host/process_memory.h"

#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

constexpr long long megabyte = 1 << 20;

TEST(ProcessMemory, of_this_process_is_in_bytes) {
  std::vector<char> const held(64 * megabyte, 'x');
  EXPECT_GT(get_process_use_memory_total(0), 64 * megabyte);
}

TEST(ProcessMemory, of_another_process_is_found_by_its_id) {
  EXPECT_GT(get_process_use_memory_total(static_cast<unsigned>(getpid())), megabyte);
}

TEST(ProcessMemory, of_a_process_that_does_not_exist_is_0) {
  EXPECT_EQ(get_process_use_memory_total(4000000000U), 0);
}

}  // namespace
