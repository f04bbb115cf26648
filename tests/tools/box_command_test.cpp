#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/QXPPolicyMorvaClustBox.h"
#include "hostkit/morvabs/box_support.h"

#include "tools/program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::HasSubstr;
using testing::IsEmpty;

class BoxDump : public test::Program {
 protected:
  Finished dump(QXPPolicyMorvaClustBox const& box, std::vector<std::string> arguments = {}) const {
    EXPECT_EQ(box.to_file(path("a.box").c_str()), 0);
    arguments.insert(arguments.begin(), {"box", "dump", path("a.box")});
    return run(arguments);
  }
  json dumped(QXPPolicyMorvaClustBox const& box) const {
    Finished const finished = dump(box, {"--json"});
    EXPECT_EQ(finished.status, 0) << finished.errors;
    return json::parse(finished.output);
  }
};

TEST_F(BoxDump, as_json_shows_every_field) {
  json object = dumped(test::full_box());
  EXPECT_EQ(object["file"], path("a.box"));
  object.erase("file");
  EXPECT_EQ(object, json::parse(R"({
    "box_value": -7, "cluster_type": 1, "reserved": [1, -2, -2147483648],
    "words": ["word", "", "中文词", "last"],
    "kmeans_classes": [
      {"id": "k1", "name": "分类0", "radius": -0.0, "words": ["", "", "", ""],
       "weights": {"count": 4, "values": [[0, 0.5], [1, 0.25], [2, -1.0], [3, 1e300]]},
       "dna": "0123456789ABCDEF", "reserve": -9223372036854775808},
      {"id": "k2", "name": "", "radius": 0.0, "words": ["a", "b"],
       "weights": {"count": 200, "values": [[17, 3.5], [199, -0.0]]}, "dna": "", "reserve": 0}],
    "dbscan_classes": [
      {"id": "d1", "name": "分类1", "eps": 0.75, "minpts": 4, "members": [
        {"id": "f1", "weights": {"count": 4, "values": [[1, 1.0]]}},
        {"id": "f2", "weights": {"count": 0, "values": []}}]}]})"));
}

TEST_F(BoxDump, as_json_tells_zeros_apart) {
  EXPECT_TRUE(std::signbit(dumped(test::full_box())["kmeans_classes"][0]["radius"].get<double>()));
}

TEST_F(BoxDump, as_json_gives_the_bits_of_what_is_no_number) {
  QXPPolicyMorvaClustBox box;
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].d_radius = std::numeric_limits<double>::infinity();
  box.vt_kmeans_node[0].vt_weight = {std::bit_cast<double>(std::uint64_t{0x7FF8000000000123})};
  json const shown = dumped(box)["kmeans_classes"][0];
  EXPECT_EQ(shown["radius"], "0x7FF0000000000000");
  EXPECT_EQ(shown["weights"]["values"][0][1], "0x7FF8000000000123");
}

TEST_F(BoxDump, as_json_gives_the_characters_of_what_is_no_text) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {std::wstring{L'a', wchar_t(0xD800), wchar_t(0xFFFFFFFF)}.c_str(), L"\xFFFD"};
  EXPECT_EQ(dumped(box)["words"], (json{{97, 0xD800, 0xFFFFFFFF}, "\xEF\xBF\xBD"}));
}

TEST_F(BoxDump, shows_the_classes_with_their_heaviest_words) {
  QXPPolicyMorvaClustBox box;
  box.vt_words = {L"low", L"none", L"high"};
  box.vt_kmeans_node.resize(1);
  box.vt_kmeans_node[0].str_class_id = L"k1";
  box.vt_kmeans_node[0].str_class_name = L"Orders";
  box.vt_kmeans_node[0].d_radius = 1.5;
  box.vt_kmeans_node[0].vt_weight = {0.25, 0.0, 0.75};
  EXPECT_EQ(dump(box).output,
            "K-means, 3 words, 1 classes, value 0\n"
            "\n"
            "Orders (k1)\n"
            "  radius 1.5\n"
            "  2 of 3 words: high(0.75) low(0.25)\n");
}

TEST_F(BoxDump, shows_the_members_of_a_class) {
  Finished const finished = dump(test::full_box());
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.output, HasSubstr("分类1 (d1)\n  eps 0.75, minpts 4, 2 members\n"
                                         "  f1: 1 of 4 words: (1)\n  f2: 0 of 0 words:\n"));
}

TEST_F(BoxDump, of_a_damaged_file_fails_with_the_reason) {
  Finished const finished = run({"box", "dump", write("a.box", "no box"), "--json"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.output, IsEmpty());
  EXPECT_EQ(finished.errors, "morvaai: " + path("a.box") + ": no box file, or a damaged one\n");
}

TEST_F(BoxDump, of_a_missing_file_fails_with_the_reason) {
  Finished const finished = run({"box", "dump", path("missing.box")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("No such file or directory"));
}

TEST_F(BoxDump, needs_a_file) {
  EXPECT_EQ(run({"box", "dump"}).status, 2);
  EXPECT_EQ(run({"box"}).status, 2);
}

}  // namespace
