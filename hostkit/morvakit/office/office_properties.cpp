#include "morvakit/office/office_properties.h"

namespace morvakit {

namespace {

constexpr auto kind = Orlec::ParseTextType_property;

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

void PropertyHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  ++depth_;
  if (depth_ == property_depth_) {
    auto const given = attributes.get("name");
    name_ = given.empty() ? name.local : given;
    has_value_ = false;
  }
  between_values_ = true;
}

void PropertyHandler::end(XmlName const& /*name*/) {
  if (depth_ == property_depth_ && has_value_) {
    flow_.separate(kind, '\n');
  }
  --depth_;
  between_values_ = true;
}

void PropertyHandler::characters(std::string_view utf8) {
  if (depth_ < property_depth_ || (between_values_ && is_blank(utf8))) {
    return;
  }
  if (!has_value_) {
    flow_.text(kind, name_);
    flow_.text(kind, ": ");
  } else if (between_values_) {
    flow_.separate(kind, ' ');
  }
  has_value_ = true;
  between_values_ = false;
  flow_.text(kind, utf8);
}

}  // namespace morvakit
