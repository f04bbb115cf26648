#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include "host/native_path.h"
#include "host/worker_pool.h"
#include "morvaai_c.h"

#include "c/internal/call.h"
#include "c/internal/dictionary.h"
#include "c/internal/document.h"
#include "c/internal/log.h"
#include "c/internal/reading.h"
#include "c/internal/reading_bytes.h"

using morva::c::Failure;
using morva::c::needed;
using morva::c::Reading;
using morva::c::Wants;

struct morva_pool {
  morvabs::WorkerPool workers;
};

namespace {

constexpr std::uint64_t least_memory = std::uint64_t{1} << 20;

// Time by the clock for so much of the processor.
int with_waiting(int cpu_seconds, int least) {
  constexpr int most = std::numeric_limits<int>::max();
  int const more = cpu_seconds / 5;
  return std::max(least, cpu_seconds < most - more ? cpu_seconds + more : most);
}

std::vector<HString> paths_of(char const* const* paths, std::size_t count) {
  std::vector<HString> files;
  files.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    files.push_back(morvabs::from_path(needed(needed(paths, "paths")[i], "a path")));
  }
  return files;
}

// In a worker.
std::string work_on(HString const& file, Wants const& wants) {
  morva::c::leave_sink();
  return pack(read_file(file, wants));
}

Reading result_of(morvabs::WorkerPool::Outcome const& outcome, Wants const& wants) {
  Reading lost;
  lost.status = MORVA_NOT_READ;
  if (!outcome.result) {
    lost.reason = outcome.failure;
    return lost;
  }
  lost.reason = "the answer of its worker process makes no sense";
  return morva::c::unpack(*outcome.result, wants).value_or(std::move(lost));
}

bool hand_out(std::size_t index, HString const& file, Reading reading, Wants const& wants,
              morva_take take, void* user) {
  std::unique_ptr<morva_document> document;
  morva_status const status = morva::c::status_of([&] {
    document = std::make_unique<morva_document>(std::move(reading), wants);
    if (Reading const& done = document->reading(); done.status != MORVA_OK) {
      throw Failure(done.status, failure_line(file, done), done.error);
    }
  });
  return take(user, index, status, document.release()) == 0;
}

}  // namespace

morva_status morva_pool_new(morva_pool** pool) {
  return morva::c::status_of([&] {
    morva_pool*& result = morva::c::emptied(pool, "pool");
    result = std::make_unique<morva_pool>().release();
  });
}

void morva_pool_free(morva_pool* pool) {
  std::unique_ptr<morva_pool> const ended(pool);
}

morva_status morva_pool_set_jobs(morva_pool* pool, size_t jobs) {
  return morva::c::status_of([&] {
    if (jobs == 0) {
      throw Failure(MORVA_INVALID_ARGUMENT, "jobs is 0");
    }
    needed(pool, "pool")->workers.jobs = jobs;
  });
}

morva_status morva_pool_set_memory(morva_pool* pool, uint64_t bytes) {
  return morva::c::status_of([&] {
    if (bytes < least_memory) {
      throw Failure(MORVA_INVALID_ARGUMENT, "bytes is below 1 MiB");
    }
    needed(pool, "pool")->workers.limits.memory = bytes;
  });
}

morva_status morva_pool_set_seconds(morva_pool* pool, int seconds) {
  return morva::c::status_of([&] {
    if (seconds < 1) {
      throw Failure(MORVA_INVALID_ARGUMENT, "seconds is below 1");
    }
    morvabs::WorkerLimits& limits = needed(pool, "pool")->workers.limits;
    limits.cpu_seconds = seconds;
    limits.seconds = with_waiting(seconds, morvabs::WorkerLimits{}.seconds);
  });
}

morva_status morva_pool_read(morva_pool const* pool, char const* const* paths, size_t count,
                             unsigned wants, size_t most_words, morva_take take, void* user) {
  return morva::c::locked_status_of([&] {
    morvabs::WorkerPool workers = needed(pool, "pool")->workers;
    needed(take, "take");
    Wants const wanted = morva::c::checked_wants(wants, most_words);
    std::vector<HString> const files = paths_of(paths, count);
    if (wanted.segmenting()) {
      workers.readable_folders.push_back(morva::c::load_dictionary());
    }
    auto const done = [&](std::size_t i, morvabs::WorkerPool::Outcome const& outcome) {
      if (!hand_out(i, files[i], result_of(outcome, wanted), wanted, take, user)) {
        throw Failure(MORVA_STOPPED, "stopped by the caller's function");
      }
    };
    if (!workers.run(
            files, [&](std::size_t i) { return work_on(files[i], wanted); }, done)) {
      throw Failure(MORVA_NO_WORKER,
                    "no worker process can be started: " + std::system_category().message(errno));
    }
  });
}

morva_status morva_isolation(int* system_calls, int* landlock, int* memory) {
  return morva::c::status_of([&] {
    morvabs::IsolationLayers const layers = morvabs::isolation_layers();
    auto const give = [](int* result, int value) {
      if (result != nullptr) {
        *result = value;
      }
    };
    give(system_calls, layers.system_calls ? 1 : 0);
    give(landlock, layers.landlock);
    give(memory, layers.memory ? 1 : 0);
  });
}
