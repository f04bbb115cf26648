#include "morvakit/doc/doc_equation.h"

#include <algorithm>
#include <cstddef>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

bool is_letter(char character) {
  return character >= 'a' && character <= 'z';
}

bool is_number_part(char character) {
  return character == ' ' || (character >= '0' && character <= '9');
}

/// Moves through a code, piece by piece.
class EquationCode {
 public:
  explicit EquationCode(std::string_view code)
      : code_(code), lower_(tessarine::ascii_lower(code)) {}

  EquationText text();

 private:
  void instruction();
  void add(std::string_view utf8) {
    (phonetic_from_ <= depth_ ? text_.phonetic : text_.shown) += utf8;
  }

  static constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

  std::string_view code_;
  std::string lower_;
  std::size_t at_ = 0;
  std::size_t depth_ = 0;
  /// The depth of brackets at which a reading goes on.
  std::size_t phonetic_from_ = nowhere;
  EquationText text_;
};

EquationText EquationCode::text() {
  at_ = std::min(code_.find('('), code_.size());
  while (at_ < code_.size()) {
    char const character = code_[at_];
    if (character == '\\') {
      instruction();
      continue;
    }
    ++at_;
    if (character == '(') {
      ++depth_;
    } else if (character == ')') {
      depth_ -= depth_ > 0 ? 1 : 0;
      phonetic_from_ = depth_ < phonetic_from_ ? nowhere : phonetic_from_;
    } else if (character != ',' && character != ';' && depth_ > 0) {
      add({&character, 1});
    }
  }
  return text_;
}

/// Letters with a number behind them, or a character that would mean something without the stroke
/// in front.
void EquationCode::instruction() {
  ++at_;
  if (at_ < lower_.size() && !is_letter(lower_[at_])) {
    if (depth_ > 0) {
      add(code_.substr(at_, 1));
    }
    ++at_;
    return;
  }
  auto const begin = at_;
  while (at_ < lower_.size() && is_letter(lower_[at_])) {
    ++at_;
  }
  bool const is_raised = lower_.compare(begin, at_ - begin, "up") == 0;
  bool const has_reading = lower_.find("\\* jc") != std::string::npos;
  while (at_ < lower_.size() && is_number_part(lower_[at_])) {
    ++at_;
  }
  if (is_raised && has_reading && phonetic_from_ == nowhere) {
    phonetic_from_ = depth_ + 1;
  }
}

}  // namespace

EquationText equation_text(std::string_view code) {
  auto const first = std::min(code.find_first_not_of(' '), code.size());
  bool const is_equation = tessarine::ascii_lower(code.substr(first, 3)) == "eq ";
  return is_equation ? EquationCode(code).text() : EquationText{};
}

}  // namespace morvakit
