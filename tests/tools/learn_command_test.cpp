#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "box/HClusterOut.h"
#include "host/QXPPolicyMorvaClustBox.h"

#include "tools/boxes_program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class LearnCommand : public test::BoxesProgram {
 protected:
  Finished learn_with(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "learn");
    return run(arguments);
  }
  QXPPolicyMorvaClustBox box(char const* name) const {
    QXPPolicyMorvaClustBox box;
    EXPECT_EQ(box.from_file(box_file(name).c_str()), 0);
    return box;
  }
  // Runs the program for a while and ends it by a signal, if it has not ended before.
  static void interrupt(std::vector<std::string> arguments, int signal, int milliseconds) {
    pid_t const process = fork();
    if (process == 0) {
      int const nowhere = open("/dev/null", O_WRONLY);
      dup2(nowhere, STDOUT_FILENO);
      dup2(nowhere, STDERR_FILENO);
      std::vector<char*> argv{const_cast<char*>(MORVAAI_PROGRAM)};
      for (std::string& argument : arguments) {
        argv.push_back(argument.data());
      }
      argv.push_back(nullptr);
      execv(MORVAAI_PROGRAM, argv.data());
      _exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    kill(process, signal);
    waitpid(process, nullptr, 0);
  }
  // Waits for at most a minute.
  bool is_work_gone() const {
    for (int left = 6000; left > 0 && !std::filesystem::is_empty(work.path()); --left) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return std::filesystem::is_empty(work.path());
  }
};

TEST_F(LearnCommand, folders_become_classes_with_center_and_radius) {
  learn("subjects");
  QXPPolicyMorvaClustBox const learnt = box("subjects.box");
  EXPECT_EQ(learnt.i_cluster_type, 0);
  ASSERT_EQ(learnt.vt_kmeans_node.size(), 2U);
  EXPECT_EQ(learnt.vt_kmeans_node[0].str_class_name, HString(L"harbour"));
  EXPECT_EQ(learnt.vt_kmeans_node[1].str_class_name, HString(L"kitchen"));
  EXPECT_EQ(learnt.vt_kmeans_node[0].vt_weight.size(), learnt.vt_words.size());
  EXPECT_GT(learnt.vt_kmeans_node[0].d_radius, 0.0);
}

TEST_F(LearnCommand, folders_become_classes_with_their_files) {
  learn("subjects", {"--method", "dbscan", "--eps", "1.5", "--minpts", "2"});
  QXPPolicyMorvaClustBox const learnt = box("subjects.box");
  EXPECT_EQ(learnt.i_cluster_type, 1);
  ASSERT_EQ(learnt.vt_dbscan_node.size(), 2U);
  QXPDBScanNode const& learnt_class = learnt.vt_dbscan_node[1];
  EXPECT_EQ(learnt_class.str_class_name, HString(L"kitchen"));
  EXPECT_EQ(learnt_class.d_eps, 1.5);
  EXPECT_EQ(learnt_class.i_minpts, 2);
  ASSERT_EQ(learnt_class.vt_file_node.size(), 2U);
  EXPECT_EQ(learnt_class.vt_file_node[0].str_file_id, HString(L"c.txt"));
  EXPECT_EQ(learnt_class.vt_file_node[1].vt_weight.size(), learnt.vt_words.size());
}

TEST_F(LearnCommand, a_radius_of_neighbourhood_is_estimated) {
  learn("subjects", {"--method", "dbscan", "--minpts", "2"});
  EXPECT_GT(box("subjects.box").vt_dbscan_node[0].d_eps, 0.0);
}

TEST_F(LearnCommand, clustering_finds_the_classes) {
  json const object = json_of({"learn", samples(), "--box", "found", "-k", "2"});
  EXPECT_EQ(object["classes"].size(), 2U);
  EXPECT_EQ(box("found.box").vt_kmeans_node[1].str_class_name, HString(L"分类1"));
}

TEST_F(LearnCommand, dbscan_learns_without_the_noise) {
  std::string const folder = samples();
  write("samples/e.txt", orbit);
  json const object =
      json_of({"learn", folder, "--box", "found", "-m", "dbscan", "--eps", "1.5", "--minpts", "2"});
  EXPECT_THAT(object["unclassified"], ElementsAre(folder + "/e.txt"));
  EXPECT_EQ(box("found.box").vt_dbscan_node.size(), 2U);
}

TEST_F(LearnCommand, the_box_is_entered_in_the_index) {
  learn("subjects");
  QXPPolicyMorvaClustBox const learnt = box("subjects.box");
  EXPECT_THAT(index(), HasSubstr("[subjects]"));
  EXPECT_THAT(index(), HasSubstr(test::utf8_of(learnt.vt_kmeans_node[0].str_class_id) + "|" +
                                 test::utf8_of(learnt.vt_kmeans_node[1].str_class_id)));
}

TEST_F(LearnCommand, says_what_was_learnt) {
  Finished const finished = learn_with({samples(), "--by-folder", "--box", "subjects"});
  EXPECT_THAT(finished.output, HasSubstr("kmeans of 4 files by "));
  EXPECT_THAT(finished.output, HasSubstr("classes by folder: 2 classes\n\nharbour: 2 files, rad"));
  EXPECT_THAT(finished.output, EndsWith("box subjects: " + box_file("subjects.box") + "\n"));
}

TEST_F(LearnCommand, as_json_tells_classes_box_and_failures) {
  std::string const folder = samples();
  write("samples/kitchen/0.bin", std::string("\0\1\2\377", 4));
  json const object = json_of({"learn", folder, "--by-folder", "--box", "subjects"});
  EXPECT_EQ(object["file_count"], 4);
  EXPECT_EQ(object["classes"][1]["name"], "kitchen");
  EXPECT_EQ(object["classes"][1]["id"],
            test::utf8_of(box("subjects.box").vt_kmeans_node[1].str_class_id));
  EXPECT_EQ(object["box"], (json{{"id", "subjects"}, {"file", box_file("subjects.box")}}));
  ASSERT_EQ(object["failed"].size(), 1U);
  EXPECT_EQ(object["failed"][0]["file"], folder + "/kitchen/0.bin");
}

TEST_F(LearnCommand, files_that_fail_do_not_move_others_into_another_class) {
  std::string const folder = samples();
  write("samples/harbour/0.bin", std::string("\0\1\2\377", 4));
  write("samples/harbour/empty.txt", "");
  Finished const finished = learn_with({folder, "--by-folder", "--box", "subjects", "--json"});
  EXPECT_EQ(finished.status, 1);
  json const object = json::parse(finished.output);
  EXPECT_THAT(object["classes"][0]["files"],
              ElementsAre(folder + "/harbour/a.txt", folder + "/harbour/b.txt"));
  EXPECT_THAT(object["classes"][1]["files"],
              ElementsAre(folder + "/kitchen/c.txt", folder + "/kitchen/d.txt"));
}

TEST_F(LearnCommand, a_file_in_no_sub_folder_is_told_and_left_out) {
  std::string const folder = samples();
  write("samples/stray.txt", orbit);
  Finished const finished = learn_with({folder, "--by-folder", "--box", "subjects"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("stray.txt: in no sub-folder"));
  EXPECT_EQ(box("subjects.box").vt_kmeans_node.size(), 2U);
}

TEST_F(LearnCommand, a_folder_without_words_is_no_class) {
  std::string const folder = samples();
  std::filesystem::create_directories(path("samples/blank"));
  write("samples/blank/e.txt", "");
  Finished const finished = learn_with({folder, "--by-folder", "--box", "subjects"});
  EXPECT_THAT(finished.errors, HasSubstr("class blank is left out"));
  EXPECT_EQ(box("subjects.box").vt_kmeans_node.size(), 2U);
}

TEST_F(LearnCommand, a_document_that_was_given_up_before_any_word_has_none) {
  // Ten thousand times a thousand blanks, over what entities may expand to.
  std::string bomb =
      "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e0 \"" + std::string(1000, ' ') + "\">";
  for (int i = 1; i <= 4; ++i) {
    bomb += "<!ENTITY e" + std::to_string(i) + " \"";
    for (int k = 0; k < 10; ++k) {
      bomb += "&e" + std::to_string(i - 1) + ";";
    }
    bomb += "\">";
  }
  write("bomb.xml", bomb + "]><a>&e4;</a>");
  EXPECT_THAT(learn_with({path("bomb.xml"), "-k", "1", "--box", "subjects"}).errors,
              HasSubstr("bomb.xml: no words: there are no words in its text"));
}

TEST_F(LearnCommand, folders_of_one_name_are_one_class) {
  std::string const folder = samples();
  std::filesystem::create_directories(path("more/kitchen"));
  write("more/kitchen/e.txt", kitchen);
  json const object = json_of({"learn", folder, path("more"), "--by-folder", "--box", "subjects"});
  EXPECT_EQ(object["classes"].size(), 2U);
  EXPECT_EQ(object["classes"][1]["file_count"], 3);
}

TEST_F(LearnCommand, a_class_smaller_than_minpts_is_told) {
  Finished const finished = learn_with({samples(), "--by-folder", "--box", "subjects", "-m",
                                        "dbscan", "--eps", "1", "--minpts", "3"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.errors, HasSubstr("class kitchen has fewer files than --minpts 3"));
}

TEST_F(LearnCommand, a_box_is_not_replaced_unasked) {
  learn("subjects");
  std::string const before = boxes.read("subjects.box");
  Finished const finished = learn_with({samples(), "-k", "1", "--box", "subjects"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("there is a box subjects already: --force replaces it"));
  EXPECT_EQ(boxes.read("subjects.box"), before);
}

TEST_F(LearnCommand, a_box_is_replaced_by_force) {
  learn("subjects");
  EXPECT_EQ(learn_with({samples(), "-k", "1", "--box", "subjects", "--force"}).status, 0);
  EXPECT_EQ(box("subjects.box").vt_kmeans_node.size(), 1U);
  EXPECT_EQ(run({"box", "verify", "subjects"}).status, 0);
}

TEST_F(LearnCommand, the_same_files_make_the_same_box_again_byte_for_byte) {
  learn("demo");
  std::string const before = boxes.read("demo.box");
  learn("demo", {"--force"});
  EXPECT_EQ(boxes.read("demo.box"), before);
}

TEST_F(LearnCommand, a_class_has_another_id_when_its_files_are_others) {
  learn("demo");
  HString const before = box("demo.box").vt_kmeans_node[0].str_class_id;
  write("samples/harbour/more.txt", harbour);
  learn("demo", {"--force"});
  EXPECT_NE(box("demo.box").vt_kmeans_node[0].str_class_id, before);
}

TEST_F(LearnCommand, the_same_class_has_another_id_in_another_box) {
  learn("demo");
  learn("other");
  EXPECT_NE(box("demo.box").vt_kmeans_node[0].str_class_id,
            box("other.box").vt_kmeans_node[0].str_class_id);
}

TEST_F(LearnCommand, several_processes_learn_from_shards_only) {
  Finished const finished = learn_with({"--mpi", "--box", "demo", "-k", "2", samples()});
  EXPECT_EQ(finished.status, 2);
  // Which of the two goes by how the program was built.
  EXPECT_THAT(finished.errors, AnyOf(HasSubstr("MORVA_WITH_MPI"), HasSubstr("--mpi needs --from")));
}

TEST_F(LearnCommand, nothing_to_learn_from_leaves_no_box) {
  std::filesystem::create_directories(path("empty"));
  Finished const finished = learn_with({path("empty"), "--by-folder", "--box", "subjects"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: there is nothing to learn from\n");
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(LearnCommand, parameters_without_classes_leave_no_box) {
  Finished const finished = learn_with(
      {samples(), "--box", "subjects", "-m", "dbscan", "--eps", "0.001", "--minpts", "3"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("no classes were found"));
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(LearnCommand, leaves_the_box_and_the_index_and_nothing_else) {
  learn("subjects");
  EXPECT_THAT(names_in(boxes), ElementsAre("box.ini", "subjects.box"));
  EXPECT_THAT(names_in(work), IsEmpty());
}

TEST_F(LearnCommand, the_box_directory_is_made_where_it_is_missing) {
  test::EnvironmentVariable const path("MORVA_BOX_PATH", box_file("a/b"));
  learn("subjects");
  EXPECT_TRUE(std::filesystem::exists(box_file("a/b/subjects.box")));
}

TEST_F(LearnCommand, a_box_directory_that_cannot_be_made_is_told) {
  boxes.write("file", "");
  test::EnvironmentVariable const path("MORVA_BOX_PATH", box_file("file/boxes"));
  Finished const finished = learn_with({samples(), "--by-folder", "--box", "subjects"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("the directory of boxes cannot be made"));
  EXPECT_THAT(names_in(work), IsEmpty());
}

TEST_F(LearnCommand, a_relative_box_directory_goes_by_the_working_directory_of_the_caller) {
  auto const before = std::filesystem::current_path();
  std::filesystem::current_path(boxes.path());
  {
    test::EnvironmentVariable const path("MORVA_BOX_PATH", "here");
    learn("subjects");
  }
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::exists(box_file("here/subjects.box")));
}

class InterruptedLearnCommand : public LearnCommand, public testing::WithParamInterface<int> {};

TEST_P(InterruptedLearnCommand, leaves_a_whole_box_or_none) {
  std::string const folder = samples();
  for (int milliseconds = 0; milliseconds < 200; milliseconds += 12) {
    interrupt({"learn", folder, "--by-folder", "--box", "subjects", "--force"}, GetParam(),
              milliseconds);
    ASSERT_TRUE(is_work_gone()) << milliseconds;
    ASSERT_THAT(names_in(boxes), AnyOf(IsEmpty(), ElementsAre("box.ini", "subjects.box")))
        << milliseconds;
    ASSERT_EQ(run({"box", "verify"}).status, 0) << milliseconds;
  }
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptedLearnCommand,
                         testing::Values(SIGINT, SIGTERM, SIGHUP));

struct WrongUse {
  std::vector<std::string> options;
  char const* message;
};

class WrongLearnOptions : public LearnCommand, public testing::WithParamInterface<WrongUse> {};

TEST_P(WrongLearnOptions, are_told_and_end_with_status_2) {
  std::vector<std::string> arguments{samples()};
  arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
  Finished const finished = learn_with(arguments);
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, HasSubstr(GetParam().message));
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongLearnOptions,
    testing::Values(
        WrongUse{{"--by-folder"}, "--box"},
        WrongUse{{"--by-folder", "--box", ""}, "a box id must not be empty"},
        WrongUse{{"--by-folder", "--box", "a/b"}, "must not hold a slash or a dot"},
        WrongUse{{"--by-folder", "--box", "../b"}, "must not hold a slash or a dot"},
        WrongUse{{"--by-folder", "--box", "."}, "must not hold a slash or a dot"},
        WrongUse{{"--by-folder", "--box", "v1.2"}, "must not hold a slash or a dot"},
        WrongUse{{"--by-folder", "--box", "a\nb"}, "without control characters"},
        WrongUse{{"--by-folder", "--box", "a\xFF"}, "must be text"},
        WrongUse{{"--by-folder", "--box", std::string(201, 'a')}, "must not be longer than 200"},
        WrongUse{{"--box", "a"}, "--method kmeans needs -k"},
        WrongUse{{"--box", "a", "--method", "canopy"}, "canopy"},
        WrongUse{{"--box", "a", "--by-folder", "-k", "2"}, "--by-folder has already"},
        WrongUse{{"--box", "a", "--by-folder", "--canopy-seeds"}, "--by-folder has already"},
        WrongUse{{"--box", "a", "--by-folder", "--eps", "1"}, "are for --method dbscan"},
        WrongUse{{"--box", "a", "-k", "2", "--minpts", "1"}, "are for --method dbscan"},
        WrongUse{{"--box", "a", "--by-folder", "/dev/null"}, "is no folder"},
        WrongUse{{"--box", "a", "--by-folder", "-"}, "is no folder"}));

}  // namespace
