#pragma once

#include <cerrno>
#include <exception>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

#include "morvaai_c.h"

namespace morva::c {

/// Why a call fails: its status, the text of `morva_last_error`, and the number of the system's
/// error where that is the cause, else 0.
class Failure : public std::runtime_error {
 public:
  Failure(morva_status status, std::string const& reason, int error = 0)
      : std::runtime_error(reason), status_(status), error_(error) {}

  morva_status status() const { return status_; }
  int error() const { return error_; }

 private:
  morva_status status_;
  int error_;
};

/// Keeps the text for `morva_last_error` of this thread. Where there is no memory for it, a shorter
/// one.
void keep_error(char const* reason) noexcept;

/// One thread at a time is in the library. The one that is may call again, as from a function of
/// its own that the library calls.
std::recursive_mutex& library_lock();

/// A failure unless what is given is not null.
template <typename Pointer>
Pointer needed(Pointer given, char const* name) {
  if (given == nullptr) {
    throw Failure(MORVA_INVALID_ARGUMENT, std::string(name) + " is null");
  }
  return given;
}

/// Where a result goes, emptied first.
template <typename Value>
Value& emptied(Value* result, char const* name) {
  *needed(result, name) = Value{};
  return *result;
}

/// The status of what `work` does: what it throws ends here. A failure's error is left in `errno`.
template <typename Work>
morva_status status_of(Work const& work) noexcept {
  try {
    work();
    return MORVA_OK;
  } catch (Failure const& failure) {
    keep_error(failure.what());
    errno = failure.error() == 0 ? errno : failure.error();
    return failure.status();
  } catch (std::bad_alloc const&) {
    keep_error("out of memory");
    return MORVA_OUT_OF_MEMORY;
  } catch (std::exception const& error) {
    keep_error(error.what());
  } catch (...) {
    keep_error("an unknown exception");
  }
  return MORVA_INTERNAL;
}

/// The same under the lock.
template <typename Work>
morva_status locked_status_of(Work const& work) noexcept {
  return status_of([&work] {
    std::lock_guard const lock(library_lock());
    work();
  });
}

}  // namespace morva::c
