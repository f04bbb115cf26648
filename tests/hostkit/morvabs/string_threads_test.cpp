#include <atomic>
#include <map>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/HString.h"

namespace {

TEST(HStringThreads, copies_of_one_text_are_used_changed_and_destroyed_on_several_threads) {
  HString const shared(L"a text long enough to lie on the heap, shared by all threads");
  std::atomic<int> right{0};
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([copy = shared, &shared, &right] {
      for (int i = 0; i < 5000; ++i) {
        HString changed = copy;
        changed += L"!";
        right += changed.length() == shared.length() + 1 && copy == shared ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(right, 20000);
}

}  // namespace
