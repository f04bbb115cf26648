#include "progress.h"

#include <cstdio>
#include <string>

#include <unistd.h>

#include "report.h"

namespace tool {

namespace {

constexpr std::size_t bar_width = 20;
// Wide characters take two columns each, and the line must not wrap.
constexpr int name_length = 18;

}  // namespace

Progress::Progress(std::size_t count)
    : count_(count), is_shown_(count > 1 && isatty(STDERR_FILENO) == 1) {}

void Progress::show(std::size_t finished, HString const& path) const {
  if (!is_shown_) {
    return;
  }
  std::string bar(finished * bar_width / count_, '=');
  bar.resize(bar_width, ' ');
  std::fprintf(stderr, "\r\033[K[%s] %zu/%zu %s", bar.c_str(), finished, count_,
               printable(path.get_short_name().get_first(name_length)).c_str());
}

void Progress::note(char const* text) const {
  if (is_shown_) {
    std::fprintf(stderr, "\r\033[K%s", text);
  }
}

void Progress::clear() const {
  note("");
}

}  // namespace tool
