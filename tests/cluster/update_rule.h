#pragma once

#include "cluster/cluster_type.h"

namespace test {

/// How K-means moves its means, for one scope.
class UpdateRule {
 public:
  explicit UpdateRule(int rule) : old_(gi_K_ClusterType) { gi_K_ClusterType = rule; }
  ~UpdateRule() { gi_K_ClusterType = old_; }
  UpdateRule(UpdateRule const&) = delete;
  UpdateRule& operator=(UpdateRule const&) = delete;

 private:
  int old_;
};

}  // namespace test
