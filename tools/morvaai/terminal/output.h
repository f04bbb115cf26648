#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "morvaai.h"

namespace tool {

/// UTF-8 of the text as it may stand in a line on a terminal: control characters, those that turn
/// the direction of what stands behind them, and marks of style become U+FFFD.
std::string printable(HString const& text);

/// A path as it may stand in a line of standard output behind so many columns: printable, and cut
/// in the middle where standard output is a terminal that has no room for all of it.
std::string shown_path(HString const& path, std::size_t columns_before = 0);

/// A line that has words with their weights behind its beginning, which stands behind so many
/// columns: all of them, but on a terminal no more than there is room for.
std::string weighted_words(std::string line,
                           std::vector<std::pair<std::string, double>> const& words,
                           std::size_t columns_before);

/// UTF-8 of the text as it is; what is no Unicode text becomes U+FFFD.
std::string utf8(HString const& text);
/// The text of UTF-8, zeros in it too; what is none becomes U+FFFD.
HString text_of(std::string_view utf8);

/// Writes a line with the program's name to standard error; one that begins with "warning: " is of
/// something that is no failure.
void complain(std::string const& problem);

/// While one lives that was made with true, `complain` prints nothing: another process says the
/// same.
class NoComplaints {
 public:
  explicit NoComplaints(bool holds);
  ~NoComplaints();
  NoComplaints(NoComplaints const&) = delete;
  NoComplaints& operator=(NoComplaints const&) = delete;

 private:
  friend void complain(std::string const& problem);

  static inline bool holds_ = false;
  bool before_;
};

/// Writes to standard output; false, with a message on standard error, when that fails. There is no
/// message where nobody reads any more.
bool write_output(std::string const& text);
/// The same with a text that has styles.
bool show(std::string const& text);
/// The text of a document: as it is, but to a terminal without what would steer that.
bool write_document(std::string const& text);

}  // namespace tool
