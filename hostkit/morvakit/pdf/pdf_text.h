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

/// The text of a short piece of XML or HTML: without its tags, the characters that have names in
/// XML put in, paragraphs and line breaks as line ends.
std::string text_of_markup(std::string_view markup);

}  // namespace morvakit
