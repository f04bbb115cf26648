#include <csignal>
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
using testing::HasSubstr;
using testing::Not;

class ShardCommand : public test::Program {
 protected:
  ShardCommand() : boxes_("MORVA_BOX_PATH", path("boxes")) {}

  static std::string text(int number) {
    std::string content = "harbour vessel cargo terminal " + std::to_string(number);
    for (int i = 0; i < 12; ++i) {
      content += " berth" + std::to_string((number * 5 + i) % 23) + " crane" +
                 std::to_string((number + i * i) % 17);
    }
    return content + "\n";
  }
  /// A folder of documents in sub-folders, one of them without words.
  std::string make_documents() const {
    std::filesystem::create_directories(path("docs/a"));
    std::filesystem::create_directories(path("docs/b"));
    for (int i = 0; i < 8; ++i) {
      write(("docs/" + std::string(i < 4 ? "a" : "b") + "/" + std::to_string(i) + ".txt").c_str(),
            text(i));
    }
    write("docs/a-none.txt", "");
    return path("docs");
  }
  Finished extract(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "extract");
    return run(arguments);
  }
  static json only(Finished const& finished) {
    return finished.lines().size() == 1 ? json::parse(finished.output) : json();
  }

  test::EnvironmentVariable const boxes_;
};

TEST_F(ShardCommand, parts_merged_are_what_one_run_gives) {
  std::string const docs = make_documents();
  Finished const all = extract({docs, "-o", path("all.shard"), "--json"});
  EXPECT_EQ(all.status, 1);
  EXPECT_THAT(all.errors, HasSubstr("docs/a-none.txt: no text"));
  EXPECT_EQ(only(all)["document_count"], 9);
  EXPECT_EQ(only(all)["failed_count"], 1);
  EXPECT_EQ(only(all)["bytes"], std::filesystem::file_size(path("all.shard")));
  extract({docs, "-o", path("1.shard"), "--part", "1/2"});
  extract({docs, "-o", path("2.shard"), "--part", "2/2", "-j", "1"});
  Finished const merged =
      run({"merge", path("2.shard"), path("1.shard"), "-o", path("m.shard"), "--json"});
  EXPECT_EQ(merged.status, 0);
  EXPECT_EQ(only(merged)["checksum"], only(all)["checksum"]);
  EXPECT_TRUE(read("m.shard") == read("all.shard"));
  EXPECT_FALSE(std::filesystem::exists(path("all.shard.part")));
}

TEST_F(ShardCommand, a_run_that_was_interrupted_goes_on) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("all.shard")});
  // An extraction that finds no place for its shard leaves what it has read.
  std::filesystem::create_directory(path("b.shard.new"));
  Finished const broken = extract({docs, "-o", path("b.shard")});
  EXPECT_EQ(broken.status, 1);
  EXPECT_TRUE(std::filesystem::exists(path("b.shard.part")));
  EXPECT_FALSE(std::filesystem::exists(path("b.shard")));
  std::filesystem::remove(path("b.shard.new"));
  std::string journal = read("b.shard.part");
  write("b.shard.part", journal.substr(0, journal.size() - 5));
  write("docs/b/7.txt", text(7) + "quay\n");
  write("docs/b/7.txt", text(7));
  Finished const resumed = extract({docs, "-o", path("b.shard"), "--json"});
  EXPECT_EQ(only(resumed)["resumed_count"], 8);
  EXPECT_TRUE(read("b.shard") == read("all.shard"));
  EXPECT_FALSE(std::filesystem::exists(path("b.shard.part")));
}

TEST_F(ShardCommand, a_document_that_changed_meanwhile_is_read_again) {
  std::string const docs = make_documents();
  std::filesystem::create_directory(path("b.shard.new"));
  extract({docs, "-o", path("b.shard")});
  std::filesystem::remove(path("b.shard.new"));
  write("docs/a/1.txt", text(99));
  std::filesystem::remove(path("docs/a/2.txt"));
  Finished const resumed = extract({docs, "-o", path("b.shard"), "--json"});
  EXPECT_EQ(only(resumed)["resumed_count"], 7);
  extract({docs, "-o", path("fresh.shard")});
  EXPECT_TRUE(read("b.shard") == read("fresh.shard"));
}

TEST_F(ShardCommand, a_document_that_failed_is_read_again) {
  std::string const docs = make_documents();
  std::filesystem::create_directory(path("b.shard.new"));
  extract({docs, path("late.txt"), "-o", path("b.shard")});
  std::filesystem::remove(path("b.shard.new"));
  Finished const resumed = extract({docs, path("late.txt"), "-o", path("b.shard"), "--json"});
  EXPECT_EQ(only(resumed)["document_count"], 10);
  EXPECT_EQ(only(resumed)["resumed_count"], 9);
}

TEST_F(ShardCommand, a_shard_in_the_way_of_another_is_kept) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("b.shard.new")});
  std::string const kept = read("b.shard.new");
  EXPECT_THAT(extract({docs, "-o", path("b.shard")}).errors,
              HasSubstr("b.shard.new: is in the way, and a whole shard; rename or remove it\n"));
  EXPECT_THAT(run({"merge", path("b.shard.new"), "-o", path("b.shard")}).errors,
              HasSubstr("b.shard.new: would be overwritten on the way to "));
  EXPECT_FALSE(std::filesystem::exists(path("b.shard.part")));
  EXPECT_TRUE(read("b.shard.new") == kept);
}

TEST_F(ShardCommand, what_a_run_left_that_was_killed_at_its_end_is_replaced) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("b.shard.new")});
  write("b.shard.part", "");
  EXPECT_EQ(only(extract({docs, "-o", path("b.shard"), "--json"}))["document_count"], 9);
  EXPECT_FALSE(std::filesystem::exists(path("b.shard.new")));
}

TEST_F(ShardCommand, the_shard_is_no_document_of_itself) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("docs/all.shard"), "--json"});
  std::string const first = read("docs/all.shard");
  extract({docs, "-o", path("docs/all.shard"), "--json"});
  EXPECT_TRUE(read("docs/all.shard") == first);
}

TEST_F(ShardCommand, learning_from_shards_is_learning_from_documents) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("1.shard"), "--part", "1/2"});
  extract({docs, "-o", path("2.shard"), "--part", "2/2"});
  for (std::vector<std::string> const& how : {std::vector<std::string>{"-k", "3"},
                                              {"-m", "dbscan", "--eps", "3", "--minpts", "2"},
                                              {"--by-folder"}}) {
    std::vector<std::string> of_documents = {"learn", docs, "--json", "--force", "--box", "box"};
    std::vector<std::string> of_shards = {"learn", "--json", "--force",       "--box",
                                          "box",   "--from", path("2.shard"), path("1.shard")};
    of_documents.insert(of_documents.end(), how.begin(), how.end());
    of_shards.insert(of_shards.end(), how.begin(), how.end());
    Finished const wanted = run(of_documents);
    std::string const box = read("boxes/box.box");
    Finished const found = run(of_shards);
    EXPECT_EQ(found.status, wanted.status);
    EXPECT_EQ(found.errors, wanted.errors);
    ASSERT_FALSE(wanted.output.empty());
    EXPECT_EQ(found.output, wanted.output);
    EXPECT_TRUE(read("boxes/box.box") == box);
  }
}

TEST_F(ShardCommand, comparing_shards_is_comparing_documents) {
  std::string const docs = make_documents();
  extract({docs, "-o", path("all.shard")});
  Finished const wanted = run({"similar", docs, "--threshold", "60", "--json"});
  Finished const found =
      run({"similar", "--from", path("all.shard"), "--threshold", "60", "--json"});
  EXPECT_EQ(only(found), only(wanted));
  EXPECT_EQ(found.status, 1);
  EXPECT_EQ(only(run({"similar", "--from", path("all.shard"), docs + "/a", path("all.shard"),
                      "--threshold", "60", "--json"}))["groups"],
            only(wanted)["groups"]);
}

TEST_F(ShardCommand, what_is_wrong_is_told_in_one_line) {
  std::string const docs = make_documents();
  Finished const part = extract({docs, "-o", path("a.shard"), "--part", "3/2"});
  EXPECT_EQ(part.status, 2);
  EXPECT_EQ(part.errors, "morvaai: --part takes I/N, as 2/8: the second of eight parts\n");
  Finished const document = extract({docs, "-o", docs + "/a/1.txt"});
  EXPECT_EQ(document.status, 1);
  EXPECT_THAT(document.errors, HasSubstr("is no shard, and is not replaced"));
  Finished const none = run({"learn", "--box", "b", "-k", "2", "--from", docs + "/a/1.txt"});
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(none.errors, HasSubstr("1.txt: no shard; morvaai extract makes them\n"));
  EXPECT_EQ(run({"learn", "--box", "b"}).status, 2);
  EXPECT_EQ(run({"merge", "-o", path("a.shard")}).status, 2);
}

}  // namespace
