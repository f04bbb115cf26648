#pragma once

#include <string>
#include <string_view>

namespace morvakit {

/// The text that a field of the kind EQ shows, which has no result: what Word sets characters
/// above, around or over each other with.
struct EquationText {
  std::string shown;
  /// The reading of what is shown, set above it.
  std::string phonetic;
};

/// Takes it from the field's code; both are empty for a code of another kind.
EquationText equation_text(std::string_view code);

}  // namespace morvakit
