#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "hostkit/morvakit/parse_bytes.h"

#include "made_samples.h"
#include "support/log_capture.h"

namespace {

constexpr int thread_count = 4;

void on_threads(std::function<void(int)> const& work) {
  std::vector<std::thread> threads;
  threads.reserve(thread_count);
  for (int i = 0; i < thread_count; ++i) {
    threads.emplace_back(work, i);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace

TEST(Threads, take_turns_with_all_of_the_library) {
  test::LogCapture const log;
  test::TemporaryDirectory const directory;
  endurance::settle_in(directory.path());
  auto const samples = test::made_samples(directory);
  std::mutex turn;
  std::set<std::uint64_t> digests;
  on_threads([&](int number) {
    std::lock_guard const lock(turn);
    digests.insert(endurance::Round(samples, static_cast<std::uint64_t>(number)).run());
  });
  EXPECT_EQ(digests.size(), 1U);
}

TEST(Threads, parse_files_of_their_own_at_the_same_time) {
  auto const documents = test::small_documents();
  std::atomic<int> right{0};
  on_threads([&](int number) {
    for (std::size_t i = 0; i < documents.size(); ++i) {
      // Each begins elsewhere, so that what is loaded at first use is asked for by several.
      auto const& document =
          documents[(i + static_cast<std::size_t>(number) * 5) % documents.size()];
      auto const parsed = test::parse_bytes(document.bytes, document.name.c_str());
      right += parsed.main().find(document.text) == std::string::npos ? 0 : 1;
    }
  });
  EXPECT_EQ(right, thread_count * static_cast<int>(documents.size()));
}

TEST(Threads, log_at_the_same_time) {
  std::atomic<int> taken{0};
  HFileLog::ins()->set_sink([&](int, HString const&, int, HString const&) { ++taken; });
  on_threads([](int) {
    for (int i = 0; i < 1000; ++i) {
      auto& record = HFileLog::ins()->get(1, L"test", i);
      record << L"text" << HString(i, false);
      HFileLog::ins()->log(record);
    }
  });
  HFileLog::ins()->set_sink({});
  EXPECT_EQ(taken, thread_count * 1000);
}

TEST(Threads, ask_one_list_of_fingerprints_at_the_same_time) {
  HFileDNAList list;
  for (int i = 0; i < 200; ++i) {
    list.append(HFileSimHash::DecIntToHexStr(static_cast<unsigned>(i) * 2654435761U));
  }
  std::atomic<std::size_t> found{0};
  on_threads([&](int) {
    for (unsigned i = 0; i < 200; ++i) {
      found +=
          list.get_most_similar(HFileSimHash::DecIntToHexStr(i * 2654435761U), 1)[0].index == i;
    }
  });
  EXPECT_EQ(found, thread_count * 200U);
}

TEST(Threads, measure_the_same_points_at_the_same_time) {
  HPointN const one(std::vector<double>{1.0, 2.0, 3.0});
  HPointN const other(std::vector<double>{1.0, 2.0, 5.0});
  std::atomic<int> right{0};
  on_threads([&](int) { right += one.distance(other) == 2.0 ? 1 : 0; });
  EXPECT_EQ(right, thread_count);
}
