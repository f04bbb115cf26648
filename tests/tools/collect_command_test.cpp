#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include "collect/HFileCollectMgr.h"

#include "tools/program.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

using nlohmann::json;
using test::Finished;

class CollectCommand : public test::Program {
 protected:
  test::TemporaryDirectory work;
  test::EnvironmentVariable run_path{"MORVA_RUN_PATH", work.path().string()};
  test::EnvironmentVariable agent{"MORVA_AGENT_ID", "agent-7"};
};

HString wide(std::string const& text) {
  return text.c_str();
}

/// A text that keeps the program busy for a while.
std::string long_text() {
  std::string text;
  for (int i = 0; i < 600000; ++i) {
    text += "word" + std::string(1, static_cast<char>('a' + i % 26)) +
            std::string(1, static_cast<char>('a' + i / 26 % 26)) + " revenue costs. ";
  }
  return text;
}

/// Starts the program; its outputs go nowhere.
pid_t start(std::string const& command, std::string const& file) {
  pid_t const process = fork();
  if (process == 0) {
    int const nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    execl(MORVAAI_PROGRAM, MORVAAI_PROGRAM, command.c_str(), file.c_str(), nullptr);
    _exit(127);
  }
  return process;
}

bool holds_a_file(std::filesystem::path const& directory) {
  std::error_code error;
  std::filesystem::recursive_directory_iterator entry(directory, error);
  for (; !error && entry != std::filesystem::recursive_directory_iterator();
       entry.increment(error)) {
    if (entry->is_regular_file(error)) {
      return true;
    }
  }
  return false;
}

/// Waits for at most a minute until something holds.
template <typename Condition>
bool comes_true(Condition const& condition) {
  for (int left = 6000; left > 0; --left) {
    if (condition()) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

TEST_F(CollectCommand, prints_the_records_of_the_agent) {
  std::string const file = sample("harbour-report.docx");
  Finished const finished = run({"collect", "--json", file});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  HFileCollectMgr manager;
  HFileCollectFeatureNode words;
  HFileCollectDNANode fingerprint;
  manager.get_file_feature(wide(file), words);
  manager.get_file_dna(wide(file), fingerprint);
  auto const object = json::parse(finished.output);
  EXPECT_EQ(object["file"], file);
  EXPECT_EQ(wide(object["md5"]), fingerprint.str_md5);
  EXPECT_EQ(wide(object["dna"]), fingerprint.str_dna);
  EXPECT_EQ(object["kb_size"], manager.get_file_kb_size(wide(file)));
  ASSERT_EQ(object["words"].size(), words.vt_words.size());
  for (std::size_t i = 0; i < words.vt_words.size(); ++i) {
    EXPECT_EQ(wide(object["words"][i]["word"]), words.vt_words[i]);
    EXPECT_EQ(object["words"][i]["count"], words.vt_counts[i]);
    EXPECT_EQ(object["words"][i]["weight"], words.vt_weight[i]);
  }
}

TEST_F(CollectCommand, tells_who_collected_and_when) {
  auto const object = json::parse(run({"collect", "--json", sample("budget.xlsx")}).output);
  EXPECT_EQ(object["agent_id"], "agent-7");
  EXPECT_GT(object["collected"], 1700000000);
}

TEST_F(CollectCommand, prints_a_block_for_each_file) {
  std::string const file = write("abc.txt", "contract");
  Finished const finished = run({"collect", file, sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  EXPECT_EQ(finished.output.find(file + "\n  agent      agent-7\n  collected  "), 0U);
  EXPECT_THAT(finished.output, HasSubstr("\n  size       1 KB\n"));
  EXPECT_THAT(finished.output, HasSubstr("\n  words      1\n    1.000000      1  contract\n"));
  EXPECT_THAT(finished.output, HasSubstr("budget.xlsx\n  agent "));
}

TEST_F(CollectCommand, a_refused_file_has_size_and_digest) {
  std::string const file = write("a.bin", std::string("\0\1\2\377", 4));
  Finished const finished = run({"collect", "--json", file});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("a.bin: not supported"));
  auto const object = json::parse(finished.output);
  EXPECT_EQ(object["kb_size"], 1);
  EXPECT_EQ(object["md5"].get<std::string>().size(), 32U);
  EXPECT_EQ(object["dna"], "");
  EXPECT_THAT(object["words"], IsEmpty());
}

TEST_F(CollectCommand, a_missing_file_has_no_record) {
  Finished const finished = run({"collect", "--json", "/missing/file.txt"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("No such file"));
  EXPECT_FALSE(json::parse(finished.output).contains("md5"));
}

TEST_F(CollectCommand, a_file_without_words_is_told_of) {
  Finished const finished = run({"collect", write("a.txt", "1 2 3")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("no words"));
}

TEST_F(CollectCommand, without_dictionary_says_so) {
  test::TemporaryDirectory const empty;
  test::EnvironmentVariable const path("MORVA_DICT_PATH", empty.path().string());
  Finished const finished = run({"collect", sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("there is no dictionary"));
}

TEST_F(CollectCommand, leaves_nothing_behind) {
  EXPECT_EQ(run({"collect", sample("")}).status, 0);
  EXPECT_TRUE(std::filesystem::is_empty(work.path()));
}

TEST_F(CollectCommand, without_a_place_to_work_it_fails) {
  test::EnvironmentVariable const none("MORVA_RUN_PATH", "/dev/null/work");
  Finished const finished = run({"collect", sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, HasSubstr("/dev/null/work"));
}

class InterruptedCollect : public CollectCommand, public testing::WithParamInterface<int> {};

TEST_P(InterruptedCollect, leaves_nothing_behind) {
  pid_t const process = start("collect", write("long.txt", long_text()));
  bool const is_working = comes_true([this] { return holds_a_file(work.path()); });
  kill(process, GetParam());
  int status = 0;
  waitpid(process, &status, 0);
  ASSERT_TRUE(is_working);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(comes_true([this] { return std::filesystem::is_empty(work.path()); }));
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedCollect, testing::Values(SIGINT, SIGTERM, SIGKILL));

}  // namespace
