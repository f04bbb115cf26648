#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace tool {

/// How far a piece of work is, as one line for a terminal. It knows no clock but what it is told,
/// by a clock that never goes back.
///
/// Of work on a number of things the line shows how many are done, how many that are in a second,
/// and the time that the others will take by what the last half minute was like; of other work, for
/// how long it has been going on.
class Meter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Work on `total` things, which `unit` names; the line takes less than `columns` columns.
  Meter(std::size_t total, std::string unit, std::size_t columns, Time now);
  /// Work of which only its name can be told.
  Meter(std::string work, std::size_t columns, Time now);

  /// So many are done, the last one that of the name, which is fit for a terminal. Nothing to work
  /// whose end cannot be told.
  void advance(std::size_t done, std::string const& name, Time now);

  /// Other work of the same run begins, of which only its name can be told; the time goes on.
  void rename(std::string work);

  /// The line, without its end, styled as `show` takes it; nothing in the first second.
  std::string line(Time now) const;

 private:
  std::string count_line(Time now) const;
  std::size_t figures_width() const;
  double rate(Time now) const;

  std::size_t columns_;
  Time begin_;
  std::string work_;
  /// 0 where there is nothing to count.
  std::size_t total_ = 0;
  std::size_t done_ = 0;
  std::string name_;
  /// When how many were done, about once a second.
  std::deque<std::pair<Time, std::size_t>> past_;
};

}  // namespace tool
