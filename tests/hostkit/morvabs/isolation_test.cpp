#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/HFileMD5.h"
#include "host/Orlec/IFile.h"
#include "host/native_path.h"
#include "host/worker_pool.h"
#include "morvabs/file_access.h"

#include "support/other_process.h"
#include "support/temporary_directory.h"

namespace {

using morvabs::WorkerPool;

/// What the only task of a run leaves: its result, or why there is none.
std::string done_in(WorkerPool const& pool, std::vector<HString> const& files,
                    WorkerPool::Work const& work) {
  std::string left;
  EXPECT_TRUE(pool.run(files, work, [&left](std::size_t, WorkerPool::Outcome const& outcome) {
    left = outcome.result.value_or(outcome.failure);
  }));
  return left;
}

/// What becomes of a call in a worker: "done", or the error.
std::string called(std::function<long()> const& call, WorkerPool const& pool = {}) {
  return done_in(pool, {HString(L"/none")}, [&call](std::size_t) {
    errno = 0;
    return call() >= 0 ? std::string("done") : "error " + std::to_string(errno);
  });
}

std::string const refused = "error " + std::to_string(EACCES);

std::string stopped(int call) {
  return "was stopped by the sandbox: system call " + std::to_string(call);
}

long opened(std::string const& path, int flags) {
  return open(path.c_str(), flags, 0600);
}

std::string native(HString const& path) {
  return morvabs::to_path(path).value_or(std::string());
}

class Isolation : public testing::Test {
 protected:
  test::TemporaryDirectory const directory;
};

/// With the filter of system calls.
class FilteredCalls : public Isolation {
 protected:
  void SetUp() override {
    if (!morvabs::isolation_layers().system_calls) {
      GTEST_SKIP() << "system calls are not filtered here";
    }
  }
};

/// With Landlock.
class ClosedFolders : public Isolation {
 protected:
  void SetUp() override {
    if (morvabs::isolation_layers().landlock == 0) {
      GTEST_SKIP() << "Landlock is not in force here";
    }
  }
};

std::string content(HString const& path) {
  Orlec::IFile const file(path, false);
  std::array<char, 100> buffer{};
  auto const size = file.ReadAt(0, buffer.data(), 100);
  return size < 0 ? "error " + std::to_string(file.GetError())
                  : std::string(buffer.data(), static_cast<std::size_t>(size));
}

TEST_F(Isolation, a_task_reads_its_own_file_by_its_path) {
  HString const path = directory.write("a.txt", "what it holds");
  EXPECT_EQ(done_in({}, {path}, [&](std::size_t) { return content(path); }), "what it holds");
}

TEST_F(Isolation, its_own_file_is_read_from_the_beginning_each_time) {
  HString const path = directory.write("a.txt", "what it holds");
  EXPECT_EQ(done_in({}, {path},
                    [&](std::size_t) {
                      HString first;
                      HString second;
                      HFileMD5::get_file_md5(path, first);
                      HFileMD5::get_file_md5(path, second);
                      return std::string(first == second && first.not_empty() ? "same" : "other");
                    }),
            "same");
}

TEST_F(Isolation, each_task_has_the_file_of_its_number) {
  HString const a = directory.write("a.txt", "a");
  HString const b = directory.write("b.txt", "b");
  std::vector<HString> const files{a, b, directory / "missing", a};
  std::string all;
  WorkerPool const pool;
  pool.run(
      files, [&](std::size_t i) { return content(files[i]) + ";"; },
      [&](std::size_t, WorkerPool::Outcome const& outcome) { all += *outcome.result; });
  EXPECT_EQ(all, "a;b;error " + std::to_string(ENOENT) + ";a;");
}

TEST_F(Isolation, a_folder_gives_the_error_that_it_gives_outside) {
  HString const path = morvabs::from_path(directory.path().string());
  EXPECT_EQ(done_in({}, {path}, [&](std::size_t) { return content(path); }),
            "error " + std::to_string(EISDIR));
}

TEST_F(Isolation, descriptors_of_the_parent_are_closed) {
  int const mine = open("/dev/null", O_RDONLY);
  EXPECT_EQ(called([mine] { return fcntl(mine, F_GETFD); }), "error " + std::to_string(EBADF));
  close(mine);
}

TEST_F(Isolation, a_descriptor_may_be_kept) {
  int const mine = open("/dev/null", O_RDONLY);
  WorkerPool pool;
  pool.kept_descriptors = {mine};
  EXPECT_EQ(called([mine] { return fcntl(mine, F_GETFD); }, pool), "done");
  close(mine);
}

TEST_F(Isolation, standard_input_is_empty) {
  EXPECT_EQ(called([] {
              char byte = 0;
              return read(STDIN_FILENO, &byte, 1) == 0 ? 0 : -1;
            }),
            "done");
}

TEST_F(Isolation, handlers_of_the_parent_are_reset) {
  auto* const before = signal(SIGUSR1, [](int) {});
  EXPECT_EQ(called([] { return raise(SIGUSR1); }),
            "the worker process ended with signal: User defined signal 1");
  signal(SIGUSR1, before);
}

TEST_F(Isolation, signals_to_all_of_a_terminal_are_left_to_the_parent) {
  for (int const signal : {SIGHUP, SIGINT, SIGQUIT}) {
    EXPECT_EQ(called([signal] { return raise(signal); }), "done") << signal;
  }
}

TEST_F(Isolation, what_a_task_prints_goes_nowhere_in_a_parent_without_standard_streams) {
  EXPECT_EQ(test::in_other_process([] {
              for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                close(stream);
              }
              std::string left;
              WorkerPool const pool;
              pool.run(
                  1,
                  [](std::size_t) {
                    return std::to_string(write(STDIN_FILENO, "harbour", 7) +
                                          write(STDOUT_FILENO, "harbour", 7) +
                                          write(STDERR_FILENO, "harbour", 7));
                  },
                  [&left](std::size_t, WorkerPool::Outcome const& outcome) {
                    left = outcome.result.value_or(outcome.failure);
                  });
              return left;
            }),
            "21");
}

/// Sends more descriptors, which nobody takes out, than a user without privileges may have under
/// way. False where there is no such bound.
bool use_up_descriptors_under_way() {
  rlimit const few{64, 64};
  int pair[2];
  if (setrlimit(RLIMIT_NOFILE, &few) != 0 || socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) {
    return false;
  }
  char byte = 0;
  iovec part{&byte, 1};
  constexpr std::size_t count = 100;
  alignas(cmsghdr) std::array<char, CMSG_SPACE(count * sizeof(int))> control{};
  msghdr header{};
  header.msg_iov = &part;
  header.msg_iovlen = 1;
  header.msg_control = control.data();
  header.msg_controllen = control.size();
  cmsghdr* const first = CMSG_FIRSTHDR(&header);
  first->cmsg_level = SOL_SOCKET;
  first->cmsg_type = SCM_RIGHTS;
  first->cmsg_len = CMSG_LEN(count * sizeof(int));
  auto* const descriptors = reinterpret_cast<int*>(CMSG_DATA(first));
  std::fill_n(descriptors, count, pair[0]);
  return sendmsg(pair[0], &header, 0) == 1 && sendmsg(pair[0], &header, 0) < 0 &&
         errno == ETOOMANYREFS;
}

TEST_F(Isolation, a_file_that_cannot_be_sent_is_one_that_cannot_be_opened) {
  std::string const left = test::in_other_process([] {
    std::string all;
    if (!test::become_lone_user() || !use_up_descriptors_under_way()) {
      return all;
    }
    std::vector<HString> const files(3, HString(L"/etc/passwd"));
    WorkerPool pool;
    pool.limits.seconds = 5;
    pool.run(
        files, [&files](std::size_t i) { return content(files[i]).substr(0, 9) + ";"; },
        [&all](std::size_t, WorkerPool::Outcome const& outcome) {
          all += outcome.result.value_or(outcome.failure);
        });
    return all;
  });
  if (left.empty()) {
    GTEST_SKIP() << "descriptors under way have no bound here";
  }
  std::string const refusal = "error " + std::to_string(ETOOMANYREFS) + ";";
  EXPECT_EQ(left, refusal + refusal + refusal);
}

TEST_F(Isolation, a_file_grows_no_further_than_its_limit) {
  WorkerPool pool;
  pool.limits.file_size = 1000;
  EXPECT_EQ(called(
                [] {
                  auto const file = morvabs::open_unnamed_file();
                  std::string const bytes(600, 'x');
                  return write(file.get(), bytes.data(), 600) == 600 &&
                                 write(file.get(), bytes.data(), 600) == 400 &&
                                 write(file.get(), bytes.data(), 1) == -1
                             ? 0
                             : -1;
                },
                pool),
            "done");
}

TEST_F(Isolation, a_file_without_a_name_can_be_written) {
  EXPECT_EQ(called([] { return write(morvabs::open_unnamed_file().get(), "x", 1); }), "done");
}

TEST_F(Isolation, files_without_a_name_are_given_between_tasks) {
  WorkerPool const pool;
  std::string all;
  pool.run(
      10,
      [](std::size_t i) {
        auto const first = morvabs::open_unnamed_file();
        auto const second = morvabs::open_unnamed_file();
        return std::to_string(first.is_open() && second.is_open() ? i : 99);
      },
      [&](std::size_t, WorkerPool::Outcome const& outcome) { all += *outcome.result; });
  EXPECT_EQ(all, "0123456789");
}

TEST_F(ClosedFolders, another_file_cannot_be_read) {
  std::string const path = native(directory.write("other.txt", "secret"));
  EXPECT_EQ(called([&] { return opened(path, O_RDONLY); }), refused);
}

TEST_F(ClosedFolders, another_file_cannot_be_written) {
  std::string const path = native(directory.write("other.txt", "kept"));
  EXPECT_EQ(called([&] { return opened(path, O_WRONLY | O_TRUNC); }), refused);
  EXPECT_EQ(directory.read("other.txt"), "kept");
}

TEST_F(ClosedFolders, the_list_of_processes_cannot_be_read) {
  EXPECT_EQ(called([] { return opened("/proc/1/status", O_RDONLY); }), refused);
}

TEST_F(Isolation, a_readable_folder_can_be_read) {
  WorkerPool pool;
  pool.readable_folders = {morvabs::from_path(directory.path().string())};
  std::string const path = native(directory.write("other.txt", "words"));
  EXPECT_EQ(called([&] { return opened(path, O_RDONLY); }, pool), "done");
}

TEST_F(FilteredCalls, a_readable_folder_cannot_be_written) {
  WorkerPool pool;
  pool.readable_folders = {morvabs::from_path(directory.path().string())};
  std::string const path = native(directory.write("other.txt", "words"));
  EXPECT_EQ(called([&] { return opened(path, O_RDWR); }, pool), refused);
  EXPECT_EQ(called([&] { return unlink(path.c_str()); }, pool), refused);
}

TEST_F(Isolation, a_working_folder_can_be_written) {
  WorkerPool pool;
  pool.working_folder = morvabs::from_path(directory.path().string());
  std::string const path = native(directory / "new");
  EXPECT_EQ(called(
                [&] {
                  return mkdir(path.c_str(), 0700) == 0 &&
                                 opened(path + "/a", O_CREAT | O_EXCL | O_WRONLY) >= 0 &&
                                 rename((path + "/a").c_str(), (path + "/b").c_str()) == 0 &&
                                 unlink((path + "/b").c_str()) == 0 && rmdir(path.c_str()) == 0
                             ? 0
                             : -1;
                },
                pool),
            "done");
}

TEST_F(ClosedFolders, outside_its_working_folder_nothing_is_written) {
  WorkerPool pool;
  pool.working_folder = directory.path().c_str();
  test::TemporaryDirectory const other;
  std::string const path = native(other / "new");
  EXPECT_EQ(called([&] { return opened(path, O_CREAT | O_WRONLY); }, pool), refused);
}

TEST_F(FilteredCalls, a_file_cannot_be_made) {
  std::string const path = native(directory / "new");
  EXPECT_EQ(called([&] { return opened(path, O_CREAT | O_WRONLY); }), refused);
  EXPECT_EQ(called([&] { return mkdir(path.c_str(), 0700); }), refused);
}

TEST_F(FilteredCalls, sockets_are_refused) {
  EXPECT_EQ(called([] { return socket(AF_INET, SOCK_STREAM, 0); }), refused);
  EXPECT_EQ(called([] { return socket(AF_UNIX, SOCK_STREAM, 0); }), refused);
}

TEST_F(FilteredCalls, connecting_ends_the_worker) {
  EXPECT_EQ(called([] {
              sockaddr_in const address{};
              return syscall(SYS_connect, 0, &address, sizeof address);
            }),
            stopped(SYS_connect));
}

TEST_F(FilteredCalls, new_processes_are_refused) {
  EXPECT_EQ(called([] {
              pid_t const child = fork();
              if (child == 0) {
                _exit(0);
              }
              return child;
            }),
            refused);
}

TEST_F(FilteredCalls, running_a_program_ends_the_worker) {
  EXPECT_EQ(called([] { return execl("/bin/true", "true", nullptr); }), stopped(SYS_execve));
}

TEST_F(FilteredCalls, tracing_ends_the_worker) {
  EXPECT_EQ(called([] { return ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr); }),
            stopped(SYS_ptrace));
}

TEST_F(FilteredCalls, signals_to_others_end_the_worker) {
  EXPECT_EQ(called([] { return kill(getppid(), 0); }), stopped(SYS_kill));
  EXPECT_EQ(called([] { return syscall(SYS_tgkill, getppid(), getppid(), 0); }),
            stopped(SYS_tgkill));
}

TEST_F(FilteredCalls, limits_cannot_be_raised) {
  EXPECT_EQ(called([] {
              rlimit const none{RLIM_INFINITY, RLIM_INFINITY};
              return setrlimit(RLIMIT_CPU, &none);
            }),
            refused);
}

TEST_F(FilteredCalls, handlers_of_signals_cannot_be_set) {
  EXPECT_EQ(called([] {
              struct sigaction const action{};
              return sigaction(SIGSYS, &action, nullptr);
            }),
            refused);
}

long mapped(int protection, int flags) {
  return mmap(nullptr, 4096, protection, flags, -1, 0) == MAP_FAILED ? -1 : 0;
}

TEST_F(FilteredCalls, new_code_is_refused) {
  EXPECT_EQ(called([] {
              return mapped(PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS);
            }),
            refused);
  EXPECT_EQ(called([] {
              void* const page =
                  mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
              return mprotect(page, 4096, PROT_READ | PROT_EXEC);
            }),
            refused);
}

TEST_F(FilteredCalls, memory_that_the_limit_does_not_count_is_refused) {
  EXPECT_EQ(called([] { return mapped(PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS); }),
            refused);
  EXPECT_EQ(called([] { return syscall(SYS_memfd_create, "m", 0); }), refused);
}

TEST_F(FilteredCalls, a_recent_call_fails_as_in_an_older_kernel) {
  EXPECT_EQ(called([] { return syscall(10000); }), "error " + std::to_string(ENOSYS));
}

TEST_F(Isolation, nothing_is_in_force_where_it_is_switched_off) {
  test::EnvironmentVariable const off("MORVA_ISOLATION", "off");
  EXPECT_FALSE(morvabs::isolation_layers().system_calls);
  EXPECT_EQ(morvabs::isolation_layers().landlock, 0);
  std::string const path = native(directory.write("other.txt", "words"));
  EXPECT_EQ(called([&] { return opened(path, O_RDONLY); }), "done");
}

}  // namespace
