#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "morvakit/text_flow.h"

namespace morvakit {

/// A point or a vector on a page, in any unit, y pointing downwards.
struct PagePoint {
  double x = 0;
  double y = 0;
};

/// Turns the points of one plane into those of another: x' = a x + c y + e, y' = b x + d y + f.
struct PageMatrix {
  double a = 1;
  double b = 0;
  double c = 0;
  double d = 1;
  double e = 0;
  double f = 0;

  PagePoint apply(PagePoint point) const;
  /// The same for a vector, which has no place.
  PagePoint turn(PagePoint vector) const;
  /// The matrix that applies this one first and then `outer`.
  PageMatrix within(PageMatrix const& outer) const;
};

/// Takes the next number from a list with blanks or commas between its items, and what stood there
/// from the list. What is no number, or none that a page can have, is 0.
double take_number(std::string_view& list);

/// A matrix from its six numbers; the one that changes nothing where the list is empty.
PageMatrix read_matrix(std::string_view list);

/// How the characters of a run stand.
struct RunStyle {
  /// Where the writing goes. Its length is the size of the font on the page.
  PagePoint em;
  /// Anything that tells fonts apart.
  std::string_view font;
};

/// Text of pages that say of each character, or of each few, only where it stands. The blanks and
/// line ends between them are found here: from how wide a letter is in its font, which is learnt
/// from the text, and from how far on the next one stands.
class PlacedText {
 public:
  /// One character with the place where it begins.
  struct Character {
    wchar_t code = 0;
    PagePoint place;
    /// The place is known. If not, the character follows the one before it; a run that begins with
    /// such a one goes on with the string of the run before.
    bool is_placed = true;
  };

  PlacedText(TextFlow& flow, Orlec::ParseTextType kind) : flow_(flow), kind_(kind) {}

  /// Adds characters that the document writes as one string, a few thousand at most. Blanks within
  /// it stay, run together. A string that is drawn twice at one place, as for bold type, is taken
  /// once.
  void add(std::span<Character const> run, RunStyle const& style);
  /// Ends the line and delivers what there is: what follows stands elsewhere.
  void end_line();

 private:
  /// The least room that was seen to be taken by each letter of a font.
  using Widths = std::array<float, 128>;

  /// What may stand between two characters of one string.
  struct Spacing {
    bool has_blanks = false;
    double mean_gap = 0;
  };

  void choose_font(std::string_view font);
  bool repeats(std::span<Character const> run, RunStyle const& style);
  Spacing spacing_of(std::span<Character const> run) const;
  double width(wchar_t code) const;
  double guess_width(wchar_t code) const;
  void add_shown(std::span<Character const> run, RunStyle const& style);
  void place_behind(Character const& previous, PagePoint em, Character& character);
  char begin_run(Character const& first, RunStyle const& style, bool is_alone);
  char separator_within(Character const& next, Spacing const& spacing) const;
  char separator_between(Character const& next, PagePoint em, bool is_alone) const;
  bool continues_paragraph(Character const& next, PagePoint em) const;
  void learn(Character const& next);
  void put(Character const& next, char separator);

  TextFlow& flow_;
  Orlec::ParseTextType kind_;
  std::unordered_map<std::string, Widths> fonts_;
  Widths* widths_ = nullptr;
  bool has_last_ = false;
  Character last_;
  PagePoint last_em_;
  double last_width_ = 0;
  bool last_is_alone_ = false;  ///< a string of its own
  double guessed_ = 0;          ///< how much of its place is a guess, in parts of the font's size
  PagePoint line_start_;
  std::wstring run_;
  PagePoint run_start_;
  char pending_ = '\0';
  std::string out_;
};

}  // namespace morvakit
