#include "worker_pool.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

namespace {

struct Delivered {
  std::size_t index;
  tool::WorkerPool::Outcome outcome;
};

std::vector<Delivered> run(tool::WorkerPool const& pool, std::size_t count,
                           std::function<std::string(std::size_t)> const& work) {
  std::vector<Delivered> delivered;
  EXPECT_TRUE(pool.run(count, work, [&](std::size_t index, tool::WorkerPool::Outcome outcome) {
    delivered.push_back({index, std::move(outcome)});
  }));
  return delivered;
}

TEST(WorkerPool, delivers_in_order_of_the_tasks) {
  tool::WorkerPool pool;
  pool.jobs = 3;
  auto const delivered = run(pool, 200, [](std::size_t i) {
    std::this_thread::sleep_for(std::chrono::microseconds(i % 3 == 0 ? 500 : 0));
    return std::to_string(i);
  });
  ASSERT_EQ(delivered.size(), 200U);
  for (std::size_t i = 0; i < delivered.size(); ++i) {
    EXPECT_EQ(delivered[i].index, i);
    EXPECT_EQ(delivered[i].outcome.result, std::to_string(i));
  }
}

TEST(WorkerPool, works_in_other_processes) {
  tool::WorkerPool pool;
  pool.jobs = 2;
  std::string const mine = std::to_string(getpid());
  for (Delivered const& one : run(pool, 4, [](std::size_t) { return std::to_string(getpid()); })) {
    EXPECT_NE(one.outcome.result, mine);
  }
}

TEST(WorkerPool, a_crash_costs_its_own_task_only) {
  tool::WorkerPool pool;
  pool.jobs = 2;
  auto const delivered = run(pool, 20, [](std::size_t i) {
    if (i == 7) {
      raise(SIGKILL);
    }
    return std::string("done");
  });
  ASSERT_EQ(delivered.size(), 20U);
  for (Delivered const& one : delivered) {
    EXPECT_EQ(one.outcome.result.has_value(), one.index != 7);
  }
  EXPECT_NE(delivered[7].outcome.failure.find("Killed"), std::string::npos);
}

TEST(WorkerPool, tasks_that_waited_for_a_crash_are_done_by_another_worker) {
  tool::WorkerPool pool;
  pool.jobs = 1;
  auto const delivered = run(pool, 20, [](std::size_t i) {
    if (i % 3 == 1) {
      raise(SIGKILL);
    }
    return std::to_string(i);
  });
  ASSERT_EQ(delivered.size(), 20U);
  for (Delivered const& one : delivered) {
    auto const result = one.outcome.result.value_or("none");
    EXPECT_EQ(result, one.index % 3 == 1 ? "none" : std::to_string(one.index));
  }
}

TEST(WorkerPool, a_task_that_hangs_is_killed) {
  tool::WorkerPool pool;
  pool.seconds_per_task = 1;
  auto const delivered = run(pool, 3, [](std::size_t i) {
    if (i == 1) {
      pause();
    }
    return std::string("done");
  });
  ASSERT_EQ(delivered.size(), 3U);
  EXPECT_EQ(delivered[0].outcome.result, "done");
  EXPECT_EQ(delivered[1].outcome.failure, "no result within 1 seconds");
  EXPECT_EQ(delivered[2].outcome.result, "done");
}

TEST(WorkerPool, results_may_be_large_or_empty) {
  tool::WorkerPool pool;
  auto const delivered =
      run(pool, 2, [](std::size_t i) { return std::string(i == 0 ? 0 : 10'000'000, 'x'); });
  EXPECT_EQ(delivered.at(0).outcome.result, std::string());
  EXPECT_EQ(delivered.at(1).outcome.result->size(), 10'000'000U);
}

TEST(WorkerPool, no_tasks_are_no_work) {
  EXPECT_TRUE(run(tool::WorkerPool(), 0, [](std::size_t) { return std::string(); }).empty());
}

}  // namespace
