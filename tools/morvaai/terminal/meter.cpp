#include "terminal/meter.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "terminal/columns.h"
#include "terminal/style.h"

namespace tool {

namespace {

using std::chrono::duration;
using std::chrono::seconds;

constexpr seconds patience(1);
constexpr seconds step(1);
constexpr std::size_t most_steps = 30;

constexpr std::size_t bar_width = 15;
constexpr std::string_view widest_figures = ", 12345/s, 12:34:56 left  ";
constexpr std::size_t narrowest_name = 8;

std::string clock_time(double all_seconds) {
  constexpr double longest = 359999.0;  // 99:59:59
  auto const whole = static_cast<int>(std::min(all_seconds + 0.5, longest));
  constexpr int minute = 60;
  constexpr int hour = 3600;
  return whole < hour
             ? fmt::format("{}:{:02}", whole / minute, whole % minute)
             : fmt::format("{}:{:02}:{:02}", whole / hour, whole % hour / minute, whole % minute);
}

double seconds_between(Meter::Time from, Meter::Time to) {
  return duration<double>(to - from).count();
}

}  // namespace

Meter::Meter(std::size_t total, std::string unit, std::size_t columns, Time now)
    : columns_(columns), begin_(now), work_(std::move(unit)), total_(total), past_{{now, 0}} {}

Meter::Meter(std::string work, std::size_t columns, Time now)
    : columns_(columns), begin_(now), work_(std::move(work)) {}

void Meter::advance(std::size_t done, std::string const& name, Time now) {
  if (total_ == 0) {
    return;
  }
  done_ = done;
  std::size_t const room = columns_ - std::min(columns_, figures_width() + bar_width);
  name_ = room < narrowest_name ? std::string() : cut_middle(name, room);
  if (now - past_.back().first >= step) {
    past_.emplace_back(now, done);
  }
  if (past_.size() > most_steps) {
    past_.pop_front();
  }
}

void Meter::rename(std::string work) {
  work_ = std::move(work);
  total_ = 0;
}

// The most columns that all but bar and name take, with one more behind them.
std::size_t Meter::figures_width() const {
  std::size_t const brackets = 3;
  return brackets + 2 * std::to_string(total_).size() + 2 + work_.size() + widest_figures.size() +
         1;
}

double Meter::rate(Time now) const {
  auto const& [when, done] = past_.front();
  double const passed = seconds_between(when, now);
  return passed > 0.0 ? static_cast<double>(done_ - done) / passed : 0.0;
}

std::string Meter::count_line(Time now) const {
  std::string line;
  if (columns_ > figures_width() + bar_width) {
    std::string bar(std::min(done_, total_) * bar_width / total_, '=');
    bar.resize(bar_width, ' ');
    line = "[" + bar + "] ";
  }
  line += fmt::format("{:>{}}/{} {}", done_, std::to_string(total_).size(), total_, work_);
  double const each_second = rate(now);
  if (each_second > 0.0) {
    line += fmt::format(", {:.{}f}/s", each_second, each_second < 10.0 ? 1 : 0);
    line += ", " + clock_time(static_cast<double>(total_ - std::min(done_, total_)) / each_second) +
            " left";
  }
  return name_.empty() ? cut_end(line, columns_ - std::min<std::size_t>(columns_, 1))
                       : line + "  " + styled(Role::faint, name_);
}

std::string Meter::line(Time now) const {
  if (now - begin_ < patience) {
    return {};
  }
  if (total_ > 0) {
    return count_line(now);
  }
  std::string const passed = ", " + clock_time(seconds_between(begin_, now));
  return cut_middle(work_, columns_ - std::min(columns_, passed.size() + 1)) + passed;
}

}  // namespace tool
