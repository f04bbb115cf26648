#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Knows the identifier of the agent on this machine.
class MORVA_EXPORT HAppUUID {
 public:
  /// The singleton; both names give the same object.
  static HAppUUID* ins();
  /// The singleton; `ins` gives the same object.
  static HAppUUID* pins();

  /// MORVA_AGENT_ID; empty when the agent has none.
  HString get() const;

 private:
  HAppUUID() = default;
};
