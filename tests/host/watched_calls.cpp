#include "watched_calls.h"

#include <atomic>
#include <clocale>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <dlfcn.h>
#include <fcntl.h>
#include <fenv.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/export.h"

namespace {

std::atomic<bool> is_watching{false};

struct Made {
  std::mutex mutex;
  std::set<std::string> names;
};

Made& made_calls() {
  static auto* const made = new Made;
  return *made;
}

void note(std::string const& call) {
  if (is_watching) {
    std::lock_guard const lock(made_calls().mutex);
    made_calls().names.insert(call);
  }
}

template <typename Function>
Function* the_system_s(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Notes the call; the result is the function that it is for.
template <typename Function>
Function* noted(char const* name) {
  note(name);
  return the_system_s<Function>(name);
}

/// A file that a program started by the host would inherit is noted.
template <typename Open, typename... Arguments>
int opened(char const* name, char const* path, int flags, Arguments... arguments) {
  if ((flags & O_CLOEXEC) == 0) {
    note(std::string(name) + " without O_CLOEXEC of " + path);
  }
  return the_system_s<Open>(name)(arguments...);
}

FILE* opened_stream(char const* name, char const* path, char const* mode) {
  if (std::string(mode).find('e') == std::string::npos) {
    note(std::string(name) + " without O_CLOEXEC of " + path);
  }
  return the_system_s<FILE*(char const*, char const*)>(name)(path, mode);
}

}  // namespace

namespace test {

WatchedCalls::WatchedCalls() {
  made_calls().names.clear();
  is_watching = true;
}

WatchedCalls::~WatchedCalls() {
  is_watching = false;
}

std::set<std::string> WatchedCalls::made() {
  std::lock_guard const lock(made_calls().mutex);
  return made_calls().names;
}

}  // namespace test

// These stand before the system's own for every library of the process.
extern "C" {

MORVA_EXPORT char* setlocale(int category, char const* locale) noexcept {
  // A question alone changes nothing.
  using Function = char*(int, char const*);
  return locale == nullptr ? the_system_s<Function>("setlocale")(category, nullptr)
                           : noted<Function>("setlocale")(category, locale);
}
MORVA_EXPORT int chdir(char const* path) noexcept {
  return noted<int(char const*)>("chdir")(path);
}
MORVA_EXPORT int fchdir(int descriptor) noexcept {
  return noted<int(int)>("fchdir")(descriptor);
}
MORVA_EXPORT mode_t umask(mode_t mask) noexcept {
  return noted<mode_t(mode_t)>("umask")(mask);
}
MORVA_EXPORT int setenv(char const* name, char const* value, int replaces) noexcept {
  return noted<int(char const*, char const*, int)>("setenv")(name, value, replaces);
}
MORVA_EXPORT int unsetenv(char const* name) noexcept {
  return noted<int(char const*)>("unsetenv")(name);
}
MORVA_EXPORT int putenv(char* text) noexcept {
  return noted<int(char*)>("putenv")(text);
}
MORVA_EXPORT int sigaction(int number, struct sigaction const* action,
                           struct sigaction* old) noexcept {
  return noted<int(int, struct sigaction const*, struct sigaction*)>("sigaction")(number, action,
                                                                                  old);
}
MORVA_EXPORT sighandler_t signal(int number, sighandler_t handler) noexcept {
  return noted<sighandler_t(int, sighandler_t)>("signal")(number, handler);
}
MORVA_EXPORT int sigprocmask(int how, sigset_t const* set, sigset_t* old) noexcept {
  return noted<int(int, sigset_t const*, sigset_t*)>("sigprocmask")(how, set, old);
}
MORVA_EXPORT unsigned alarm(unsigned seconds) noexcept {
  return noted<unsigned(unsigned)>("alarm")(seconds);
}
MORVA_EXPORT int setrlimit(__rlimit_resource_t resource, struct rlimit const* limit) noexcept {
  return noted<int(__rlimit_resource_t, struct rlimit const*)>("setrlimit")(resource, limit);
}
MORVA_EXPORT int fesetround(int mode) noexcept {
  return noted<int(int)>("fesetround")(mode);
}
MORVA_EXPORT pid_t fork() noexcept {
  return noted<pid_t()>("fork")();
}
MORVA_EXPORT int execve(char const* path, char* const* arguments,
                        char* const* environment) noexcept {
  return noted<int(char const*, char* const*, char* const*)>("execve")(path, arguments,
                                                                       environment);
}
MORVA_EXPORT int posix_spawn(pid_t* id, char const* path, posix_spawn_file_actions_t const* actions,
                             posix_spawnattr_t const* attributes, char* const* arguments,
                             char* const* environment) noexcept {
  return noted<int(pid_t*, char const*, posix_spawn_file_actions_t const*, posix_spawnattr_t const*,
                   char* const*, char* const*)>("posix_spawn")(id, path, actions, attributes,
                                                               arguments, environment);
}
MORVA_EXPORT int system(char const* command) {
  return noted<int(char const*)>("system")(command);
}
MORVA_EXPORT FILE* popen(char const* command, char const* mode) {
  return noted<FILE*(char const*, char const*)>("popen")(command, mode);
}
MORVA_EXPORT int socket(int domain, int type, int protocol) noexcept {
  return noted<int(int, int, int)>("socket")(domain, type, protocol);
}
MORVA_EXPORT int pthread_create(pthread_t* thread, pthread_attr_t const* attributes,
                                void* (*work)(void*), void* argument) noexcept {
  return noted<int(pthread_t*, pthread_attr_t const*, void* (*)(void*), void*)>("pthread_create")(
      thread, attributes, work, argument);
}
MORVA_EXPORT int open(char const* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  mode_t const mode = va_arg(rest, mode_t);
  va_end(rest);
  return opened<int(char const*, int, ...)>("open", path, flags, path, flags, mode);
}
MORVA_EXPORT int open64(char const* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  mode_t const mode = va_arg(rest, mode_t);
  va_end(rest);
  return opened<int(char const*, int, ...)>("open64", path, flags, path, flags, mode);
}
MORVA_EXPORT int openat(int directory, char const* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  mode_t const mode = va_arg(rest, mode_t);
  va_end(rest);
  return opened<int(int, char const*, int, ...)>("openat", path, flags, directory, path, flags,
                                                 mode);
}
// What the compiler makes of the first two where it checks arguments.
MORVA_EXPORT int __open_2(char const* path, int flags) {
  return opened<int(char const*, int)>("__open_2", path, flags, path, flags);
}
MORVA_EXPORT int __open64_2(char const* path, int flags) {
  return opened<int(char const*, int)>("__open64_2", path, flags, path, flags);
}
MORVA_EXPORT FILE* tmpfile() {
  return noted<FILE*()>("tmpfile")();
}
MORVA_EXPORT FILE* fopen(char const* path, char const* mode) {
  return opened_stream("fopen", path, mode);
}
MORVA_EXPORT FILE* fopen64(char const* path, char const* mode) {
  return opened_stream("fopen64", path, mode);
}
}
