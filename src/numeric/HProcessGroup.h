#pragma once

#include <string>
#include <vector>

#include "host/export.h"

/// A number of processes that run one program with the same data and divide among them what is
/// costly, so that each goes on with the same results. A host derives from it what its processes
/// talk through; `HSparsePoints::share_work` takes it.
class MORVA_EXPORT HProcessGroup {
 public:
  HProcessGroup();
  virtual ~HProcessGroup();
  HProcessGroup(HProcessGroup const&) = delete;
  HProcessGroup& operator=(HProcessGroup const&) = delete;

  /// Number of this process, from 0 up.
  virtual int rank() const = 0;
  /// Number of the processes, at least 1.
  virtual int size() const = 0;
  /// Called by all processes of the group at the same point of their work: gives each what all
  /// of them brought, by their ranks. Bytes of any length; machines of one byte order. What it
  /// throws where another process is lost goes through to who asked for the work.
  virtual std::vector<std::string> all_gather(std::string const& mine) = 0;
};
