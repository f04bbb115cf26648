#include "morvajieba/dictionary.h"

#include <cstring>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "hostkit/morvajieba/support.h"
#include "morvajieba/lexicon.h"

namespace {

using namespace morvajieba;
using namespace segmenter_test;

/// The built dictionary, to be damaged.
class DamagedDictionary : public ::testing::Test {
 protected:
  DictionaryHeader header() const {
    DictionaryHeader header;
    std::memcpy(&header, content_.data(), sizeof(header));
    return header;
  }
  void set_header(DictionaryHeader header, bool with_checksum = true) {
    if (with_checksum) header.checksum = header_checksum(header);
    std::memcpy(content_.data(), &header, sizeof(header));
  }
  bool opens() const {
    Dictionary dictionary;
    return dictionary.open(directory_.write("morvajieba.dict", content_));
  }
  /// Cuts and looks up with the damaged file; the end of this function is what is tested.
  void use() const {
    Dictionary dictionary;
    ASSERT_TRUE(dictionary.open(directory_.write("morvajieba.dict", content_)));
    Lexicon lexicon(dictionary);
    lexicon.load_user_words("中国人民 5 n\n数据防泄漏\n");
    Segmenter segmenter(lexicon);
    TokenList list;
    std::wstring text = L"他来到了网易杭研大厦abc12.5%龘靐齉，中华人民共和国C++的AT&T";
    for (int i = 0; i < 5; ++i) text += text;
    segmenter.cut(text, list);
    for (std::wstring const& token : list.tokens) lexicon.tag(token);
    std::size_t length = 0;
    for (std::wstring const& token : list.tokens) length += token.size();
    EXPECT_GE(length, text.size());
  }

  TemporaryDirectory directory_;
  std::string content_ = read_all(built_dictionary());
};

TEST_F(DamagedDictionary, is_used_when_it_is_whole) {
  EXPECT_TRUE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_it_is_cut_short) {
  content_.resize(content_.size() - 1);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_bytes_follow) {
  content_ += '\0';
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_only_part_of_the_header_is_there) {
  content_.resize(20);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_it_is_empty) {
  content_.clear();
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_with_another_version) {
  DictionaryHeader changed = header();
  ++changed.version;
  set_header(changed);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_with_another_byte_order) {
  DictionaryHeader changed = header();
  changed.byte_order = 0x04030201;
  set_header(changed);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_with_a_wrong_checksum) {
  DictionaryHeader changed = header();
  ++changed.total;
  set_header(changed, false);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_a_section_leaves_the_file) {
  for (std::uint32_t section = 0; section < section_count; ++section) {
    std::string const whole = content_;
    DictionaryHeader changed = header();
    changed.sections[section].offset = (changed.file_bytes + 63) / 64 * 64;
    set_header(changed);
    EXPECT_FALSE(opens()) << section;
    content_ = whole;
  }
}

TEST_F(DamagedDictionary, is_refused_when_the_end_of_a_section_overflows) {
  DictionaryHeader changed = header();
  changed.sections[section_nodes].bytes = ~std::uint64_t{7};
  set_header(changed);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, is_refused_when_its_longest_word_is_too_long) {
  DictionaryHeader changed = header();
  changed.longest_word = longest_word + 1;
  set_header(changed);
  EXPECT_FALSE(opens());
}

TEST_F(DamagedDictionary, never_leads_outside_with_random_bytes_in_all_sections) {
  std::mt19937_64 random(1);
  for (std::size_t i = sizeof(DictionaryHeader); i < content_.size(); ++i) {
    content_[i] = static_cast<char>(random());
  }
  use();
}

TEST_F(DamagedDictionary, never_leads_outside_with_ones_in_all_sections) {
  std::fill(content_.begin() + sizeof(DictionaryHeader), content_.end(), '\xFF');
  use();
}

TEST_F(DamagedDictionary, never_leads_outside_when_every_node_is_its_own_child) {
  DictionaryHeader const layout = header();
  SectionPlace const place = layout.sections[section_nodes];
  for (std::uint64_t i = 0; i < place.bytes / sizeof(Node); ++i) {
    Node const node = Node::make(static_cast<std::uint16_t>(i), 1, 0, 0xFF);
    std::memcpy(content_.data() + place.offset + i * sizeof(Node), &node, sizeof(node));
  }
  use();
}

TEST_F(DamagedDictionary, never_leads_outside_with_scattered_faults) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 200'000; ++i) {
    std::size_t const place =
        sizeof(DictionaryHeader) + random() % (content_.size() - sizeof(DictionaryHeader));
    content_[place] = static_cast<char>(random());
  }
  use();
}

TEST(Dictionary, is_not_usable_where_there_is_a_directory) {
  TemporaryDirectory const directory;
  std::filesystem::create_directory(directory.file("morvajieba.dict"));
  EXPECT_FALSE(Dictionary::is_usable(directory.file("morvajieba.dict")));
}

TEST(Dictionary, tells_frequency_and_part_of_speech) {
  Dictionary dictionary;
  ASSERT_TRUE(dictionary.open(built_dictionary()));
  Lexicon const lexicon(dictionary);
  EXPECT_EQ(lexicon.find(L"云计算").frequency, 0u);
  EXPECT_GT(lexicon.find(L"中国").frequency, 0u);
  EXPECT_EQ(lexicon.tag(L"中国"), "ns");
}

TEST(Dictionary, is_mapped_again_in_place_of_the_one_before) {
  Dictionary dictionary;
  ASSERT_TRUE(dictionary.open(built_dictionary()));
  EXPECT_TRUE(dictionary.open(built_dictionary()));
  EXPECT_FALSE(dictionary.open("/nowhere/morvajieba.dict"));
}

}  // namespace
