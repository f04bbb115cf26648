#include "morvabs/worker_process.h"

#include <cerrno>
#include <cstdlib>
#include <deque>
#include <exception>
#include <new>
#include <utility>

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "morvabs/component.h"
#include "morvabs/file_access.h"
#include "morvabs/worker_channel.h"

namespace morvabs {

namespace {

/// Of this worker; for what is called without knowing them.
int task_socket = -1;
std::uint64_t current_task = 0;

struct Task {
  Message message;
  FileDescriptor file;
};
/// Came while something else was waited for.
std::deque<Task>& early_tasks() {
  static auto* const tasks = new std::deque<Task>;
  return *tasks;
}

/// Ends the worker with an answer that is not a result; may be called from a signal handler.
[[noreturn]] void give_up(AnswerKind kind, std::uint64_t value) {
  Answer const answer{kind, current_task, value};
  send_all(task_socket, &answer, sizeof answer);
  ::_exit(1);
}

void on_refused_call(int /*signal*/, siginfo_t* info, void* /*context*/) {
  give_up(AnswerKind::refused_call, static_cast<std::uint64_t>(info->si_syscall));
}

void ask_for_component(std::size_t position) {
  give_up(AnswerKind::missing_component, position);
}

FileDescriptor ask_for_unnamed_file() {
  Answer const answer{AnswerKind::unnamed_file_wanted, current_task, 0};
  send_all(task_socket, &answer, sizeof answer);
  Task next;
  while (receive_message(task_socket, next.message, next.file)) {
    if (next.message.kind == Message::Kind::unnamed_file) {
      return std::move(next.file);
    }
    early_tasks().push_back(std::exchange(next, {}));
  }
  ::_exit(1);
}

bool take_task(Task& task) {
  std::deque<Task>& early = early_tasks();
  if (early.empty()) {
    return receive_message(task_socket, task.message, task.file);
  }
  task = std::move(early.front());
  early.pop_front();
  return true;
}

void do_task(Message const& message, FileDescriptor file, Tasks const& tasks) {
  auto const task = static_cast<std::size_t>(message.task);
  current_task = message.task;
  if (message.has_file != 0) {
    hand_over_file(*tasks.paths[task], std::move(file), message.error);
  }
  std::string const result = tasks.work(task);
  if (result.size() > tasks.limits.result_size) {
    give_up(AnswerKind::too_large, result.size());
  }
  Answer const answer{AnswerKind::result, current_task, result.size()};
  if (!send_all(task_socket, &answer, sizeof answer) ||
      !send_all(task_socket, result.data(), result.size())) {
    ::_exit(1);
  }
}

void do_tasks(Tasks const& tasks, Sandbox const& sandbox) {
  wait_for_components(&ask_for_component);
  ask_for_unnamed_files(&ask_for_unnamed_file);
  if (!sandbox.close(task_socket, &on_refused_call)) {
    give_up(AnswerKind::not_shut_in, static_cast<std::uint64_t>(errno));
  }
  Task task;
  while (take_task(task)) {
    do_task(task.message, std::move(task.file), tasks);
  }
}

}  // namespace

void serve(int socket, pid_t parent, Tasks const& tasks, Sandbox const& sandbox) noexcept {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) {
    ::_exit(1);
  }
  task_socket = socket;
  // That of the parent may do more than to end.
  std::set_terminate(&std::abort);
  try {
    do_tasks(tasks, sandbox);
  } catch (std::bad_alloc const&) {
    give_up(AnswerKind::out_of_memory, 0);
  } catch (...) {
    give_up(AnswerKind::exception, 0);
  }
  ::_exit(0);
}

}  // namespace morvabs
