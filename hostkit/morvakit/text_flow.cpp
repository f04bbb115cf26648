#include "morvakit/text_flow.h"

#include <utility>

namespace morvakit {

void TextFlow::text(Orlec::ParseTextType type, std::string_view utf8) {
  if (utf8.empty()) {
    return;
  }
  if (char const separator = std::exchange(pending_[static_cast<std::size_t>(type)], '\0');
      separator != '\0') {
    context_.separate(type, separator);
  }
  context_.text(type, utf8);
}

void TextFlow::line(Orlec::ParseTextType type, std::string_view utf8) {
  separate(type, '\n');
  text(type, utf8);
  separate(type, '\n');
}

}  // namespace morvakit
