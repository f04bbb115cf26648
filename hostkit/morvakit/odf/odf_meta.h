#pragma once

#include <cstdint>

#include "morvakit/office/office_properties.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// Reads the properties of an OpenDocument, from `office:meta` on or from the root of a part that
/// holds nothing else.
class OdfMetaHandler final : public XmlHandler {
 public:
  explicit OdfMetaHandler(TextFlow& flow) : properties_(flow, 2) {}

  /// The number of pages that the document states; 0 where it states none.
  std::int64_t pages() const { return pages_; }

  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

 private:
  PropertyHandler properties_;
  std::int64_t depth_ = 0;
  std::int64_t pages_ = 0;
};

}  // namespace morvakit
