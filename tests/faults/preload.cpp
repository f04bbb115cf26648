/// A library for LD_PRELOAD that lets the n-th call that changes a file fail, or ends the process
/// there. FAULT_CONTROL names a file of the form of `Control`, in which it finds what to do and
/// leaves which calls there were. The driver is injection.py.

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

enum class Action : std::uint32_t { none, kill_before, kill_after, fail, write_half };
enum class Processes : std::uint32_t { first, forked };

constexpr std::size_t most_calls = 4096;

struct Call {
  char operation[16];
  char path[240];
};

/// As injection.py has it.
struct Control {
  Action action;
  Processes processes;
  std::uint32_t target;
  std::int32_t error;
  std::uint32_t count;
  Call calls[most_calls];
};

Control* control = nullptr;
Processes kind = Processes::first;

[[gnu::constructor]] void start() {
  char const* const path = std::getenv("FAULT_CONTROL");
  auto* const open_file =
      reinterpret_cast<int (*)(char const*, int, ...)>(dlsym(RTLD_NEXT, "open"));
  int const file = path == nullptr ? -1 : open_file(path, O_RDWR | O_CLOEXEC);
  if (file < 0) {
    return;
  }
  // The descriptor stays open: the numbers of others do not matter.
  void* const memory = mmap(nullptr, sizeof(Control), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  control = memory == MAP_FAILED ? nullptr : static_cast<Control*>(memory);
  pthread_atfork(nullptr, nullptr, [] { kind = Processes::forked; });
}

std::string path_of(int descriptor) {
  std::string path(sizeof Call::path, '\0');
  std::string const link = "/proc/self/fd/" + std::to_string(descriptor);
  ssize_t const length = readlink(link.c_str(), path.data(), path.size());
  path.resize(static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  return path;
}

/// Counts a call, and tells what is to become of it.
Action next(char const* operation, std::string const& path) {
  if (control == nullptr || control->processes != kind) {
    return Action::none;
  }
  std::uint32_t const index = std::atomic_ref(control->count).fetch_add(1);
  if (index < most_calls) {
    std::string_view(operation).copy(control->calls[index].operation, sizeof Call::operation - 1);
    path.copy(control->calls[index].path, sizeof Call::path - 1);
  }
  return index == control->target ? control->action : Action::none;
}

[[noreturn]] void end() {
  while (true) {
    kill(getpid(), SIGKILL);
    pause();
  }
}

template <typename Result, typename Make>
Result intercept(char const* operation, std::string const& path, Result failure, Make const& make) {
  int const before = errno;
  Action const action = next(operation, path);
  errno = before;
  if (action == Action::kill_before) {
    end();
  }
  if (action == Action::fail) {
    errno = control->error;
    return failure;
  }
  Result const result = make();
  if (action == Action::kill_after) {
    end();
  }
  return result;
}

/// The system's own function of that name.
template <typename... Parameters>
int real_call(char const* name, Parameters... parameters) {
  return reinterpret_cast<int (*)(Parameters...)>(dlsym(RTLD_NEXT, name))(parameters...);
}

/// The same, counted.
template <typename... Parameters>
int change(char const* name, std::string const& path, Parameters... parameters) {
  return intercept(name, path, -1, [&] { return real_call(name, parameters...); });
}

/// Making what is there, and removing what is not, changes nothing.
bool exists(char const* path) {
  struct stat status {};
  int const before = errno;
  bool const is_there = lstat(path, &status) == 0;
  errno = before;
  return is_there;
}

bool is_writable_file(int descriptor) {
  struct stat status {};
  int const before = errno;
  int const flags = fcntl(descriptor, F_GETFL);
  bool const is_writable = flags >= 0 && (flags & O_ACCMODE) != O_RDONLY &&
                           fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
  errno = before;
  return is_writable;
}

int open_at(char const* name, int directory, char const* path, int flags, mode_t mode) {
  using Open = int (*)(int, char const*, int, ...);
  static auto const real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "openat"));
  struct stat status {};
  bool const is_device = fstatat(directory, path, &status, 0) == 0 && S_ISCHR(status.st_mode);
  bool const is_change = (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
  if (!is_change || is_device) {
    return real(directory, path, flags, mode);
  }
  return intercept(name, path, -1, [&] { return real(directory, path, flags, mode); });
}

ssize_t write_some(char const* name, int descriptor, void const* data, std::size_t size,
                   off_t const* offset) {
  using Write = ssize_t (*)(int, void const*, std::size_t);
  using PositionedWrite = ssize_t (*)(int, void const*, std::size_t, off_t);
  static auto const real = reinterpret_cast<Write>(dlsym(RTLD_NEXT, "write"));
  static auto const real_at = reinterpret_cast<PositionedWrite>(dlsym(RTLD_NEXT, "pwrite"));
  auto const make = [&](std::size_t part) {
    return offset == nullptr ? real(descriptor, data, part)
                             : real_at(descriptor, data, part, *offset);
  };
  if (!is_writable_file(descriptor)) {
    return make(size);
  }
  bool const is_half = control != nullptr && control->action == Action::write_half &&
                       control->processes == kind && control->count == control->target;
  return intercept(name, path_of(descriptor), ssize_t{-1},
                   [&] { return make(is_half ? std::max<std::size_t>(size / 2, 1) : size); });
}

}  // namespace

// The system's functions under names of our own, so that they need not be declared as it declares
// them. Those with a mode at will are called with it or without; here it is always taken, and not
// looked at where it does not count.
extern "C" {

#pragma GCC visibility push(default)

int fault_open(char const* path, int flags, mode_t mode) asm("open");
int fault_open64(char const* path, int flags, mode_t mode) asm("open64");
int fault_openat(int directory, char const* path, int flags, mode_t mode) asm("openat");
int fault_openat64(int directory, char const* path, int flags, mode_t mode) asm("openat64");
int fault_close(int descriptor) asm("close");
ssize_t fault_write(int descriptor, void const* data, std::size_t size) asm("write");
ssize_t fault_pwrite(int descriptor, void const* data, std::size_t size, off_t at) asm("pwrite");
ssize_t fault_pwrite64(int descriptor, void const* data, std::size_t size,
                       off_t at) asm("pwrite64");
int fault_fsync(int descriptor) asm("fsync");
int fault_fdatasync(int descriptor) asm("fdatasync");
int fault_ftruncate(int descriptor, off_t length) asm("ftruncate");
int fault_ftruncate64(int descriptor, off_t length) asm("ftruncate64");
int fault_fchmod(int descriptor, mode_t mode) asm("fchmod");
int fault_fchown(int descriptor, uid_t user, gid_t group) asm("fchown");
int fault_flock(int descriptor, int operation) asm("flock");
int fault_rename(char const* from, char const* to) asm("rename");
int fault_renameat(int from_in, char const* from, int to_in, char const* to) asm("renameat");
int fault_link(char const* from, char const* to) asm("link");
int fault_unlink(char const* path) asm("unlink");
int fault_unlinkat(int directory, char const* path, int flags) asm("unlinkat");
int fault_rmdir(char const* path) asm("rmdir");
int fault_mkdir(char const* path, mode_t mode) asm("mkdir");
char* fault_mkdtemp(char* name) asm("mkdtemp");
ssize_t fault_sendfile(int to, int from, off_t* at, std::size_t size) asm("sendfile");
ssize_t fault_sendfile64(int to, int from, off_t* at, std::size_t size) asm("sendfile64");

int fault_open(char const* path, int flags, mode_t mode) {
  return open_at("open", AT_FDCWD, path, flags, mode);
}

int fault_open64(char const* path, int flags, mode_t mode) {
  return open_at("open", AT_FDCWD, path, flags, mode);
}

int fault_openat(int directory, char const* path, int flags, mode_t mode) {
  return open_at("open", directory, path, flags, mode);
}

int fault_openat64(int directory, char const* path, int flags, mode_t mode) {
  return open_at("open", directory, path, flags, mode);
}

int fault_close(int descriptor) {
  static auto const real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "close"));
  if (!is_writable_file(descriptor)) {
    return real(descriptor);
  }
  bool is_closed = false;
  int const told = intercept("close", path_of(descriptor), -1, [&] {
    is_closed = true;
    return real(descriptor);
  });
  // A descriptor is gone also where closing it tells of an error.
  if (!is_closed) {
    int const error = errno;
    real(descriptor);
    errno = error;
  }
  return told;
}

ssize_t fault_write(int descriptor, void const* data, std::size_t size) {
  return write_some("write", descriptor, data, size, nullptr);
}

ssize_t fault_pwrite(int descriptor, void const* data, std::size_t size, off_t at) {
  return write_some("pwrite", descriptor, data, size, &at);
}

ssize_t fault_pwrite64(int descriptor, void const* data, std::size_t size, off_t at) {
  return write_some("pwrite", descriptor, data, size, &at);
}

int fault_fsync(int descriptor) {
  struct stat status {};
  bool const is_directory = fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
  return intercept(is_directory ? "fsync directory" : "fsync", path_of(descriptor), -1,
                   [&] { return real_call("fsync", descriptor); });
}

int fault_fdatasync(int descriptor) {
  return change("fdatasync", path_of(descriptor), descriptor);
}

int fault_ftruncate(int descriptor, off_t length) {
  return change("ftruncate", path_of(descriptor), descriptor, length);
}

int fault_ftruncate64(int descriptor, off_t length) {
  return change("ftruncate", path_of(descriptor), descriptor, length);
}

int fault_fchmod(int descriptor, mode_t mode) {
  return change("fchmod", path_of(descriptor), descriptor, mode);
}

int fault_fchown(int descriptor, uid_t user, gid_t group) {
  return change("fchown", path_of(descriptor), descriptor, user, group);
}

int fault_flock(int descriptor, int operation) {
  return change("flock", path_of(descriptor), descriptor, operation);
}

int fault_rename(char const* from, char const* to) {
  return change("rename", to, from, to);
}

int fault_renameat(int from_in, char const* from, int to_in, char const* to) {
  return change("renameat", to, from_in, from, to_in, to);
}

int fault_link(char const* from, char const* to) {
  return change("link", to, from, to);
}

int fault_unlink(char const* path) {
  return exists(path) ? change("unlink", path, path) : real_call("unlink", path);
}

int fault_unlinkat(int directory, char const* path, int flags) {
  bool const is_relative = directory != AT_FDCWD && *path != '/';
  return change("unlinkat", is_relative ? path_of(directory) + "/" + path : path, directory, path,
                flags);
}

int fault_rmdir(char const* path) {
  return change("rmdir", path, path);
}

int fault_mkdir(char const* path, mode_t mode) {
  return exists(path) ? real_call("mkdir", path, mode) : change("mkdir", path, path, mode);
}

char* fault_mkdtemp(char* name) {
  static auto const real = reinterpret_cast<char* (*)(char*)>(dlsym(RTLD_NEXT, "mkdtemp"));
  return intercept("mkdtemp", name, static_cast<char*>(nullptr), [&] { return real(name); });
}

ssize_t fault_sendfile(int to, int from, off_t* at, std::size_t size) {
  using Send = ssize_t (*)(int, int, off_t*, std::size_t);
  static auto const real = reinterpret_cast<Send>(dlsym(RTLD_NEXT, "sendfile"));
  return intercept("sendfile", path_of(to), ssize_t{-1}, [&] { return real(to, from, at, size); });
}

ssize_t fault_sendfile64(int to, int from, off_t* at, std::size_t size) {
  return fault_sendfile(to, from, at, size);
}

#pragma GCC visibility pop
}
