#pragma once

#include <cstddef>
#include <string>

#include "morvakit/text_flow.h"
#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// Reads a part of document properties: each element at a given depth is a property, written as
/// "name: value" on a line of its own. The name is the attribute `name` where there is one.
class PropertyHandler final : public XmlHandler {
 public:
  /// `depth`: 1 for the root's own level.
  PropertyHandler(TextFlow& flow, std::size_t depth) : flow_(flow), property_depth_(depth) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

  TextFlow& flow_;
  std::size_t property_depth_;
  std::size_t depth_ = 0;
  std::string name_;
  bool has_value_ = false;
  bool between_values_ = false;
};

}  // namespace morvakit
