#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "cluster/cluster_type.h"
#include "console/HClusterTest.h"
#include "host/HFileLog.h"
#include "numeric/HPointN.h"

#include "fuzz/require.h"

// What somebody types: any answers lead to the end of a run.

namespace {

using fuzz::require;
using Clusters = std::vector<std::vector<int>>;

std::vector<HPointN> points() {
  return {HPointN({0.0, 0.0}), HPointN({0.0, 1.0}), HPointN({5.0, 5.0}), HPointN({5.0, 6.0}),
          HPointN({0.0, 0.0})};
}

void check(Clusters const& clusters) {
  for (std::vector<int> const& members : clusters) {
    for (int const member : members) {
      require(member >= 0 && member < 5, "a member is a point");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  HFileLog::ins()->mi_level = 0;
  require(std::freopen("/dev/null", "w", stdout) != nullptr, "output can be thrown away");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::vector<char> typed(data, data + size);
  std::FILE* const old = stdin;
  stdin = fmemopen(typed.data(), typed.size(), "r");
  Clusters clusters;
  HClusterTest::test_canopy(points(), clusters);
  check(clusters);
  HClusterTest::test_kmeans(points(), clusters, 0);
  check(clusters);
  HClusterTest::test_dbscan(points(), clusters);
  check(clusters);
  std::fclose(stdin);
  stdin = old;
  return 0;
}
