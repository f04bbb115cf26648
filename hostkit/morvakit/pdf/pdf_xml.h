#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "morvakit/text_flow.h"
#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// Finds the properties of a document in its XMP metadata.
class XmpHandler final : public XmlHandler {
 public:
  using Take = std::function<void(std::string_view name, std::string_view value)>;
  /// `take` gets each property that is not blank, several values joined by ", ".
  /// One that is very long is cut, which is noted.
  XmpHandler(ReadContext& context, Take take) : context_(context), take_(std::move(take)) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

  ReadContext& context_;
  Take take_;
  /// The property that is open, empty where none is.
  std::string_view property_;
  std::string value_;
  bool begins_value_ = false;
  int depth_ = 0;
};

/// Reads what a form in XFA shows and holds: the texts of its template and all values of its data,
/// each on a line of control text.
class XfaHandler final : public XmlHandler {
 public:
  explicit XfaHandler(TextFlow& flow) : flow_(flow) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view utf8) override;

  TextFlow& flow_;
  /// How many elements are open from the outermost one on whose text is wanted.
  int wanted_depth_ = 0;
};

}  // namespace morvakit
