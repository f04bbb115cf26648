#include <cstddef>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "box/HFileClusterBoxMgr.h"
#include "box/box_directory.h"
#include "boxes.h"
#include "classify/HFileMatchClassifyMgr.h"
#include "cluster/cluster_type.h"

#include "support/process_usage.h"

namespace {

constexpr std::size_t words = 3000;
constexpr wchar_t const* id = L"large";

/// A box of two classes that is too large to be looked at whole. The document is at the center of
/// the first, which has no radius to speak of.
class CachedBox : public testing::Test {
 protected:
  CachedBox() {
    for (std::size_t i = 0; i < words; ++i) {
      box.vt_words.push_back(HString(L"word ") + HString(static_cast<unsigned long>(i)));
      node.vt_words.push_back(box.vt_words.back());
      double const weight = i % 10 == 0 ? 1.0 : 0.0;
      node.map_word_weight[box.vt_words.back()] = weight;
      near.push_back(weight);
    }
    box.vt_kmeans_node = {test::center(L"1", L"near", 0.0, near),
                          test::center(L"2", L"far", 0.0, std::vector<double>(words, 5.0))};
    boxes().mb_init = true;
    boxes().vt_local_box.resize(1);
    boxes().vt_local_box[0].str_box_id = id;
    boxes().vt_local_box[0].vt_class_id = {L"1", L"2"};
  }
  ~CachedBox() override { gi_K_ClusterType = old_type; }

  static HFileClusterBoxMgr& boxes() { return *HFileClusterBoxMgr::pbox; }
  void write() const { EXPECT_EQ(box.to_file(directory / "large.box"), 0); }
  bool matches() const {
    HString out;
    return HFileMatchClassifyMgr::pins()->match(node, std::vector<HString>{L"1"}, id, out);
  }

  test::BoxDirectory directory;
  QXPPolicyMorvaClustBox box;
  HFeatureNode node;
  std::vector<double> near;
  int const old_type = gi_K_ClusterType;
};

TEST_F(CachedBox, is_not_read_again) {
  write();
  EXPECT_TRUE(matches());
  box.vt_kmeans_node[0].vt_weight[1] = 1.0;
  write();
  EXPECT_TRUE(matches());
}

TEST_F(CachedBox, is_compared_as_it_was_last_read) {
  write();
  EXPECT_TRUE(matches());
  for (double const weight : {1.0, 0.0, 2.0, 0.0}) {
    box.vt_kmeans_node[0].vt_weight[1] = weight;
    write();
    boxes().map_box.clear();
    EXPECT_EQ(matches(), weight == 0.0) << weight;
  }
}

TEST_F(CachedBox, read_by_another_call_is_compared_as_it_was_last_read) {
  write();
  EXPECT_TRUE(matches());
  for (double const weight : {1.0, 0.0, 2.0, 0.0}) {
    box.vt_kmeans_node[0].vt_weight[1] = weight;
    write();
    boxes().map_box.clear();
    QXPPolicyMorvaClustBox copy;
    boxes().get_box(id, copy);
    EXPECT_EQ(matches(), weight == 0.0) << weight;
  }
}

TEST_F(CachedBox, of_another_manager_is_another) {
  write();
  EXPECT_TRUE(matches());
  box.vt_kmeans_node[0].vt_weight[1] = 1.0;
  write();
  HFileClusterBoxMgr other;
  other.mb_init = true;
  other.vt_local_box = boxes().vt_local_box;
  HFileClusterBoxMgr* const first = std::exchange(HFileClusterBoxMgr::pbox, &other);
  EXPECT_FALSE(matches());
  HFileClusterBoxMgr::pbox = first;
  EXPECT_TRUE(matches());
}

TEST_F(CachedBox, that_the_host_assigns_takes_effect_at_once) {
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
  for (double& weight : box.vt_kmeans_node[0].vt_weight) {
    weight *= 2.0;
  }
  boxes().map_box[id] = box;
  EXPECT_FALSE(matches());
  box.vt_kmeans_node[0].vt_weight = near;
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
}

TEST_F(CachedBox, with_other_words_in_the_same_place_takes_effect_at_once) {
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
  for (HString& word : boxes().map_box[id].vt_words) {
    word += L"s";
  }
  node.vt_words.push_back(L"word 0s");
  EXPECT_FALSE(matches());
}

TEST_F(CachedBox, that_changes_its_type_is_another) {
  box.vt_dbscan_node = {test::members(L"1", L"name", 0.5, 1, {near})};
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
  boxes().map_box[id].i_cluster_type = 1;
  EXPECT_TRUE(matches());
  boxes().map_box[id].vt_dbscan_node[0].vt_file_node[0].vt_weight.assign(words, 3.0);
  EXPECT_FALSE(matches());
  boxes().map_box[id].i_cluster_type = 0;
  EXPECT_TRUE(matches());
}

TEST_F(CachedBox, has_its_names_ids_and_radii_read_at_each_match) {
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
  boxes().map_box[id].vt_kmeans_node[0].d_radius = -1.0;
  EXPECT_FALSE(matches());
  boxes().map_box[id].vt_kmeans_node[0].d_radius = 0.0;
  boxes().map_box[id].vt_kmeans_node[0].str_class_id = L"3";
  EXPECT_FALSE(matches());
}

TEST_F(CachedBox, that_grows_by_a_class_is_another) {
  boxes().map_box[id] = box;
  EXPECT_TRUE(matches());
  boxes().map_box[id].vt_kmeans_node.push_back(test::center(L"4", L"name", 0.0, near));
  EXPECT_TRUE(matches());
  boxes().map_box[id].vt_kmeans_node.erase(boxes().map_box[id].vt_kmeans_node.begin());
  EXPECT_FALSE(matches());
}

TEST_F(CachedBox, that_the_host_erases_leaves_nothing_behind) {
#ifdef MORVA_SANITIZED
  GTEST_SKIP() << "the sanitizer's allocator does not tell what is in use";
#endif
  auto const match_another = [this](int number) {
    HString const name = HString(L"box") + HString(number, false);
    boxes().vt_local_box[0].str_box_id = name;
    boxes().map_box[name] = box;
    HString out;
    EXPECT_TRUE(HFileMatchClassifyMgr::pins()->match(node, std::vector<HString>{L"1"}, name, out));
    boxes().map_box.clear();
  };
  match_another(0);
  long long const before = test::ProcessUsage::now().heap;
  for (int number = 1; number <= 20; ++number) {
    match_another(number);
  }
  constexpr long long one_box = words * sizeof(double);
  EXPECT_LT(test::ProcessUsage::now().heap, before + one_box);
}

}  // namespace
