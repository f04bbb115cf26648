#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <malloc.h>

namespace test {

/// What this process has in use at one moment.
struct ProcessUsage {
  /// Bytes: resident, the share of it that is this process's own, and what is allocated.
  long long resident = 0;
  long long proportional = 0;
  long long heap = 0;
  long long mappings = 0;
  long long descriptors = 0;
  long long threads = 0;

  static ProcessUsage now();
  /// What is cheap to tell.
  static long long open_descriptors();
};

namespace usage {

inline long long entries(char const* directory) {
  return std::distance(std::filesystem::directory_iterator(directory), {});
}

/// Bytes behind a label such as "Rss:" in the kernel's summary of all mappings.
inline long long summed(std::string const& label) {
  std::ifstream summary("/proc/self/smaps_rollup");
  for (std::string word; summary >> word;) {
    long long kilobytes = 0;
    if (word == label && summary >> kilobytes) {
      return kilobytes * 1024;
    }
  }
  return 0;
}

}  // namespace usage

inline long long ProcessUsage::open_descriptors() {
  // One of them is the look itself.
  return usage::entries("/proc/self/fd") - 1;
}

inline ProcessUsage ProcessUsage::now() {
  ProcessUsage usage;
  struct mallinfo2 const heap = mallinfo2();
  usage.heap = static_cast<long long>(heap.uordblks + heap.hblkhd);
  usage.resident = usage::summed("Rss:");
  usage.proportional = usage::summed("Pss:");
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    ++usage.mappings;
  }
  usage.descriptors = open_descriptors();
  usage.threads = usage::entries("/proc/self/task");
  return usage;
}

}  // namespace test
