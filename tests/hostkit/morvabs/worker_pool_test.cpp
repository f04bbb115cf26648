#include "host/worker_pool.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <limits>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/other_process.h"
#include "support/temporary_directory.h"
#include "support/worker_socket.h"

namespace {

using morvabs::WorkerPool;
using testing::HasSubstr;

#if defined(MORVA_SANITIZED)
constexpr bool is_sanitized = true;
#else
constexpr bool is_sanitized = false;
#endif

struct Delivered {
  std::size_t index;
  WorkerPool::Outcome outcome;
};

std::vector<Delivered> run(WorkerPool const& pool, std::size_t count,
                           WorkerPool::Work const& work) {
  std::vector<Delivered> delivered;
  EXPECT_TRUE(pool.run(count, work, [&](std::size_t index, WorkerPool::Outcome outcome) {
    delivered.push_back({index, std::move(outcome)});
  }));
  return delivered;
}

/// Why the second of three tasks has no result, where the others have theirs.
std::string reason_of(std::function<void()> const& harm, WorkerPool const& pool = {}) {
  auto const delivered = run(pool, 3, [&harm](std::size_t i) {
    if (i == 1) {
      harm();
    }
    return std::to_string(i);
  });
  EXPECT_EQ(delivered.size(), 3U);
  EXPECT_EQ(delivered.at(0).outcome.result, "0");
  EXPECT_EQ(delivered.at(1).outcome.result, std::nullopt);
  EXPECT_EQ(delivered.at(2).outcome.result, "2");
  return delivered.at(1).outcome.failure;
}

std::string reason_of_signal(int signal) {
  return reason_of([signal] { raise(signal); });
}

TEST(WorkerPool, delivers_in_order_of_the_tasks) {
  WorkerPool pool;
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
  WorkerPool pool;
  pool.jobs = 2;
  std::string const mine = std::to_string(getpid());
  for (Delivered const& one : run(pool, 4, [](std::size_t) { return std::to_string(getpid()); })) {
    EXPECT_NE(one.outcome.result, mine);
  }
}

TEST(WorkerPool, results_may_be_large_or_empty) {
  WorkerPool const pool;
  auto const delivered =
      run(pool, 2, [](std::size_t i) { return std::string(i == 0 ? 0 : 10'000'000, 'x'); });
  EXPECT_EQ(delivered.at(0).outcome.result, std::string());
  EXPECT_EQ(delivered.at(1).outcome.result->size(), 10'000'000U);
}

TEST(WorkerPool, without_jobs_there_is_one) {
  WorkerPool pool;
  pool.jobs = 0;
  EXPECT_EQ(run(pool, 1, [](std::size_t) { return std::string("x"); }).at(0).outcome.result, "x");
}

TEST(WorkerPool, no_tasks_are_no_work) {
  EXPECT_TRUE(run(WorkerPool(), 0, [](std::size_t) { return std::string(); }).empty());
}

TEST(WorkerPool, tasks_that_waited_for_a_crash_are_done_by_another_worker) {
  WorkerPool const pool;
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

TEST(WorkerPool, a_worker_that_is_killed_is_told_by_the_signal) {
  EXPECT_EQ(reason_of_signal(SIGKILL), "the worker process ended with signal: Killed");
}

TEST(WorkerPool, a_fault_is_told_by_its_signal) {
  if (is_sanitized) {
    GTEST_SKIP() << "sanitizers end the process themselves";
  }
  EXPECT_EQ(reason_of_signal(SIGSEGV), "the worker process ended with signal: Segmentation fault");
  EXPECT_EQ(reason_of_signal(SIGBUS), "the worker process ended with signal: Bus error");
  EXPECT_EQ(reason_of_signal(SIGFPE),
            "the worker process ended with signal: Floating point exception");
}

TEST(WorkerPool, an_abort_is_told) {
  EXPECT_THAT(reason_of([] { std::abort(); }), HasSubstr("the worker process ended with"));
}

TEST(WorkerPool, the_terminate_handler_of_the_parent_is_not_called) {
  auto* const before = std::set_terminate([] { _exit(7); });
  EXPECT_THAT(reason_of([] { std::terminate(); }), testing::Not(HasSubstr("status 7")));
  std::set_terminate(before);
}

TEST(WorkerPool, an_exit_is_told_by_its_status) {
  EXPECT_EQ(reason_of([] { _exit(7); }), "the worker process ended with status 7");
}

int recurse(int depth) {
  volatile char room[1000];
  room[0] = static_cast<char>(depth);
  return depth == 0 ? 0 : recurse(depth + 1) + room[0];
}

TEST(WorkerPool, recursion_without_end_costs_its_task) {
  EXPECT_THAT(reason_of([] { recurse(1); }), HasSubstr("the worker process ended with"));
}

TEST(WorkerPool, a_task_without_memory_is_told) {
  EXPECT_EQ(reason_of([] { throw std::bad_alloc(); }), "out of memory");
}

TEST(WorkerPool, a_task_that_throws_is_told) {
  EXPECT_EQ(reason_of([] { throw std::runtime_error("x"); }), "the task ended with an exception");
}

TEST(WorkerPool, an_exception_goes_no_further_where_isolation_is_switched_off) {
  test::EnvironmentVariable const off("MORVA_ISOLATION", "off");
  EXPECT_EQ(reason_of([] { throw 1; }), "the task ended with an exception");
}

TEST(WorkerPool, memory_without_bound_is_no_bound) {
  WorkerPool pool;
  pool.limits.memory = std::numeric_limits<std::uint64_t>::max();
  auto const delivered =
      run(pool, 1, [](std::size_t) { return std::string(std::size_t{16} << 20, 'x'); });
  EXPECT_EQ(delivered.at(0).outcome.failure, "");
}

TEST(WorkerPool, a_task_that_eats_memory_is_stopped) {
  if (!morvabs::isolation_layers().memory) {
    GTEST_SKIP() << "memory is not limited here";
  }
  WorkerPool pool;
  pool.limits.memory = std::uint64_t{64} << 20;
  auto const eat = [] {
    std::vector<std::string> kept;
    for (;;) {
      kept.emplace_back(std::size_t{1} << 20, 'x');
    }
  };
  EXPECT_EQ(reason_of(eat, pool), "out of memory");
}

TEST(WorkerPool, memory_that_the_parent_has_does_not_count) {
  std::string const mine(std::size_t{64} << 20, 'x');
  WorkerPool pool;
  pool.limits.memory = std::uint64_t{32} << 20;
  auto const delivered =
      run(pool, 1, [&mine](std::size_t) { return std::string(std::size_t{1} << 20, mine[0]); });
  EXPECT_EQ(delivered.at(0).outcome.failure, "");
}

TEST(WorkerPool, a_task_that_waits_for_ever_is_ended) {
  WorkerPool pool;
  pool.limits.seconds = 1;
  EXPECT_EQ(reason_of([] { std::this_thread::sleep_for(std::chrono::hours(1)); }, pool),
            "no result within 1 seconds");
}

TEST(WorkerPool, a_task_that_stops_itself_is_ended) {
  WorkerPool pool;
  pool.limits.seconds = 1;
  EXPECT_EQ(reason_of([] { raise(SIGSTOP); }, pool), "no result within 1 seconds");
}

TEST(WorkerPool, time_that_results_take_to_be_used_costs_no_task) {
  WorkerPool pool;
  pool.jobs = 2;
  pool.limits.seconds = 1;
  std::string failures;
  // The second of the workers is through at once, but waits for its result to be taken in.
  pool.run(
      2, [](std::size_t i) { return std::string(i * 4'000'000, 'x'); },
      [&failures](std::size_t i, WorkerPool::Outcome const& outcome) {
        std::this_thread::sleep_for(std::chrono::milliseconds(i == 0 ? 1200 : 0));
        failures += outcome.failure;
      });
  EXPECT_EQ(failures, "");
}

TEST(WorkerPool, a_task_that_computes_for_ever_is_ended) {
  WorkerPool pool;
  pool.limits.cpu_seconds = 1;
  auto const spin = [] {
    for (std::atomic<unsigned> i = 0;; ++i) {
    }
  };
  EXPECT_EQ(reason_of(spin, pool), "took more than 1 seconds of CPU time");
}

TEST(WorkerPool, a_result_over_the_bound_is_refused) {
  WorkerPool pool;
  pool.limits.result_size = 1000;
  auto const delivered =
      run(pool, 3, [](std::size_t i) { return std::string(i == 1 ? 1001 : 1000, 'x'); });
  EXPECT_EQ(delivered.at(0).outcome.result->size(), 1000U);
  EXPECT_EQ(delivered.at(1).outcome.failure, "its result is over 1000 bytes");
  EXPECT_EQ(delivered.at(2).outcome.result->size(), 1000U);
}

TEST(WorkerPool, a_claim_of_a_huge_result_is_refused) {
  EXPECT_EQ(reason_of([] { test::write_answer(1, std::uint64_t{10} << 30, 1); }),
            "its result is over 268435456 bytes");
}

TEST(WorkerPool, an_answer_of_no_kind_is_refused) {
  EXPECT_EQ(reason_of([] { test::write_answer(0x6C6C6C6C6C6C6C6C, 1, 1); }),
            "its answer makes no sense");
}

TEST(WorkerPool, a_component_that_there_is_not_is_refused) {
  auto const ask = [] {
    test::write_answer(5, 99, 1);
    _exit(1);
  };
  EXPECT_EQ(reason_of(ask), "its answer makes no sense");
}

TEST(WorkerPool, a_component_is_asked_for_once) {
  auto const ask = [] {
    test::write_answer(5, 0, 1);
    _exit(1);
  };
  EXPECT_EQ(reason_of(ask), "its answer makes no sense");
}

TEST(WorkerPool, files_without_a_name_are_not_given_without_end) {
  auto const ask = [] {
    for (int i = 0; i < 100'000; ++i) {
      test::write_answer(7, 0, 1);
    }
  };
  EXPECT_THAT(reason_of(ask), testing::AnyOf("its answer makes no sense",
                                             "the worker process ended with signal: Killed"));
}

TEST(WorkerPool, a_worker_that_answers_without_listening_is_ended) {
  // It guesses what it is asked, and when.
  auto const delivered = run(WorkerPool(), 1000, [](std::size_t first) {
    std::string const name = std::to_string(getpid());
    for (std::size_t i = first;; ++i) {
      test::write_answer(1, name.size(), i);
      static_cast<void>(!write(test::worker_socket(), name.data(), name.size()));
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return std::string();
  });
  std::set<std::string> workers;
  for (Delivered const& one : delivered) {
    workers.insert(one.outcome.result.value_or(std::string()));
  }
  EXPECT_GT(workers.size(), 2U);
}

TEST(WorkerPool, an_answer_more_is_not_taken_for_that_of_another_task) {
  auto const delivered = run(WorkerPool(), 20, [](std::size_t i) {
    test::write_answer(1, 1, i);
    static_cast<void>(!write(test::worker_socket(), "x", 1));
    return std::string("x");
  });
  for (Delivered const& one : delivered) {
    EXPECT_EQ(one.outcome.result.value_or(one.outcome.failure),
              one.index % 2 == 0 ? "x" : "its answer makes no sense");
  }
}

TEST(WorkerPool, a_worker_that_closes_its_socket_is_ended) {
  auto const close_it = [] {
    close(test::worker_socket());
    std::this_thread::sleep_for(std::chrono::hours(1));
  };
  EXPECT_EQ(reason_of(close_it), "its answer makes no sense");
}

/// How many of two tasks are done where their user may have so many processes, and the error.
std::string done_among(rlim_t processes) {
  return test::in_other_process([processes] {
    rlimit const most{processes, processes};
    if (!test::become_lone_user() || setrlimit(RLIMIT_NPROC, &most) != 0) {
      return std::string();
    }
    WorkerPool pool;
    pool.jobs = 2;
    int done = 0;
    bool const ran = pool.run(
        2, [](std::size_t) { return std::string(); },
        [&done](std::size_t, WorkerPool::Outcome const&) { ++done; });
    return std::to_string(done) + (ran ? " done" : " error " + std::to_string(errno));
  });
}

TEST(WorkerPool, one_worker_that_can_be_started_does_all_the_work) {
  std::string const done = done_among(2);
  if (done.empty()) {
    GTEST_SKIP() << "this user cannot be left";
  }
  EXPECT_EQ(done, "2 done");
}

TEST(WorkerPool, where_no_worker_can_be_started_the_error_says_why) {
  std::string const done = done_among(1);
  if (done.empty()) {
    GTEST_SKIP() << "this user cannot be left";
  }
  EXPECT_EQ(done, "0 error " + std::to_string(EAGAIN));
}

/// A process that kills, every few milliseconds, the one whose number stands there.
pid_t start_killer(std::atomic<pid_t> const* victim) {
  pid_t const killer = fork();
  if (killer != 0) {
    return killer;
  }
  for (int kills = 0; kills < 50;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(3));
    if (pid_t const process = *victim; process > 0) {
      kill(process, SIGKILL);
      ++kills;
    }
  }
  _exit(0);
}

TEST(WorkerPool, workers_killed_at_random_cost_their_own_tasks) {
  void* const shared = mmap(nullptr, sizeof(std::atomic<pid_t>), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  auto* const victim = new (shared) std::atomic<pid_t>(0);
  pid_t const killer = start_killer(victim);
  WorkerPool pool;
  pool.jobs = 2;
  auto const delivered = run(pool, 500, [victim](std::size_t i) {
    *victim = getpid();
    std::this_thread::sleep_for(std::chrono::microseconds(300));
    return std::to_string(i);
  });
  kill(killer, SIGKILL);
  waitpid(killer, nullptr, 0);
  munmap(shared, sizeof(std::atomic<pid_t>));
  ASSERT_EQ(delivered.size(), 500U);
  std::size_t killed = 0;
  for (std::size_t i = 0; i < delivered.size(); ++i) {
    EXPECT_EQ(delivered[i].index, i);
    if (auto const& outcome = delivered[i].outcome; outcome.result) {
      EXPECT_EQ(*outcome.result, std::to_string(i));
    } else {
      EXPECT_EQ(outcome.failure, "the worker process ended with signal: Killed");
      ++killed;
    }
  }
  EXPECT_GT(killed, 0U);
}

}  // namespace
