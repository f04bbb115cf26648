#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "cluster/HClusterMgr.h"
#include "host/HFileLog.h"
#include "host/utf8.h"
#include "numeric/HClusterCenter.h"
#include "numeric/HClusterDistance.h"
#include "numeric/HPointN.h"
#include "numeric/HSparsePoints.h"

#include "fuzz/require.h"
#include "reference/points.h"

// Points out of text: what was read is written and read again as it was, and everything can be
// measured, however many dimensions the text claims.

namespace {

using fuzz::require;

/// A file in memory alone.
class MemoryFile {
 public:
  explicit MemoryFile(std::string const& content)
      : descriptor_(memfd_create("point", MFD_CLOEXEC)) {
    auto const written = write(descriptor_, content.data(), content.size());
    require(written == static_cast<ssize_t>(content.size()), "there is room for the input");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(MemoryFile const&) = delete;
  MemoryFile& operator=(MemoryFile const&) = delete;

  HString path() const { return HString(L"/proc/self/fd/") + HString(descriptor_, false); }

 private:
  int descriptor_;
};

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

void check_round_trip(HPointN const& point) {
  HString const text = point.to_str();
  HPointN again;
  again.from_file(MemoryFile(utf8(text)).path());
  require(again.n == point.n, "the number of dimensions comes back");
  require(again.to_str() == text, "what is written is read as it was");
}

void check_measures(HPointN const& point) {
  std::vector<HPointN> points(3);
  points[0] = point;
  points[1] = point;
  points[2].resize(2);
  double const own = HPointN::get_distance(points[0], points[1]);
  require(own == 0.0, "a point has no distance from itself");
  require(reference::is_same(HPointN::get_distance(points[0], points[2]),
                             HPointN::get_distance(points[2], points[0])),
          "a distance is the same both ways");
  double const cosine = HPointN::get_cos_similarity(points[0], points[1]);
  require(std::isnan(cosine) || cosine == 0.0 || std::fabs(cosine - 1.0) < 1e-9,
          "a point is like itself");
  require(HClusterDistance::get_avg_distance(points) >= 0.0, "a mean distance can be told");
  points[0].operator/=(3);
  points[1] += point;
  constexpr long long few = 1'000'000;
  if (point.n <= few) {
    require(HClusterCenter::get_center_point(points, {0, 1}).get_n() >= 0, "a center can be told");
  }
  std::vector<std::vector<int>> clusters;
  HClusterMgr::pins()->kmeans(points, 2, clusters, false);
  HClusterMgr::pins()->dbscan(points, 1.0, 2, false, clusters);
  require(HSparsePoints(points).size() == points.size(), "points can be kept without their zeros");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  HFileLog::ins()->mi_level = 0;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  HPointN point(L"before", {1.0, 2.0});
  HString const before = point.to_str();
  point.from_file(MemoryFile(std::string(data, data + size)).path());
  if (point.to_str() == before) {
    return 0;
  }
  check_round_trip(point);
  check_measures(point);
  return 0;
}
