#include "morvabs/system_call_filter.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <span>
#include <utility>

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/seccomp.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace morvabs {

namespace {

#if defined(__x86_64__)
constexpr std::uint32_t own_architecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr std::uint32_t own_architecture = AUDIT_ARCH_AARCH64;
#else
// No filter is ever available there.
constexpr std::uint32_t own_architecture = 0;
#endif

/// What becomes of a call; the last ones depend on its arguments.
enum class Verdict {
  allow,
  refuse,
  unknown,
  trap,
  open_file,
  map_memory,
  protect_memory,
  signal_itself,
  see_limits,
  control_descriptor
};

using Verdicts = std::map<std::uint32_t, Verdict>;

void add(Verdicts& verdicts, Verdict verdict, std::initializer_list<int> calls) {
  for (int const call : calls) {
    verdicts[static_cast<std::uint32_t>(call)] = verdict;
  }
}

/// What computing on open files takes.
void add_work(Verdicts& verdicts) {
  add(verdicts, Verdict::allow,
      {SYS_read,
       SYS_pread64,
       SYS_readv,
       SYS_write,
       SYS_pwrite64,
       SYS_writev,
       SYS_lseek,
       SYS_close,
       SYS_fstat,
       SYS_newfstatat,
       SYS_statx,
       SYS_statfs,
       SYS_fstatfs,
       SYS_faccessat,
       SYS_faccessat2,
       SYS_readlinkat,
       SYS_getcwd,
       SYS_getdents64,
       SYS_recvmsg,
       SYS_sendto,
       SYS_brk,
       SYS_munmap,
       SYS_mremap,
       SYS_madvise,
       SYS_futex,
       SYS_getrandom,
       SYS_sched_yield,
       SYS_sched_getaffinity,
       SYS_clock_gettime,
       SYS_clock_getres,
       SYS_clock_nanosleep,
       SYS_nanosleep,
       SYS_gettimeofday,
       SYS_times,
       SYS_getrusage,
       SYS_sysinfo,
       SYS_uname,
       SYS_getpid,
       SYS_gettid,
       SYS_getppid,
       SYS_getuid,
       SYS_geteuid,
       SYS_getgid,
       SYS_getegid,
       SYS_rt_sigprocmask,
       SYS_rt_sigreturn,
       SYS_sigaltstack,
       SYS_restart_syscall,
       SYS_exit,
       SYS_exit_group,
       SYS_fadvise64});
  add(verdicts, Verdict::open_file, {SYS_openat});
  add(verdicts, Verdict::map_memory, {SYS_mmap});
  add(verdicts, Verdict::protect_memory, {SYS_mprotect});
  add(verdicts, Verdict::signal_itself, {SYS_tgkill});
  add(verdicts, Verdict::see_limits, {SYS_prlimit64});
  add(verdicts, Verdict::control_descriptor, {SYS_fcntl});
#if defined(__x86_64__)
  add(verdicts, Verdict::allow,
      {SYS_stat, SYS_lstat, SYS_access, SYS_readlink, SYS_time, SYS_getrlimit, SYS_pause});
#endif
  add(verdicts, Verdict::allow, {SYS_ppoll});
}

/// What a working folder takes beside opening files.
void add_writing(Verdicts& verdicts) {
  add(verdicts, Verdict::allow,
      {SYS_openat, SYS_mkdirat, SYS_unlinkat, SYS_renameat2, SYS_fsync, SYS_fdatasync,
       SYS_ftruncate, SYS_fchmod, SYS_fchown, SYS_flock});
#if defined(__x86_64__)
  add(verdicts, Verdict::allow, {SYS_mkdir, SYS_rmdir, SYS_unlink, SYS_rename, SYS_renameat});
#elif defined(SYS_renameat)
  add(verdicts, Verdict::allow, {SYS_renameat});
#endif
}

/// What only somebody does who has taken the process over.
void add_traps(Verdicts& verdicts) {
  add(verdicts, Verdict::trap,
      {SYS_execve,
       SYS_execveat,
       SYS_ptrace,
       SYS_process_vm_readv,
       SYS_process_vm_writev,
       SYS_kill,
       SYS_tkill,
       SYS_rt_sigqueueinfo,
       SYS_rt_tgsigqueueinfo,
       SYS_pidfd_send_signal,
       SYS_connect,
       SYS_bind,
       SYS_listen,
       SYS_accept,
       SYS_bpf,
       SYS_perf_event_open,
       SYS_userfaultfd,
       SYS_io_uring_setup,
       SYS_io_uring_enter,
       SYS_io_uring_register,
       SYS_keyctl,
       SYS_add_key,
       SYS_request_key,
       SYS_mount,
       SYS_umount2,
       SYS_chroot,
       SYS_unshare,
       SYS_setns,
       SYS_init_module,
       SYS_finit_module,
       SYS_setuid,
       SYS_setgid,
       SYS_setresuid,
       SYS_setresgid,
       SYS_setgroups,
       SYS_open_by_handle_at,
       SYS_seccomp});
}

std::uint32_t error_of(int error) {
  return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error);
}

/// Calls from this number on, up to that of the next range, share a verdict.
struct Range {
  std::uint32_t first;
  Verdict verdict;
};

/// A library that is new enough to make a call from here on knows what to do in older kernels.
constexpr std::uint32_t first_recent_call = 424;

std::vector<Range> ranges_of(Verdicts verdicts) {
  verdicts.try_emplace(first_recent_call, Verdict::unknown);
  std::vector<Range> ranges{{0, Verdict::refuse}};
  std::uint32_t next = 0;
  auto const append = [&ranges](std::uint32_t first, Verdict verdict) {
    if (ranges.back().first == first) {
      ranges.back().verdict = verdict;
    } else if (ranges.back().verdict != verdict) {
      ranges.push_back({first, verdict});
    }
  };
  auto const fill = [&](std::uint32_t call) {
    if (call != next) {
      append(next, next < first_recent_call ? Verdict::refuse : Verdict::unknown);
    }
  };
  for (auto const& [call, verdict] : verdicts) {
    fill(call);
    append(call, verdict);
    next = call + 1;
  }
  append(next, Verdict::unknown);
  return ranges;
}

/// Writes the program of the kernel's packet filter that gives the verdicts.
class Writer {
 public:
  void write(std::vector<Range> const& ranges) {
    load(offsetof(seccomp_data, arch));
    unless_equal(own_architecture, [this] { end(SECCOMP_RET_KILL_PROCESS); });
    load(offsetof(seccomp_data, nr));
    choose(ranges);
  }

  std::vector<sock_filter> take_program() { return std::move(program_); }
  std::size_t own_process() const { return own_process_; }

 private:
  void put(unsigned code, std::uint32_t value, std::uint8_t if_true = 0,
           std::uint8_t if_false = 0) {
    program_.push_back({static_cast<std::uint16_t>(code), if_true, if_false, value});
  }
  void load(std::size_t offset) {
    put(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
  }
  /// The lower half of an argument; both architectures are little-endian.
  void load_argument(std::size_t number) {
    load(offsetof(seccomp_data, args) + number * sizeof(std::uint64_t));
  }
  void load_upper_half(std::size_t number) {
    load(offsetof(seccomp_data, args) + number * sizeof(std::uint64_t) + sizeof(std::uint32_t));
  }
  void keep_bits(int bits) { put(BPF_ALU | BPF_AND | BPF_K, static_cast<std::uint32_t>(bits)); }
  void end(std::uint32_t action) { put(BPF_RET | BPF_K, action); }
  void allow() { end(SECCOMP_RET_ALLOW); }
  void refuse() { end(error_of(EACCES)); }

  /// Both are over after one instruction more: what is done here is to end.
  template <typename Then>
  void if_equal(std::uint32_t value, Then then) {
    put(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
    then();
  }
  template <typename Then>
  void unless_equal(std::uint32_t value, Then then) {
    put(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0);
    then();
  }

  /// Finds the range of a number by halves: the kernel asks for each number there is when it takes
  /// the filter.
  void choose(std::span<Range const> ranges) {
    if (ranges.size() == 1) {
      give(ranges.front().verdict);
      return;
    }
    std::size_t const half = ranges.size() / 2;
    std::size_t const fork = program_.size();
    put(BPF_JMP | BPF_JGE | BPF_K, ranges[half].first);
    choose(ranges.first(half));
    jump_from(fork);
    choose(ranges.subspan(half));
  }

  /// Has the comparison there go on here where it is true.
  void jump_from(std::size_t comparison) {
    constexpr std::size_t farthest = 255;
    std::size_t const distance = program_.size() - comparison - 1;
    if (distance <= farthest) {
      program_[comparison].jt = static_cast<std::uint8_t>(distance);
      return;
    }
    sock_filter const jump{BPF_JMP | BPF_JA, 0, 0, static_cast<std::uint32_t>(distance)};
    program_.insert(program_.begin() + static_cast<std::ptrdiff_t>(comparison) + 1, jump);
    program_[comparison].jf = 1;
    own_process_ += own_process_ > comparison ? 1 : 0;
  }

  void give(Verdict verdict) {
    switch (verdict) {
      case Verdict::allow:
        return allow();
      case Verdict::refuse:
        return refuse();
      case Verdict::unknown:
        return end(error_of(ENOSYS));
      case Verdict::trap:
        return end(SECCOMP_RET_TRAP);
      case Verdict::open_file:
        return judge_opening();
      case Verdict::map_memory:
        return judge_mapping();
      case Verdict::protect_memory:
        return judge_protection();
      case Verdict::signal_itself:
        return judge_signal();
      case Verdict::see_limits:
        return judge_limits();
      case Verdict::control_descriptor:
        return judge_control();
    }
  }

  void judge_opening() {
    constexpr int unnamed = O_TMPFILE & ~O_DIRECTORY;
    load_argument(2);
    keep_bits(O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND | O_PATH | unnamed);
    if_equal(O_RDONLY, [this] { allow(); });
    refuse();
  }

  /// No new code, and no memory that the limit does not count, as that which is shared.
  void judge_mapping() {
    load_argument(2);
    keep_bits(PROT_EXEC);
    unless_equal(0, [this] { refuse(); });
    load_argument(3);
    keep_bits(MAP_SHARED);
    if_equal(0, [this] { allow(); });
    load_argument(3);
    keep_bits(MAP_ANONYMOUS);
    unless_equal(0, [this] { refuse(); });
    load_argument(2);
    keep_bits(PROT_WRITE);
    if_equal(0, [this] { allow(); });
    refuse();
  }

  void judge_protection() {
    load_argument(2);
    keep_bits(PROT_EXEC);
    if_equal(0, [this] { allow(); });
    refuse();
  }

  void judge_signal() {
    load_argument(0);
    own_process_ = program_.size();
    if_equal(0, [this] { allow(); });
    end(SECCOMP_RET_TRAP);
  }

  void judge_limits() {
    load_argument(0);
    unless_equal(0, [this] { refuse(); });
    load_argument(2);
    unless_equal(0, [this] { refuse(); });
    load_upper_half(2);
    if_equal(0, [this] { allow(); });
    refuse();
  }

  void judge_control() {
    load_argument(1);
    for (int const command : {F_DUPFD_CLOEXEC, F_GETFD, F_SETFD, F_GETFL}) {
      if_equal(static_cast<std::uint32_t>(command), [this] { allow(); });
    }
    refuse();
  }

  std::vector<sock_filter> program_;
  std::size_t own_process_ = 0;
};

long set_filter(unsigned flags, sock_fprog const& program) {
  return ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &program);
}

}  // namespace

SystemCallFilter::SystemCallFilter(bool may_write) {
  Verdicts verdicts;
  add_work(verdicts);
  add_traps(verdicts);
  if (may_write) {
    add_writing(verdicts);
  }
  Writer writer;
  writer.write(ranges_of(verdicts));
  own_process_ = writer.own_process();
  program_ = writer.take_program();
}

bool SystemCallFilter::is_available() {
  std::uint32_t const kill = SECCOMP_RET_KILL_PROCESS;
  return own_architecture != 0 && ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &kill) == 0;
}

bool SystemCallFilter::install() const {
  std::vector<sock_filter> program = program_;
  program[own_process_].k = static_cast<std::uint32_t>(::getpid());
  sock_fprog const whole{static_cast<unsigned short>(program.size()), program.data()};
  // Older kernels slow a filtered process down against guesses of the processor about memory, which
  // would tell it nothing but its own input; the oldest do not know the flag.
  return set_filter(SECCOMP_FILTER_FLAG_SPEC_ALLOW, whole) == 0 || set_filter(0, whole) == 0;
}

}  // namespace morvabs
