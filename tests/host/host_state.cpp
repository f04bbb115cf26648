#include "host_state.h"

#include <array>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <locale>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

namespace {

namespace fs = std::filesystem;

std::string members_of(sigset_t const& set) {
  std::string members;
  for (int number = 1; number < NSIG; ++number) {
    members += sigismember(&set, number) == 1 ? std::to_string(number) + " " : "";
  }
  return members;
}

void add_signals(HostState& state) {
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0) {
      auto const handler = reinterpret_cast<std::uintptr_t>(action.sa_handler);
      state["signal " + std::to_string(number)] = std::to_string(handler) + " " +
                                                  std::to_string(action.sa_flags) + " " +
                                                  members_of(action.sa_mask);
    }
  }
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  state["signal mask"] = members_of(mask);
  stack_t stack{};
  sigaltstack(nullptr, &stack);
  state["signal stack"] = std::to_string(reinterpret_cast<std::uintptr_t>(stack.ss_sp));
  for (int const clock : {ITIMER_REAL, ITIMER_VIRTUAL, ITIMER_PROF}) {
    itimerval timer{};
    getitimer(static_cast<__itimer_which>(clock), &timer);
    state["timer " + std::to_string(clock)] = std::to_string(timer.it_value.tv_sec);
  }
}

void add_environment(HostState& state) {
  for (char** variable = environ; *variable != nullptr; ++variable) {
    std::string const text = *variable;
    state["variable " + text.substr(0, text.find('='))] = text;
  }
  state["locale"] = std::setlocale(LC_ALL, nullptr);
  state["thread's locale"] = std::to_string(reinterpret_cast<std::uintptr_t>(uselocale(nullptr)));
  state["C++ locale"] = std::locale().name();
  state["directory"] = fs::current_path().string();
  mode_t const mask = umask(0);
  umask(mask);
  state["umask"] = std::to_string(mask);
}

// What a computation gives tells more than any register's bits, and is the same on all machines.
void add_arithmetic(HostState& state) {
  state["rounding"] = std::to_string(std::fegetround());
  state["traps"] = std::to_string(fegetexcept());
  double const volatile tiny = std::numeric_limits<double>::denorm_min();
  double const volatile same = tiny * 1.0;
  state["small numbers"] = same == tiny ? "kept" : "flushed";
}

void add_limits(HostState& state) {
  for (int resource = 0; resource < static_cast<int>(RLIM_NLIMITS); ++resource) {
    rlimit limit{};
    if (getrlimit(static_cast<__rlimit_resource_t>(resource), &limit) == 0) {
      state["limit " + std::to_string(resource)] =
          std::to_string(limit.rlim_cur) + " " + std::to_string(limit.rlim_max);
    }
  }
}

// The place in its file belongs to the state of the three descriptors that every process has. Of
// others it may be moved by whoever handed them down, as the test runner's own log.
void add_descriptors(HostState& state) {
  for (fs::directory_entry const& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    std::string const target = fs::read_symlink(entry.path(), error).string();
    if (!error && target.find("/proc/") == std::string::npos) {
      int const descriptor = std::stoi(entry.path().filename().string());
      bool const is_standard = descriptor <= STDERR_FILENO;
      state["descriptor " + std::to_string(descriptor)] =
          target + " " + std::to_string(fcntl(descriptor, F_GETFD)) + " " +
          std::to_string(fcntl(descriptor, F_GETFL)) + " " +
          std::to_string(is_standard ? lseek(descriptor, 0, SEEK_CUR) : 0);
    }
  }
}

void add_process(HostState& state) {
  std::array<char, 16> name{};
  prctl(PR_GET_NAME, name.data());
  state["name"] = name.data();
  state["dumpable"] = std::to_string(prctl(PR_GET_DUMPABLE));
  state["priority"] = std::to_string(getpriority(PRIO_PROCESS, 0));
  state["group"] = std::to_string(getpgrp()) + " " + std::to_string(getsid(0));
  state["child"] = std::to_string(waitpid(-1, nullptr, WNOHANG));
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    for (char const* const label :
         {"Threads:", "NoNewPrivs:", "Seccomp:", "Cpus_allowed:", "CapEff:"}) {
      if (line.starts_with(label)) {
        state[label] = line;
      }
    }
  }
}

}  // namespace

HostState host_state() {
  HostState state;
  add_signals(state);
  add_environment(state);
  add_arithmetic(state);
  add_limits(state);
  add_descriptors(state);
  add_process(state);
  return state;
}

}  // namespace test
