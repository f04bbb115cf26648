#include "terminal/terminal.h"

#include <charconv>
#include <cstdlib>
#include <string_view>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

namespace {

ColorChoice chosen = ColorChoice::automatic;
bool ignores_terminals = false;

std::string_view variable(char const* name) {
  char const* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : value;
}

bool is_some_terminal(int descriptor) {
  return !ignores_terminals && isatty(descriptor) == 1;
}

bool is_able_terminal(int descriptor) {
  return is_some_terminal(descriptor) && !variable("TERM").empty() && variable("TERM") != "dumb";
}

bool wants_colors(int descriptor) {
  if (chosen != ColorChoice::automatic) {
    return chosen == ColorChoice::always;
  }
  if (!variable("NO_COLOR").empty()) {
    return false;
  }
  std::string_view const force = variable("CLICOLOR_FORCE");
  return (!force.empty() && force != "0") || is_able_terminal(descriptor);
}

std::size_t columns_of_terminal(int descriptor) {
  constexpr std::size_t usual = 80;
  std::string_view const text = variable("COLUMNS");
  std::size_t number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc() && end == text.data() + text.size() && number > 0) {
    return number;
  }
  struct winsize size {};
  bool const is_known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return is_known ? size.ws_col : usual;
}

Screen look_at(int descriptor) {
  Screen screen;
  screen.is_terminal = is_some_terminal(descriptor);
  screen.is_rewritable = is_able_terminal(descriptor);
  screen.has_colors = wants_colors(descriptor);
  if (screen.is_terminal) {
    screen.columns = columns_of_terminal(descriptor);
  }
  return screen;
}

struct Screens {
  Screen output = look_at(STDOUT_FILENO);
  Screen error = look_at(STDERR_FILENO);
};

Screens const& screens() {
  static Screens const both;
  return both;
}

}  // namespace

void choose_colors(ColorChoice choice) {
  chosen = choice;
}

void ignore_terminals() {
  ignores_terminals = true;
}

Screen const& output_screen() {
  return screens().output;
}

Screen const& error_screen() {
  return screens().error;
}

}  // namespace tool
