#include "morvakit/xml/element_text.h"

#include <algorithm>

namespace morvakit {

void ElementText::on_element(std::string_view /*name*/, XmlAttributes const& /*attributes*/) {}

/// Gives away what the innermost element holds so far.
void ElementText::deliver() {
  if (auto const text = trimmed(text_); !text.empty()) {
    on_text(open_.back().name, text);
  }
  text_.clear();
}

void ElementText::start(XmlName const& name, XmlAttributes const& attributes) {
  deliver();
  open_.push_back({std::string(name.local), is_wanted(name.local)});
  on_element(name.local, attributes);
}

void ElementText::end(XmlName const& /*name*/) {
  deliver();
  open_.pop_back();
}

void ElementText::characters(std::string_view utf8) {
  constexpr std::size_t longest = std::size_t{1} << 20;
  if (open_.empty() || !open_.back().is_wanted) {
    return;
  }
  if (text_.size() < longest) {
    text_ += utf8;
  } else {
    context_.note(Orlec::ParseOutcome::limit_reached,
                  "the text of an element over " + std::to_string(longest) + " bytes");
  }
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace morvakit
