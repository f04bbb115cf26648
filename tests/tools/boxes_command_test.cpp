#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/QXPPolicyMorvaClustBox.h"

#include "tools/boxes_program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class BoxesCommand : public test::BoxesProgram {
 protected:
  Finished box(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "box");
    return run(arguments);
  }
  json box_json(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "box");
    return json_of(arguments);
  }
  // A box of one class, somewhere.
  std::string box_elsewhere(char const* name) const {
    QXPPolicyMorvaClustBox box;
    box.vt_words = {L"anchor"};
    box.vt_kmeans_node.resize(1);
    box.vt_kmeans_node[0].str_class_id = L"c1";
    box.vt_kmeans_node[0].str_class_name = L"Ships";
    box.vt_kmeans_node[0].vt_weight = {1.0};
    EXPECT_EQ(box.to_file(path(name).c_str()), 0);
    return path(name);
  }
};

TEST_F(BoxesCommand, without_boxes_the_list_is_empty) {
  Finished const finished = box({"list"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, IsEmpty());
}

TEST_F(BoxesCommand, the_list_tells_type_classes_and_words) {
  box({"add", box_elsewhere("ships.box")});
  EXPECT_THAT(box({"list"}).output, StartsWith("ships  K-means  1 class  1 word  "));
}

TEST_F(BoxesCommand, the_list_is_one_object_a_line_in_json) {
  box({"add", box_elsewhere("ships.box")});
  json const object = box_json({"list"});
  EXPECT_EQ(object["id"], "ships");
  EXPECT_EQ(object["file"], box_file("ships.box"));
  EXPECT_EQ(object["method"], "kmeans");
  EXPECT_EQ(object["class_count"], 1);
  EXPECT_EQ(object["word_count"], 1);
}

TEST_F(BoxesCommand, a_box_that_cannot_be_read_is_told_by_the_list) {
  box({"add", box_elsewhere("ships.box")});
  boxes.write("ships.box", "no box");
  Finished const finished = box({"list"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors,
            "morvaai: " + box_file("ships.box") + ": no box file, or a damaged one\n");
}

TEST_F(BoxesCommand, show_tells_classes_with_words) {
  box({"add", box_elsewhere("ships.box")});
  Finished const finished = box({"show", "ships"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, StartsWith("ships: " + box_file("ships.box") + ", "));
  EXPECT_THAT(finished.output, HasSubstr("Ships (c1)\n  radius 0\n  1 of 1 words: anchor(1)\n"));
}

TEST_F(BoxesCommand, show_as_json_tells_md5_and_classes) {
  box({"add", box_elsewhere("ships.box")});
  json const object = box_json({"show", "ships"});
  EXPECT_THAT(index(), HasSubstr("MD5 = " + object["md5"].get<std::string>()));
  EXPECT_EQ(object["classes"], json::parse(R"([{"id":"c1","name":"Ships","radius":0.0}])"));
}

TEST_F(BoxesCommand, show_of_an_unknown_box_fails) {
  Finished const finished = box({"show", "ships"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors,
            "morvaai: there is no box ships; morvaai box list shows those there are\n");
}

TEST_F(BoxesCommand, add_copies_the_file_and_enters_it) {
  std::string const file = box_elsewhere("ships.box");
  Finished const finished = box({"add", file});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  EXPECT_EQ(finished.output, "ships: added\n");
  EXPECT_EQ(boxes.read("ships.box"), read("ships.box"));
  EXPECT_THAT(index(), HasSubstr("[ships]"));
  EXPECT_THAT(index(), HasSubstr("CLASS = c1"));
}

TEST_F(BoxesCommand, add_takes_another_name) {
  EXPECT_EQ(box({"add", box_elsewhere("ships.box"), "--id", "fleet"}).status, 0);
  EXPECT_THAT(names_in(boxes), ElementsAre("box.ini", "fleet.box"));
}

TEST_F(BoxesCommand, add_refuses_a_name_with_a_dot_and_says_how_to_give_another) {
  Finished const finished = box({"add", box_elsewhere("ships.v2.box")});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("ships.v2: give another with --id"));
}

TEST_F(BoxesCommand, add_refuses_a_name_that_leaves_the_directory) {
  EXPECT_EQ(box({"add", box_elsewhere("ships.box"), "--id", "../ships"}).status, 2);
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(BoxesCommand, add_refuses_what_is_no_box) {
  Finished const finished = box({"add", write("ships.box", "no box")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: " + path("ships.box") + ": no box file, or a damaged one\n");
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(BoxesCommand, add_does_not_replace_unasked) {
  std::string const file = box_elsewhere("ships.box");
  box({"add", file});
  EXPECT_EQ(box({"add", file}).status, 1);
  EXPECT_EQ(box({"add", file, "--force"}).status, 0);
}

TEST_F(BoxesCommand, add_enters_a_file_that_lies_in_the_directory_already) {
  std::filesystem::copy_file(box_elsewhere("ships.box"), box_file("ships.box"));
  EXPECT_EQ(box({"add", box_file("ships.box")}).status, 0);
  EXPECT_EQ(box({"verify"}).status, 0);
}

TEST_F(BoxesCommand, add_leaves_no_file_where_the_index_cannot_be_written) {
  std::filesystem::create_directory(box_file("box.ini"));
  Finished const finished = box({"add", box_elsewhere("ships.box")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("the index of boxes cannot be written"));
  EXPECT_THAT(names_in(boxes), ElementsAre("box.ini"));
}

TEST_F(BoxesCommand, runs_side_by_side_lose_no_entry) {
  std::string const file = box_elsewhere("ships.box");
  std::string command;
  for (int i = 0; i < 20; ++i) {
    command += std::string(MORVAAI_PROGRAM " box add '") + file + "' --id b" + std::to_string(i) +
               " >/dev/null & ";
  }
  ASSERT_EQ(std::system((command + "wait").c_str()), 0);
  EXPECT_EQ(box({"list"}).lines().size(), 20U);
}

TEST_F(BoxesCommand, remove_takes_file_and_entry) {
  box({"add", box_elsewhere("ships.box")});
  Finished const finished = box({"remove", "ships"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output, "ships: removed\n");
  EXPECT_THAT(names_in(boxes), ElementsAre("box.ini"));
  EXPECT_THAT(index(), Not(HasSubstr("ships")));
}

TEST_F(BoxesCommand, remove_keeps_what_else_the_index_holds) {
  box({"add", box_elsewhere("ships.box")});
  box({"add", box_elsewhere("ships.box"), "--id", "fleet"});
  box({"remove", "ships"});
  EXPECT_EQ(box({"verify", "fleet"}).status, 0);
}

TEST_F(BoxesCommand, remove_of_a_box_without_a_file_takes_its_entry) {
  box({"add", box_elsewhere("ships.box")});
  std::filesystem::remove(box_file("ships.box"));
  EXPECT_EQ(box({"remove", "ships"}).status, 0);
  EXPECT_THAT(box({"list"}).output, IsEmpty());
}

TEST_F(BoxesCommand, remove_of_an_unknown_box_fails) {
  Finished const finished = box({"remove", "ships"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors,
            "morvaai: there is no box ships; morvaai box list shows those there are\n");
}

TEST_F(BoxesCommand, verify_finds_nothing_wrong_with_what_was_added) {
  box({"add", box_elsewhere("ships.box")});
  Finished const finished = box({"verify"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output, "ships: as it should be\n");
  EXPECT_EQ(box_json({"verify"}), json::parse(R"({"id":"ships","problems":[]})"));
}

TEST_F(BoxesCommand, verify_finds_a_file_that_was_exchanged) {
  box({"add", box_elsewhere("ships.box")});
  QXPPolicyMorvaClustBox other;
  other.to_file(box_file("ships.box").c_str());
  Finished const finished = box({"verify", "ships"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors,
              HasSubstr("box ships: the file is not the one that the index knows"));
  EXPECT_THAT(finished.errors, HasSubstr("box ships: its classes are not those"));
}

TEST_F(BoxesCommand, verify_takes_an_index_without_md5) {
  box({"add", box_elsewhere("ships.box")});
  boxes.write("box.ini", "[ships]\nCLASS = c1\n");
  EXPECT_EQ(box({"verify"}).status, 0);
}

TEST_F(BoxesCommand, an_index_that_is_too_large_is_a_failure) {
  boxes.write("box.ini", std::string(std::size_t{9} << 20, ';') + "\n[ships]\nCLASS = c1\n");
  std::string const told = box_file("box.ini") + ": the index of boxes cannot be read: ";
  Finished const listed = box({"list"});
  EXPECT_EQ(listed.status, 1);
  EXPECT_THAT(listed.errors, HasSubstr(told));
  Finished const matched = run({"match", write("file.txt", "ships")});
  EXPECT_EQ(matched.status, 2);
  EXPECT_THAT(matched.errors, HasSubstr(told));
}

TEST_F(BoxesCommand, verify_finds_a_damaged_file) {
  box({"add", box_elsewhere("ships.box")});
  boxes.write("ships.box", "no box");
  Finished const finished = box({"verify"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("no box file, or a damaged one"));
}

TEST_F(BoxesCommand, verify_finds_a_missing_file) {
  box({"add", box_elsewhere("ships.box")});
  std::filesystem::remove(box_file("ships.box"));
  EXPECT_THAT(box({"verify"}).errors, HasSubstr("No such file or directory"));
}

TEST_F(BoxesCommand, verify_finds_a_file_that_the_index_does_not_have) {
  std::filesystem::copy_file(box_elsewhere("ships.box"), box_file("ships.box"));
  Finished const finished = box({"verify"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: box ships: the index does not have it\n");
}

TEST_F(BoxesCommand, verify_finds_weights_that_do_not_fit_the_vocabulary) {
  QXPPolicyMorvaClustBox uneven;
  uneven.vt_kmeans_node.resize(1);
  uneven.vt_kmeans_node[0].vt_weight = {1.0};
  uneven.to_file(path("uneven.box").c_str());
  box({"add", path("uneven.box")});
  EXPECT_THAT(box({"verify", "uneven"}).errors, HasSubstr("not all weight lists are as long"));
}

TEST_F(BoxesCommand, verify_of_an_unknown_box_fails) {
  Finished const finished = box({"verify", "ships"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: box ships: there is no such box\n");
}

TEST_F(BoxesCommand, wrong_use_ends_with_status_2) {
  EXPECT_EQ(box({"show"}).status, 2);
  EXPECT_EQ(box({"add"}).status, 2);
  EXPECT_EQ(box({"remove"}).status, 2);
  EXPECT_EQ(box({"remove", "a", "b"}).status, 2);
}

}  // namespace
