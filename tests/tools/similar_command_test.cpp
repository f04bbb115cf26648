#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tools/program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// One bit of 128 is 0.78125 %.
constexpr char const* zeros = "00000000000000000000000000000000";
constexpr char const* one_bit = "00000000000000000000000000000001";
constexpr char const* two_bits = "00000000000000000000000000000003";
constexpr char const* ones = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF";

class SimilarCommand : public test::Program {
 protected:
  static std::string line(std::string const& file, std::string const& dna) {
    return json{{"file", file}, {"outcome", "text"}, {"dna", dna}, {"count", 7}}.dump() + "\n";
  }
  Finished similar(std::vector<std::string> arguments, std::string const& input = {}) const {
    arguments.insert(arguments.begin(), "similar");
    return run(arguments, input);
  }
  // Of a list that is given by standard input.
  Finished similar_in(std::string const& list, std::vector<std::string> arguments = {}) const {
    arguments.insert(arguments.end(), {"--from", "-"});
    return similar(arguments, list);
  }
};

TEST_F(SimilarCommand, groups_the_samples_that_say_the_same) {
  Finished const finished = similar({sample("harbour-report.docx"), sample("travel-policy.html"),
                                     sample("travel-policy.odt"), sample("budget.xlsx"), "--json"});
  EXPECT_EQ(finished.status, 0);
  json const object = json::parse(finished.output);
  ASSERT_EQ(object["groups"].size(), 1U);
  EXPECT_EQ(object["groups"][0]["files"][0]["file"], sample("travel-policy.html"));
  EXPECT_EQ(object["groups"][0]["files"][1]["file"], sample("travel-policy.odt"));
  EXPECT_EQ(object["alone_count"], 2);
}

TEST_F(SimilarCommand, shows_what_each_file_is_to_the_first_and_what_holds_the_group_together) {
  Finished const finished = similar_in(
      line("软件开发合同.docx", two_bits) + line("b", ones) + line("c", one_bit) + line("d", zeros),
      {"--threshold", "99"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output,
            "4 files compared at 99 %: 1 group, 1 file like no other\n"
            "\n"
            "group 1: 3 files, held together by 99.2 % or more\n"
            "  100.0 %  软件开发合同.docx\n"
            "   99.2 %  c\n"
            "   98.4 %  d\n");
}

TEST_F(SimilarCommand, json_says_the_same_to_the_last_bit) {
  json const object = json::parse(
      similar_in(line("a", zeros) + line("b", one_bit) + line("c", ones), {"--json"}).output);
  EXPECT_EQ(object, json::parse(R"({"threshold": 90.0, "file_count": 3, "groups": [
      {"file_count": 2, "weakest_link": 99.21875, "files": [
        {"file": "a", "similarity": 100.0}, {"file": "b", "similarity": 99.21875}]}],
      "alone_count": 1, "failed": []})"));
}

TEST_F(SimilarCommand, pairs_stand_in_columns) {
  std::string const list = line("合同", zeros) + line("b.txt", one_bit) + line("c", zeros);
  EXPECT_EQ(similar_in(list, {"--pairs"}).output,
            " 99.2 %  合同   b.txt\n"
            "100.0 %  合同   c\n"
            " 99.2 %  b.txt  c\n");
  EXPECT_THAT(similar_in(list, {"--pairs", "--json"}).lines(),
              ElementsAre(R"({"files":["合同","b.txt"],"similarity":99.21875})",
                          R"({"files":["合同","c"],"similarity":100.0})",
                          R"({"files":["b.txt","c"],"similarity":99.21875})"));
}

TEST_F(SimilarCommand, a_list_made_by_dna_gives_what_the_files_give) {
  std::string const files = sample("");
  std::string const list = write("list.jsonl", run({"dna", files, "--json"}).output);
  EXPECT_EQ(similar({"--from", list}).output, similar({files}).output);
}

TEST_F(SimilarCommand, files_are_compared_with_those_of_a_list) {
  std::string const known = run({"dna", sample("travel-policy.html"), "--json"}).output;
  Finished const finished = similar({"--from", "-", sample("travel-policy.odt"), "--pairs"}, known);
  EXPECT_THAT(finished.lines(), testing::SizeIs(1));
}

TEST_F(SimilarCommand, a_file_named_twice_counts_once) {
  EXPECT_THAT(similar_in(line("a", zeros) + line("a", zeros)).output,
              StartsWith("1 file compared at 90 %: 0 groups, 1 file like no other\n"));
}

TEST_F(SimilarCommand, files_that_fail_are_told_and_left_out) {
  Finished const finished =
      similar({sample("travel-policy.odt"), sample("travel-policy.html"), path("none")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("none: failed: No such file or directory\n"));
  EXPECT_THAT(finished.output, StartsWith("2 files compared at 90 %: 1 group, 0 files"));
  std::string const failed = R"({"file":"x","error":{"outcome":"encrypted","reason":"locked"}})";
  Finished const of_list = similar_in(failed + "\n" + line("a", zeros), {"--json"});
  EXPECT_EQ(of_list.status, 1);
  EXPECT_THAT(of_list.errors, HasSubstr("x: encrypted: locked\n"));
  EXPECT_EQ(json::parse(of_list.output)["failed"][0], json::parse(failed));
}

TEST_F(SimilarCommand, lines_that_are_no_fingerprints_are_told_by_number_and_left_out) {
  std::string const list = line("a", zeros) + "{\"file\": \"b\"\n\n[1]\n" +
                           line("c\033[2J", "12X") + line("d", "") + std::string(70000, '[') +
                           "\n" + line("e", zeros);
  Finished const finished = similar_in(list + R"({"file":"f","dna":7})");
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.output, HasSubstr("  100.0 %  a\n  100.0 %  e\n"));
  for (char const* where : {"standard input, line 2: ", "line 4: ", "line 5: ", "line 6: ",
                            "line 7: the line is longer than 65536 bytes", "line 9: "}) {
    EXPECT_THAT(finished.errors, HasSubstr(where));
  }
  EXPECT_THAT(finished.errors, Not(HasSubstr("\033")));
}

TEST_F(SimilarCommand, many_wrong_lines_are_counted) {
  std::string list;
  for (int i = 0; i < 30; ++i) {
    list += "x\n";
  }
  EXPECT_THAT(similar_in(list).errors, HasSubstr("standard input: 10 more lines are left out\n"));
}

TEST_F(SimilarCommand, a_list_that_is_not_there_is_told) {
  Finished const finished = similar({"--from", path("none.jsonl")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("none.jsonl: No such file or directory\n"));
  EXPECT_EQ(similar({"--from", sample("")}).status, 1);
}

TEST_F(SimilarCommand, a_threshold_that_is_none_is_wrong_use) {
  for (char const* threshold : {"0", "-1", "101", "nan", "inf", "ninety", ""}) {
    Finished const finished = similar({"--threshold", threshold, sample("")});
    EXPECT_EQ(finished.status, 2) << threshold;
    EXPECT_THAT(finished.output, IsEmpty());
  }
}

TEST_F(SimilarCommand, without_files_it_is_wrong_use) {
  EXPECT_EQ(similar({}).status, 2);
  EXPECT_EQ(similar({"-", "--from", "-"}).status, 2);
}

}  // namespace
