#include <type_traits>

#include <gtest/gtest.h>

#include "collect/HFileCollectBase.h"
#include "collect/HFileCollectDNANode.h"
#include "collect/HFileCollectFeatureNode.h"

namespace {

void expect_empty_base(HFileCollectBase const& node) {
  EXPECT_TRUE(node.str_agent_id.empty());
  EXPECT_EQ(node.t_collect, 0);
  EXPECT_TRUE(node.str_file.empty());
  EXPECT_TRUE(node.str_kb_size.empty());
  EXPECT_TRUE(node.str_reserve.empty());
  EXPECT_EQ(node.i_reserve, 0);
}

TEST(CollectRecord, starts_empty) {
  expect_empty_base({});
}

TEST(CollectRecord, has_no_virtual_functions) {
  EXPECT_FALSE(std::is_polymorphic_v<HFileCollectBase>);
  EXPECT_FALSE(std::is_polymorphic_v<HFileCollectFeatureNode>);
  EXPECT_FALSE(std::is_polymorphic_v<HFileCollectDNANode>);
}

TEST(CollectRecord, holds_wide_numbers) {
  EXPECT_EQ(sizeof(HFileCollectBase::t_collect), 8U);
  EXPECT_EQ(sizeof(HFileCollectBase::i_reserve), 4U);
}

TEST(CollectRecord, of_words_starts_empty) {
  HFileCollectFeatureNode const node;
  expect_empty_base(node);
  EXPECT_TRUE(node.vt_words.empty());
  EXPECT_TRUE(node.vt_counts.empty());
  EXPECT_TRUE(node.vt_weight.empty());
}

TEST(CollectRecord, of_a_fingerprint_starts_empty) {
  HFileCollectDNANode const node;
  expect_empty_base(node);
  EXPECT_TRUE(node.str_md5.empty());
  EXPECT_TRUE(node.str_dna.empty());
}

}  // namespace
