#include "painted_stack.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

namespace test {

namespace {

constexpr unsigned char paint = 0xA5;

/// A stack with a page behind its end that must not be touched.
class Stack {
 public:
  explicit Stack(std::size_t size) : size_(size) {
    void* const memory = mmap(nullptr, guard_ + size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED || mprotect(memory, guard_, PROT_NONE) != 0) {
      throw std::runtime_error("no stack");
    }
    memory_ = static_cast<unsigned char*>(memory);
    std::memset(bottom(), paint, size_);
  }
  ~Stack() { munmap(memory_, guard_ + size_); }
  Stack(Stack const&) = delete;
  Stack& operator=(Stack const&) = delete;

  unsigned char* bottom() const { return memory_ + guard_; }
  std::size_t size() const { return size_; }
  std::size_t used() const {
    auto const* const end = bottom() + size_;
    auto const* const first =
        std::find_if(bottom(), bottom() + size_, [](unsigned char byte) { return byte != paint; });
    return static_cast<std::size_t>(end - first);
  }

 private:
  std::size_t const guard_ = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  std::size_t const size_;
  unsigned char* memory_ = nullptr;
};

void* run_work(void* work) {
  (*static_cast<std::function<void()> const*>(work))();
  return nullptr;
}

}  // namespace

std::size_t stack_used(std::size_t size, std::function<void()> const& work) {
  Stack const stack(size);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack.bottom(), stack.size());
  pthread_t thread{};
  auto copy = work;
  int const error = pthread_create(&thread, &attributes, run_work, &copy);
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    throw std::runtime_error("no thread");
  }
  pthread_join(thread, nullptr);
  return stack.used();
}

}  // namespace test
