#pragma once

#include "host/HString.h"
#include "host/export.h"

/// Asks about the agent around the library. Without an agent there is nothing to ask: every
/// operation answers false, and all callers work with that answer.
class MORVA_EXPORT HClusterEnvironment {
 public:
  HClusterEnvironment();
  ~HClusterEnvironment();

  /// Whether the agent's single instance is there; always false.
  static bool IsAgentInstalled();
  /// Always false, whatever the instance name.
  static bool HAppExclusive_is_exist(HString const& instance_name);
  /// Always false; both arguments stay as they are.
  static bool get_server_ip_port(HString& server, int& port);
};
