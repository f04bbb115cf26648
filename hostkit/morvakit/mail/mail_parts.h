#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "morvakit/mail/mime_outline.h"

namespace morvakit {

/// What a reader does with a part of a mail.
enum class PartRole {
  silent,  ///< nothing: multiparts, signatures without a name, the alternatives that are not taken
  text,    ///< plain text that the mail shows
  html,    ///< the same in HTML
  calendar,    ///< an invitation
  report,      ///< what a delivery report says to programs
  picture,     ///< a picture that belongs to the layout, if it is one
  attachment,  ///< a file or another mail
  machinery,   ///< a file that holds no words if it is what it is called
  smime,       ///< a signed or encrypted mail in a wrapping of its own
  encrypted,   ///< an encrypted mail or part
};

struct RoleOptions {
  /// The parts are those of a page rather than those of a letter.
  bool is_web_archive = false;
  /// Whether a part's text is blank.
  std::function<bool(MimePart const& part)> is_blank;
};

/// The role of each part of an outline. Of alternatives the plain text is taken, unless it is
/// blank, else the richest one that can be read.
std::vector<PartRole> find_part_roles(MimeOutline const& outline, RoleOptions const& options);

/// The parts whose text is shown, in the order of reading: that of the mail, but with the page in
/// front that a set of related parts says to begin with.
std::vector<std::size_t> reading_order(MimeOutline const& outline);

}  // namespace morvakit
