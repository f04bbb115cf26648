#include "classes/decision.h"

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "morvaai.h"

namespace {

using tool::Decision;
using tool::Explainer;

HString word(int number) {
  return HString(number, false);
}

void add_word(HFeatureNode& record, HString const& text, double weight) {
  record.vt_words.push_back(text);
  record.vt_counts.push_back(1);
  record.vt_weight.push_back(weight);
  record.map_word_weight[text] = weight;
}

class Explained : public testing::Test {
 protected:
  // Words of the box stand in any order and may stand twice; some of the document's are not among
  // them.
  QXPPolicyMorvaClustBox random_box(int type) {
    QXPPolicyMorvaClustBox box;
    box.i_cluster_type = type;
    int const words = between(1, 30);
    for (int i = 0; i < words; ++i) {
      box.vt_words.push_back(word(between(0, 40)));
    }
    box.vt_kmeans_node.resize(3);
    for (int i = 0; i < 3; ++i) {
      box.vt_kmeans_node[static_cast<std::size_t>(i)].str_class_id = word(i);
      box.vt_kmeans_node[static_cast<std::size_t>(i)].vt_weight = weights(box);
    }
    box.vt_dbscan_node.resize(1);
    box.vt_dbscan_node[0].str_class_id = word(0);
    box.vt_dbscan_node[0].d_eps = 1.5;
    for (int i = 0; i < 5; ++i) {
      QXPFeatureNode& member = box.vt_dbscan_node[0].vt_file_node.emplace_back();
      member.str_file_id = word(i);
      member.vt_weight = weights(box);
    }
    return box;
  }
  HFeatureNode random_document() {
    HFeatureNode document;
    for (int i = between(1, 15); i > 0; --i) {
      add_word(document, word(between(0, 60)), weight());
    }
    return document;
  }
  // As the classifiers are required to measure.
  static double plain_distance(HFeatureNode const& document, std::vector<HString> const& words,
                               std::vector<double> const& weights) {
    HFeatureNode other;
    for (std::size_t i = 0; i < words.size(); ++i) {
      add_word(other, words[i], weights[i]);
    }
    std::vector<HString> all;
    std::vector<HPointN> points;
    HClusterFileData::format_data({document, other}, all, points, false);
    return HPointN::get_distance(points[0], points[1]);
  }

 private:
  int between(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }
  double weight() { return between(0, 2) == 0 ? 0.0 : std::exp(between(-30, 3) / 3.0); }
  std::vector<double> weights(QXPPolicyMorvaClustBox const& box) {
    std::vector<double> list;
    for (std::size_t i = 0; i < box.vt_words.size(); ++i) {
      list.push_back(weight());
    }
    return list;
  }

  std::mt19937 random_{7};
};

TEST_F(Explained, distance_from_a_center_has_the_bits_of_the_plain_form) {
  for (int round = 0; round < 2000; ++round) {
    QXPPolicyMorvaClustBox const box = random_box(0);
    HFeatureNode const document = random_document();
    Explainer explainer(L"box", box);
    for (QXPKMeansNode const& node : box.vt_kmeans_node) {
      ASSERT_EQ(explainer.explain(document, node.str_class_id).distance,
                plain_distance(document, box.vt_words, node.vt_weight))
          << round;
    }
  }
}

TEST_F(Explained, distance_from_the_nearest_file_has_the_bits_of_the_plain_form) {
  for (int round = 0; round < 2000; ++round) {
    QXPPolicyMorvaClustBox const box = random_box(1);
    HFeatureNode const document = random_document();
    double least = HUGE_VAL;
    std::size_t near = 0;
    for (QXPFeatureNode const& member : box.vt_dbscan_node[0].vt_file_node) {
      double const distance = plain_distance(document, box.vt_words, member.vt_weight);
      least = std::min(least, distance);
      near += distance < 1.5 + 0.000001 ? 1 : 0;
    }
    Decision const decision = Explainer(L"box", box).explain(document, word(0));
    ASSERT_EQ(decision.distance, least) << round;
    ASSERT_EQ(decision.neighbours->count, near) << round;
  }
}

TEST_F(Explained, of_classes_with_one_id_the_last_center_is_shown) {
  QXPPolicyMorvaClustBox box = random_box(0);
  for (QXPKMeansNode& node : box.vt_kmeans_node) {
    node.str_class_id = L"same";
  }
  box.vt_kmeans_node[2].str_class_name = L"last";
  EXPECT_EQ(Explainer(L"box", box).explain(random_document(), L"same").class_name,
            HString(L"last"));
}

TEST_F(Explained, by_words_that_both_have) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {L"b", L"a", L"c"};
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].vt_weight = {0.5, 1.0, 0.0};
  HFeatureNode document;
  add_word(document, L"a", 0.25);
  add_word(document, L"b", 1.0);
  add_word(document, L"c", 1.0);
  add_word(document, L"d", 1.0);
  auto const words = Explainer(L"box", box).explain(document, L"").words;
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[0], std::pair(HString(L"b"), 0.5));
  EXPECT_EQ(words[1], std::pair(HString(L"a"), 0.25));
}

TEST_F(Explained, by_fingerprints_where_the_box_has_them) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(2);
  HString const fingerprint(std::wstring(1024, L'1').c_str());
  for (QXPKMeansNode& node : box.vt_kmeans_node) {
    node.str_dna = fingerprint;
  }
  EXPECT_TRUE(tool::is_by_fingerprint(box));
  HFeatureNode document;
  document.str_dna = fingerprint;
  Decision const decision = Explainer(L"box", box).explain(document, L"");
  EXPECT_EQ(decision.distance, 0.0);
  EXPECT_TRUE(decision.words.empty());
}

TEST_F(Explained, a_single_class_with_a_fingerprint_is_compared_by_words) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].str_dna = L"1";
  EXPECT_FALSE(tool::is_by_fingerprint(box));
}

}  // namespace
