#include "host/worker_pool.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include <poll.h>

#include "host/native_path.h"
#include "morvabs/sandbox.h"
#include "morvabs/worker.h"
#include "morvabs/worker_process.h"

namespace morvabs {

namespace {

// Results that may wait for an earlier one, for each worker.
constexpr std::size_t waiting_per_job = 16;

// A worker has its next task before it is through with the last, so that it never waits for this
// process to take in a result.
constexpr std::size_t tasks_at_once = 2;

// The state of one run: what is still to be given out, and what waits to be delivered in order.
class Run {
 public:
  Run(WorkerPool const& pool, std::size_t count, Tasks const& tasks, WorkerPool::Done const& done)
      : count_(count),
        tasks_(tasks),
        done_(done),
        sandbox_(pool),
        workers_(std::min(std::max<std::size_t>(pool.jobs, 1), count)) {}

  // The error that keeps any worker from being started; 0 where all is done.
  int go() {
    while (delivered_ < count_) {
      if (!give_out()) {
        return errno;
      }
      wait_for_workers();
      deliver();
    }
    return 0;
  }

 private:
  // False, with errno set, when there is neither a worker nor a new one to be had.
  bool give_out() {
    for (std::size_t round = 1; round <= tasks_at_once; ++round) {
      for (Worker& worker : workers_) {
        // The last tasks go to whoever is free first.
        bool const is_early = round == 1 || count_ - next_ >= workers_.size();
        if (worker.tasks().size() >= round || !is_early || !has_task()) {
          continue;
        }
        if (!worker.has_ended() || worker.start(tasks_, sandbox_)) {
          worker.give(take_task(), tasks_);
        }
      }
    }
    return std::any_of(workers_.begin(), workers_.end(),
                       [](Worker const& worker) { return !worker.tasks().empty(); });
  }

  bool has_task() const {
    return !undone_.empty() ||
           (next_ < count_ && next_ < delivered_ + workers_.size() * waiting_per_job &&
            waiting_bytes_ <= tasks_.limits.result_size);
  }

  std::size_t take_task() {
    if (undone_.empty()) {
      return next_++;
    }
    std::size_t const task = undone_.front();
    undone_.pop_front();
    return task;
  }

  void wait_for_workers() {
    std::vector<pollfd> sockets;
    auto deadline = Worker::Clock::time_point::max();
    for (Worker const& worker : workers_) {
      bool const is_at_work = !worker.tasks().empty();
      sockets.push_back({is_at_work ? worker.socket() : -1, POLLIN, 0});
      if (is_at_work) {
        deadline = std::min(deadline, worker.deadline());
      }
    }
    std::int64_t const left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - Worker::Clock::now()).count();
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    ::poll(sockets.data(), sockets.size(),
           static_cast<int>(std::clamp<std::int64_t>(left, 0, longest)));
    auto const now = Worker::Clock::now();
    for (std::size_t i = 0; i < workers_.size(); ++i) {
      if (!workers_[i].tasks().empty()) {
        look_at(workers_[i], sockets[i].revents != 0, now);
      }
    }
  }

  void look_at(Worker& worker, bool has_something, Worker::Clock::time_point now) {
    if (has_something) {
      for (FinishedTask& finished : worker.collect(tasks_.limits)) {
        keep(std::move(finished));
      }
    }
    // One that sends without end is not spared.
    if (!worker.has_ended() && !worker.tasks().empty() && now >= worker.deadline()) {
      keep(worker.expire(tasks_.limits));
    }
    if (worker.has_ended()) {
      auto const undone = worker.take_back();
      undone_.insert(undone_.end(), undone.begin(), undone.end());
    }
  }

  void keep(FinishedTask finished) {
    waiting_bytes_ += size_of(finished.outcome);
    waiting_.emplace(finished.task, std::move(finished.outcome));
  }

  void deliver() {
    auto const begin = Worker::Clock::now();
    for (auto first = waiting_.begin(); first != waiting_.end() && first->first == delivered_;
         first = waiting_.begin()) {
      WorkerPool::Outcome outcome = std::move(first->second);
      waiting_.erase(first);
      waiting_bytes_ -= size_of(outcome);
      done_(delivered_++, std::move(outcome));
    }
    auto const spent = Worker::Clock::now() - begin;
    for (Worker& worker : workers_) {
      worker.postpone_deadline(spent);
    }
  }

  static std::size_t size_of(WorkerPool::Outcome const& outcome) {
    return outcome.result ? outcome.result->size() : 0;
  }

  std::size_t count_;
  Tasks const& tasks_;
  WorkerPool::Done const& done_;
  Sandbox sandbox_;
  std::vector<Worker> workers_;
  std::size_t next_ = 0;
  std::deque<std::size_t> undone_;  // given out, to a worker that ended before it was through
  std::size_t delivered_ = 0;
  std::map<std::size_t, WorkerPool::Outcome> waiting_;
  std::size_t waiting_bytes_ = 0;
};

// Once all workers are gone, which may fail in ways of its own.
bool is_success(int error) {
  if (error != 0) {
    errno = error;
  }
  return error == 0;
}

}  // namespace

bool WorkerPool::run(std::size_t count, Work const& work, Done const& done) const {
  int const error = Run(*this, count, {work, {}, limits}, done).go();
  return is_success(error);
}

bool WorkerPool::run(std::vector<HString> const& files, Work const& work, Done const& done) const {
  Tasks tasks{work, {}, limits};
  tasks.paths.reserve(files.size());
  for (HString const& file : files) {
    tasks.paths.push_back(to_path(file));
  }
  int const error = Run(*this, files.size(), tasks, done).go();
  return is_success(error);
}

}  // namespace morvabs
