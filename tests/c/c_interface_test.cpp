#include <cerrno>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "box/HFileClusterBoxMgr.h"
#include "classify/boxes.h"
#include "dna/HFileDNA.h"
#include "dna/HFileMatchDNA.h"
#include "features/HFileFeature.h"
#include "host/HFileLog.h"
#include "host/HTessarineResult.h"
#include "host/utf8.h"
#include "morvaai_c.h"

#include "c/internal/reading_bytes.h"
#include "support/memory_limit.h"
#include "support/temporary_directory.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::StrEq;

constexpr unsigned words_wanted = MORVA_WANT_WORDS;
constexpr unsigned everything =
    MORVA_WANT_WORDS | MORVA_WANT_DNA | MORVA_WANT_WIDE_DNA | MORVA_WANT_TEXT;

using Document = std::unique_ptr<morva_document, decltype(&morva_document_free)>;
using Boxes = std::unique_ptr<morva_boxes, decltype(&morva_boxes_close)>;
using Pool = std::unique_ptr<morva_pool, decltype(&morva_pool_free)>;

std::string sample(std::string const& name) {
  return std::string(SAMPLES_DIR "/") + name;
}

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text_view(text));
}

std::string report() {
  return sample("harbour-report.docx");
}

Document read(std::string const& path, unsigned wants = everything, std::size_t words = 100,
              morva_status expected = MORVA_OK) {
  morva_document* document = nullptr;
  EXPECT_EQ(morva_read_file(path.c_str(), wants, words, &document), expected);
  return {document, &morva_document_free};
}

Document read_text(std::string_view text, unsigned wants = everything, std::size_t words = 100) {
  morva_document* document = nullptr;
  EXPECT_EQ(morva_read_text(text.data(), text.size(), wants, words, &document), MORVA_OK);
  return {document, &morva_document_free};
}

struct Words {
  std::vector<std::string> words;
  std::vector<double> weights;
  std::vector<std::int32_t> counts;
  std::vector<std::string> tags;

  bool operator==(Words const&) const = default;
};

Words words_of(Document const& document) {
  std::size_t count = 0;
  char const* const* words = nullptr;
  char const* const* tags = nullptr;
  double const* weights = nullptr;
  std::int32_t const* counts = nullptr;
  EXPECT_EQ(morva_document_words(document.get(), &count, &words, &weights, &counts, &tags),
            MORVA_OK);
  return {{words, words + count},
          {weights, weights + count},
          {counts, counts + count},
          {tags, tags + count}};
}

std::string dna_of(Document const& document) {
  char const* dna = nullptr;
  EXPECT_EQ(morva_document_dna(document.get(), &dna), MORVA_OK);
  return dna;
}

std::string wide_dna_of(Document const& document) {
  char const* dna = nullptr;
  EXPECT_EQ(morva_document_wide_dna(document.get(), &dna), MORVA_OK);
  return dna;
}

std::string text_of(Document const& document, int kind = MORVA_TEXT_MAIN) {
  char const* text = nullptr;
  std::size_t size = 0;
  EXPECT_EQ(morva_document_text(document.get(), kind, &text, &size), MORVA_OK);
  return {text, size};
}

std::int64_t covered_by(Document const& document) {
  std::int64_t covered = 0;
  EXPECT_EQ(morva_document_covered(document.get(), &covered), MORVA_OK);
  return covered;
}

Document from_words(std::vector<char const*> const& words, std::vector<double> const& weights,
                    char const* wide_dna = nullptr) {
  morva_document* document = nullptr;
  EXPECT_EQ(morva_document_from_words(words.data(), weights.data(), nullptr, words.size(), wide_dna,
                                      &document),
            MORVA_OK);
  return {document, &morva_document_free};
}

Boxes open(std::string const& path, morva_status expected = MORVA_OK) {
  morva_boxes* boxes = nullptr;
  EXPECT_EQ(morva_boxes_open(path.c_str(), &boxes), expected);
  return {boxes, &morva_boxes_close};
}

std::string name_at(Boxes const& boxes, std::size_t position) {
  char const* const name = morva_boxes_class_name(boxes.get(), position);
  return name == nullptr ? "no class" : name;
}

std::string matched(Boxes const& boxes, Document const& document) {
  std::size_t position = 0;
  EXPECT_EQ(morva_boxes_match(boxes.get(), document.get(), &position), MORVA_OK);
  return position == SIZE_MAX ? "none" : name_at(boxes, position);
}

// A document of both words is nearest to the last.
QXPPolicyMorvaClustBox ships_and_trains() {
  return test::kmeans_box({L"ship", L"train"}, {test::center(L"1", L"ships", 0.5, {1.0, 0.0}),
                                                test::center(L"2", L"trains", 0.5, {0.0, 1.0}),
                                                test::center(L"3", L"all", 9.0, {0.5, 0.5})});
}

struct Taken {
  std::vector<std::size_t> indices;
  std::vector<morva_status> statuses;
  std::vector<std::string> errors;
  std::vector<Document> documents;
  std::size_t most = SIZE_MAX;
};

int take(void* user, std::size_t index, morva_status status, morva_document* document) {
  auto& taken = *static_cast<Taken*>(user);
  taken.indices.push_back(index);
  taken.statuses.push_back(status);
  taken.errors.emplace_back(morva_last_error());
  taken.documents.emplace_back(document, &morva_document_free);
  return taken.indices.size() < taken.most ? 0 : 1;
}

Pool make_pool(std::size_t jobs = 2) {
  morva_pool* pool = nullptr;
  EXPECT_EQ(morva_pool_new(&pool), MORVA_OK);
  EXPECT_EQ(morva_pool_set_jobs(pool, jobs), MORVA_OK);
  return {pool, &morva_pool_free};
}

morva_status read_all(Pool const& pool, std::vector<std::string> const& paths, Taken& taken,
                      unsigned wants = everything) {
  std::vector<char const*> list;
  for (std::string const& path : paths) {
    list.push_back(path.c_str());
  }
  return morva_pool_read(pool.get(), list.data(), list.size(), wants, 100, &take, &taken);
}

}  // namespace

TEST(CLibrary, has_versions) {
  EXPECT_EQ(morva_interface_version(), 1);
  EXPECT_THAT(morva_library_version(), StartsWith("3."));
}

TEST(CLibrary, says_where_there_is_no_dictionary) {
  test::TemporaryDirectory const empty;
  test::EnvironmentVariable const variable("MORVA_DICT_PATH", empty.path().string());
  EXPECT_EQ(morva_load_dictionary(nullptr), MORVA_NO_DICTIONARY);
  EXPECT_THAT(morva_last_error(), HasSubstr(empty.path().string()));
}

TEST(CLibrary, logs_to_the_sink_that_is_set) {
  std::vector<std::string> lines;
  auto const sink = [](void* user, int, char const* text) {
    static_cast<std::vector<std::string>*>(user)->emplace_back(text);
  };
  int const level = HFileLog::ins()->mi_level;
  ASSERT_EQ(morva_set_log(1, sink, &lines), MORVA_OK);
  HStringForLog& record = HFileLog::ins()->get(1, L"tag", 1);
  record << L"港口";
  HFileLog::ins()->log(record);
  ASSERT_EQ(morva_set_log(level, nullptr, nullptr), MORVA_OK);
  EXPECT_THAT(lines, ElementsAre("港口"));
}

TEST(CDocument, has_the_words_of_the_feature_record) {
  HFeatureNode expected;
  ASSERT_TRUE(HFileFeature::get_file_feature(HString(report().c_str()), expected, true));
  Words const words = words_of(read(report()));
  ASSERT_EQ(words.words.size(), expected.vt_words.size());
  for (std::size_t i = 0; i < words.words.size(); ++i) {
    EXPECT_EQ(words.words[i], utf8(expected.vt_words[i]));
  }
  EXPECT_EQ(words.weights, expected.vt_weight);
  EXPECT_EQ(words.counts, expected.vt_counts);
}

TEST(CDocument, has_the_same_words_whatever_else_is_wanted) {
  EXPECT_EQ(words_of(read(report(), words_wanted)), words_of(read(report(), everything)));
}

TEST(CDocument, has_the_first_words_where_few_are_wanted) {
  Words const few = words_of(read(report(), words_wanted, 3));
  Words const all = words_of(read(report(), words_wanted, 0));
  EXPECT_EQ(few.words, std::vector<std::string>(all.words.begin(), all.words.begin() + 3));
}

TEST(CDocument, has_the_fingerprints_of_the_library) {
  HString const path(report().c_str());
  HString narrow;
  HString wide;
  int covered = 0;
  HFileDNA::get_file_dna(path, wide, nullptr, 1024);
  HFileDNA::get_file_dna(path, narrow, &covered, 32);
  Document const document = read(report());
  EXPECT_EQ(dna_of(document), utf8(narrow));
  EXPECT_EQ(wide_dna_of(document), utf8(wide));
  EXPECT_EQ(covered_by(document), covered);
}

TEST(CDocument, leaves_the_length_of_fingerprints_of_the_process) {
  HFileDNA::mi_dna_length = 1024;
  read(report(), MORVA_WANT_DNA);
  EXPECT_EQ(std::exchange(HFileDNA::mi_dna_length, 32), 1024);
}

TEST(CDocument, has_the_texts_of_the_library) {
  HTessarineResult expected;
  ASSERT_TRUE(HTessarine::read(HString(sample("launch.pptx").c_str()), expected));
  Document const document = read(sample("launch.pptx"), MORVA_WANT_TEXT);
  EXPECT_EQ(text_of(document), utf8(expected.str_main));
  EXPECT_EQ(text_of(document, MORVA_TEXT_NOTES), utf8(expected.str_remark));
}

TEST(CDocument, of_a_text_has_the_fingerprint_of_the_library) {
  HString expected;
  HFileDNA::get_file_centent_dna(L"轮船停在港口 ships in the harbour", L"", expected, nullptr, 32);
  EXPECT_EQ(dna_of(read_text("轮船停在港口 ships in the harbour")), utf8(expected));
}

TEST(CDocument, keeps_zeros_and_replaces_bad_bytes_in_a_text) {
  using namespace std::string_view_literals;
  EXPECT_EQ(text_of(read_text("a\0b\xFF"sv)), "a\0b\xEF\xBF\xBD"sv);
}

TEST(CDocument, of_an_empty_text_has_no_words_and_no_fingerprint) {
  Document const document = read_text("");
  EXPECT_EQ(morva_document_outcome(document.get()), MORVA_OUTCOME_NO_TEXT);
  EXPECT_THAT(words_of(document).words, IsEmpty());
  EXPECT_EQ(dna_of(document), "");
}

TEST(CDocument, of_a_missing_file_tells_the_systems_error) {
  Document const document = read("/nowhere/a.docx", everything, 100, MORVA_CANNOT_OPEN);
  EXPECT_EQ(morva_document_error(document.get()), ENOENT);
  EXPECT_EQ(morva_document_outcome(document.get()), MORVA_OUTCOME_FAILED);
  EXPECT_STREQ(morva_last_error(), "/nowhere/a.docx: No such file or directory");
}

TEST(CDocument, of_a_damaged_file_has_outcome_and_reason) {
  test::TemporaryDirectory const directory;
  std::ifstream whole(report(), std::ios::binary);
  std::string const half(std::istreambuf_iterator<char>(whole), {});
  directory.write("half.docx", half.substr(0, half.size() / 2));
  std::string const path = (directory.path() / "half.docx").string();
  Document const document = read(path, everything, 100, MORVA_NOT_READ);
  EXPECT_EQ(morva_document_outcome(document.get()), MORVA_OUTCOME_DAMAGED);
  EXPECT_EQ(morva_last_error(), path + ": damaged: " + morva_document_reason(document.get()));
}

TEST(CDocument, of_an_unknown_type_is_not_supported) {
  test::TemporaryDirectory const directory;
  directory.write("file", std::string("\x7F"
                                      "ELF\1\2\3\0\0\0\0\0",
                                      12));
  Document const document =
      read((directory.path() / "file").string(), everything, 100, MORVA_NOT_READ);
  EXPECT_EQ(morva_document_outcome(document.get()), MORVA_OUTCOME_NOT_SUPPORTED);
}

TEST(CDocument, refuses_what_it_was_not_read_for) {
  Document const document = read_text("ships", MORVA_WANT_TEXT);
  char const* dna = "set";
  EXPECT_EQ(morva_document_dna(document.get(), &dna), MORVA_NOT_ASKED);
  EXPECT_EQ(dna, nullptr);
  EXPECT_EQ(morva_document_words(document.get(), nullptr, nullptr, nullptr, nullptr, nullptr),
            MORVA_NOT_ASKED);
}

TEST(CDocument, refuses_null_and_unknown_flags_and_kinds) {
  morva_document* document = nullptr;
  char const* text = nullptr;
  EXPECT_EQ(morva_read_file(nullptr, everything, 0, &document), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_read_file(report().c_str(), everything, 0, nullptr), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_read_file(report().c_str(), 16, 0, &document), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_read_text(nullptr, 1, everything, 0, &document), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_document_dna(nullptr, &text), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_document_text(read_text("a").get(), 10, &text, nullptr), MORVA_INVALID_ARGUMENT);
  morva_document_free(nullptr);
}

TEST(CDocument, of_words_refuses_those_that_are_none) {
  morva_document* document = nullptr;
  char const* const words[] = {""};
  double const weights[] = {1.0};
  EXPECT_EQ(morva_document_from_words(words, weights, nullptr, 1, nullptr, &document),
            MORVA_INVALID_ARGUMENT);
}

TEST(CDocument, says_that_memory_ran_out) {
#ifdef MORVA_SANITIZED
  GTEST_SKIP() << "sanitizers limit no memory";
#endif
  std::string const text(std::size_t{64} << 20, ' ');
  morva_document* document = nullptr;
  morva_status status = MORVA_OK;
  {
    test::MemoryLimit const limit(std::size_t{64} << 20);
    status = morva_read_text(text.data(), text.size(), everything, 0, &document);
  }
  EXPECT_EQ(status, MORVA_OUT_OF_MEMORY);
  EXPECT_STREQ(morva_last_error(), "out of memory");
}

TEST(CDocument, is_read_by_many_threads_as_by_one) {
  Words const expected = words_of(read(report()));
  std::vector<std::future<Words>> others;
  for (int i = 0; i < 4; ++i) {
    others.push_back(std::async(std::launch::async, [] { return words_of(read(report())); }));
  }
  for (auto& other : others) {
    EXPECT_EQ(other.get(), expected);
  }
}

TEST(CLastError, belongs_to_its_thread) {
  read("/nowhere/a.docx", everything, 100, MORVA_CANNOT_OPEN);
  std::string const other =
      std::async(std::launch::async, [] { return std::string(morva_last_error()); }).get();
  EXPECT_EQ(other, "");
}

TEST(CLastError, has_no_control_characters) {
  read("/nowhere/\x1B[31m", everything, 100, MORVA_CANNOT_OPEN);
  EXPECT_STREQ(morva_last_error(), "/nowhere/\xEF\xBF\xBD[31m: No such file or directory");
}

TEST(CDna, similarity_is_that_of_the_library) {
  std::string const a = dna_of(read(report()));
  std::string const b = dna_of(read(sample("harbour-report-revised.docx")));
  double similarity = 0.0;
  ASSERT_EQ(morva_dna_similarity(a.c_str(), b.c_str(), &similarity), MORVA_OK);
  EXPECT_EQ(similarity, HFileMatchDNA::get_dna_similarity(HString(a.c_str()), HString(b.c_str())));
}

TEST(CDna, refuses_what_is_no_fingerprint) {
  double similarity = 1.0;
  EXPECT_EQ(morva_dna_similarity("ff", "FF", &similarity), MORVA_INVALID_ARGUMENT);
  EXPECT_STREQ(morva_last_error(), "a is no fingerprint: it is of digits and A to F");
}

TEST(CDna, point_is_that_of_the_library) {
  std::string const wide = wide_dna_of(read(report()));
  std::vector<double> values(128);
  ASSERT_EQ(morva_dna_point(wide.c_str(), values.data()), MORVA_OK);
  EXPECT_EQ(values, HFileDNA::get_pointn(L"", HString(wide.c_str())).vt_data);
  EXPECT_EQ(morva_dna_point("FF", values.data()), MORVA_INVALID_ARGUMENT);
}

TEST(CDnaList, compares_one_with_all) {
  std::unique_ptr<morva_dna_list, decltype(&morva_dna_list_free)> list(nullptr,
                                                                       &morva_dna_list_free);
  morva_dna_list* made = nullptr;
  ASSERT_EQ(morva_dna_list_new(&made), MORVA_OK);
  list.reset(made);
  char const* const dnas[] = {"FFFF", "", "FF00", "F", "0000"};
  ASSERT_EQ(morva_dna_list_append(made, dnas, 5), MORVA_OK);
  std::vector<double> similarities(5);
  ASSERT_EQ(morva_dna_list_similarities(made, "FFF0", similarities.data(), 5), MORVA_OK);
  EXPECT_THAT(similarities, ElementsAre(75.0, 0.0, 75.0, 0.0, 25.0));
  EXPECT_EQ(morva_dna_list_similarities(made, "FFF0", similarities.data(), 4),
            MORVA_INVALID_ARGUMENT);
  std::vector<std::size_t> positions(2);
  std::size_t found = 0;
  ASSERT_EQ(
      morva_dna_list_most_similar(made, "FFF0", 2, positions.data(), similarities.data(), &found),
      MORVA_OK);
  EXPECT_EQ(found, 2U);
  EXPECT_THAT(positions, ElementsAre(0U, 2U));
}

class CBoxes : public ::testing::Test {
 protected:
  std::string write(char const* name, QXPPolicyMorvaClustBox const& box) {
    EXPECT_EQ(box.to_file(directory_ / name), 0);
    return (directory_.path() / name).string();
  }
  std::string path() const { return directory_.path().string(); }

  test::TemporaryDirectory directory_;
};

TEST_F(CBoxes, of_a_file_tell_their_classes) {
  Boxes const boxes = open(write("traffic.box", ships_and_trains()));
  ASSERT_EQ(morva_boxes_class_count(boxes.get()), 3U);
  EXPECT_STREQ(morva_boxes_box_id(boxes.get(), 1), "traffic");
  EXPECT_STREQ(morva_boxes_class_id(boxes.get(), 1), "2");
  EXPECT_STREQ(morva_boxes_class_name(boxes.get(), 1), "trains");
  EXPECT_EQ(morva_boxes_class_name(boxes.get(), 3), nullptr);
}

TEST_F(CBoxes, give_the_first_class_that_takes_a_document) {
  Boxes const boxes = open(write("traffic.box", ships_and_trains()));
  EXPECT_EQ(matched(boxes, from_words({"ship"}, {1.0})), "ships");
  EXPECT_EQ(matched(boxes, from_words({"train", "ship"}, {0.5, 0.4})), "all");
  EXPECT_EQ(matched(boxes, from_words({"aeroplane"}, {1.0})), "none");
}

TEST_F(CBoxes, tell_of_each_class_whether_it_takes_a_document) {
  Boxes const boxes = open(write(
      "traffic.box",
      test::dbscan_box({L"ship", L"train"}, {test::members(L"1", L"ships", 0.5, 1, {{1.0, 0.0}}),
                                             test::members(L"2", L"trains", 0.5, 1, {{0.0, 1.0}}),
                                             test::members(L"3", L"all", 9.0, 1, {{0.5, 0.5}})})));
  Document const ship = from_words({"ship"}, {1.0});
  std::vector<int> answers(3);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    ASSERT_EQ(morva_boxes_is_in_class(boxes.get(), ship.get(), i, &answers[i]), MORVA_OK);
  }
  EXPECT_THAT(answers, ElementsAre(1, 0, 1));
  EXPECT_EQ(morva_boxes_is_in_class(boxes.get(), ship.get(), 3, answers.data()),
            MORVA_INVALID_ARGUMENT);
}

TEST_F(CBoxes, match_a_document_by_its_strongest_words_however_few_were_wanted) {
  HFeatureNode record;
  ASSERT_TRUE(HFileFeature::get_file_feature(HString(report().c_str()), record, true));
  Boxes const boxes = open(write(
      "exact.box",
      test::kmeans_box(record.vt_words, {test::center(L"1", L"itself", 0.0, record.vt_weight)})));
  EXPECT_EQ(matched(boxes, read(report(), words_wanted, 1)), "itself");
  EXPECT_EQ(matched(boxes, read(report(), words_wanted, 0)), "itself");
}

TEST_F(CBoxes, of_a_directory_are_asked_in_the_order_of_its_index) {
  write("b.box", test::kmeans_box({L"ship"}, {test::center(L"1", L"of b", 0.5, {1.0})}));
  write("a.box", test::dbscan_box({L"ship"}, {test::members(L"2", L"of a", 0.5, 1, {{1.0}})}));
  directory_.write("box.ini", "[b]\nMD5=\nCLASS=1\n[a]\nMD5=\nCLASS=2\n");
  Boxes const boxes = open(path());
  EXPECT_EQ(name_at(boxes, 0) + ", " + name_at(boxes, 1), "of b, of a");
  EXPECT_EQ(matched(boxes, from_words({"ship"}, {1.0})), "of b");
}

TEST_F(CBoxes, of_two_handles_with_one_id_are_two) {
  QXPPolicyMorvaClustBox const ships =
      test::kmeans_box({L"ship"}, {test::center(L"1", L"ships", 0.5, {1.0})});
  QXPPolicyMorvaClustBox const trains =
      test::kmeans_box({L"train"}, {test::center(L"1", L"trains", 0.5, {1.0})});
  std::string const file = write("one.box", ships);
  Boxes const first = open(file);
  Boxes const second = open(write("one.box", trains));
  EXPECT_EQ(matched(first, from_words({"ship"}, {1.0})), "ships");
  EXPECT_EQ(matched(second, from_words({"ship"}, {1.0})), "none");
  EXPECT_EQ(matched(second, from_words({"train"}, {1.0})), "trains");
}

TEST_F(CBoxes, leave_the_manager_of_the_process_alone) {
  HFileClusterBoxMgr* const former = HFileClusterBoxMgr::pbox;
  Boxes const boxes = open(write("traffic.box", ships_and_trains()));
  matched(boxes, from_words({"ship"}, {1.0}));
  EXPECT_EQ(HFileClusterBoxMgr::pbox, former);
}

TEST_F(CBoxes, of_fingerprints_want_the_wide_one) {
  HString const dna = test::wide_dna(L"7FFFFFFF");
  QXPPolicyMorvaClustBox box = test::kmeans_box(
      {L"ship"}, {test::center(L"1", L"one", 0.5, {1.0}), test::center(L"2", L"two", 0.5, {1.0})});
  box.vt_kmeans_node[0].str_dna = dna;
  box.vt_kmeans_node[1].str_dna = dna;
  Boxes const boxes = open(write("dna.box", box));
  EXPECT_EQ(morva_boxes_wants(boxes.get()), unsigned{MORVA_WANT_WORDS | MORVA_WANT_WIDE_DNA});
  EXPECT_EQ(matched(boxes, from_words({"ship"}, {1.0}, utf8(dna).c_str())), "one");
  std::size_t position = 0;
  EXPECT_EQ(morva_boxes_match(boxes.get(), from_words({"ship"}, {1.0}).get(), &position),
            MORVA_NOT_ASKED);
}

TEST_F(CBoxes, that_are_missing_or_damaged_are_told) {
  directory_.write("bad.box", "no box");
  open(path() + "/no.box", MORVA_CANNOT_OPEN);
  EXPECT_EQ(morva_last_error(), path() + "/no.box: No such file or directory");
  open(path() + "/no\u202E.box", MORVA_CANNOT_OPEN);
  EXPECT_EQ(morva_last_error(), path() + "/no\uFFFD.box: No such file or directory");
  open(path() + "/bad.box", MORVA_BAD_BOX);
  EXPECT_EQ(morva_last_error(), path() + "/bad.box: it is no box file, or it is damaged");
  open(path(), MORVA_CANNOT_OPEN);
  EXPECT_EQ(morva_last_error(), path() + "/box.ini: there is no index of boxes");
}

TEST_F(CBoxes, that_do_not_open_leave_the_systems_error) {
  errno = 0;
  open(path() + "/no.box", MORVA_CANNOT_OPEN);
  EXPECT_EQ(std::exchange(errno, 0), ENOENT);
  open(path(), MORVA_CANNOT_OPEN);
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(CBoxes, of_an_index_that_is_too_large_are_told) {
  write("traffic.box", ships_and_trains());
  directory_.write("box.ini", std::string(std::size_t{9} << 20, ';') + "\n[traffic]\nCLASS=1\n");
  open(path(), MORVA_BAD_BOX);
  EXPECT_EQ(morva_last_error(),
            path() + "/box.ini: the index of boxes cannot be read: File too large");
}

TEST_F(CBoxes, of_another_directory_are_not_reached_through_the_index) {
  write("up.box", ships_and_trains());
  std::filesystem::create_directory(directory_.path() / "in");
  directory_.write("in/box.ini", "[../up]\nMD5=\nCLASS=1\n");
  open(path() + "/in", MORVA_BAD_BOX);
  EXPECT_THAT(morva_last_error(), HasSubstr("../up, which is no file name"));
}

TEST(CPool, gives_what_reading_in_this_process_gives) {
  std::vector<std::string> const files = {report(), sample("launch.pptx"),
                                          sample("travel-policy.odt")};
  Taken taken;
  ASSERT_EQ(read_all(make_pool(), files, taken), MORVA_OK);
  ASSERT_THAT(taken.indices, ElementsAre(0U, 1U, 2U));
  for (std::size_t i = 0; i < files.size(); ++i) {
    Document const expected = read(files[i]);
    EXPECT_EQ(words_of(taken.documents[i]), words_of(expected));
    EXPECT_EQ(dna_of(taken.documents[i]), dna_of(expected));
    EXPECT_EQ(wide_dna_of(taken.documents[i]), wide_dna_of(expected));
    EXPECT_EQ(covered_by(taken.documents[i]), covered_by(expected));
    EXPECT_EQ(text_of(taken.documents[i]), text_of(expected));
  }
}

TEST(CPool, tells_of_each_file_why_it_was_not_read) {
  Taken taken;
  ASSERT_EQ(read_all(make_pool(1), {"/nowhere/a.docx", report()}, taken), MORVA_OK);
  EXPECT_THAT(taken.statuses, ElementsAre(MORVA_CANNOT_OPEN, MORVA_OK));
  EXPECT_EQ(taken.errors[0], "/nowhere/a.docx: No such file or directory");
  EXPECT_EQ(morva_document_error(taken.documents[0].get()), ENOENT);
}

TEST(CPool, outlives_a_document_that_needs_more_memory_than_it_may) {
  int memory = 0;
  ASSERT_EQ(morva_isolation(nullptr, nullptr, &memory), MORVA_OK);
  if (memory == 0) {
    GTEST_SKIP() << "nothing bounds the memory of workers";
  }
  test::TemporaryDirectory const directory;
  directory.write("large.txt", std::string(std::size_t{16} << 20, 'a'));
  Pool const pool = make_pool(1);
  ASSERT_EQ(morva_pool_set_memory(pool.get(), std::uint64_t{16} << 20), MORVA_OK);
  Taken taken;
  ASSERT_EQ(read_all(pool, {(directory.path() / "large.txt").string(), report()}, taken), MORVA_OK);
  EXPECT_THAT(taken.statuses, ElementsAre(MORVA_NOT_READ, MORVA_OK));
  EXPECT_STREQ(morva_document_reason(taken.documents[0].get()), "out of memory");
}

TEST(CPool, logs_nothing_in_workers_where_there_is_a_sink) {
  auto const ignore = [](void*, int, char const*) {};
  int const level = HFileLog::ins()->mi_level;
  ASSERT_EQ(morva_set_log(4, ignore, nullptr), MORVA_OK);
  ::testing::internal::CaptureStderr();
  Taken taken;
  read_all(make_pool(1), {"/nowhere/a.docx", report()}, taken);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  ASSERT_EQ(morva_set_log(level, nullptr, nullptr), MORVA_OK);
}

TEST(CPool, stops_where_the_caller_wants_no_more) {
  Taken taken;
  taken.most = 1;
  EXPECT_EQ(read_all(make_pool(1), {report(), report(), report()}, taken), MORVA_STOPPED);
  EXPECT_EQ(taken.indices.size(), 1U);
}

TEST(CPool, refuses_numbers_out_of_range) {
  Pool const pool = make_pool();
  EXPECT_EQ(morva_pool_set_jobs(pool.get(), 0), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_pool_set_memory(pool.get(), 1), MORVA_INVALID_ARGUMENT);
  EXPECT_EQ(morva_pool_set_seconds(pool.get(), 0), MORVA_INVALID_ARGUMENT);
}

class WorkerAnswer : public ::testing::Test {
 protected:
  static morva::c::Reading reading() {
    morva::c::Reading reading;
    reading.outcome = MORVA_OUTCOME_TEXT;
    reading.dna = "FF";
    reading.words.resize(1);
    reading.words[0].word = L"ship";
    reading.words[0].weight = 1.0;
    reading.texts[0] = "ship";
    return reading;
  }
  static bool is_taken(morva::c::Reading const& sent, unsigned wants = everything,
                       std::size_t words = 1) {
    return morva::c::unpack(morva::c::pack(sent), {wants, words}).has_value();
  }
};

TEST_F(WorkerAnswer, is_taken_as_it_was_sent) {
  EXPECT_TRUE(is_taken(reading()));
}

TEST_F(WorkerAnswer, is_refused_wherever_it_is_cut) {
  std::string const whole = morva::c::pack(reading());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    // Without its words it is the answer of a document that has none.
    bool const is_without_words = size + 8 + 4 + 8 + 4 + 8 == whole.size();
    EXPECT_EQ(morva::c::unpack(whole.substr(0, size), {everything, 1}).has_value(),
              is_without_words)
        << size;
  }
}

TEST_F(WorkerAnswer, is_refused_where_it_cannot_be) {
  auto const with = [](auto change) {
    morva::c::Reading changed = reading();
    change(changed);
    return changed;
  };
  EXPECT_FALSE(is_taken(with([](auto& r) { r.outcome = 77; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.status = MORVA_INTERNAL; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.error = ENOENT; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.dna = "<b>"; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.texts[0] = "\xFF"; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.words[0].weight = std::nan(""); })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.words[0].count = -1; })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.words[0].word = HString(L"a\0b", 3); })));
  EXPECT_FALSE(is_taken(with([](auto& r) { r.words.resize(101, r.words[0]); })));
}

TEST_F(WorkerAnswer, is_refused_with_more_than_was_wanted) {
  EXPECT_FALSE(is_taken(reading(), everything & ~unsigned{MORVA_WANT_TEXT}));
  EXPECT_FALSE(is_taken(reading(), everything & ~unsigned{MORVA_WANT_DNA}));
  EXPECT_FALSE(is_taken(reading(), everything & ~unsigned{MORVA_WANT_WORDS}));
}
