#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "host/worker_pool.h"
#include "morvabs/component.h"
#include "morvabs/worker_channel.h"
#include "morvabs/worker_process.h"

namespace morvabs {

struct FinishedTask {
  std::size_t task;
  WorkerPool::Outcome outcome;
};

/// One worker process, seen from its parent, which believes it nothing. It has a few tasks at a
/// time, so that it never waits for the next, and is at work on the first of them.
class Worker {
 public:
  using Clock = std::chrono::steady_clock;

  Worker() = default;
  Worker(Worker&& other) noexcept { *this = std::move(other); }
  Worker& operator=(Worker&& other) noexcept;
  ~Worker() { end(); }

  /// Forks a process for one that has ended, or never began. False, with errno set, on failure.
  bool start(Tasks const& tasks, Sandbox const& sandbox);
  bool has_ended() const { return socket_ < 0; }

  void give(std::size_t task, Tasks const& tasks);
  std::deque<std::size_t> const& tasks() const { return tasks_; }
  /// To be read from when there is something.
  int socket() const { return socket_; }
  /// When the task at work is to be over.
  Clock::time_point deadline() const { return deadline_; }
  /// For time in which nobody took in what it answered.
  void postpone_deadline(Clock::duration time) { deadline_ += time; }

  /// Takes in what has arrived: the tasks that are over, one way or the other.
  std::vector<FinishedTask> collect(WorkerLimits const& limits);
  /// Ends the process, and the task at work.
  FinishedTask expire(WorkerLimits const& limits);
  /// Once the process has ended: takes back what it had and did not finish.
  std::deque<std::size_t> take_back() { return std::exchange(tasks_, {}); }

 private:
  void begin_task(WorkerLimits const& limits);
  void send(Message message, FileDescriptor const& file);
  void send_unnamed_file();
  bool take_answer(WorkerLimits const& limits, std::vector<FinishedTask>& finished);
  bool take_result(Answer const& answer, WorkerLimits const& limits,
                   std::vector<FinishedTask>& finished);
  void take_failure(Answer const& answer, WorkerLimits const& limits,
                    std::vector<FinishedTask>& finished);
  bool take_component(std::uint64_t position);
  void fail(std::string reason, std::vector<FinishedTask>& finished);
  std::string reason_of_end(WorkerLimits const& limits);
  void end();

  pid_t process_ = -1;
  int socket_ = -1;
  std::deque<std::size_t> tasks_;
  Clock::time_point deadline_;
  std::string incoming_;
  /// The components that the process knows of, by their positions.
  std::array<bool, component_files.size()> settled_{};
  /// How many the task at work has asked for.
  int unnamed_files_ = 0;
};

}  // namespace morvabs
