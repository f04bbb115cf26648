#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include <mpi.h>
#include <unistd.h>

#include "exit_status.h"
#include "mpi/process_run.h"
#include "terminal/output.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

// What is counted in one call is an int.
constexpr std::size_t most_together = std::size_t{1} << 20;
constexpr std::size_t most_at_once = std::size_t{1} << 30;

class MpiGroup : public HProcessGroup {
 public:
  MpiGroup() {
    MPI_Comm_rank(MPI_COMM_WORLD, &rank_);
    MPI_Comm_size(MPI_COMM_WORLD, &size_);
  }

  int rank() const override { return rank_; }
  int size() const override { return size_; }

  std::vector<std::string> all_gather(std::string const& mine) override {
    std::vector<std::uint64_t> sizes(static_cast<std::size_t>(size_));
    std::uint64_t const own = mine.size();
    MPI_Allgather(&own, 1, MPI_UINT64_T, sizes.data(), 1, MPI_UINT64_T, MPI_COMM_WORLD);
    std::vector<std::string> all(sizes.size());
    if (std::all_of(sizes.begin(), sizes.end(),
                    [&](std::uint64_t size) { return size <= most_together / sizes.size(); })) {
      gather_together(mine, sizes, all);
      return all;
    }
    for (int rank = 0; rank < size_; ++rank) {
      std::string& one = all[static_cast<std::size_t>(rank)];
      one = rank == rank_ ? mine : std::string(sizes[static_cast<std::size_t>(rank)], '\0');
      send_to_all(rank, one);
    }
    return all;
  }

 private:
  static void gather_together(std::string const& mine, std::vector<std::uint64_t> const& sizes,
                              std::vector<std::string>& all) {
    std::vector<int> const counts(sizes.begin(), sizes.end());
    std::vector<int> places(counts.size());
    std::exclusive_scan(counts.begin(), counts.end(), places.begin(), 0);
    std::string bytes(static_cast<std::size_t>(places.back() + counts.back()), '\0');
    MPI_Allgatherv(mine.data(), static_cast<int>(mine.size()), MPI_BYTE, bytes.data(),
                   counts.data(), places.data(), MPI_BYTE, MPI_COMM_WORLD);
    for (std::size_t i = 0; i < all.size(); ++i) {
      all[i] = bytes.substr(static_cast<std::size_t>(places[i]), sizes[i]);
    }
  }

  static void send_to_all(int from, std::string& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += most_at_once) {
      std::size_t const count = std::min(most_at_once, bytes.size() - at);
      MPI_Bcast(bytes.data() + at, static_cast<int>(count), MPI_BYTE, from, MPI_COMM_WORLD);
    }
  }

  int rank_ = 0;
  int size_ = 1;
};

// Between the first call of MPI and the last.
class Session {
 public:
  Session() {
    int provided = 0;
    // Progress is shown by a thread of its own, which does not call MPI.
    MPI_Init_thread(nullptr, nullptr, MPI_THREAD_FUNNELED, &provided);
  }
  ~Session() { MPI_Finalize(); }
  Session(Session const&) = delete;
  Session& operator=(Session const&) = delete;
};

// A launcher that has lost a process ends the others by this signal.
void tell_end(int signal) {
  constexpr std::string_view line =
      "morvaai: ended early: a process of the run was lost, or the run was told to end\n";
  [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, line.data(), line.size());
  // The handler has been for one signal only: this one ends the program.
  raise(signal);
}

void prepare_for_end() {
  struct sigaction action {};
  action.sa_handler = &tell_end;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGTERM, &action, nullptr);
}

[[noreturn]] void end_all(HProcessGroup const& group, std::string const& problem) {
  complain("process " + std::to_string(group.rank()) + " of " + std::to_string(group.size()) +
           ": " + problem);
  // The launcher ends the others by the signal, which is no news then.
  std::signal(SIGTERM, SIG_DFL);
  MPI_Abort(MPI_COMM_WORLD, some_failed);
  std::terminate();
}

// How many processes the launcher says it has started; 1 where there is none. Slurm is asked last:
// it may have started no more than the launcher.
long launched_processes() {
  for (char const* const variable : {"OMPI_COMM_WORLD_SIZE", "PMI_SIZE", "SLURM_STEP_NUM_TASKS"}) {
    if (char const* const count = std::getenv(variable)) {
      return std::strtol(count, nullptr, 10);
    }
  }
  return 1;
}

// Why a process is alone that the launcher started with others; empty where it is not. Each would
// do the whole work, and write the box.
std::string mismatch_of_launcher(HProcessGroup const& group) {
  long const launched = launched_processes();
  if (group.size() > 1 || launched <= 1) {
    return {};
  }
  return "--mpi: the launcher started " + std::to_string(launched) +
         " processes, but the MPI library of this program sees one: start it with the mpirun of "
         "the library that it was built with";
}

}  // namespace

std::optional<std::string> refuse_process_run() {
  return std::nullopt;
}

int run_in_group(std::function<int(std::shared_ptr<HProcessGroup> const&)> const& work) {
  // A launcher may read the output by a terminal that it makes, and write it to a file.
  ignore_terminals();
  Session const session;
  auto const group = std::make_shared<MpiGroup>();
  if (std::string const mismatch = mismatch_of_launcher(*group); !mismatch.empty()) {
    complain(mismatch);
    return wrong_use;
  }
  if (group->rank() == 0) {
    prepare_for_end();
  }
  try {
    int const status = work(group);
    // All is said and done; the launcher ends those that are left by the signal where one ended
    // with a status that is not 0.
    std::signal(SIGTERM, SIG_DFL);
    return status;
  } catch (std::bad_alloc const&) {
    end_all(*group, "out of memory");
  } catch (std::exception const& error) {
    end_all(*group, error.what());
  }
}

}  // namespace tool
