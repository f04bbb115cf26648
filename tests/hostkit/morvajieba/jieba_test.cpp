#include <array>
#include <cstring>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/utf8.h"
#include "hostkit/morvajieba/support.h"

namespace {

using namespace segmenter_test;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

constexpr wchar_t sample[] =
    L"数据防泄漏系统识别敏感文档。系统计算文档的指纹，并把指纹与敏感文档的指纹比较。"
    L"The system compares Documents by fingerprint in 2023.";

class JiebaTest : public ::testing::Test {
 protected:
  void SetUp() override {
    directory_.add_dictionary();
    HStutterDict::pins()->set_dict_path(directory_.path());
  }
  static std::vector<WordNode> rank(HString const& text, unsigned long top) {
    std::vector<WordNode> words(3);
    HJieba::pins()->textrank_extractor(text, HString(L"name"), words, top, true);
    return words;
  }
  static std::vector<WordNode> rank_file(std::string const& path, unsigned long top) {
    std::vector<WordNode> words(3);
    HJieba::pins()->textrank_extractor(morvabs::from_path(path), words, top, true);
    return words;
  }
  static std::vector<std::wstring> texts(std::vector<WordNode> const& words) {
    std::vector<std::wstring> result;
    result.reserve(words.size());
    for (WordNode const& word : words) result.push_back(wide(word.word));
    return result;
  }
  /// A word of the sample; an empty record where it is missing.
  static WordNode find(wchar_t const* text) {
    for (WordNode const& word : rank(HString(sample), 100)) {
      if (word.word == text) return word;
    }
    return {};
  }
  static std::vector<std::wstring> cut(HString const& text) {
    std::vector<HString> tokens(2);
    HJieba::pins()->cut(text, tokens);
    std::vector<std::wstring> result;
    result.reserve(tokens.size());
    for (HString const& token : tokens) result.push_back(wide(token));
    return result;
  }

  TemporaryDirectory directory_;
};

using HStutterDictTest = JiebaTest;

TEST_F(HStutterDictTest, is_one_object_under_both_names) {
  EXPECT_EQ(HStutterDict::ins(), HStutterDict::pins());
}

TEST_F(HStutterDictTest, keeps_the_path_that_is_set) {
  HStutterDict::pins()->set_dict_path(HString(L"/some/where"));
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, HString(L"/some/where"));
}

TEST_F(HStutterDictTest, knows_a_dictionary) {
  EXPECT_TRUE(HStutterDict::pins()->is_exist_dict());
}

TEST_F(HStutterDictTest, knows_a_dictionary_with_a_separator_behind_the_path) {
  HStutterDict::pins()->set_dict_path(directory_.path() + HString(L"/"));
  EXPECT_TRUE(HStutterDict::pins()->is_exist_dict());
}

TEST_F(HStutterDictTest, knows_that_a_directory_holds_none) {
  TemporaryDirectory const empty;
  HStutterDict::pins()->set_dict_path(empty.path());
  EXPECT_FALSE(HStutterDict::pins()->is_exist_dict());
}

TEST_F(HStutterDictTest, knows_no_dictionary_while_its_path_is_empty) {
  HStutterDict::pins()->set_dict_path(HString());
  EXPECT_FALSE(HStutterDict::pins()->is_exist_dict());
}

TEST_F(HStutterDictTest, takes_a_file_of_another_kind_for_none) {
  directory_.write("morvajieba.dict", std::string(4096, 'x'));
  EXPECT_FALSE(HStutterDict::pins()->is_exist_dict());
}

TEST_F(HStutterDictTest, takes_a_path_with_a_NUL_for_none) {
  HStutterDict::pins()->set_dict_path(HString(L"/tmp\0/x", 7));
  EXPECT_FALSE(HStutterDict::pins()->is_exist_dict());
}

using HJiebaTest = JiebaTest;

TEST_F(HJiebaTest, is_one_object_under_both_names) {
  EXPECT_EQ(HJieba::ins(), HJieba::pins());
}

TEST_F(HJiebaTest, loads_a_dictionary) {
  EXPECT_EQ(HJieba::pins()->Init(), 0);
}

TEST_F(HJiebaTest, does_not_load_where_there_is_none) {
  TemporaryDirectory const empty;
  HStutterDict::pins()->set_dict_path(empty.path());
  EXPECT_NE(HJieba::pins()->Init(), 0);
}

TEST_F(HJiebaTest, does_not_load_while_the_path_is_empty) {
  HStutterDict::pins()->set_dict_path(HString());
  EXPECT_NE(HJieba::pins()->Init(), 0);
}

TEST_F(HJiebaTest, gives_no_words_without_a_dictionary) {
  TemporaryDirectory const empty;
  HStutterDict::pins()->set_dict_path(empty.path());
  EXPECT_THAT(rank(HString(sample), 10), IsEmpty());
}

TEST_F(HJiebaTest, cuts_nothing_without_a_dictionary) {
  TemporaryDirectory const empty;
  HStutterDict::pins()->set_dict_path(empty.path());
  std::vector<HString> tokens(2);
  EXPECT_FALSE(HJieba::pins()->cut(HString(sample), tokens));
  EXPECT_TRUE(tokens.empty());
}

TEST_F(HJiebaTest, finds_the_words_of_a_text) {
  EXPECT_THAT(texts(rank(HString(sample), 100)), Contains(L"指纹"));
}

TEST_F(HJiebaTest, counts_the_occurrences_of_a_word) {
  EXPECT_EQ(find(L"指纹").count, 3);
}

TEST_F(HJiebaTest, tells_the_part_of_speech_of_the_dictionary) {
  EXPECT_EQ(find(L"系统").tag, HString(L"n"));
}

TEST_F(HJiebaTest, tells_the_part_of_speech_by_rule) {
  EXPECT_EQ(find(L"Documents").tag, HString(L"eng"));
  EXPECT_EQ(find(L"2023").tag, HString(L"m"));
}

TEST_F(HJiebaTest, gives_at_most_top_words) {
  EXPECT_EQ(rank(HString(sample), 3).size(), 3u);
}

TEST_F(HJiebaTest, gives_all_words_for_a_top_beyond_them) {
  std::size_t const all = rank(HString(sample), 1000).size();
  EXPECT_EQ(rank(HString(sample), 100'000).size(), all);
}

TEST_F(HJiebaTest, gives_no_words_for_top_zero) {
  EXPECT_THAT(rank(HString(sample), 0), IsEmpty());
}

TEST_F(HJiebaTest, gives_no_words_for_the_empty_text) {
  EXPECT_THAT(rank(HString(), 10), IsEmpty());
}

TEST_F(HJiebaTest, gives_no_words_for_punctuation) {
  EXPECT_THAT(rank(HString(L"，。！……（）-- ++ ..."), 10), IsEmpty());
}

TEST_F(HJiebaTest, gives_one_word_for_one_word) {
  std::vector<WordNode> const words = rank(HString(L"指纹"), 10);
  ASSERT_EQ(words.size(), 1u);
  EXPECT_EQ(words[0].weight, 1.0);
}

TEST_F(HJiebaTest, does_not_mind_the_name_of_the_document) {
  std::vector<WordNode> words;
  HJieba::pins()->textrank_extractor(HString(sample), HString(), words, 10, true);
  EXPECT_EQ(texts(words), texts(rank(HString(sample), 10)));
}

TEST_F(HJiebaTest, finds_the_same_in_a_file_as_in_memory) {
  std::string const path = directory_.write("text", morvabs::to_utf8(sample));
  EXPECT_EQ(texts(rank_file(path, 100)), texts(rank(HString(sample), 100)));
}

TEST_F(HJiebaTest, finds_the_same_in_a_long_file_as_in_memory) {
  std::wstring text;
  for (int i = 0; i < 20'000; ++i) {
    text += L"第" + std::to_wstring(i * 7919 % 10007) + L"行的系统数据指纹文档安全问题，" +
            std::wstring(1, static_cast<wchar_t>(0x4E00 + i % 5000)) + L"Müller\r\n";
  }
  std::string const path = directory_.write("text", morvabs::to_utf8(text));
  EXPECT_EQ(texts(rank_file(path, 100'000)),
            texts(rank(HString(text.data(), static_cast<int>(text.size())), 100'000)));
}

TEST_F(HJiebaTest, reads_a_file_in_UTF_16) {
  std::string bytes = "\xFF\xFE";
  for (wchar_t const character : std::wstring_view(sample)) {
    bytes += static_cast<char>(character & 0xFF);
    bytes += static_cast<char>(character >> 8);
  }
  EXPECT_EQ(texts(rank_file(directory_.write("text", bytes), 100)),
            texts(rank(HString(sample), 100)));
}

TEST_F(HJiebaTest, leaves_the_words_empty_for_a_file_that_is_missing) {
  EXPECT_THAT(rank_file(directory_.file("missing"), 10), IsEmpty());
}

TEST_F(HJiebaTest, leaves_the_words_empty_for_a_directory) {
  EXPECT_THAT(rank_file(directory_.file(""), 10), IsEmpty());
}

TEST_F(HJiebaTest, leaves_the_words_empty_for_an_empty_file) {
  EXPECT_THAT(rank_file(directory_.write("text", ""), 10), IsEmpty());
}

TEST_F(HJiebaTest, reads_a_file_with_NUL_bytes) {
  std::string const text("指纹\0文档\0", 14);
  EXPECT_THAT(texts(rank_file(directory_.write("text", text), 10)), Contains(L"指纹"));
}

TEST_F(HJiebaTest, reads_a_file_of_random_bytes) {
  std::string bytes;
  for (std::uint32_t i = 0, state = 1; i < 100'000; ++i) {
    state = state * 1664525u + 1013904223u;
    bytes += static_cast<char>(state >> 24);
  }
  for (WordNode const& word : rank_file(directory_.write("text", bytes), 100'000)) {
    ASSERT_GE(word.word.length(), 2);
  }
}

TEST_F(HJiebaTest, takes_values_that_are_no_characters) {
  constexpr wchar_t text[] = {L'指',
                              L'纹',
                              static_cast<wchar_t>(0xD800),
                              static_cast<wchar_t>(0x110000),
                              static_cast<wchar_t>(0xFFFFFFFF),
                              0,
                              L'文',
                              L'档'};
  EXPECT_THAT(texts(rank(HString(text, 8), 10)), UnorderedElementsAre(L"指纹", L"文档"));
}

TEST_F(HJiebaTest, cuts_a_text) {
  EXPECT_THAT(cut(HString(L"ＡＢＣ１２３的Müller")), ElementsAre(L"ABC123", L"的", L"Müller"));
}

TEST_F(HJiebaTest, sees_user_words_that_appear) {
  EXPECT_THAT(cut(HString(L"数据防泄漏")), Not(ElementsAre(L"数据防泄漏")));
  directory_.write("user.dict", "数据防泄漏 100 nz\n");
  EXPECT_THAT(cut(HString(L"数据防泄漏")), ElementsAre(L"数据防泄漏"));
}

TEST_F(HJiebaTest, forgets_user_words_that_disappear) {
  std::string const path = directory_.write("user.dict", "数据防泄漏 100 nz\n");
  ASSERT_THAT(cut(HString(L"数据防泄漏")), ElementsAre(L"数据防泄漏"));
  std::filesystem::remove(path);
  EXPECT_THAT(cut(HString(L"数据防泄漏")), Not(ElementsAre(L"数据防泄漏")));
}

TEST_F(HJiebaTest, sees_stop_words_that_appear) {
  ASSERT_THAT(texts(rank(HString(L"指纹 Müller"), 10)), Contains(L"Müller"));
  directory_.write("stop_words", "\xEF\xBB\xBFMÜLLER\r\n\n文档\n");
  EXPECT_THAT(texts(rank(HString(L"指纹 Müller 文档"), 10)), ElementsAre(L"指纹"));
}

TEST_F(HJiebaTest, keeps_the_built_in_stop_words_beside_those_of_a_file) {
  directory_.write("stop_words", "文档\n");
  EXPECT_THAT(rank(HString(L"The 我们"), 10), IsEmpty());
}

TEST_F(HJiebaTest, passes_over_stop_words_that_are_no_text) {
  directory_.write("stop_words", std::string("\xFF\xFE\x80\n\0\n文档\n", 13));
  EXPECT_THAT(texts(rank(HString(L"指纹 文档"), 10)), ElementsAre(L"指纹"));
}

TEST_F(HJiebaTest, passes_over_lists_that_are_too_large) {
  std::string list = "数据防泄漏 100 nz\n";
  list.resize(17 << 20, '\n');
  directory_.write("user.dict", list);
  EXPECT_THAT(cut(HString(L"数据防泄漏")), Not(ElementsAre(L"数据防泄漏")));
}

TEST_F(HJiebaTest, follows_a_change_of_directory) {
  TemporaryDirectory const other;
  other.add_dictionary();
  other.write("user.dict", "数据防泄漏 100 nz\n");
  ASSERT_THAT(cut(HString(L"数据防泄漏")), Not(ElementsAre(L"数据防泄漏")));
  HStutterDict::pins()->set_dict_path(other.path());
  EXPECT_THAT(cut(HString(L"数据防泄漏")), ElementsAre(L"数据防泄漏"));
}

}  // namespace
