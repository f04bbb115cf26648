#include "tools/program.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/temporary_directory.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using test::Finished;
using test::Program;

TEST_F(Program, without_a_command_is_wrong_use) {
  Finished const finished = run({});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, IsEmpty());
}

TEST_F(Program, an_unknown_option_is_wrong_use) {
  EXPECT_EQ(run({"features", "--nonsense", sample("budget.xlsx")}).status, 2);
}

TEST_F(Program, wrong_use_is_told_in_one_line_that_says_whose_help_tells_more) {
  EXPECT_EQ(run({}).errors, "morvaai: a command is needed; morvaai --help tells more\n");
  EXPECT_EQ(run({"box"}).errors, "morvaai: a command is needed; morvaai box --help tells more\n");
  EXPECT_EQ(run({"features"}).errors,
            "morvaai: FILE is missing; morvaai features --help tells more\n");
  EXPECT_EQ(run({"compare", "a", "b", "c"}).errors,
            "morvaai: 'c' is one argument too many; morvaai compare --help tells more\n");
}

TEST_F(Program, what_was_mistyped_is_told_with_what_may_have_been_meant) {
  EXPECT_THAT(run({"feature", "a.txt"}).errors,
              HasSubstr("there is no command 'feature'; did you mean features? morvaai --help"));
  EXPECT_THAT(run({"box", "lsit"}).errors, HasSubstr("'lsit'; did you mean list? morvaai box --"));
  EXPECT_THAT(run({"text", "--knid=notes", "a.txt"}).errors,
              HasSubstr("there is no option '--knid'; did you mean --kind? morvaai text --help"));
  EXPECT_THAT(run({"text", "--colr", "never"}).errors, HasSubstr("did you mean --color?"));
}

TEST_F(Program, nothing_is_guessed_that_is_not_near) {
  EXPECT_THAT(run({"xyzzy"}).errors, HasSubstr("there is no command 'xyzzy'; morvaai --help"));
}

TEST_F(Program, what_was_mistyped_cannot_steer_the_terminal) {
  EXPECT_THAT(run({"a\x1B[2J"}).errors, HasSubstr("'a\xEF\xBF\xBD[2J'"));
}

TEST_F(Program, a_value_that_is_none_is_told_with_those_there_are) {
  EXPECT_THAT(run({"text", "--kind", "nonsense", "a.txt"}).errors,
              HasSubstr("--kind: nonsense is none of main, header, comment"));
  EXPECT_THAT(run({"features", "-n", "0", "a.txt"}).errors,
              HasSubstr("--words: 0 is not in the range of 1 to 100000; morvaai features --help"));
}

TEST_F(Program, help_is_no_failure) {
  Finished const finished = run({"features", "--help"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, HasSubstr("--json"));
}

TEST_F(Program, version_names_the_dictionary) {
  Finished const finished = run({"version", "--json"});
  EXPECT_EQ(finished.status, 0);
  auto const object = nlohmann::json::parse(finished.output);
  EXPECT_EQ(object["version"], "3.2306.4.13.1");
  EXPECT_EQ(object["dictionary_found"], true);
}

TEST_F(Program, features_come_in_descending_weight) {
  Finished const finished = run({"features", "--json", "-n", "10", sample("harbour-report.docx")});
  EXPECT_EQ(finished.status, 0);
  auto const words = nlohmann::json::parse(finished.output)["words"];
  ASSERT_EQ(words.size(), 10U);
  EXPECT_EQ(words[0]["weight"], 1.0);
  for (std::size_t i = 1; i < words.size(); ++i) {
    EXPECT_LE(words[i]["weight"], words[i - 1]["weight"]);
  }
}

TEST_F(Program, a_chinese_document_gives_chinese_words_from_every_format) {
  for (char const* name : {"软件开发合同.docx", "软件开发合同.pdf", "软件开发合同.gb18030.txt"}) {
    Finished const finished = run({"features", sample(name)});
    EXPECT_EQ(finished.status, 0) << finished.errors;
    EXPECT_THAT(finished.output, HasSubstr("合同")) << name;
  }
}

TEST_F(Program, json_prints_one_object_a_line) {
  Finished const finished = run({"dna", "--json", sample("budget.xlsx"), sample("launch.pptx")});
  EXPECT_EQ(finished.lines().size(), 2U);
  for (std::string const& line : finished.lines()) {
    EXPECT_TRUE(nlohmann::json::accept(line)) << line;
  }
}

TEST_F(Program, a_narrow_dna_has_32_digits) {
  Finished const finished = run({"dna", sample("harbour-report.docx")});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output.find(' '), 32U);
}

TEST_F(Program, a_wide_dna_has_1024_digits) {
  Finished const finished = run({"dna", "--wide", sample("harbour-report.docx")});
  EXPECT_EQ(finished.output.find(' '), 1024U);
}

TEST_F(Program, the_count_stands_behind_the_dna) {
  auto const object = nlohmann::json::parse(run({"dna", "--json", sample("budget.xlsx")}).output);
  EXPECT_THAT(run({"dna", "--count", sample("budget.xlsx")}).output,
              HasSubstr(" " + object["character_count"].dump() + "  "));
}

TEST_F(Program, a_failing_file_is_named_and_the_others_go_on) {
  Finished const finished =
      run({"dna", sample("budget.xlsx"), "/missing/file", sample("travel-policy.odt")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.lines().size(), 2U);
  EXPECT_EQ(finished.errors, "morvaai: /missing/file: failed: No such file or directory\n");
}

TEST_F(Program, a_failure_is_an_object_too) {
  Finished const finished = run({"features", "--json", "/missing/file"});
  auto const object = nlohmann::json::parse(finished.output);
  EXPECT_EQ(object["file"], "/missing/file");
  EXPECT_EQ(object["error"]["reason"], "No such file or directory");
}

TEST_F(Program, an_unknown_type_is_told_with_its_reason) {
  Finished const finished = run({"text", write("a.bin", std::string("\0\1\2\377", 4))});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("not supported: the type of the file is not known"));
}

TEST_F(Program, a_known_type_without_reader_is_told_with_its_type) {
  std::string const png("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\b\6\0\0\0", 29);
  EXPECT_THAT(run({"text", write("a.docx", png)}).errors,
              HasSubstr("there is no reader for files of the type png"));
}

TEST_F(Program, a_file_without_words_is_told) {
  Finished const finished = run({"dna", write("dots.txt", "... ... ...\n")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("there are no words in its text"));
}

TEST_F(Program, an_empty_file_is_told) {
  Finished const finished = run({"features", write("empty.txt", "")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("no text"));
}

TEST_F(Program, a_path_in_brackets_is_one_path) {
  std::string const text = "anchor vessel cargo harbour\n";
  write("[draft].txt]", text);
  write("[a,b]", text);
  std::string const inside = "cd " + path("") + " && " MORVAAI_PROGRAM " dna ";
  EXPECT_EQ(std::system((inside + "'[a,b]' '[draft].txt]' >dnas").c_str()), 0);
  EXPECT_THAT(read("dnas"), HasSubstr("  [a,b]\n"));
  EXPECT_THAT(read("dnas"), HasSubstr("  [draft].txt]\n"));
  EXPECT_EQ(run({"dna", "[draft]"}).errors,
            "morvaai: [draft]: failed: No such file or directory\n");
}

TEST_F(Program, what_stands_behind_two_dashes_is_no_option_wherever_they_stand) {
  EXPECT_THAT(run({"dna", sample("budget.xlsx"), "--", "-missing"}).errors,
              HasSubstr("-missing: failed: No such file or directory"));
}

TEST_F(Program, a_dash_reads_paths_from_standard_input) {
  std::string const list = sample("budget.xlsx") + "\n\n" + sample("launch.pptx") + "\n";
  Finished const finished = run({"dna", "-"}, list);
  EXPECT_EQ(finished.status, 0) << finished.errors;
  ASSERT_EQ(finished.lines().size(), 2U);
  EXPECT_THAT(finished.lines()[1], HasSubstr("launch.pptx"));
}

TEST_F(Program, a_folder_gives_its_files_in_order_of_their_names) {
  std::string const folder = path("folder");
  std::filesystem::create_directories(folder + "/b");
  for (char const* name : {"folder/c.txt", "folder/b/x.txt", "folder/a.txt"}) {
    write(name, "some words of a text");
  }
  auto const lines = run({"dna", folder}).lines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[0], HasSubstr("a.txt"));
  EXPECT_THAT(lines[1], HasSubstr("b/x.txt"));
  EXPECT_THAT(lines[2], HasSubstr("c.txt"));
}

TEST_F(Program, the_number_of_workers_does_not_change_the_output) {
  Finished const one = run({"features", "-j", "1", sample("")});
  Finished const three = run({"features", "-j", "3", sample("")});
  EXPECT_EQ(one.output, three.output);
  EXPECT_EQ(one.errors, three.errors);
}

TEST_F(Program, a_name_that_is_no_utf8_is_opened) {
  std::string const file = write("bad\xFFname.txt", "some words of a text");
  Finished const finished = run({"dna", file});
  EXPECT_EQ(finished.status, 0) << finished.errors;
}

TEST_F(Program, equal_files_are_wholly_alike) {
  auto const object = nlohmann::json::parse(
      run({"compare", "--json", sample("harbour-report.docx"), sample("harbour-report.docx")})
          .output);
  EXPECT_EQ(object["similarity"], 100.0);
  EXPECT_EQ(object["too_short_to_judge"], false);
}

TEST_F(Program, a_revised_file_is_more_alike_than_another) {
  auto const similarity = [this](char const* other) {
    return nlohmann::json::parse(
               run({"compare", "--json", sample("harbour-report.docx"), sample(other)}).output)
        .at("similarity")
        .get<double>();
  };
  EXPECT_GT(similarity("harbour-report-revised.docx"), similarity("travel-policy.odt") + 15.0);
}

TEST_F(Program, compare_warns_of_a_short_text) {
  std::string const file = write("short.txt", "only a few words");
  Finished const finished = run({"compare", file, sample("harbour-report.docx")});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.errors, HasSubstr("too short to judge"));
}

TEST_F(Program, compare_of_an_unreadable_file_fails) {
  Finished const finished = run({"compare", "/missing", sample("harbour-report.docx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, HasSubstr("/missing"));
}

TEST_F(Program, text_shows_one_kind) {
  EXPECT_THAT(run({"text", "--kind", "notes", sample("launch.pptx")}).output,
              HasSubstr("Show the prototype"));
  EXPECT_THAT(run({"text", sample("launch.pptx")}).output, Not(HasSubstr("Show the prototype")));
  EXPECT_THAT(run({"text", "--kind", "comment", sample("harbour-report.docx")}).output,
              HasSubstr("southern terminal"));
}

TEST_F(Program, an_unknown_kind_is_wrong_use) {
  EXPECT_EQ(run({"text", "--kind", "nonsense", sample("launch.pptx")}).status, 2);
}

TEST_F(Program, a_missing_dictionary_is_told) {
  test::TemporaryDirectory const empty;
  test::EnvironmentVariable const dictionary("MORVA_DICT_PATH", empty.path());
  Finished const finished = run({"features", sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("there is no dictionary in"));
}

}  // namespace
