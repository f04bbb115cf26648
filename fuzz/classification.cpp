#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "box/HFileClusterBoxMgr.h"
#include "classify/HFileMatchClassifyDBScan.h"
#include "classify/HFileMatchClassifyKMeans.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "classify/random_boxes.h"
#include "cluster/cluster_type.h"
#include "morvabs/box_format.h"

#include "fuzz/require.h"
#include "reference/classify.h"
#include "support/log_capture.h"

// Documents against boxes, which the input decides: the classifiers and their manager answer as the
// plain form does, with every log line, and so they do when the box has been in a file.

namespace {

using fuzz::require;
using reference::Matrix;
using reference::RandomMatrix;
using Ids = std::vector<HString>;

constexpr wchar_t const* box_id = L"box";

/// All that a question does.
struct Outcome {
  bool is_accepted;
  std::wstring out;
  int update_type;
  std::vector<test::LogCapture::Record> records;
  bool operator==(Outcome const&) const = default;
};

template <typename Ask>
Outcome outcome_of(Ask ask) {
  constexpr int untouched = 7;
  gi_K_ClusterType = untouched;
  test::LogCapture const log;
  HString out = L"before";
  bool const is_accepted = ask(out);
  return {is_accepted, out.get_ws(), gi_K_ClusterType, log.records()};
}

void check_classifiers(HFeatureNode const& node, QXPPolicyMorvaClustBox const& box) {
  for (HString const& id : Ids{L"a", L"b", L"e"}) {
    require(
        outcome_of([&](HString& out) {
          return HFileMatchClassifyKMeans().match(node, id, box, out);
        }) == outcome_of([&](HString& out) { return reference::match_kmeans(node, id, box, out); }),
        "K-means boxes answer as the plain form");
    require(
        outcome_of([&](HString& out) {
          return HFileMatchClassifyDBScan().match(node, id, box, out);
        }) == outcome_of([&](HString& out) { return reference::match_dbscan(node, id, box, out); }),
        "DBSCAN boxes answer as the plain form");
  }
}

/// The manager's box, and that of the plain form.
class CachedBox {
 public:
  CachedBox() {
    for (HFileClusterBoxMgr* each : {&managed_, &plain_}) {
      each->mb_init = true;
      each->vt_local_box.resize(1);
      each->vt_local_box[0].str_box_id = box_id;
      each->vt_local_box[0].vt_class_id = {L"a", L"b", L"c", L"e"};
    }
    HFileClusterBoxMgr::pbox = &managed_;
  }

  void put(QXPPolicyMorvaClustBox const& box) {
    managed_.map_box[box_id] = box;
    plain_.map_box[box_id] = box;
  }
  void check(HFeatureNode const& node, Ids const& ids) {
    require(outcome_of([&](HString& out) {
              return HFileMatchClassifyMgr::pins()->match(node, ids, box_id, out);
            }) == outcome_of([&](HString& out) {
              return reference::match(plain_, node, ids, box_id, out);
            }),
            "the manager answers as the plain form");
  }

 private:
  HFileClusterBoxMgr managed_;
  HFileClusterBoxMgr plain_;
};

QXPPolicyMorvaClustBox saved_and_loaded(QXPPolicyMorvaClustBox const& box) {
  QXPPolicyMorvaClustBox loaded;
  auto const content = morvabs::encode_box(box);
  require(content && morvabs::decode_box(*content, loaded) == 0, "a box is saved and loaded");
  return loaded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static auto* const cached = new CachedBox;
  RandomMatrix random(std::span(data, size));
  Matrix const rows = random.points(random.integer(0, RandomMatrix::kinds - 1), random.size());
  // The plain forms take long for more.
  constexpr std::size_t most_values = 800;
  if (rows.size() * rows.front().size() > most_values) {
    return 0;
  }
  test::RandomBoxes boxes(random);
  std::vector<HString> const words = boxes.words(rows.front().size());
  HFeatureNode const node = boxes.node(rows, words);
  QXPPolicyMorvaClustBox const box = boxes.box(rows, node, words);
  check_classifiers(node, box);
  cached->put(random.one_in(2) ? box : saved_and_loaded(box));
  cached->check(node, boxes.ids());
  cached->check(boxes.node(rows, words), {L"a", L"b", L"c"});
  return 0;
}
