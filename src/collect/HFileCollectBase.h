#pragma once

#include <cstdint>

#include "host/HString.h"
#include "host/export.h"

/// What the agent's records about one file have in common: who collected when, and which file. A
/// plain value.
class MORVA_EXPORT HFileCollectBase {
 public:
  /// The agent's identifier when the record was filled; empty when it had none.
  HString str_agent_id;
  /// When the record was filled, in seconds since the epoch.
  std::int64_t t_collect = 0;
  /// The path as it was given.
  HString str_file;
  /// Size of the file in kilobytes, in decimal.
  HString str_kb_size;
  /// Stays empty, and the number 0.
  HString str_reserve;
  /// Stays 0.
  std::int32_t i_reserve = 0;

  HFileCollectBase();
};
