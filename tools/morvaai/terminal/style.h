#pragma once

#include <string>
#include <string_view>

namespace tool {

/// What a piece of text is, which a terminal that has colours shows.
enum class Role {
  plain,
  /// What the lines below are about: a file, a class.
  heading,
  /// The name of a class that was found, or a box.
  name,
  /// What matters less: ids, units, counts beside a name.
  faint,
  good,
  warning,
  error,
};

/// The text with marks around it that say what it is. `show` makes colours of them or takes them
/// out; they are characters that no text has: `printable` leaves none of them in.
std::string styled(Role role, std::string_view text);

/// Whether that character is such a mark.
bool is_style_mark(char32_t c);

/// The text with its marks made into what steers a terminal, or without them.
std::string with_colors(std::string_view text);
std::string without_styles(std::string_view text);

}  // namespace tool
