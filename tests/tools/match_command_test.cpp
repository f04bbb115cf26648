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
using testing::StartsWith;

class MatchCommand : public test::BoxesProgram {
 protected:
  Finished match(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "match");
    return run(arguments);
  }
  json match_json(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "match");
    return json_of(arguments);
  }
  std::string harbour_text() const {
    return write("new.txt", std::string(harbour) + "Storms delay ships.");
  }
  std::string orbit_text() const { return write("orbit.txt", orbit); }
};

TEST_F(MatchCommand, a_file_is_found_in_its_class) {
  learn("subjects");
  Finished const finished = match({harbour_text()});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  EXPECT_THAT(finished.lines()[0], StartsWith(path("new.txt") + ": harbour (class "));
  EXPECT_THAT(finished.lines()[0], HasSubstr(", box subjects)"));
}

TEST_F(MatchCommand, a_strange_file_is_found_in_none) {
  learn("subjects");
  Finished const finished = match({orbit_text()});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.output, path("orbit.txt") + ": none\n");
}

TEST_F(MatchCommand, some_found_is_success) {
  learn("subjects");
  EXPECT_EQ(match({orbit_text(), harbour_text()}).status, 0);
}

TEST_F(MatchCommand, distance_and_radius_are_shown) {
  learn("subjects");
  json const found = match_json({harbour_text()});
  EXPECT_EQ(found["class"]["name"], "harbour");
  EXPECT_GT(found["distance"].get<double>(), 0.0);
  EXPECT_LE(found["distance"].get<double>(), found["radius"].get<double>() + 0.000001);
}

TEST_F(MatchCommand, the_class_is_told_by_its_id) {
  learn("subjects");
  QXPPolicyMorvaClustBox box;
  box.from_file(box_file("subjects.box").c_str());
  json const found = match_json({harbour_text()});
  EXPECT_EQ(found["class"]["id"], test::utf8_of(box.vt_kmeans_node[0].str_class_id));
  EXPECT_EQ(found["class"]["box"], "subjects");
}

TEST_F(MatchCommand, the_words_that_decided_come_heaviest_first) {
  learn("subjects");
  json const words = match_json({harbour_text()})["words"];
  ASSERT_FALSE(words.empty());
  double before = words[0]["product"];
  for (json const& word : words) {
    EXPECT_THAT(harbour, HasSubstr(word["word"].get<std::string>().substr(1)));
    EXPECT_LE(word["product"].get<double>(), before);
    before = word["product"];
  }
}

TEST_F(MatchCommand, neighbours_are_counted_in_classes_that_keep_their_files) {
  learn("subjects", {"-m", "dbscan", "--eps", "1.5", "--minpts", "2"});
  json const found = match_json({harbour_text()});
  EXPECT_EQ(found["class"]["name"], "harbour");
  EXPECT_EQ(found["neighbours"], 2);
  EXPECT_EQ(found["eps"], 1.5);
  EXPECT_EQ(found["minpts"], 2);
  EXPECT_EQ(found["nearest"], "a.txt");
  EXPECT_EQ(found["distance"], 0.0);
  EXPECT_THAT(match({harbour_text()}).output,
              HasSubstr("distance 0.000000 from a.txt, 2 neighbours within eps 1.500000"));
}

TEST_F(MatchCommand, a_file_of_no_class_is_null_in_json) {
  learn("subjects");
  EXPECT_EQ(match_json({orbit_text()}), (json{{"file", path("orbit.txt")}, {"class", nullptr}}));
}

TEST_F(MatchCommand, all_boxes_are_asked) {
  learn("subjects");
  std::filesystem::create_directories(path("sky"));
  EXPECT_EQ(run({"learn", orbit_text(), "--box", "sky", "-k", "1"}).status, 0);
  EXPECT_EQ(match_json({orbit_text()})["class"]["box"], "sky");
  EXPECT_EQ(match_json({harbour_text()})["class"]["box"], "subjects");
}

TEST_F(MatchCommand, only_the_boxes_that_are_named_are_asked) {
  learn("subjects");
  EXPECT_EQ(run({"learn", orbit_text(), "--box", "sky", "-k", "1"}).status, 0);
  EXPECT_EQ(match({"--box", "sky", harbour_text()}).status, 1);
  EXPECT_EQ(match({"--box", "sky", "--box", "subjects", harbour_text()}).status, 0);
}

TEST_F(MatchCommand, only_the_classes_that_are_named_are_asked) {
  learn("subjects");
  EXPECT_EQ(match({"--class", "kitchen", harbour_text()}).status, 1);
  EXPECT_EQ(match({"--class", "kitchen", "--class", "harbour", harbour_text()}).status, 0);
}

TEST_F(MatchCommand, a_class_is_named_by_its_id_too) {
  learn("subjects");
  std::string const id = match_json({harbour_text()})["class"]["id"];
  EXPECT_EQ(match({"--class", id, harbour_text()}).status, 0);
}

TEST_F(MatchCommand, a_name_of_several_classes_is_refused) {
  learn("subjects");
  learn("others");
  Finished const finished = match({"--class", "harbour", harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("there are several classes harbour:"));
  EXPECT_THAT(finished.errors, HasSubstr("in box others"));
}

TEST_F(MatchCommand, a_box_makes_the_name_of_a_class_clear) {
  learn("subjects");
  learn("others");
  EXPECT_EQ(match_json({"--class", "harbour", "--box", "others", harbour_text()})["class"]["box"],
            "others");
}

TEST_F(MatchCommand, an_unknown_class_is_trouble) {
  learn("subjects");
  Finished const finished = match({"--class", "orchard", harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, StartsWith("morvaai: there is no class orchard in the boxes"));
}

TEST_F(MatchCommand, an_unknown_box_is_trouble) {
  learn("subjects");
  Finished const finished = match({"--box", "orchard", harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, StartsWith("morvaai: there is no box orchard; "));
}

TEST_F(MatchCommand, no_boxes_at_all_is_trouble) {
  Finished const finished = match({harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, StartsWith("morvaai: there are no boxes to ask; "));
}

TEST_F(MatchCommand, a_file_that_cannot_be_read_is_trouble_and_the_others_go_on) {
  learn("subjects");
  Finished const finished = match({path("missing.txt"), harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, HasSubstr(": harbour (class "));
  EXPECT_THAT(finished.errors, HasSubstr("missing.txt: failed: No such file"));
}

TEST_F(MatchCommand, a_damaged_box_is_trouble_and_the_others_are_asked) {
  learn("subjects");
  learn("broken");
  boxes.write("broken.box", "no box");
  Finished const finished = match({harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, HasSubstr(", box subjects)"));
  EXPECT_THAT(finished.errors, HasSubstr("broken.box: no box file, or a damaged one"));
}

TEST_F(MatchCommand, a_missing_box_file_is_trouble) {
  learn("subjects");
  std::filesystem::remove(box_file("subjects.box"));
  Finished const finished = match({harbour_text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("box subjects: its file is missing"));
}

TEST_F(MatchCommand, wrong_use_is_trouble) {
  EXPECT_EQ(match({}).status, 2);
  EXPECT_EQ(match({"--box"}).status, 2);
}

TEST_F(MatchCommand, files_come_in_order_whatever_the_number_of_workers) {
  learn("subjects");
  std::string const folder = path("samples");
  EXPECT_EQ(match({folder, "-j", "1"}).output, match({folder, "-j", "3"}).output);
}

TEST_F(MatchCommand, writes_nothing) {
  learn("subjects");
  std::string const before = index();
  match({harbour_text()});
  EXPECT_THAT(names_in(boxes), ElementsAre("box.ini", "subjects.box"));
  EXPECT_EQ(index(), before);
  EXPECT_THAT(names_in(work), IsEmpty());
}

TEST_F(MatchCommand, help_has_examples) {
  Finished const finished = match({"--help"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, HasSubstr("\n  morvaai match samples/corpus/decide --box demo"));
}

}  // namespace
