#include "classes/method.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "morvaai.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using tool::Clustering;
using tool::MethodOptions;

// Weights that a box can hold, as its format has it.
constexpr int most_weights = 1 << 27;

// Two classes of so many files.
Clustering run_over(int words, int files_of_each) {
  Clustering run;
  run.words.resize(static_cast<std::size_t>(words));
  run.clusters.assign(2, std::vector<int>(static_cast<std::size_t>(files_of_each)));
  return run;
}

std::string problem_with(char const* method, Clustering const& run) {
  MethodOptions options;
  options.method = method;
  return too_large_for_box(options, run);
}

TEST(BoxOfClasses, holds_so_many_weights_of_files) {
  EXPECT_THAT(problem_with("dbscan", run_over(most_weights / 2048, 1024)), IsEmpty());
}

TEST(BoxOfClasses, holds_no_more_weights_of_files) {
  std::string const problem = problem_with("dbscan", run_over(most_weights / 2048 + 1, 1024));
  EXPECT_THAT(problem, HasSubstr("2048 files with 65537 words are too much for a box"));
  EXPECT_THAT(problem, HasSubstr("kmeans"));
}

TEST(BoxOfClasses, holds_centers_of_many_files) {
  EXPECT_THAT(problem_with("kmeans", run_over(most_weights / 2048, 1'000'000)), IsEmpty());
}

TEST(BoxOfClasses, holds_no_more_weights_of_centers) {
  Clustering run = run_over(most_weights / 2048, 0);
  run.clusters.resize(2049);
  EXPECT_THAT(problem_with("kmeans", run), HasSubstr("learn fewer classes"));
}

TEST(BoxOfClasses, holds_no_classes_and_no_words) {
  EXPECT_THAT(problem_with("dbscan", Clustering()), IsEmpty());
  EXPECT_THAT(problem_with("dbscan", run_over(0, 1000)), IsEmpty());
  EXPECT_THAT(problem_with("dbscan", run_over(1000, 0)), IsEmpty());
}

}  // namespace
