#pragma once

#include <cstddef>
#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

namespace test {

/// For one scope the process may take so many more bytes of address space and no more; what goes
/// beyond throws std::bad_alloc. Under sanitizers, which take it by the terabyte, nothing is
/// limited.
class MemoryLimit {
 public:
  explicit MemoryLimit(std::size_t bytes) {
    getrlimit(RLIMIT_AS, &old_);
#ifndef MORVA_SANITIZED
    rlimit limited = old_;
    limited.rlim_cur = taken() + bytes;
    setrlimit(RLIMIT_AS, &limited);
#else
    static_cast<void>(bytes);
#endif
  }
  ~MemoryLimit() {
    setrlimit(RLIMIT_AS, &old_);
  }
  MemoryLimit(MemoryLimit const&) = delete;
  MemoryLimit& operator=(MemoryLimit const&) = delete;

 private:
  static std::size_t taken() {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  }

  rlimit old_{};
};

}  // namespace test
