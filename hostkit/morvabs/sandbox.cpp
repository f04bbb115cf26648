#include "morvabs/sandbox.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "host/HFileLog.h"
#include "host/native_path.h"
#include "morvabs/component.h"
#include "morvabs/file_access.h"
#include "morvabs/log_output.h"

namespace morvabs {

namespace {

#if defined(MORVA_SANITIZED)
constexpr bool is_sanitized = true;
#else
constexpr bool is_sanitized = false;
#endif

// What a reader has open at a time: its own file and copies of what is embedded in each other.
constexpr rlim_t most_descriptors = 48;
constexpr rlim_t most_stack = rlim_t{64} << 20;

bool is_switched_off() {
  char const* const set = std::getenv("MORVA_ISOLATION");
  bool const is_off = set != nullptr && std::string_view(set) == "off";
  return is_off || is_sanitized;
}

bool is_fault(int signal) {
  return signal == SIGSEGV || signal == SIGBUS || signal == SIGFPE || signal == SIGILL ||
         signal == SIGABRT || signal == SIGTRAP;
}

/// Those that a terminal sends to all of its processes: it is for the parent to decide whether it
/// ends, and its workers with it. And over the limit for a file, writing is to fail.
bool is_ignored(int signal) {
  return signal == SIGHUP || signal == SIGINT || signal == SIGQUIT || signal == SIGPIPE ||
         signal == SIGXFSZ;
}

/// Handlers of the process that forked have no business here, but those of a sanitizer.
void reset_signals(void (*on_refused_call)(int, siginfo_t*, void*)) {
  struct sigaction action {};
  for (int signal = 1; signal < NSIG; ++signal) {
    if (is_sanitized && is_fault(signal)) {
      continue;
    }
    action.sa_handler = is_ignored(signal) ? SIG_IGN : SIG_DFL;
    ::sigaction(signal, &action, nullptr);
  }
  action.sa_sigaction = on_refused_call;
  action.sa_flags = SA_SIGINFO;
  ::sigaction(SIGSYS, &action, nullptr);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void close_from_to(int first, int last) {
  if (first > last || ::syscall(SYS_close_range, first, last, 0) == 0) {
    return;
  }
  // As many as a kernel that does not know the call can have open.
  rlimit open_files{};
  ::getrlimit(RLIMIT_NOFILE, &open_files);
  constexpr rlim_t most = 65536;
  int const end = std::min(last, static_cast<int>(std::min(open_files.rlim_cur, most)));
  for (int descriptor = first; descriptor <= end; ++descriptor) {
    ::close(descriptor);
  }
}

/// `kept` is in order.
void close_all_but(std::vector<int> const& kept) {
  int first = 0;
  for (int const descriptor : kept) {
    close_from_to(first, descriptor - 1);
    first = std::max(first, descriptor + 1);
  }
  close_from_to(first, INT32_MAX);
}

/// Nobody reads or writes there, but what is opened next must not come to stand there.
void fill_standard_streams() {
  int descriptor = 0;
  while (descriptor >= 0 && descriptor < STDERR_FILENO) {
    descriptor = ::open("/dev/null", O_RDWR);
  }
  if (descriptor > STDERR_FILENO) {
    ::close(descriptor);
  }
}

bool is_logging() {
  HFileLog const* const log = HFileLog::ins();
  return log->mb_enable && log->mi_level > 0;
}

/// Bytes of private memory that the process has, where that is known.
std::optional<std::uint64_t> own_memory() {
  FileDescriptor const file(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
  std::array<char, 256> text{};
  if (!file.is_open() ||
      read_bytes(file.get(), text.data(), static_cast<std::int64_t>(text.size() - 1)) <= 0) {
    return std::nullopt;
  }
  // The sixth of the numbers is that of data and stack together.
  unsigned long pages = 0;
  if (std::sscanf(text.data(), "%*u %*u %*u %*u %*u %lu", &pages) != 1) {
    return std::nullopt;
  }
  return pages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
}

/// Lowers the limit; what is lower already stays.
bool limit(decltype(RLIMIT_CORE) resource, rlim_t most) {
  rlimit value{};
  if (::getrlimit(resource, &value) != 0) {
    return false;
  }
  value.rlim_cur = std::min(value.rlim_cur, most);
  value.rlim_max = std::min(value.rlim_max, most);
  return ::setrlimit(resource, &value) == 0;
}

/// What is read only, as the dictionary, and what is shared do not count.
bool limit_memory(std::uint64_t more) {
  std::optional<std::uint64_t> const own = own_memory();
  return own && limit(RLIMIT_DATA, more < RLIM_INFINITY - *own ? *own + more : RLIM_INFINITY);
}

bool set_limits(WorkerLimits const& limits, IsolationLayers const& layers) {
  return limit(RLIMIT_CORE, 0) && limit(RLIMIT_FSIZE, limits.file_size) &&
         limit(RLIMIT_NOFILE, most_descriptors) &&
         (!layers.memory || limit_memory(limits.memory)) &&
         (!layers.system_calls || (limit(RLIMIT_STACK, most_stack) && limit(RLIMIT_NPROC, 0)));
}

}  // namespace

IsolationLayers isolation_layers() {
  if (is_switched_off()) {
    return {};
  }
  IsolationLayers layers;
  layers.system_calls = SystemCallFilter::is_available();
  layers.landlock = landlock_version();
  // Kernels that count private memory are older than those that take the filter; an emulator of
  // another processor has neither.
  layers.memory = layers.system_calls && own_memory().has_value();
  return layers;
}

Sandbox::Sandbox(WorkerPool const& pool)
    : limits_(pool.limits), layers_(isolation_layers()), kept_descriptors_(pool.kept_descriptors) {
  auto const add_folder = [this](HString const& folder, OpenFolder::Use use) {
    if (auto const path = to_path(folder); path && !path->empty()) {
      folders_.push_back({*path, use});
    }
  };
  for (HString const& folder : pool.readable_folders) {
    add_folder(folder, OpenFolder::Use::read);
  }
  add_folder(pool.working_folder, OpenFolder::Use::work);
  if (layers_.system_calls) {
    filter_.emplace(pool.working_folder.not_empty());
  }
  if (is_logging()) {
    // A document that is begun again for want of a component would log its beginning twice.
    for (std::size_t i = 0; i < component_files.size(); ++i) {
      load_component(i);
    }
  }
  // The rules of local time stand in a file that the workers cannot read.
  ::tzset();
}

std::vector<int> Sandbox::kept_descriptors(int socket) const {
  std::vector<int> kept = kept_descriptors_;
  kept.push_back(socket);
  if (is_logging() || is_sanitized) {
    kept.push_back(STDERR_FILENO);
  }
  std::sort(kept.begin(), kept.end());
  return kept;
}

bool Sandbox::close(int socket, void (*on_refused_call)(int, siginfo_t*, void*)) const {
  reset_signals(on_refused_call);
  close_all_but(kept_descriptors(socket));
  fill_standard_streams();
  if (is_logging()) {
    reopen_log();
  }
  if (!set_limits(limits_, layers_) || ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    return false;
  }
  ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
  if (layers_.landlock > 0) {
    std::vector<OpenFolder> folders = folders_;
    for (std::string const& folder : component_folders()) {
      folders.push_back({folder, OpenFolder::Use::read});
    }
    if (!close_landlock(layers_.landlock, folders)) {
      return false;
    }
  }
  return !filter_ || filter_->install();
}

}  // namespace morvabs
