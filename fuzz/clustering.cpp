#include "reference/clustering.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "cluster/HClusterCanopy.h"
#include "cluster/HClusterDBScan.h"
#include "cluster/HClusterKMeans.h"
#include "cluster/HClusterMgr.h"
#include "cluster/HParaPrefer.h"
#include "cluster/HSparseClusterMgr.h"
#include "cluster/update_rule.h"
#include "host/HFileLog.h"

#include "fuzz/require.h"
#include "reference/points.h"
#include "reference/random_matrix.h"

// Whole clustering runs on points and parameters that the input decides: an engine, the manager and
// its counterpart for sparse points come to the plain form's result to the last bit.

namespace {

using fuzz::require;
using reference::Clusters;
using reference::count_of;
using reference::is_same;
using reference::Matrix;
using reference::RandomMatrix;

/// Values of any bits among telling ones; rows may differ in length.
Matrix any_points(RandomMatrix& random, int count) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr std::array telling{0.0, -0.0, 1.0, 2.0, -1.0, 0.1, infinity, -infinity, nan, 5e-324};
  int const dimensions = random.integer(0, 6);
  bool const is_even = random.one_in(2);
  Matrix rows;
  for (int i = 0; i < count; ++i) {
    reference::Point row;
    for (int left = is_even ? dimensions : random.integer(0, dimensions); left > 0; --left) {
      row.push_back(random.one_in(4) ? random.bits() : random.pick(telling));
    }
    rows.push_back(row);
  }
  return rows;
}

Matrix points_for(RandomMatrix& random) {
  int const kind = random.integer(0, RandomMatrix::kinds + 3);
  int const count = random.size();
  return kind < RandomMatrix::kinds ? random.points(kind, count) : any_points(random, count);
}

/// The same points in the forms that the library takes.
struct Points {
  explicit Points(Matrix const& matrix)
      : rows(matrix), dense(reference::to_points(matrix)), sparse(dense) {}
  Matrix rows;
  std::vector<HPointN> dense;
  HSparsePoints sparse;
};

void check_canopy(Points const& points, RandomMatrix& random) {
  double const t2 = random.one_in(3) ? 0.0 : random.radius(points.rows);
  double const t1 = random.one_in(4) ? random.radius(points.rows) : t2;
  long long const k = random.one_in(2) ? random.integer(-1, count_of(points.rows) + 2) : 0;
  reference::Canopy plain{points.rows, k, t1, t2, {}};
  HClusterCanopy engine;
  engine.set_k(k);
  engine.set_T1(t1);
  engine.set_T2(t2);
  require(engine.cluster(points.dense) == plain.run(), "canopy runs as the plain form");
  require(engine.vt_result == plain.result, "canopies are those of the plain form");
  require(is_same(engine.md_T2, plain.t2), "the radius is that of the plain form");
  std::vector<HPointN> centers;
  engine.get_out_center_point(centers);
  require(is_same(reference::to_matrix(centers), plain.centers()),
          "centers are those of the plain form");
  if (k == 0) {
    Clusters managed{{7}};
    Clusters sparse{{8}};
    HClusterMgr::pins()->canopy(points.dense, t1, t2, managed);
    HSparseClusterMgr::canopy(points.sparse, t1, t2, sparse);
    require(managed == plain.result && sparse == plain.result, "all ways to canopies agree");
  }
}

void check_kmeans(Points const& points, RandomMatrix& random) {
  reference::KMeans plain;
  plain.points = points.rows;
  plain.type = random.one_in(8) ? 2 : random.integer(0, 1);
  plain.use_canopy = random.one_in(3);
  int const k = random.integer(-1, count_of(points.rows) + 1);
  plain.k = k;
  test::UpdateRule const rule(plain.type);
  HClusterKMeans engine;
  engine.set_k(k);
  engine.set_use_canopy(plain.use_canopy);
  require(engine.cluster(points.dense) == plain.run(), "K-means runs as the plain form");
  require(engine.vt_result == plain.result, "clusters are those of the plain form");
  require(engine.mi_k == plain.k, "the number of means is that of the plain form");
  require(is_same(reference::to_matrix(engine.vt_mean), plain.means),
          "means are those of the plain form");
  Clusters managed{{7}};
  Clusters sparse{{8}};
  HClusterMgr::pins()->kmeans(points.dense, k, managed, plain.use_canopy);
  HSparseClusterMgr::kmeans(points.sparse, k, sparse, plain.use_canopy);
  require(managed == plain.result && sparse == plain.result, "all ways to clusters agree");
}

void check_dbscan(Points const& points, RandomMatrix& random) {
  reference::DbScan plain;
  plain.points = points.rows;
  plain.min_points = random.integer(-1, 6);
  plain.use_similarity = random.one_in(3);
  plain.eps = random.radius(points.rows);
  if (plain.use_similarity && random.one_in(2)) {
    plain.threshold = reference::similarity(random.pick(points.rows), random.pick(points.rows));
  }
  HClusterDBScan engine;
  engine.mb_use_similarity = plain.use_similarity;
  engine.set_eps(plain.eps);
  engine.set_similarity(plain.threshold);
  engine.set_min_ponits(plain.min_points);
  require(engine.cluster(points.dense) == plain.run(), "DBSCAN runs as the plain form");
  require(engine.vt_kernel == plain.kernel && engine.vt_border == plain.border &&
              engine.vt_noise == plain.noise,
          "the kinds of points are those of the plain form");
  require(engine.vt_result == plain.result, "groups are those of the plain form");
  if (!plain.use_similarity || plain.threshold == 0.0) {
    Clusters managed{{7}};
    Clusters sparse{{8}};
    HClusterMgr::pins()->dbscan(points.dense, plain.eps, plain.min_points, plain.use_similarity,
                                managed);
    HSparseClusterMgr::dbscan(points.sparse, plain.eps, plain.min_points, plain.use_similarity,
                              sparse);
    require(managed == plain.result && sparse == plain.result, "all ways to groups agree");
  }
}

void check_eps(Points const& points, RandomMatrix& random) {
  int const min_points = random.integer(-1, 7);
  bool const use_distance = random.one_in(2);
  Matrix lists;
  HParaPrefer::get_vt_all(points.dense, lists, use_distance);
  Matrix const plain_lists = reference::value_lists(points.rows, use_distance);
  require(is_same(lists, plain_lists), "lists of values are those of the plain form");
  double const plain = reference::estimate_eps(plain_lists, min_points);
  require(is_same(HParaPrefer::smart_eps(lists, min_points), plain),
          "an estimate over lists is that of the plain form");
  require(is_same(HParaPrefer::get_eps(points.dense, min_points, use_distance), plain),
          "an estimate over points is that of the plain form");
  require(is_same(HSparseClusterMgr::get_eps(points.sparse, min_points, use_distance), plain),
          "an estimate over sparse points is that of the plain form");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  HFileLog::ins()->mi_level = 0;
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  RandomMatrix random(std::span(data, size));
  int const method = random.integer(0, 3);
  Points const points(points_for(random));
  // The plain forms take long for more.
  constexpr std::size_t most_values = 4000;
  if (points.rows.size() * points.rows.front().size() > most_values) {
    return 0;
  }
  using Check = void (*)(Points const&, RandomMatrix&);
  constexpr std::array<Check, 4> checks{check_canopy, check_kmeans, check_dbscan, check_eps};
  checks[static_cast<std::size_t>(method)](points, random);
  return 0;
}
