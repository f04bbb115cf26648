#include "c/internal/call.h"

namespace morva::c {

namespace {

struct LastError {
  std::string kept;
  char const* text = "";
};

LastError& last_error() {
  thread_local LastError error;
  return error;
}

}  // namespace

void keep_error(char const* reason) noexcept {
  LastError& error = last_error();
  try {
    error.kept = reason;
    error.text = error.kept.c_str();
  } catch (...) {
    error.text = "out of memory";
  }
}

std::recursive_mutex& library_lock() {
  // Threads may still call while the process ends.
  static auto* const lock = new std::recursive_mutex;
  return *lock;
}

}  // namespace morva::c

char const* morva_last_error(void) {
  return morva::c::last_error().text;
}
