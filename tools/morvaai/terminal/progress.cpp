#include "terminal/progress.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <unistd.h>

#include "no_signals.h"
#include "terminal/meter.h"
#include "terminal/output.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

constexpr std::chrono::milliseconds period(100);
constexpr std::string_view cleared_line = "\r\033[K";
constexpr std::array<int, 4> ending_signals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

/// For the handler of signals: whether there is a line to take away, and that there is to be none.
std::atomic<bool> is_drawn = false;
std::atomic<bool> is_ending = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void write_error(std::string_view text) {
  while (!text.empty()) {
    ssize_t const size = write(STDERR_FILENO, text.data(), text.size());
    if (size <= 0) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(size));
  }
}

void end_cleanly(int signal) {
  is_ending = true;
  if (is_drawn) {
    write_error(cleared_line);
  }
  // The handler has been for one signal only: this one ends the program.
  raise(signal);
}

/// Has ending signals clear the line while it lives.
class CleanEnd {
 public:
  CleanEnd() {
    struct sigaction action {};
    action.sa_handler = &end_cleanly;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < ending_signals.size(); ++i) {
      sigaction(ending_signals[i], nullptr, &old_[i]);
      if (old_[i].sa_handler == SIG_DFL) {
        sigaction(ending_signals[i], &action, nullptr);
      }
    }
  }
  ~CleanEnd() {
    for (std::size_t i = 0; i < ending_signals.size(); ++i) {
      sigaction(ending_signals[i], &old_[i], nullptr);
    }
  }
  CleanEnd(CleanEnd const&) = delete;
  CleanEnd& operator=(CleanEnd const&) = delete;

 private:
  std::array<struct sigaction, ending_signals.size()> old_{};
};

/// Whether standard error has lines of the library.
bool has_log() {
  char const* const file = std::getenv("MORVA_LOG_FILE");
  return HFileLog::ins()->mi_level > 0 && (file == nullptr || *file == '\0');
}

}  // namespace

/// The line on the terminal and the thread that draws it.
class Progress::Line {
 public:
  explicit Line(Meter meter) : meter_(std::move(meter)) {
    NoSignals const thread_has_none;
    try {
      thread_ = std::thread([this] { draw_until_stopped(); });
    } catch (std::system_error const&) {
      // The work goes on without a line.
    }
    shown = this;
  }
  ~Line() {
    {
      std::lock_guard const lock(mutex_);
      is_stopped_ = true;
      clear();
    }
    stop_.notify_one();
    if (thread_.joinable()) {
      thread_.join();
    }
    shown = nullptr;
  }
  Line(Line const&) = delete;
  Line& operator=(Line const&) = delete;

  void advance(std::size_t done, std::string const& name) {
    std::lock_guard const lock(mutex_);
    meter_.advance(done, name, std::chrono::steady_clock::now());
  }
  void rename(std::string work) {
    std::lock_guard const lock(mutex_);
    meter_.rename(std::move(work));
  }
  void hush() {
    mutex_.lock();
    clear();
  }
  void go_on() { mutex_.unlock(); }

  /// The one that lives.
  static Line* shown;

 private:
  void draw_until_stopped() {
    std::unique_lock lock(mutex_);
    while (!stop_.wait_for(lock, period, [this] { return is_stopped_; })) {
      std::string const line = meter_.line(std::chrono::steady_clock::now());
      if (line.empty() || is_ending) {
        continue;
      }
      is_drawn = true;
      write_error(std::string(cleared_line) +
                  (error_screen().has_colors ? with_colors(line) : without_styles(line)));
    }
  }
  void clear() {
    if (is_drawn.exchange(false)) {
      write_error(cleared_line);
    }
  }

  CleanEnd const clean_end_;
  std::mutex mutex_;
  std::condition_variable stop_;
  bool is_stopped_ = false;
  Meter meter_;
  std::thread thread_;
};

Progress::Line* Progress::Line::shown = nullptr;

namespace {

bool can_show() {
  Screen const& screen = error_screen();
  return screen.is_rewritable && !has_log();
}

std::size_t columns() {
  return error_screen().columns.value_or(0);
}

}  // namespace

Progress::Progress(std::size_t count, std::string unit) {
  if (count > 0 && Line::shown == nullptr && can_show()) {
    line_ = std::make_unique<Line>(
        Meter(count, std::move(unit), columns(), std::chrono::steady_clock::now()));
  }
}

Progress::Progress(std::string work) {
  if (Line::shown == nullptr && can_show()) {
    line_ =
        std::make_unique<Line>(Meter(std::move(work), columns(), std::chrono::steady_clock::now()));
  }
}

Progress::~Progress() = default;

void Progress::show(std::size_t finished, HString const& path) const {
  if (line_ != nullptr) {
    line_->advance(finished, printable(path.get_short_name()));
  }
}

void Progress::note(std::string work) const {
  if (line_ != nullptr) {
    line_->rename(std::move(work));
  }
}

void Progress::clear() {
  line_.reset();
}

Hush::Hush() : line_(Progress::Line::shown) {
  if (line_ != nullptr) {
    line_->hush();
  }
}

Hush::~Hush() {
  if (line_ != nullptr) {
    line_->go_on();
  }
}

}  // namespace tool
