#include <algorithm>
#include <ctime>
#include <filesystem>

#include <gtest/gtest.h>

#include "collect/HFileCollectMgr.h"
#include "dna/HFileDNA.h"
#include "features/HFileFeature.h"
#include "host/HStutterDict.h"
#include "host/Orlec/LocateMgr.h"

#include "support/log_capture.h"
#include "support/temporary_directory.h"

namespace {

using Record = test::LogCapture::Record;

constexpr wchar_t const* tag = L"../HFileCollectMgr";
char const* const sample = "Revenue grew in the northern region while costs in the southern fell.";
std::string const no_document("\0\1\2\377", 4);

/// A manager in place of the process's own, for an agent that is called "agent-7".
class CollectManager : public testing::Test {
 protected:
  CollectManager() {
    HFileCollectMgr::pcollect = &manager;
    HFileDNA::mi_dna_length = 32;
  }
  ~CollectManager() override {
    HFileCollectMgr::pcollect = nullptr;
    HFileDNA::mi_dna_length = 32;
    HStutterDict::pins()->set_dict_path(dictionary_);
  }

  test::TemporaryDirectory directory;
  test::EnvironmentVariable run_path{"MORVA_RUN_PATH", directory.path() / "run"};
  test::EnvironmentVariable agent{"MORVA_AGENT_ID", "agent-7"};
  HFileCollectMgr manager;

 private:
  HString const dictionary_ = HStutterDict::pins()->mstr_dict_path;
};

class NoAgent {
  test::EnvironmentVariable none_{"MORVA_AGENT_ID", ""};
};

TEST_F(CollectManager, starts_without_an_agent) {
  EXPECT_FALSE(manager.mb_init);
  EXPECT_TRUE(manager.mstr_agent_id.empty());
  EXPECT_TRUE(manager.get_agent_id().empty());
}

TEST_F(CollectManager, is_made_at_the_first_use) {
  HFileCollectMgr::pcollect = nullptr;
  HFileCollectMgr* const made = HFileCollectMgr::pins();
  EXPECT_EQ(HFileCollectMgr::pins(), made);
  EXPECT_EQ(made->get_agent_id(), HString(L"agent-7"));
  delete made;
}

TEST_F(CollectManager, learns_the_agent_at_the_first_use) {
  test::LogCapture const log;
  EXPECT_EQ(HFileCollectMgr::pins(), &manager);
  EXPECT_TRUE(manager.mb_init);
  EXPECT_EQ(manager.get_agent_id(), HString(L"agent-7"));
  EXPECT_EQ(log.records(), (std::vector<Record>{{3, tag, L"str_agent_id = agent-7"}}));
}

TEST_F(CollectManager, asks_no_more_once_the_agent_is_known) {
  HFileCollectMgr::pins();
  test::EnvironmentVariable const other("MORVA_AGENT_ID", "agent-8");
  test::LogCapture const log;
  EXPECT_EQ(HFileCollectMgr::pins()->get_agent_id(), HString(L"agent-7"));
  EXPECT_TRUE(log.records().empty());
}

TEST_F(CollectManager, asks_at_every_use_while_the_agent_is_not_known) {
  NoAgent const none;
  test::LogCapture const log;
  HFileCollectMgr::pins();
  HFileCollectMgr::pins();
  EXPECT_FALSE(manager.mb_init);
  EXPECT_TRUE(manager.get_agent_id().empty());
  EXPECT_EQ(log.records(),
            (std::vector<Record>{{3, tag, L"str_agent_id = "}, {3, tag, L"str_agent_id = "}}));
}

TEST_F(CollectManager, learns_an_agent_that_comes_later) {
  {
    NoAgent const none;
    HFileCollectMgr::pins();
  }
  HFileCollectMgr::pins();
  EXPECT_TRUE(manager.mb_init);
  EXPECT_EQ(manager.get_agent_id(), HString(L"agent-7"));
}

TEST_F(CollectManager, asks_anew_when_told_to) {
  manager.init();
  test::EnvironmentVariable const other("MORVA_AGENT_ID", "agent-8");
  manager.init();
  EXPECT_TRUE(manager.mb_init);
  EXPECT_EQ(manager.get_agent_id(), HString(L"agent-8"));
}

TEST_F(CollectManager, forgets_an_agent_that_is_gone_when_told_to_ask) {
  manager.init();
  NoAgent const none;
  manager.init();
  EXPECT_FALSE(manager.mb_init);
  EXPECT_TRUE(manager.get_agent_id().empty());
}

TEST_F(CollectManager, sets_a_dictionary_directory_that_exists) {
  HString const path = directory.path().c_str();
  EXPECT_TRUE(manager.set_dict_path(path));
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, path);
}

TEST_F(CollectManager, leaves_the_dictionary_when_there_is_no_such_directory) {
  HStutterDict::pins()->set_dict_path(L"before");
  EXPECT_FALSE(manager.set_dict_path(directory / "missing"));
  EXPECT_FALSE(manager.set_dict_path(HString()));
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, HString(L"before"));
}

TEST_F(CollectManager, leaves_the_dictionary_for_a_regular_file) {
  HStutterDict::pins()->set_dict_path(L"before");
  EXPECT_FALSE(manager.set_dict_path(directory.write("file", "")));
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, HString(L"before"));
}

TEST_F(CollectManager, a_dictionary_directory_holds_until_the_next_extraction) {
  manager.set_dict_path(directory.path().c_str());
  HFileCollectFeatureNode node;
  manager.get_file_feature(directory.write("a.txt", sample), node);
  EXPECT_FALSE(node.vt_words.empty());
  EXPECT_EQ(HStutterDict::pins()->mstr_dict_path, Orlec::LocateMgr::pins()->get_dict_path(false));
}

TEST_F(CollectManager, a_size_is_in_whole_kilobytes_and_one_more) {
  struct {
    std::size_t bytes;
    long long kilobytes;
  } const cases[] = {{0, 1}, {1, 1}, {1023, 1}, {1024, 2}, {1025, 2}, {2047, 2}, {2048, 3}};
  for (auto const& [bytes, kilobytes] : cases) {
    HString const path = directory.write("file", std::string(bytes, 'x'));
    EXPECT_EQ(manager.get_file_kb_size(path), kilobytes) << bytes;
  }
}

TEST_F(CollectManager, a_size_may_be_large) {
  HString const path = directory.write("file", "");
  std::filesystem::resize_file(directory.path() / "file", 5LL << 30);
  EXPECT_EQ(manager.get_file_kb_size(path), 5 * 1024 * 1024 + 1);
}

TEST_F(CollectManager, a_missing_file_has_the_size_of_an_empty_one) {
  EXPECT_EQ(manager.get_file_kb_size(directory / "missing"), 1);
}

TEST_F(CollectManager, the_md5_is_that_of_the_content) {
  EXPECT_EQ(manager.get_file_md5(directory.write("file", "abc")),
            HString(L"900150983CD24FB0D6963F7D28E17F72"));
}

TEST_F(CollectManager, a_missing_file_has_no_md5) {
  EXPECT_TRUE(manager.get_file_md5(directory / "missing").empty());
}

TEST_F(CollectManager, base_information_tells_who_when_and_which_file) {
  manager.init();
  HString const path = directory.write("file", std::string(1024, 'x'));
  std::time_t const before = std::time(nullptr);
  HFileCollectBase node;
  EXPECT_TRUE(manager.get_file_base_info(path, &node));
  EXPECT_EQ(node.str_agent_id, HString(L"agent-7"));
  EXPECT_GE(node.t_collect, before);
  EXPECT_LE(node.t_collect, std::time(nullptr));
  EXPECT_EQ(node.str_file, path);
  EXPECT_EQ(node.str_kb_size, HString(L"2"));
}

TEST_F(CollectManager, base_information_of_an_empty_file_has_size_1) {
  HFileCollectBase node;
  manager.get_file_base_info(directory.write("file", ""), &node);
  EXPECT_EQ(node.str_kb_size, HString(L"1"));
}

TEST_F(CollectManager, base_information_of_a_missing_file_is_filled) {
  HFileCollectBase node;
  EXPECT_TRUE(manager.get_file_base_info(L"/missing/../file", &node));
  EXPECT_EQ(node.str_file, HString(L"/missing/../file"));
  EXPECT_EQ(node.str_kb_size, HString(L"1"));
}

TEST_F(CollectManager, base_information_has_no_agent_before_one_is_known) {
  HFileCollectBase node;
  node.str_agent_id = L"old";
  manager.get_file_base_info(L"file", &node);
  EXPECT_TRUE(node.str_agent_id.empty());
}

TEST_F(CollectManager, base_information_leaves_the_reserve) {
  HFileCollectBase node;
  node.str_reserve = L"host";
  node.i_reserve = 7;
  manager.get_file_base_info(L"file", &node);
  EXPECT_EQ(node.str_reserve, HString(L"host"));
  EXPECT_EQ(node.i_reserve, 7);
}

TEST_F(CollectManager, words_of_a_file_are_filled_and_yet_the_answer_is_false) {
  manager.init();
  HString const path = directory.write("report.txt", sample);
  HFileCollectFeatureNode node;
  EXPECT_FALSE(manager.get_file_feature(path, node));
  HFeatureNode expected;
  ASSERT_TRUE(HFileFeature::get_file_feature(path, expected, true));
  EXPECT_FALSE(node.vt_words.empty());
  EXPECT_EQ(node.vt_words, expected.vt_words);
  EXPECT_EQ(node.vt_counts, expected.vt_counts);
  EXPECT_EQ(node.vt_weight, expected.vt_weight);
}

TEST_F(CollectManager, words_come_with_base_information) {
  manager.init();
  HString const path = directory.write("report.txt", sample);
  HFileCollectFeatureNode node;
  manager.get_file_feature(path, node);
  EXPECT_EQ(node.str_agent_id, HString(L"agent-7"));
  EXPECT_EQ(node.str_file, path);
  EXPECT_EQ(node.str_kb_size, HString(L"1"));
  EXPECT_GT(node.t_collect, 0);
}

TEST_F(CollectManager, words_take_the_place_of_those_of_another_file) {
  HFileCollectFeatureNode node;
  manager.get_file_feature(directory.write("first.txt", sample), node);
  manager.get_file_feature(directory.write("second.txt", "contract"), node);
  EXPECT_EQ(node.vt_words, std::vector<HString>{L"contract"});
  EXPECT_EQ(node.vt_counts.size(), 1U);
  EXPECT_EQ(node.vt_weight.size(), 1U);
}

TEST_F(CollectManager, a_refused_file_leaves_the_words_as_they_were) {
  HString const refused[] = {directory.write("a.bin", no_document),
                             directory.write("a.xml", "<?xml version='1.0'?><a>text"),
                             directory.write("empty.txt", ""), directory / "missing"};
  for (HString const& path : refused) {
    HFileCollectFeatureNode node;
    node.vt_words = {L"old"};
    node.vt_counts = {3};
    node.vt_weight = {0.5};
    EXPECT_FALSE(manager.get_file_feature(path, node));
    EXPECT_EQ(node.vt_words, std::vector<HString>{L"old"});
    EXPECT_EQ(node.vt_counts, std::vector<int>{3});
    EXPECT_EQ(node.vt_weight, std::vector<double>{0.5});
    EXPECT_EQ(node.str_file, path);
  }
}

TEST_F(CollectManager, a_fingerprint_comes_with_digest_and_base_information) {
  manager.init();
  HString const path = directory.write("report.txt", sample);
  HFileCollectDNANode node;
  EXPECT_TRUE(manager.get_file_dna(path, node));
  HString expected;
  HTessarineResult result;
  HFileDNA::get_file_dna(path, expected, result, true);
  EXPECT_EQ(node.str_dna, expected);
  EXPECT_EQ(node.str_dna.length(), 32);
  EXPECT_EQ(node.str_md5, manager.get_file_md5(path));
  EXPECT_EQ(node.str_agent_id, HString(L"agent-7"));
  EXPECT_EQ(node.str_file, path);
}

TEST_F(CollectManager, a_fingerprint_has_the_length_in_force) {
  HFileDNA::mi_dna_length = 1024;
  HFileCollectDNANode node;
  EXPECT_TRUE(manager.get_file_dna(directory.write("report.txt", sample), node));
  EXPECT_GT(node.str_dna.length(), 32);
  EXPECT_EQ(HFileDNA::mi_dna_length, 1024);
}

TEST_F(CollectManager, a_fingerprint_leaves_no_temporary_text) {
  HFileCollectDNANode node;
  manager.get_file_dna(directory.write("report.txt", sample), node);
  EXPECT_TRUE(std::filesystem::is_empty(directory.path() / "run" / "Tessarine"));
}

TEST_F(CollectManager, a_refused_file_has_a_digest_and_no_fingerprint) {
  manager.init();
  HString const path = directory.write("a.bin", no_document);
  HFileCollectDNANode node;
  node.str_dna = L"old";
  EXPECT_FALSE(manager.get_file_dna(path, node));
  EXPECT_TRUE(node.str_dna.empty());
  EXPECT_EQ(node.str_md5, manager.get_file_md5(path));
  EXPECT_EQ(node.str_md5.length(), 32);
  EXPECT_EQ(node.str_agent_id, HString(L"agent-7"));
  EXPECT_EQ(node.str_file, path);
  EXPECT_EQ(node.str_kb_size, HString(L"1"));
  EXPECT_GT(node.t_collect, 0);
}

TEST_F(CollectManager, a_missing_file_has_neither_digest_nor_fingerprint) {
  HFileCollectDNANode node;
  node.str_md5 = L"old";
  node.str_dna = L"old";
  EXPECT_FALSE(manager.get_file_dna(directory / "missing", node));
  EXPECT_TRUE(node.str_md5.empty());
  EXPECT_TRUE(node.str_dna.empty());
  EXPECT_EQ(node.str_kb_size, HString(L"1"));
}

TEST_F(CollectManager, looking_at_the_state_of_a_file_does_nothing) {
  HFileCollectDNANode node;
  node.str_dna = L"dna";
  HTessarineResult result;
  result.b_encrypt = true;
  manager.check_file_stat(node, result);
  EXPECT_EQ(node.str_dna, HString(L"dna"));
  EXPECT_TRUE(node.str_md5.empty());
  EXPECT_EQ(node.i_reserve, 0);
}

TEST_F(CollectManager, logs_nothing_of_a_file_itself) {
  HString const files[] = {directory.write("report.txt", sample),
                           directory.write("a.bin", no_document), directory / "missing"};
  test::LogCapture const log;
  HFileCollectFeatureNode words;
  HFileCollectDNANode dna;
  for (HString const& path : files) {
    manager.get_file_feature(path, words);
    manager.get_file_dna(path, dna);
    manager.set_dict_path(path);
  }
  auto const& records = log.records();
  EXPECT_TRUE(std::none_of(records.begin(), records.end(),
                           [](Record const& record) { return record.tag == tag; }));
}

}  // namespace
