#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// Text without a typesetter's ligatures, which are written out, since words are searched and
/// compared by their letters; control characters other than line ends and tabs become blanks.
std::string without_ligatures(std::string_view utf8);

/// Text in which a line of Han characters that was broken for want of room goes on with the next
/// one, so that no word is torn. A line end stays where a blank line follows, where either side is
/// no Han character, and behind a line that is much shorter than the next, as a heading is.
std::string join_han_lines(std::string_view utf8);

}  // namespace morvakit
