#include "morvakit/pdf/pdf_xml.h"

#include <array>
#include <utility>

namespace morvakit {

namespace {

constexpr std::string_view dublin_core = "http://purl.org/dc/elements/1.1/";
constexpr std::string_view pdf_schema = "http://ns.adobe.com/pdf/1.3/";
constexpr std::string_view template_schema = "http://www.xfa.org/schema/xfa-template/";

struct Property {
  XmlName element;
  std::string_view name;
};

constexpr std::array properties{
    Property{{dublin_core, "title"}, "title"},
    Property{{dublin_core, "creator"}, "author"},
    Property{{dublin_core, "description"}, "subject"},
    Property{{pdf_schema, "Keywords"}, "keywords"},
    Property{{dublin_core, "subject"}, "keywords"},
};

std::string_view property_of(XmlName const& name) {
  for (auto const& property : properties) {
    if (property.element.space == name.space && property.element.local == name.local) {
      return property.name;
    }
  }
  return {};
}

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

void XmpHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  begins_value_ = true;
  if (!property_.empty()) {
    ++depth_;
    return;
  }
  property_ = property_of(name);
  for (std::size_t i = 0; i < attributes.count(); ++i) {
    auto const property = property_of(attributes.name(i));
    if (!property.empty() && !is_blank(attributes.value(i))) {
      take_(property, attributes.value(i));
    }
  }
}

void XmpHandler::end(XmlName const& /*name*/) {
  begins_value_ = true;
  if (property_.empty() || depth_-- > 0) {
    return;
  }
  depth_ = 0;
  if (!value_.empty()) {
    take_(property_, value_);
  }
  value_.clear();
  property_ = {};
}

void XmpHandler::characters(std::string_view utf8) {
  constexpr std::size_t longest = 64 << 10;
  bool const is_between = begins_value_ && is_blank(utf8);
  if (property_.empty() || is_between) {
    return;
  }
  if (value_.size() + utf8.size() > longest) {
    context_.note(Orlec::ParseOutcome::limit_reached,
                  "a property over " + std::to_string(longest) + " bytes");
    return;
  }
  if (std::exchange(begins_value_, false) && !value_.empty()) {
    value_ += ", ";
  }
  value_ += utf8;
}

void XfaHandler::start(XmlName const& name, XmlAttributes const& /*attributes*/) {
  bool const is_template_text =
      name.space.starts_with(template_schema) &&
      (name.local == "text" || name.local == "exData" || name.local == "toolTip");
  bool const is_data = name.local == "datasets";
  if (wanted_depth_ > 0 || is_template_text || is_data) {
    ++wanted_depth_;
  }
}

void XfaHandler::end(XmlName const& /*name*/) {
  if (wanted_depth_ > 0) {
    --wanted_depth_;
    flow_.separate(Orlec::ParseTextType_control, '\n');
  }
}

void XfaHandler::characters(std::string_view utf8) {
  if (wanted_depth_ > 0 && !is_blank(utf8)) {
    flow_.text(Orlec::ParseTextType_control, utf8);
  }
}

}  // namespace morvakit
