#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "box/HFileClusterBoxMgr.h"
#include "box/box_directory.h"
#include "classify/HFileMatchClassifyDBScan.h"
#include "classify/HFileMatchClassifyKMeans.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "cluster/cluster_type.h"
#include "cluster/random_cases.h"

#include "random_boxes.h"
#include "reference/classify.h"
#include "support/log_capture.h"

namespace {

using reference::Matrix;
using reference::RandomMatrix;
using test::RandomBoxes;
using Record = test::LogCapture::Record;
using Ids = std::vector<HString>;

/// All that a question does.
struct Outcome {
  bool is_accepted;
  std::wstring out;
  int update_type;
  std::vector<Record> records;
  bool operator==(Outcome const&) const = default;
};

std::ostream& operator<<(std::ostream& stream, Outcome const& outcome) {
  auto const narrow = [](std::wstring const& text) {
    return std::string(text.begin(), text.end());
  };
  stream << outcome.is_accepted << " '" << narrow(outcome.out) << "' " << outcome.update_type;
  for (Record const& record : outcome.records) {
    stream << "\n  " << record.level << " " << narrow(record.tag) << " " << narrow(record.text);
  }
  return stream;
}

template <typename Ask>
Outcome outcome_of(Ask ask) {
  int const old_type = gi_K_ClusterType;
  gi_K_ClusterType = 7;
  test::LogCapture const log;
  HString out = L"before";
  bool const is_accepted = ask(out);
  Outcome const outcome{is_accepted, out.get_ws(), gi_K_ClusterType, log.records()};
  gi_K_ClusterType = old_type;
  return outcome;
}

TEST(Classification, each_classifier_answers_as_the_plain_form) {
  test::for_random_points(250, 10'000'000, [](Matrix const& rows, RandomMatrix& random) {
    RandomBoxes boxes(random);
    std::vector<HString> const words = boxes.words(rows.front().size());
    HFeatureNode const node = boxes.node(rows, words);
    QXPPolicyMorvaClustBox const box = boxes.box(rows, node, words);
    for (HString const& id : Ids{L"a", L"b", L"e"}) {
      EXPECT_EQ(
          outcome_of(
              [&](HString& out) { return HFileMatchClassifyKMeans().match(node, id, box, out); }),
          outcome_of([&](HString& out) { return reference::match_kmeans(node, id, box, out); }));
      EXPECT_EQ(
          outcome_of(
              [&](HString& out) { return HFileMatchClassifyDBScan().match(node, id, box, out); }),
          outcome_of([&](HString& out) { return reference::match_dbscan(node, id, box, out); }));
    }
  });
}

/// The manager's box and that of the plain form, which have the same history.
class CachedBox {
 public:
  explicit CachedBox(RandomMatrix& random) : random_(random) {
    HFileClusterBoxMgr::pbox->mb_init = true;
    for (HFileClusterBoxMgr* each : both()) {
      each->vt_local_box.resize(1);
      each->vt_local_box[0].str_box_id = id;
      each->vt_local_box[0].vt_class_id = {L"a", L"b", L"c", L"e"};
    }
  }

  /// The box comes into the cache from a file, or by assignment to what is there.
  void put(QXPPolicyMorvaClustBox const& box) {
    if (random_.one_in(2)) {
      EXPECT_EQ(box.to_file(plain_.get_box_path(true) + id + L".box"), 0);
    }
    bool const is_read = random_.one_in(2);
    for (HFileClusterBoxMgr* each : both()) {
      if (is_read) {
        each->map_box.clear();
      } else {
        each->map_box[id] = box;
      }
    }
  }

  /// One word or weight of the cached box becomes another.
  void change() {
    RandomMatrix const before = random_;
    for (HFileClusterBoxMgr* each : both()) {
      random_ = before;
      auto const entry = each->map_box.find(id);
      if (entry != each->map_box.end()) {
        change(entry->second);
      }
    }
  }

  void compare(HFeatureNode const& node, Ids const& ids) {
    EXPECT_EQ(
        outcome_of(
            [&](HString& out) { return HFileMatchClassifyMgr::pins()->match(node, ids, id, out); }),
        outcome_of([&](HString& out) { return reference::match(plain_, node, ids, id, out); }));
  }

 private:
  static constexpr wchar_t const* id = L"box";

  std::vector<HFileClusterBoxMgr*> both() { return {HFileClusterBoxMgr::pbox, &plain_}; }
  void change(QXPPolicyMorvaClustBox& box) {
    std::vector<std::vector<double>*> lists;
    for (QXPKMeansNode& each : box.vt_kmeans_node) {
      lists.push_back(&each.vt_weight);
    }
    for (QXPDBScanNode& each : box.vt_dbscan_node) {
      for (QXPFeatureNode& member : each.vt_file_node) {
        lists.push_back(&member.vt_weight);
      }
    }
    if (lists.empty() || box.vt_words.empty()) {
      return;
    }
    std::vector<double>& list = *random_.pick(lists);
    if (random_.one_in(3)) {
      box.vt_words[index_in(box.vt_words)] = L"changed";
    } else if (!list.empty()) {
      list[index_in(list)] = random_.one_in(2) ? 0.0 : random_.unit();
    }
  }
  template <typename List>
  std::size_t index_in(List const& list) {
    return static_cast<std::size_t>(random_.integer(0, static_cast<int>(list.size()) - 1));
  }

  RandomMatrix& random_;
  test::BoxDirectory const directory_;
  HFileClusterBoxMgr plain_;
};

bool is_looked_at_whole(QXPPolicyMorvaClustBox const& box) {
  return box.vt_words.size() <= 64 && box.vt_words.size() * box.vt_kmeans_node.size() <= 4096;
}

TEST(Classification, the_manager_answers_as_the_plain_form_whatever_becomes_of_the_cached_box) {
  std::optional<CachedBox> cached;
  RandomMatrix history(1);
  cached.emplace(history);
  test::for_random_points(60, 20'000'000, [&](Matrix const& rows, RandomMatrix& random) {
    history = random;
    RandomBoxes boxes(random);
    std::vector<HString> const words = boxes.words(rows.front().size());
    HFeatureNode const node = boxes.node(rows, words);
    QXPPolicyMorvaClustBox box = boxes.box(rows, node, words);
    cached->put(box);
    cached->compare(node, boxes.ids());
    for (int i = 0; i < 3; ++i) {
      cached->compare(boxes.node(rows, words), boxes.ids());
      if (is_looked_at_whole(box)) {
        cached->change();
      }
      cached->compare(node, {L"a", L"b", L"c"});
    }
  });
}

}  // namespace
