#include "morvabs/worker.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <thread>
#include <utility>

#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvabs {

namespace {

/// Of one task: as many as the large parts of a document can be, and no more than can be under way.
constexpr int most_unnamed_files = 256;

/// Waits for the process; one that does not end by itself soon is killed. The result says whether
/// it ended, and how.
bool wait_for_end(pid_t process, int& status) {
  using namespace std::chrono_literals;
  auto const patience = Worker::Clock::now() + 500ms;
  for (;;) {
    pid_t const ended = ::waitpid(process, &status, WNOHANG);
    if (ended == process || (ended < 0 && errno != EINTR)) {
      return true;
    }
    if (Worker::Clock::now() > patience) {
      return false;
    }
    std::this_thread::sleep_for(200us);
  }
}

/// Gives the process that many seconds of the processor from now on.
void limit_processor_time(pid_t process, int seconds) {
  clockid_t clock{};
  timespec used{};
  rlimit limit{};
  if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &used) != 0 ||
      ::prlimit(process, RLIMIT_CPU, nullptr, &limit) != 0) {
    return;
  }
  limit.rlim_cur =
      std::min(static_cast<rlim_t>(used.tv_sec) + 1 + static_cast<rlim_t>(seconds), limit.rlim_max);
  ::prlimit(process, RLIMIT_CPU, &limit, nullptr);
}

std::string processor_time_reason(WorkerLimits const& limits) {
  return "took more than " + std::to_string(limits.cpu_seconds) + " seconds of CPU time";
}

/// With all signals blocked in the new process: handlers of this one are not to run there.
pid_t fork_quietly() {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  pid_t const process = ::fork();
  int const error = errno;
  if (process != 0) {
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }
  errno = error;
  return process;
}

}  // namespace

Worker& Worker::operator=(Worker&& other) noexcept {
  std::swap(process_, other.process_);
  std::swap(socket_, other.socket_);
  std::swap(tasks_, other.tasks_);
  std::swap(deadline_, other.deadline_);
  std::swap(incoming_, other.incoming_);
  std::swap(settled_, other.settled_);
  std::swap(unnamed_files_, other.unnamed_files_);
  return *this;
}

bool Worker::start(Tasks const& tasks, Sandbox const& sandbox) {
  FileDescriptor own;
  FileDescriptor its;
  if (!open_channel(own, its)) {
    return false;
  }
  pid_t const parent = ::getpid();
  process_ = fork_quietly();
  if (process_ == 0) {
    serve(its.get(), parent, tasks, sandbox);
  }
  if (process_ < 0) {
    return false;
  }
  socket_ = own.release();
  for (std::size_t i = 0; i < settled_.size(); ++i) {
    settled_[i] = is_component_settled(i);
  }
  return true;
}

void Worker::begin_task(WorkerLimits const& limits) {
  if (!tasks_.empty()) {
    deadline_ = Clock::now() + std::chrono::seconds(limits.seconds);
    unnamed_files_ = 0;
    limit_processor_time(process_, limits.cpu_seconds);
  }
}

void Worker::give(std::size_t task, Tasks const& tasks) {
  Message message;
  message.task = task;
  FileDescriptor file;
  if (!tasks.paths.empty() && tasks.paths[task]) {
    OpenedFile opened = open_regular_file(*tasks.paths[task]);
    message.has_file = 1;
    message.error = opened.error;
    file = std::move(opened.descriptor);
  }
  tasks_.push_back(task);
  if (tasks_.size() == 1) {
    begin_task(tasks.limits);
  }
  send(message, file);
}

/// A worker that died shows when its socket is read; one that cannot be told is made to.
void Worker::send(Message message, FileDescriptor const& file) {
  bool is_sent = send_message(socket_, message, file);
  if (!is_sent && file.is_open()) {
    // Only so many descriptors of a user may be under way at a time.
    message.error = errno;
    is_sent = send_message(socket_, message, {});
  }
  if (!is_sent && errno != EPIPE && errno != ECONNRESET) {
    ::kill(process_, SIGKILL);
  }
}

void Worker::send_unnamed_file() {
  Message message;
  message.kind = Message::Kind::unnamed_file;
  send(message, open_unnamed_file());
}

std::vector<FinishedTask> Worker::collect(WorkerLimits const& limits) {
  std::vector<FinishedTask> finished;
  char buffer[65536];
  ssize_t const received = ::recv(socket_, buffer, sizeof buffer, 0);
  if (received < 0 && errno == EINTR) {
    return finished;
  }
  if (received <= 0) {
    std::string reason = reason_of_end(limits);
    fail(std::move(reason), finished);
    return finished;
  }
  incoming_.append(buffer, static_cast<std::size_t>(received));
  while (take_answer(limits, finished)) {
  }
  return finished;
}

bool Worker::take_answer(WorkerLimits const& limits, std::vector<FinishedTask>& finished) {
  Answer answer;
  if (incoming_.size() < sizeof answer) {
    return false;
  }
  std::memcpy(&answer, incoming_.data(), sizeof answer);
  bool const is_expected = !tasks_.empty() && answer.task == tasks_.front();
  if (is_expected && answer.kind == AnswerKind::result && answer.value <= limits.result_size) {
    return take_result(answer, limits, finished);
  }
  if (is_expected && answer.kind == AnswerKind::unnamed_file_wanted &&
      ++unnamed_files_ <= most_unnamed_files) {
    incoming_.erase(0, sizeof answer);
    send_unnamed_file();
    return true;
  }
  take_failure(answer, limits, finished);
  return false;
}

bool Worker::take_result(Answer const& answer, WorkerLimits const& limits,
                         std::vector<FinishedTask>& finished) {
  auto const size = static_cast<std::size_t>(answer.value);
  if (incoming_.size() - sizeof answer < size) {
    return false;
  }
  finished.push_back({tasks_.front(), {incoming_.substr(sizeof answer, size), {}}});
  incoming_.erase(0, sizeof answer + size);
  tasks_.pop_front();
  begin_task(limits);
  return true;
}

/// Whatever it says, the process has said its last.
void Worker::take_failure(Answer const& answer, WorkerLimits const& limits,
                          std::vector<FinishedTask>& finished) {
  end();
  switch (answer.kind) {
    case AnswerKind::result:
      if (answer.value <= limits.result_size) {
        break;
      }
      [[fallthrough]];
    case AnswerKind::too_large:
      return fail("its result is over " + std::to_string(limits.result_size) + " bytes", finished);
    case AnswerKind::out_of_memory:
      return fail("out of memory", finished);
    case AnswerKind::exception:
      return fail("the task ended with an exception", finished);
    case AnswerKind::refused_call:
      return fail("was stopped by the sandbox: system call " + std::to_string(answer.value),
                  finished);
    case AnswerKind::not_shut_in:
      return fail("the worker process cannot be shut in: error " + std::to_string(answer.value),
                  finished);
    case AnswerKind::missing_component:
      if (take_component(answer.value)) {
        return;
      }
      break;
    case AnswerKind::unnamed_file_wanted:
      break;
  }
  fail("its answer makes no sense", finished);
}

/// False for a component that the process has, or that there is not: each is asked for once.
bool Worker::take_component(std::uint64_t position) {
  if (position >= settled_.size() || settled_[static_cast<std::size_t>(position)]) {
    return false;
  }
  load_component(static_cast<std::size_t>(position));
  return true;
}

void Worker::fail(std::string reason, std::vector<FinishedTask>& finished) {
  if (!tasks_.empty()) {
    finished.push_back({tasks_.front(), {std::nullopt, std::move(reason)}});
    tasks_.pop_front();
  }
}

std::string Worker::reason_of_end(WorkerLimits const& limits) {
  int status = 0;
  bool const has_ended_itself = wait_for_end(process_, status);
  if (has_ended_itself) {
    process_ = -1;
  }
  end();
  if (!has_ended_itself) {
    return "its answer makes no sense";
  }
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU) {
    return processor_time_reason(limits);
  }
  if (WIFSIGNALED(status)) {
    return std::string(ended_by_signal) + ::strsignal(WTERMSIG(status));
  }
  return "the worker process ended with status " +
         std::to_string(WIFEXITED(status) ? WEXITSTATUS(status) : status);
}

FinishedTask Worker::expire(WorkerLimits const& limits) {
  end();
  std::vector<FinishedTask> finished;
  fail("no result within " + std::to_string(limits.seconds) + " seconds", finished);
  return std::move(finished.front());
}

void Worker::end() {
  if (socket_ >= 0) {
    ::close(socket_);
    socket_ = -1;
  }
  if (process_ > 0) {
    // It may not care that there is nobody any more to work for.
    ::kill(process_, SIGKILL);
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
  }
  incoming_.clear();
}

}  // namespace morvabs
