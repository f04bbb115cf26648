#pragma once

namespace test {

/// While it lives, an allocation of this thread fails, wherever it is made: the n-th one alone, or
/// that and all after it.
class FailingAllocator {
 public:
  enum class Which { one, all_from_it_on };

  FailingAllocator(long long n, Which which);
  ~FailingAllocator();
  FailingAllocator(FailingAllocator const&) = delete;
  FailingAllocator& operator=(FailingAllocator const&) = delete;

  /// Whether there was an n-th allocation.
  static bool has_failed();
};

}  // namespace test
