#pragma once

#include <cstddef>
#include <optional>

namespace tool {

/// What a stream of this process is to those who look at it.
struct Screen {
  bool is_terminal = false;
  /// A terminal on which a line can be written anew.
  bool is_rewritable = false;
  bool has_colors = false;
  /// Columns of the terminal; nothing where it is none. COLUMNS, a number above 0, goes before what
  /// the terminal says, and 80 is taken where neither tells.
  std::optional<std::size_t> columns;
};

enum class ColorChoice { automatic, always, never };

/// Says when there are to be colours. Left alone, a stream has them that is a terminal, where TERM
/// is not empty and not "dumb" and NO_COLOR is empty, and any stream where CLICOLOR_FORCE is
/// neither empty nor "0" and NO_COLOR is empty. To be called before the first look at a screen.
void choose_colors(ColorChoice choice);

/// Takes neither stream for a terminal: where another program reads what this one prints, and hands
/// it on to places unknown, even if by a terminal of its own. To be called before the first look.
void ignore_terminals();

/// Standard output and standard error, as they were at the first call of either: workers, which
/// have other streams, format for those of the program.
Screen const& output_screen();
Screen const& error_screen();

}  // namespace tool
