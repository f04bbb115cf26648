#include "morvakit/xml/element_text.h"

#include <algorithm>

namespace morvakit {

void ElementText::on_element(std::string_view /*name*/, XmlAttributes const& /*attributes*/) {}

void ElementText::start(XmlName const& name, XmlAttributes const& attributes) {
  text_.clear();
  in_text_ = is_wanted(name.local);
  on_element(name.local, attributes);
}

void ElementText::end(XmlName const& name) {
  if (in_text_) {
    on_text(name.local, trimmed(text_));
  }
  in_text_ = false;
}

void ElementText::characters(std::string_view utf8) {
  constexpr std::size_t longest = std::size_t{1} << 20;
  if (in_text_ && text_.size() < longest) {
    text_ += utf8;
  }
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

}  // namespace morvakit
