#include "host/process_memory.h"

#include <charconv>
#include <cstdint>
#include <string>

#include <unistd.h>

#include "morvabs/atomic_file.h"

long long get_process_use_memory_total(unsigned int process_id) {
  std::string const process = process_id == 0 ? "self" : std::to_string(process_id);
  std::string pages;
  constexpr std::int64_t longest_line = 4096;
  if (!morvabs::read_file("/proc/" + process + "/statm", pages, longest_line)) {
    return 0;
  }
  // The second number is the resident size.
  std::size_t const blank = pages.find(' ');
  long long resident = 0;
  if (blank != std::string::npos) {
    std::from_chars(pages.data() + blank + 1, pages.data() + pages.size(), resident);
  }
  return resident * ::sysconf(_SC_PAGESIZE);
}
