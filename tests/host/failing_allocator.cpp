#include "failing_allocator.h"

#include <cerrno>
#include <cstddef>

#include "host/export.h"

// What the C library's own allocator is called within it.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

constexpr long long never = -1;

/// Allocations up to the one that fails.
thread_local long long left = never;
thread_local bool fails_on = false;
thread_local bool failed = false;

bool fails_now() {
  if (left == never || --left > 0) {
    return false;
  }
  failed = true;
  left = fails_on ? 1 : never;
  errno = ENOMEM;
  return true;
}

}  // namespace

namespace test {

FailingAllocator::FailingAllocator(long long n, Which which) {
  failed = false;
  fails_on = which == Which::all_from_it_on;
  left = n;
}

FailingAllocator::~FailingAllocator() {
  left = never;
}

bool FailingAllocator::has_failed() {
  return failed;
}

}  // namespace test

// These stand before the C library's for every library of the process.
extern "C" {

MORVA_EXPORT void* malloc(std::size_t size) noexcept {
  return fails_now() ? nullptr : __libc_malloc(size);
}
MORVA_EXPORT void* calloc(std::size_t count, std::size_t size) noexcept {
  return fails_now() ? nullptr : __libc_calloc(count, size);
}
MORVA_EXPORT void* realloc(void* memory, std::size_t size) noexcept {
  return fails_now() ? nullptr : __libc_realloc(memory, size);
}
MORVA_EXPORT void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return fails_now() ? nullptr : __libc_memalign(alignment, size);
}
MORVA_EXPORT void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return fails_now() ? nullptr : __libc_memalign(alignment, size);
}
MORVA_EXPORT int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
  void* const found = fails_now() ? nullptr : __libc_memalign(alignment, size);
  if (found == nullptr) {
    return ENOMEM;
  }
  *memory = found;
  return 0;
}
}
