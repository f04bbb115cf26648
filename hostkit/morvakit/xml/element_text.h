#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "morvakit/xml/xml_stream.h"

namespace morvakit {

/// Hands over the text of those elements that a reader asks for by local name, without the white
/// space around it, where there is any: what stands in front of an element within, between two and
/// behind the last each by itself, in the order of the document. Of a text that is very long only
/// the beginning, which is noted.
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

  void deliver();

  struct Element {
    std::string name;
    bool is_wanted = false;
  };

  ReadContext& context_;
  /// From the outermost in, as deep as XML may be nested.
  std::vector<Element> open_;
  /// What the innermost element holds since it, or the last one within it, was met.
  std::string text_;
};

/// Text without the white space at both ends.
std::string_view trimmed(std::string_view text);

}  // namespace morvakit
