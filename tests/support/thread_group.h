#pragma once

#include <barrier>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "numeric/HProcessGroup.h"

namespace test {

/// What the members of a group of threads share.
class Meeting {
 public:
  explicit Meeting(int size) : brought_(static_cast<std::size_t>(size)), barrier_(size) {}

  int size() const { return static_cast<int>(brought_.size()); }
  std::vector<std::string> exchange(int rank, std::string const& mine) {
    brought_[static_cast<std::size_t>(rank)] = mine;
    barrier_.arrive_and_wait();
    std::vector<std::string> all = brought_;
    barrier_.arrive_and_wait();
    return all;
  }

 private:
  std::vector<std::string> brought_;
  std::barrier<> barrier_;
};

/// A thread that stands for a process of a group.
class ThreadGroup : public HProcessGroup {
 public:
  ThreadGroup(std::shared_ptr<Meeting> meeting, int rank)
      : meeting_(std::move(meeting)), rank_(rank) {}

  int rank() const override { return rank_; }
  int size() const override { return meeting_->size(); }
  std::vector<std::string> all_gather(std::string const& mine) override {
    return meeting_->exchange(rank_, mine);
  }

 private:
  std::shared_ptr<Meeting> meeting_;
  int rank_;
};

/// What `work(group)` returns in each process of a group of so many, by their ranks.
template <typename Work>
auto in_group(int size, Work const& work) {
  using Result = decltype(work(std::shared_ptr<HProcessGroup>()));
  auto const meeting = std::make_shared<Meeting>(size);
  std::deque<Result> results(static_cast<std::size_t>(size));
  std::vector<std::thread> threads;
  for (int rank = 0; rank < size; ++rank) {
    threads.emplace_back([&, rank] {
      results[static_cast<std::size_t>(rank)] = work(std::make_shared<ThreadGroup>(meeting, rank));
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  return results;
}

}  // namespace test
