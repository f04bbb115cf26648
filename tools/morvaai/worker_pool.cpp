#include "worker_pool.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <utility>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {

namespace {

using Clock = std::chrono::steady_clock;

// Results that may wait for an earlier one, for each worker.
constexpr std::size_t waiting_per_job = 16;

// A worker has its next task before it is through with the last, so that it never waits for this
// process to take in a result.
constexpr std::size_t tasks_at_once = 2;

bool send_all(int socket, void const* data, std::size_t size) {
  auto const* bytes = static_cast<char const*>(data);
  while (size > 0) {
    ssize_t const sent = send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) {
      continue;
    }
    if (sent <= 0) {
      return false;
    }
    bytes += sent;
    size -= static_cast<std::size_t>(sent);
  }
  return true;
}

bool receive_all(int socket, void* data, std::size_t size) {
  auto* bytes = static_cast<char*>(data);
  while (size > 0) {
    ssize_t const received = recv(socket, bytes, size, 0);
    if (received < 0 && errno == EINTR) {
      continue;
    }
    if (received <= 0) {
      return false;
    }
    bytes += received;
    size -= static_cast<std::size_t>(received);
  }
  return true;
}

[[noreturn]] void serve(int socket, pid_t parent,
                        std::function<std::string(std::size_t)> const& work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(1);
  }
  std::uint64_t index = 0;
  while (receive_all(socket, &index, sizeof index)) {
    std::string const result = work(index);
    std::uint64_t const size = result.size();
    if (!send_all(socket, &size, sizeof size) || !send_all(socket, result.data(), result.size())) {
      break;
    }
  }
  _exit(0);
}

struct FinishedTask {
  std::size_t task;
  WorkerPool::Outcome outcome;
};

// One worker process, seen from the parent.
class Worker {
 public:
  Worker() = default;
  Worker(Worker&& other) noexcept { *this = std::move(other); }
  Worker& operator=(Worker&& other) noexcept {
    std::swap(process_, other.process_);
    std::swap(socket_, other.socket_);
    std::swap(tasks_, other.tasks_);
    std::swap(deadline_, other.deadline_);
    std::swap(incoming_, other.incoming_);
    return *this;
  }
  ~Worker() { stop(); }

  bool start(std::function<std::string(std::size_t)> const& work,
             std::vector<Worker> const& others);
  bool give(std::size_t task, int seconds);
  // The task at work, then those that wait for it.
  std::deque<std::size_t> const& tasks() const { return tasks_; }
  int socket() const { return socket_; }
  Clock::time_point deadline() const { return deadline_; }
  // Takes in what has arrived: the tasks that are over, one way or the other. Each that follows
  // has `seconds` of its own.
  std::vector<FinishedTask> collect(int seconds);
  FinishedTask kill_hanging(int seconds);
  // Once the process has ended in the task at work: takes back those that waited for it.
  bool has_ended() const { return socket_ < 0; }
  std::deque<std::size_t> take_back();

 private:
  int stop();
  WorkerPool::Outcome died();

  pid_t process_ = -1;
  int socket_ = -1;
  std::deque<std::size_t> tasks_;
  Clock::time_point deadline_;
  std::string incoming_;
};

bool Worker::start(std::function<std::string(std::size_t)> const& work,
                   std::vector<Worker> const& others) {
  int pair[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) {
    return false;
  }
  pid_t const parent = getpid();
  process_ = fork();
  if (process_ == 0) {
    close(pair[0]);
    for (Worker const& other : others) {
      if (other.socket_ >= 0) {
        close(other.socket_);
      }
    }
    serve(pair[1], parent, work);
  }
  close(pair[1]);
  if (process_ < 0) {
    close(pair[0]);
    return false;
  }
  socket_ = pair[0];
  return true;
}

bool Worker::give(std::size_t task, int seconds) {
  std::uint64_t const index = task;
  if (tasks_.empty()) {
    deadline_ = Clock::now() + std::chrono::seconds(seconds);
  }
  tasks_.push_back(task);
  return send_all(socket_, &index, sizeof index);
}

// Ends the process and returns its wait status.
int Worker::stop() {
  int status = 0;
  if (socket_ >= 0) {
    close(socket_);
    socket_ = -1;
  }
  if (process_ > 0) {
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
  }
  incoming_.clear();
  return status;
}

WorkerPool::Outcome Worker::died() {
  int const status = stop();
  if (WIFSIGNALED(status)) {
    return {std::nullopt,
            std::string("the worker process ended with signal: ") + strsignal(WTERMSIG(status))};
  }
  return {std::nullopt, "the worker process ended with status " +
                            std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : status)};
}

std::vector<FinishedTask> Worker::collect(int seconds) {
  char buffer[65536];
  ssize_t const received = recv(socket_, buffer, sizeof buffer, 0);
  if (received < 0 && errno == EINTR) {
    return {};
  }
  std::vector<FinishedTask> finished;
  if (received <= 0) {
    finished.push_back({tasks_.front(), died()});
    return finished;
  }
  incoming_.append(buffer, static_cast<std::size_t>(received));
  std::uint64_t size = 0;
  while (incoming_.size() >= sizeof size) {
    std::memcpy(&size, incoming_.data(), sizeof size);
    if (incoming_.size() - sizeof size < size) {
      break;
    }
    finished.push_back({tasks_.front(), {incoming_.substr(sizeof size, size), {}}});
    incoming_.erase(0, sizeof size + size);
    tasks_.pop_front();
    deadline_ = Clock::now() + std::chrono::seconds(seconds);
  }
  return finished;
}

FinishedTask Worker::kill_hanging(int seconds) {
  kill(process_, SIGKILL);
  stop();
  return {tasks_.front(),
          {std::nullopt, "no result within " + std::to_string(seconds) + " seconds"}};
}

std::deque<std::size_t> Worker::take_back() {
  auto undone = std::exchange(tasks_, {});
  undone.pop_front();
  return undone;
}

// The state of one run: what is still to be given out, and what waits to be delivered in order.
class Run {
 public:
  Run(WorkerPool const& pool, std::size_t count,
      std::function<std::string(std::size_t)> const& work,
      std::function<void(std::size_t, WorkerPool::Outcome)> const& done)
      : pool_(pool),
        count_(count),
        work_(work),
        done_(done),
        workers_(std::min(pool.jobs, count)) {}

  bool go() {
    while (delivered_ < count_) {
      if (!give_out()) {
        return false;
      }
      wait_for_workers();
      deliver();
    }
    return true;
  }

 private:
  bool give_out() {
    for (std::size_t round = 1; round <= tasks_at_once; ++round) {
      for (Worker& worker : workers_) {
        // The last tasks go to whoever is free first.
        bool const is_early = round == 1 || count_ - next_ >= workers_.size();
        if (worker.tasks().size() >= round || !is_early || !has_task()) {
          continue;
        }
        if (worker.has_ended() && !worker.start(work_, workers_)) {
          return false;
        }
        // A worker that died while idle shows when its socket is read.
        worker.give(take_task(), pool_.seconds_per_task);
      }
    }
    return true;
  }

  bool has_task() const {
    return !undone_.empty() ||
           (next_ < count_ && next_ < delivered_ + workers_.size() * waiting_per_job);
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
    auto deadline = Clock::time_point::max();
    for (Worker const& worker : workers_) {
      bool const is_at_work = !worker.tasks().empty();
      sockets.push_back({is_at_work ? worker.socket() : -1, POLLIN, 0});
      if (is_at_work) {
        deadline = std::min(deadline, worker.deadline());
      }
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    poll(sockets.data(), sockets.size(), static_cast<int>(std::max<decltype(left)>(left, 0)));
    auto const now = Clock::now();
    for (std::size_t i = 0; i < workers_.size(); ++i) {
      Worker& worker = workers_[i];
      if (worker.tasks().empty()) {
        continue;
      }
      if (sockets[i].revents != 0) {
        for (FinishedTask& finished : worker.collect(pool_.seconds_per_task)) {
          waiting_.emplace(finished.task, std::move(finished.outcome));
        }
      } else if (now >= worker.deadline()) {
        FinishedTask hanging = worker.kill_hanging(pool_.seconds_per_task);
        waiting_.emplace(hanging.task, std::move(hanging.outcome));
      }
      if (worker.has_ended()) {
        auto const undone = worker.take_back();
        undone_.insert(undone_.end(), undone.begin(), undone.end());
      }
    }
  }

  void deliver() {
    for (auto first = waiting_.begin(); first != waiting_.end() && first->first == delivered_;
         first = waiting_.begin()) {
      WorkerPool::Outcome outcome = std::move(first->second);
      waiting_.erase(first);
      done_(delivered_++, std::move(outcome));
    }
  }

  WorkerPool const& pool_;
  std::size_t count_;
  std::function<std::string(std::size_t)> const& work_;
  std::function<void(std::size_t, WorkerPool::Outcome)> const& done_;
  std::vector<Worker> workers_;
  std::size_t next_ = 0;
  std::deque<std::size_t> undone_;  // given out, to a worker that died before it came to them
  std::size_t delivered_ = 0;
  std::map<std::size_t, WorkerPool::Outcome> waiting_;
};

}  // namespace

bool WorkerPool::run(std::size_t count, std::function<std::string(std::size_t)> const& work,
                     std::function<void(std::size_t, Outcome)> const& done) const {
  return Run(*this, count, work, done).go();
}

}  // namespace tool
