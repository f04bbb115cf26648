#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/worker_pool.h"

#include "tools/program.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

using test::Finished;
using test::Program;

/// Many different words: each costs time and memory.
std::string long_text(std::size_t words) {
  std::string text;
  for (std::size_t i = 0; i < words; ++i) {
    for (std::size_t rest = i * 7919 + 1; rest > 0; rest /= 26) {
      text += static_cast<char>('a' + rest % 26);
    }
    text += i % 12 == 11 ? ".\n" : " ";
  }
  return text;
}

TEST_F(Program, tells_what_is_in_force) {
  EXPECT_THAT(run({"version", "--json"}).output, HasSubstr("\"isolation\":{\"system_calls\":"));
}

TEST_F(Program, a_document_that_eats_memory_costs_itself) {
  if (!morvabs::isolation_layers().memory) {
    GTEST_SKIP() << "memory is not limited here";
  }
  test::EnvironmentVariable const limit("MORVA_WORKER_MEMORY", "48");
  std::string const large = write("large.txt", long_text(1'000'000));
  Finished const finished =
      run({"features", "-j", "1", sample("harbour-report.docx"), large, sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: " + large + ": out of memory\n");
  EXPECT_THAT(finished.output, HasSubstr("harbour-report.docx"));
  EXPECT_THAT(finished.output, HasSubstr("budget.xlsx"));
}

TEST_F(Program, a_document_that_takes_too_long_costs_itself) {
  test::EnvironmentVariable const limit("MORVA_WORKER_SECONDS", "1");
  std::string const large = write("large.txt", long_text(3'000'000));
  // Reads each document three times.
  Finished const finished = run({"collect", "-j", "1", large, sample("budget.xlsx")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_EQ(finished.errors, "morvaai: " + large + ": took more than 1 seconds of CPU time\n");
  EXPECT_THAT(finished.output, HasSubstr("budget.xlsx"));
}

TEST_F(Program, a_large_part_of_an_archive_is_read_in_a_worker) {
  // A TAR of one member that is too large for memory.
  std::string text = "harbour ";
  while (text.size() < (std::size_t{17} << 20)) {
    text += text;
  }
  text.resize(std::size_t{17} << 20);
  char header[512] = "large.txt";
  std::string const size = "00104000000";
  size.copy(header + 124, size.size());
  header[156] = '0';
  std::string("ustar").copy(header + 257, 5);
  unsigned sum = 8 * ' ';
  for (char const c : header) {
    sum += static_cast<unsigned char>(c);
  }
  std::snprintf(header + 148, 8, "%06o", sum);
  header[155] = ' ';
  std::string const archive =
      write("large.tar", std::string(header, sizeof header) + text + std::string(1024, '\0'));
  Finished const finished = run({"dna", archive});
  EXPECT_THAT(finished.errors, testing::Not(HasSubstr("no room")));
  EXPECT_THAT(finished.output, HasSubstr("large.tar"));
}

}  // namespace
