#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/QXPPolicyMorvaClustBox.h"

#include "tools/boxes_program.h"

namespace {

using test::Finished;
using testing::HasSubstr;
using testing::IsEmpty;

/// A directory of boxes inside of another, which holds a box that nobody may reach from there.
class BoxId : public test::BoxesProgram {
 protected:
  BoxId() {
    std::filesystem::create_directory(box_file("inside"));
    QXPPolicyMorvaClustBox box;
    box.vt_words = {L"harbour"};
    box.vt_kmeans_node.resize(1);
    box.vt_kmeans_node[0].str_class_id = L"c1";
    box.vt_kmeans_node[0].str_class_name = L"Outside";
    box.vt_kmeans_node[0].vt_weight = {1.0};
    box.vt_kmeans_node[0].d_radius = 100.0;
    EXPECT_EQ(box.to_file(box_file("ships.box").c_str()), 0);
    outside_ = boxes.read("ships.box");
  }
  ~BoxId() override { EXPECT_EQ(boxes.read("ships.box"), outside_); }

  void enter(std::string const& id) const {
    boxes.write("inside/box.ini", "[" + id + "]\nMD5 = \nCLASS = c1\n");
  }
  std::string text() const {
    return write("new.txt", std::string(harbour) + "Storms delay ships.");
  }

  static constexpr char const* outside_id = "../ships";
  static auto is_refusal() {
    return testing::AllOf(HasSubstr("a box id must not hold a slash"), HasSubstr(outside_id));
  }

 private:
  std::string outside_;
  test::EnvironmentVariable inside_{"MORVA_BOX_PATH", box_file("inside")};
};

struct Use {
  char const* name;
  std::vector<std::string> arguments;
};

class UseOfBoxId : public BoxId, public testing::WithParamInterface<Use> {
 protected:
  Finished use(std::string const& id) const {
    std::vector<std::string> arguments = GetParam().arguments;
    for (std::string& argument : arguments) {
      argument = argument == "ID" ? id : argument == "TEXT" ? text() : argument;
    }
    return run(arguments);
  }
};

TEST_P(UseOfBoxId, that_leaves_the_directory_is_refused) {
  Finished const finished = use(outside_id);
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, is_refusal());
  EXPECT_THAT(finished.output, IsEmpty());
}

TEST_P(UseOfBoxId, that_leaves_the_directory_is_refused_where_the_index_has_it_too) {
  enter(outside_id);
  Finished const finished = use(outside_id);
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, is_refusal());
  EXPECT_THAT(boxes.read("inside/box.ini"), HasSubstr("[../ships]"));
}

INSTANTIATE_TEST_SUITE_P(
    Commands, UseOfBoxId,
    testing::Values(Use{"learn", {"learn", "TEXT", "--box", "ID"}},
                    Use{"learn_replacing", {"learn", "TEXT", "--box", "ID", "--force"}},
                    Use{"match", {"match", "TEXT", "--box", "ID"}},
                    Use{"show", {"box", "show", "ID"}}, Use{"remove", {"box", "remove", "ID"}},
                    Use{"verify", {"box", "verify", "ID"}},
                    Use{"add", {"box", "add", "../ships.box", "--id", "ID"}},
                    Use{"add_replacing", {"box", "add", "../ships.box", "--id", "ID", "--force"}}),
    [](auto const& use) { return use.param.name; });

TEST_F(BoxId, that_is_an_absolute_path_is_refused) {
  Finished const finished = run({"box", "show", box_file("ships")});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("a box id must not hold a slash"));
}

TEST_F(BoxId, that_is_empty_is_refused) {
  Finished const finished = run({"box", "show", ""});
  EXPECT_EQ(finished.status, 2);
  EXPECT_EQ(finished.errors, "morvaai: a box id must not be empty\n");
}

/// Ids in the index that no box can have; they are told and nothing is read for them.
class IdInIndex : public BoxId, public testing::WithParamInterface<std::string> {};

TEST_P(IdInIndex, is_told_by_the_list) {
  enter(GetParam());
  Finished const finished = run({"box", "list"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr(": a box id must "));
  EXPECT_THAT(finished.output, IsEmpty());
}

TEST_P(IdInIndex, is_told_by_verify) {
  enter(GetParam());
  Finished const finished = run({"box", "verify"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr(": a box id must "));
}

TEST_P(IdInIndex, is_told_by_match_and_not_asked) {
  enter(GetParam());
  Finished const finished = run({"match", text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr(": a box id must "));
  EXPECT_THAT(finished.output, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Ids, IdInIndex, testing::Values("../ships", "%2Fetc%2Fpasswd", "a%00b"),
                         [](auto const& id) { return "id_" + std::to_string(id.index); });

TEST_F(BoxId, that_no_box_can_have_leaves_the_other_boxes_to_be_asked) {
  learn("subjects");
  std::string const index = boxes.read("inside/box.ini");
  boxes.write("inside/box.ini", "[../ships]\nCLASS = c1\n" + index);
  Finished const finished = run({"match", text()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, HasSubstr("box subjects"));
}

}  // namespace
