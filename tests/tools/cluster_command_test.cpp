#include <algorithm>
#include <filesystem>
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
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr char const* harbour =
    "Cranes lift containers from ships. Pilots steer ships into the harbour. Cranes of the harbour "
    "lift containers onto trains. Ships leave the harbour with containers, and pilots leave "
    "ships. ";
constexpr char const* kitchen =
    "Onions fry in butter. Flour thickens the sauce. Butter and flour make dough, and onions with "
    "butter make sauce. Dough rests in the kitchen, sauce simmers in the kitchen with onions. ";
constexpr char const* orbit =
    "Satellites circle planets. Telescopes watch planets and galaxies. Galaxies drift while "
    "satellites send pictures, and telescopes send pictures of planets. ";

class ClusterCommand : public test::Program {
 protected:
  // Two texts about a harbour, two about a kitchen, by turns.
  std::string four_texts() const {
    std::string const folder = make_folder("texts");
    write("texts/a.txt", std::string(harbour) + "Storms delay ships.");
    write("texts/b.txt", std::string(kitchen) + "Garlic burns quickly.");
    write("texts/c.txt", std::string(harbour) + "Trains carry containers.");
    write("texts/d.txt", std::string(kitchen) + "Dough needs butter.");
    return folder;
  }
  std::string make_folder(char const* name) const {
    std::filesystem::create_directories(path(name));
    return path(name);
  }
  Finished cluster(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "cluster");
    return run(arguments);
  }
  json cluster_json(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    return json::parse(cluster(arguments).output);
  }
  // The short names of the files of each class.
  static std::vector<std::string> names(json const& files) {
    std::vector<std::string> names;
    for (json const& file : files) {
      names.push_back(std::filesystem::path(file.get<std::string>()).filename());
    }
    return names;
  }
  static std::vector<std::vector<std::string>> classes(json const& object) {
    std::vector<std::vector<std::string>> all;
    for (json const& one : object["classes"]) {
      all.push_back(names(one["files"]));
    }
    std::sort(all.begin(), all.end());
    return all;
  }
};

TEST_F(ClusterCommand, kmeans_finds_the_two_subjects) {
  json const object = cluster_json({four_texts(), "--method", "kmeans", "-k", "2"});
  EXPECT_THAT(classes(object),
              ElementsAre(ElementsAre("a.txt", "c.txt"), ElementsAre("b.txt", "d.txt")));
}

TEST_F(ClusterCommand, kmedians_finds_the_two_subjects) {
  json const object = cluster_json({four_texts(), "--method", "kmedians", "-k", "2"});
  EXPECT_THAT(classes(object),
              ElementsAre(ElementsAre("a.txt", "c.txt"), ElementsAre("b.txt", "d.txt")));
}

TEST_F(ClusterCommand, canopy_without_radii_takes_and_shows_the_mean_distance) {
  json const object = cluster_json({four_texts(), "--method", "canopy"});
  EXPECT_THAT(classes(object),
              ElementsAre(ElementsAre("a.txt", "c.txt"), ElementsAre("b.txt", "d.txt")));
  double const t2 = object["parameters"]["t2"];
  EXPECT_GT(t2, object["classes"][0]["radius"].get<double>());
  EXPECT_EQ(object["parameters"]["t1"].get<double>(), 3.0 * t2);
}

TEST_F(ClusterCommand, canopy_takes_t2_alone) {
  json const object = cluster_json({four_texts(), "--method", "canopy", "--t2", "100"});
  EXPECT_EQ(object["classes"].size(), 1U);
  EXPECT_EQ(object["parameters"]["t1"], 100.0);
}

TEST_F(ClusterCommand, canopy_seeds_choose_the_number_of_classes) {
  json const object = cluster_json({four_texts(), "--method", "kmeans", "--canopy-seeds"});
  EXPECT_EQ(object["parameters"]["k"], 2);
  EXPECT_EQ(object["classes"].size(), 2U);
}

TEST_F(ClusterCommand, dbscan_leaves_a_stranger_unclassified) {
  std::string const folder = four_texts();
  write("texts/e.txt", orbit);
  json const object = cluster_json({folder, "--method", "dbscan", "--eps", "1.5", "--minpts", "2"});
  EXPECT_THAT(classes(object),
              ElementsAre(ElementsAre("a.txt", "c.txt"), ElementsAre("b.txt", "d.txt")));
  EXPECT_THAT(names(object["unclassified"]), ElementsAre("e.txt"));
}

TEST_F(ClusterCommand, dbscan_says_which_radius_it_estimated) {
  std::string const folder = four_texts();
  json const object = cluster_json({folder, "--method", "dbscan", "--minpts", "2"});
  double const eps = object["parameters"]["eps"];
  EXPECT_GT(eps, 0.0);
  EXPECT_EQ(cluster_json({folder, "--method", "dbscan", "--minpts", "2", "--eps", "auto"}), object);
  EXPECT_THAT(cluster({folder, "--method", "dbscan", "--minpts", "2"}).output,
              HasSubstr("eps " + object["parameters"]["eps"].dump() + ", minpts 2"));
}

TEST_F(ClusterCommand, a_radius_that_cannot_be_estimated_is_asked_for) {
  Finished const finished = cluster({four_texts(), "--method", "dbscan", "--minpts", "50"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("give one with --eps"));
}

TEST_F(ClusterCommand, fingerprints_are_points_too) {
  json const object =
      cluster_json({sample(""), "--dna", "--method", "dbscan", "--eps", "20", "--minpts", "2"});
  EXPECT_EQ(object["by"], "fingerprint");
  EXPECT_THAT(classes(object), testing::Contains(testing::IsSupersetOf(
                                   {"harbour-report.docx", "harbour-report-revised.docx"})));
}

TEST_F(ClusterCommand, classes_by_fingerprint_are_described_by_words) {
  json const object = cluster_json({four_texts(), "--dna", "--method", "kmeans", "-k", "1"});
  EXPECT_THAT(object["classes"][0]["description"].get<std::string>(), HasSubstr("containers"));
}

TEST_F(ClusterCommand, a_class_has_label_description_radius_and_files) {
  Finished const finished = cluster({four_texts(), "--method", "kmeans", "-k", "2"});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  auto const lines = finished.lines();
  ASSERT_GE(lines.size(), 6U);
  EXPECT_THAT(lines[0], StartsWith("kmeans of 4 files by "));
  EXPECT_THAT(lines[0], EndsWith(" words, k 2, seeds farthest: 2 classes"));
  EXPECT_THAT(lines[2], StartsWith("分类0: 2 files, radius "));
  EXPECT_THAT(lines[3], HasSubstr("containers"));
  EXPECT_THAT(lines[4], EndsWith("texts/a.txt"));
  EXPECT_THAT(lines[5], EndsWith("texts/c.txt"));
}

TEST_F(ClusterCommand, failed_files_do_not_move_the_names_of_others) {
  std::string const folder = four_texts();
  write("texts/0.bin", std::string("\0\1\2\377", 4));
  write("texts/bb.txt", "");
  Finished const finished = cluster({folder, "--method", "kmeans", "-k", "2", "--json"});
  EXPECT_EQ(finished.status, 1);
  json const object = json::parse(finished.output);
  EXPECT_THAT(classes(object),
              ElementsAre(ElementsAre("a.txt", "c.txt"), ElementsAre("b.txt", "d.txt")));
  ASSERT_EQ(object["failed"].size(), 2U);
  EXPECT_THAT(object["failed"][0]["file"].get<std::string>(), EndsWith("0.bin"));
  EXPECT_THAT(object["failed"][1]["file"].get<std::string>(), EndsWith("bb.txt"));
  EXPECT_EQ(std::count(finished.errors.begin(), finished.errors.end(), '\n'), 2);
}

TEST_F(ClusterCommand, the_number_of_workers_does_not_change_the_output) {
  std::string const folder = four_texts();
  EXPECT_EQ(cluster({folder, "--method", "kmeans", "-k", "2", "-j", "1"}).output,
            cluster({folder, "--method", "kmeans", "-k", "2", "-j", "3"}).output);
}

TEST_F(ClusterCommand, nothing_to_cluster_is_a_failure) {
  Finished const finished = cluster({make_folder("empty"), "--method", "canopy"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: there is nothing to cluster\n");
}

TEST_F(ClusterCommand, equal_files_cannot_be_seeds) {
  std::string const folder = make_folder("equal");
  write("equal/a.txt", harbour);
  write("equal/b.txt", harbour);
  write("equal/c.txt", harbour);
  Finished const finished = cluster({folder, "--method", "kmeans", "-k", "2"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("too few of the files differ"));
}

TEST_F(ClusterCommand, a_missing_method_is_wrong_use) {
  Finished const finished = cluster({four_texts()});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("--method"));
}

struct WrongUse {
  std::vector<std::string> options;
  char const* message;
};

class WrongClusterOptions : public ClusterCommand, public testing::WithParamInterface<WrongUse> {};

TEST_P(WrongClusterOptions, are_told_and_end_with_status_2) {
  std::vector<std::string> arguments{sample("budget.xlsx")};
  arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
  Finished const finished = cluster(arguments);
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_THAT(finished.errors, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    All, WrongClusterOptions,
    testing::Values(
        WrongUse{{"-m", "kmeans"}, "--method kmeans needs -k"},
        WrongUse{{"-m", "kmedians"}, "--method kmedians needs -k"},
        WrongUse{{"-m", "kmeans", "-k", "0"}, "-k"}, WrongUse{{"-m", "kmeans", "-k", "many"}, "-k"},
        WrongUse{{"-m", "kmeans", "-k", "2", "--eps", "1"}, "are for --method dbscan"},
        WrongUse{{"-m", "kmeans", "-k", "2", "--eps", "auto"}, "are for --method dbscan"},
        WrongUse{{"-m", "kmeans", "-k", "2", "--t2", "1"}, "are for --method canopy"},
        WrongUse{{"-m", "canopy", "-k", "2"}, "are for --method kmeans and kmedians"},
        WrongUse{{"-m", "dbscan", "--canopy-seeds"}, "are for --method kmeans and kmedians"},
        WrongUse{{"-m", "canopy", "--minpts", "2"}, "are for --method dbscan"},
        WrongUse{{"-m", "canopy", "--t1", "1", "--t2", "2"}, "--t1 must not be below --t2"},
        WrongUse{{"-m", "canopy", "--t1", "1"}, "--t1 needs --t2"},
        WrongUse{{"-m", "canopy", "--t2", "nan"}, "not a number above 0"},
        WrongUse{{"-m", "dbscan", "--eps", "inf"}, "not a number above 0"},
        WrongUse{{"-m", "dbscan", "--eps", "0"}, "not a number above 0"},
        WrongUse{{"-m", "dbscan", "--minpts", "0"}, "--minpts"},
        WrongUse{{"-m", "canopy", "-o", SAMPLES_DIR "/budget.xlsx"}, "is no folder"},
        WrongUse{{"-m", "forel"}, "forel"}));

TEST_F(ClusterCommand, lists_are_written_into_a_new_folder) {
  std::string const folder = four_texts();
  Finished const finished =
      cluster({folder, "--method", "kmeans", "-k", "2", "-o", path("out/lists")});
  EXPECT_EQ(finished.status, 0) << finished.errors;
  EXPECT_EQ(read("out/lists/class-0.txt"), folder + "/a.txt\n" + folder + "/c.txt\n");
  EXPECT_EQ(read("out/lists/class-1.txt"), folder + "/b.txt\n" + folder + "/d.txt\n");
  EXPECT_THAT(finished.output, EndsWith("lists written:\n  " + path("out/lists/class-0.txt") +
                                        "\n  " + path("out/lists/class-1.txt") + "\n"));
}

TEST_F(ClusterCommand, unclassified_files_have_a_list_too) {
  std::string const folder = four_texts();
  write("texts/e.txt", orbit);
  json const object = cluster_json(
      {folder, "--method", "dbscan", "--eps", "1.5", "--minpts", "2", "-o", path("out")});
  EXPECT_THAT(names(object["lists"]),
              ElementsAre("class-0.txt", "class-1.txt", "unclassified.txt"));
  EXPECT_EQ(read("out/unclassified.txt"), folder + "/e.txt\n");
}

TEST_F(ClusterCommand, lists_have_as_many_digits_as_the_last_one) {
  std::string const folder = make_folder("many");
  for (char c = 'a'; c <= 'k'; ++c) {
    std::string const word(5, c);
    write((std::string("many/") + c + ".txt").c_str(), word + " " + word + "x " + word + "y");
  }
  json const object =
      cluster_json({folder, "--method", "canopy", "--t2", "0.5", "-o", path("out")});
  EXPECT_THAT(names(object["lists"]),
              testing::AllOf(testing::SizeIs(11), testing::Contains("class-00.txt"),
                             testing::Contains("class-10.txt")));
}

TEST_F(ClusterCommand, lists_of_an_earlier_run_are_no_input) {
  std::string const folder = four_texts();
  std::vector<std::string> const arguments{folder, "--method", "kmeans", "-k", "2", "-o", folder};
  EXPECT_EQ(cluster(arguments).output, cluster(arguments).output);
}

TEST_F(ClusterCommand, lists_that_an_earlier_run_left_are_told) {
  std::string const folder = four_texts();
  cluster({folder, "--method", "kmeans", "-k", "3", "-o", path("out")});
  Finished const finished = cluster({folder, "--method", "kmeans", "-k", "2", "-o", path("out")});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.errors,
            "morvaai: warning: " + path("out/class-2.txt") + " is a list of an earlier run\n");
}

TEST_F(ClusterCommand, a_folder_that_cannot_be_made_costs_the_lists_only) {
  std::string const folder = four_texts();
  Finished const finished =
      cluster({folder, "--method", "kmeans", "-k", "2", "-o", folder + "/a.txt/out"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("the folder cannot be made"));
  EXPECT_THAT(finished.output, HasSubstr("分类1"));
}

TEST_F(ClusterCommand, help_says_the_defaults) {
  Finished const finished = cluster({"--help"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, HasSubstr("[default: auto]"));
}

TEST_F(ClusterCommand, there_is_no_progress_where_there_is_no_terminal) {
  EXPECT_THAT(cluster({four_texts(), "--method", "canopy"}).errors, IsEmpty());
}

TEST_F(ClusterCommand, the_console_tool_asks_and_prints) {
  std::string const folder = four_texts();
  Finished const finished = run({"console", "kmeans"}, folder + "\n\n2\nN\n");
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, HasSubstr("File: 4\n"));
  EXPECT_THAT(finished.output, HasSubstr("==============Cluster: 1==============\ncount: 2\n" +
                                         folder + "/b.txt\n" + folder + "/d.txt\n"));
}

TEST_F(ClusterCommand, the_console_tool_ends_with_its_input) {
  for (char const* method : {"canopy", "kmeans", "dbscan"}) {
    EXPECT_EQ(run({"console", method}).status, 0) << method;
  }
}

TEST_F(ClusterCommand, an_unknown_console_tool_is_wrong_use) {
  EXPECT_EQ(run({"console", "forel"}).status, 2);
}

}  // namespace
