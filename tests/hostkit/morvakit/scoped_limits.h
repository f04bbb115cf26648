#pragma once

#include "host/Orlec/Global.h"
#include "host/Orlec/ParseLimits.h"

namespace test {

/// Sets bounds for one test and restores the former ones at its end.
class ScopedLimits {
 public:
  explicit ScopedLimits(Orlec::ParseLimits const& limits) : former_(Orlec::Global::pins()->limits) {
    Orlec::Global::pins()->limits = limits;
  }
  ~ScopedLimits() { Orlec::Global::pins()->limits = former_; }
  ScopedLimits(ScopedLimits const&) = delete;
  ScopedLimits& operator=(ScopedLimits const&) = delete;

 private:
  Orlec::ParseLimits former_;
};

}  // namespace test
