#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "report/report_template.h"
#include "tools/boxes_program.h"

namespace {

using nlohmann::json;
using test::Finished;
using testing::HasSubstr;
using testing::IsEmpty;

class ReportCommand : public test::BoxesProgram {
 protected:
  void SetUp() override {
    if (tool::report_template().empty()) {
      GTEST_SKIP() << "built without reports";
    }
  }
  json data_of(char const* page) const {
    std::string const text = read(page);
    std::string const begin = "<script type=\"application/json\" id=\"data\">";
    std::size_t const at = text.find(begin) + begin.size();
    return json::parse(text.substr(at, text.find("</script>", at) - at));
  }
};

TEST_F(ReportCommand, learning_writes_a_page_of_classes_and_files) {
  learn("subjects", {"--report", path("page.html")});
  json const data = data_of("page.html");
  EXPECT_EQ(data["kind"], "learn");
  EXPECT_EQ(data["classes"][1]["name"], "kitchen");
  EXPECT_EQ(data["files"].size(), 4U);
  EXPECT_FALSE(data.contains("curve"));
}

TEST_F(ReportCommand, learning_says_where_the_page_is) {
  Finished const finished =
      run({"learn", samples(), "--by-folder", "--box", "a", "--report", path("page.html")});
  EXPECT_THAT(finished.output, testing::EndsWith("report: " + path("page.html") + "\n"));
  EXPECT_EQ(json_of({"learn", samples(), "--by-folder", "--box", "b", "--report",
                     path("page.html")})["report"],
            path("page.html"));
}

TEST_F(ReportCommand, learning_with_files_writes_the_curve_of_their_neighbours) {
  learn("subjects",
        {"-m", "dbscan", "--eps", "1.5", "--minpts", "2", "--report", path("page.html")});
  json const data = data_of("page.html");
  EXPECT_EQ(data["curve"]["eps"], 1.5);
  EXPECT_EQ(data["curve"]["values"].size(), 4U);
}

TEST_F(ReportCommand, a_box_of_centers_gives_a_page_without_files) {
  learn("subjects");
  Finished const finished = run({"report", "subjects", "-o", path("page.html")});
  EXPECT_EQ(finished.output, "report: " + path("page.html") + "\n");
  json const data = data_of("page.html");
  EXPECT_THAT(data["files"], IsEmpty());
  EXPECT_EQ(data["distances"].size(), 2U);
}

TEST_F(ReportCommand, a_box_file_will_do) {
  learn("subjects", {"-m", "dbscan", "--eps", "1.5", "--minpts", "2"});
  EXPECT_EQ(run({"report", box_file("subjects.box"), "-o", path("page.html")}).status, 0);
  EXPECT_EQ(data_of("page.html")["files"][2][0], "c.txt");
}

TEST_F(ReportCommand, a_page_is_printed_where_that_is_asked) {
  learn("subjects");
  Finished const finished = run({"report", "subjects", "-o", "-"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_EQ(finished.output.find("<!"), 0U);
  EXPECT_THAT(finished.output, testing::EndsWith("</html>\n"));
}

TEST_F(ReportCommand, a_page_is_not_mixed_with_results) {
  learn("subjects");
  Finished const finished = run({"match", write("in.txt", kitchen), "--report", "-"});
  EXPECT_EQ(finished.status, 2);
  EXPECT_THAT(finished.errors, HasSubstr("name a file for the report"));
}

TEST_F(ReportCommand, matching_tells_why) {
  learn("subjects");
  std::string const in = write("in.txt", std::string(kitchen) + "Dough needs butter.");
  std::string const out = write("out.txt", orbit);
  EXPECT_EQ(run({"match", in, out, "--report", path("page.html")}).status, 0);
  json const data = data_of("page.html");
  EXPECT_EQ(data["files"][0]["decision"], "accepted");
  EXPECT_EQ(data["files"][1]["decision"], "refused");
  EXPECT_GT(data["files"][1]["classes"][0]["excess"], 0.0);
}

TEST_F(ReportCommand, names_of_files_are_data_and_nothing_else) {
  std::string const folder = samples();
  write("samples/kitchen/<script>&.txt", kitchen);
  EXPECT_EQ(run({"learn", folder, "--by-folder", "--box", "a", "--report", path("p.html")}).status,
            0);
  EXPECT_THAT(data_of("p.html").dump(), HasSubstr("<script>&.txt"));
}

TEST_F(ReportCommand, a_folder_that_is_missing_is_told_before_the_work) {
  Finished const finished =
      run({"learn", samples(), "--by-folder", "--box", "a", "--report", path("none/page.html")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("none/page.html: the report cannot be written there"));
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(ReportCommand, a_device_is_told_before_the_work) {
  Finished const finished =
      run({"learn", samples(), "--by-folder", "--box", "a", "--report", "/dev/null"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("/dev/null: no file, nor a link to one"));
  EXPECT_THAT(names_in(boxes), IsEmpty());
}

TEST_F(ReportCommand, that_fails_does_not_cost_the_box) {
  Finished const finished = run({"learn", samples(), "--by-folder", "--box", "a", "--report",
                                 path(std::string(300, 'x').c_str())});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("the report cannot be written: File name too long"));
  EXPECT_EQ(run({"box", "verify", "a"}).status, 0);
}

TEST_F(ReportCommand, of_no_box_is_told) {
  Finished const finished = run({"report", "none"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.errors, HasSubstr("there is no box none"));
}

}  // namespace
