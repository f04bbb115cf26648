#pragma once

#include <string>
#include <string_view>

#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// Hands over the text of those elements that a reader asks for by local name, when they end,
/// without the white space around it. What an element holds in front of another is not its text.
class ElementText : public XmlHandler {
 public:
  explicit ElementText(ReadContext& context) : context_(context) {}

 protected:
  ReadContext& context() const { return context_; }

  virtual bool is_wanted(std::string_view name) const = 0;
  virtual void on_element(std::string_view name, XmlAttributes const& attributes);
  virtual void on_text(std::string_view name, std::string_view text) = 0;

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) final;
  void end(XmlName const& name) final;
  void characters(std::string_view utf8) final;

  ReadContext& context_;
  std::string text_;
  bool in_text_ = false;
};

/// Text without the white space at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace morvakit
