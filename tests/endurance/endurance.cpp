// Does in one process, over and over, all that a host does with the library, and notes after each
// round what the process has in use. Usage: endurance SECONDS SAMPLES; a table of the rounds goes
// to standard output.

#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "round.h"
#include "support/process_usage.h"
#include "support/temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

/// Regular files that the library has left behind, but for the index.
long long files_in(fs::path const& directory) {
  long long count = -1;
  for (fs::directory_entry const& entry : fs::recursive_directory_iterator(directory)) {
    count += entry.is_regular_file() ? 1 : 0;
  }
  return count;
}

void print_round(std::uint64_t number, double seconds, long long files, std::uint64_t digest) {
  auto const usage = test::ProcessUsage::now();
  std::printf("%" PRIu64 "\t%.1f\t%lld\t%lld\t%lld\t%lld\t%lld\t%lld\t%lld\t%016" PRIx64 "\n",
              number, seconds, usage.resident, usage.proportional, usage.heap, usage.mappings,
              usage.descriptors, usage.threads, files, digest);
  std::fflush(stdout);
}

/// What one call of the operation that leaves objects behind costs, in bytes.
double left_by_path_form(HString const& path, bool is_read) {
  constexpr int calls = 200;
  HFeatureNode record;
  HFileFeature::get_file_feature(path, record, true);
  long long const before = test::ProcessUsage::now().heap;
  for (int i = 0; i < calls; ++i) {
    if (HFileFeature::get_file_feature(path, record, true) != is_read) {
      throw std::runtime_error("a sample is not read as it should be");
    }
  }
  return static_cast<double>(test::ProcessUsage::now().heap - before) / calls;
}

void print_required_leaks(test::TemporaryDirectory const& directory) {
  HString const good = directory.write("good.txt", "a text of some words, no more\n");
  HString const damaged = directory.write("damaged.docx", std::string("PK\3\4", 4) + "word/");
  std::printf("# left by a call of the path form\t%.0f\n", left_by_path_form(good, true));
  std::printf("# left by one whose parsing fails\t%.0f\n", left_by_path_form(damaged, false));
}

void run(double seconds, fs::path const& folder) {
  auto const samples = endurance::Samples::in(fs::absolute(folder));
  test::TemporaryDirectory const directory;
  endurance::settle_in(directory.path());
  std::puts("round\tseconds\trss\tpss\theap\tmappings\tdescriptors\tthreads\tfiles\tdigest");
  auto const start = Clock::now();
  double elapsed = 0.0;
  for (std::uint64_t number = 1; number == 1 || elapsed < seconds; ++number) {
    std::uint64_t const digest = endurance::Round(samples, number).run();
    elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    print_round(number, elapsed, files_in(directory.path()), digest);
  }
  print_required_leaks(directory);
  fs::current_path("/");
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: endurance SECONDS SAMPLES\n", stderr);
    return 2;
  }
  try {
    run(std::atof(arguments[1]), arguments[2]);
    return 0;
  } catch (std::exception const& error) {
    std::fprintf(stderr, "endurance: %s\n", error.what());
    return 1;
  }
}
