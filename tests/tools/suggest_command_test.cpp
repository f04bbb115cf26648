#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/boxes_program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SuggestCommand : public test::BoxesProgram {
 protected:
  // So many texts in each of three folders, in each some sentences of one subject.
  std::string subjects(int of_each) const {
    for (auto const& [name, text] :
         {std::pair{"harbour", harbour}, {"kitchen", kitchen}, {"orbit", orbit}}) {
      std::filesystem::create_directories(path("subjects") + "/" + name);
      for (int i = 0; i < of_each; ++i) {
        std::string const own = "Remark " + std::string(static_cast<std::size_t>(i) + 3, 'q') + ".";
        write(("subjects/" + std::string(name) + "/" + std::to_string(i) + ".txt").c_str(),
              text + own);
      }
    }
    return path("subjects");
  }
  Finished suggest(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "suggest");
    return run(arguments);
  }
};

TEST_F(SuggestCommand, finds_the_subjects_and_the_command_that_learns_them) {
  json const found = json_of({"suggest", subjects(5)});
  EXPECT_EQ(found["file_count"], 15);
  EXPECT_EQ(found["kmeans"]["trials"][found["kmeans"]["best"].get<std::size_t>()]["k"], 3);
  EXPECT_THAT(found["command"].get<std::string>(), HasSubstr("morvaai learn " + path("subjects")));
}

TEST_F(SuggestCommand, judges_boxes_of_folders_by_files_held_out) {
  json const found = json_of({"suggest", subjects(4), "--by-folder"});
  ASSERT_THAT(found["boxes"], Not(IsEmpty()));
  json const& best = found["boxes"][found["best"].get<std::size_t>()];
  EXPECT_EQ(best["decided"], 12);
  EXPECT_EQ(best["right"], 12);
  EXPECT_EQ(best["strangers"], 12);
  EXPECT_THAT(found["command"].get<std::string>(), HasSubstr("--by-folder"));
}

TEST_F(SuggestCommand, proposes_what_learn_takes) {
  json const found = json_of({"suggest", subjects(4), "--by-folder"});
  std::string command = found["command"];
  command.replace(command.find("NAME"), 4, "chosen");
  command.replace(0, std::string("morvaai").size(), MORVAAI_PROGRAM);
  EXPECT_EQ(std::system((command + " >/dev/null").c_str()), 0);
}

TEST_F(SuggestCommand, says_the_same_each_time) {
  std::vector<std::string> const arguments = {subjects(4), "-j", "2"};
  EXPECT_EQ(suggest(arguments).output, suggest(arguments).output);
}

TEST_F(SuggestCommand, looks_at_so_many_files) {
  json const found = json_of({"suggest", subjects(5), "--by-folder", "--sample", "9"});
  EXPECT_EQ(found["file_count"], 9);
  EXPECT_EQ(found["found_count"], 15);
  EXPECT_THAT(suggest({path("subjects"), "--sample", "9"}).output, HasSubstr("of 15 found"));
}

TEST_F(SuggestCommand, needs_two_files_of_each_folder_in_the_sample) {
  Finished const finished = suggest({subjects(5), "--by-folder", "--sample", "5"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors,
            "morvaai: 3 folders are too many for a sample of 5 files, which takes 2 of each: give "
            "a larger --sample, or fewer folders\n");
}

TEST_F(SuggestCommand, needs_four_files) {
  write("a.txt", harbour);
  write("b.txt", kitchen);
  write("c.txt", orbit);
  Finished const finished = suggest({path("a.txt"), path("b.txt"), path("c.txt")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.output, "");
  EXPECT_THAT(finished.errors, HasSubstr("3 files with words are too few"));
}

TEST_F(SuggestCommand, finds_nothing_among_equal_files) {
  std::filesystem::create_directories(path("equal"));
  for (char const* name : {"equal/a.txt", "equal/b.txt", "equal/c.txt", "equal/d.txt"}) {
    write(name, harbour);
  }
  Finished const finished = suggest({path("equal")});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  EXPECT_THAT(finished.output, HasSubstr("no number of classes parts these files"));
  EXPECT_THAT(json_of({"suggest", path("equal")})["command"], json());
}

TEST_F(SuggestCommand, needs_folders_for_classes_by_folder) {
  Finished const finished = suggest({write("a.txt", harbour), "--by-folder"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("--by-folder needs folders"));
}

TEST_F(SuggestCommand, tells_that_folders_have_nothing_to_hold_out) {
  json const found = json_of({"suggest", subjects(1), samples(), "--by-folder"});
  EXPECT_EQ(found["folders"].size(), 3U);
  Finished const finished = suggest({subjects(1), "--by-folder"});
  EXPECT_EQ(finished.status, 1);
}

}  // namespace
