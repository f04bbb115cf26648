#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "morvakit/read_context.h"

namespace morvakit {

/// Name of an element or attribute: namespace, empty for none, and local name. The views live as
/// long as the call that passes them.
struct XmlName {
  std::string_view space;
  std::string_view local;
};

/// The attributes of one element, valid during the call that passes them.
class XmlAttributes {
 public:
  /// `names_and_values`: pairs, ended by a null pointer; may itself be null.
  explicit XmlAttributes(char const* const* names_and_values);

  /// The value of an attribute with that local name in any namespace or none, the first one that
  /// stands there; empty when there is none.
  std::string_view get(std::string_view local) const;
  /// The value of the attribute of exactly that name; empty when there is none.
  std::string_view get(std::string_view space, std::string_view local) const;
  std::size_t count() const { return count_; }
  XmlName name(std::size_t index) const;
  std::string_view value(std::size_t index) const;

 private:
  char const* const* pairs_;
  std::size_t count_ = 0;
};

/// What a reader does with the events of an XML document. Text comes in pieces of whole UTF-8
/// sequences.
class XmlHandler {
 public:
  XmlHandler() = default;
  virtual ~XmlHandler() = default;
  XmlHandler(XmlHandler const&) = delete;
  XmlHandler& operator=(XmlHandler const&) = delete;

  virtual void start(XmlName const& name, XmlAttributes const& attributes) = 0;
  virtual void end(XmlName const& name) = 0;
  virtual void characters(std::string_view utf8) = 0;
};

/// Parses one XML document that comes in pieces, without building a tree. Namespaces are resolved,
/// the encoding is the one of the byte-order mark or the declaration. External entities are never
/// read, the expansion of internal ones and the depth of nesting are bounded; a bound that is hit
/// ends the context.
class XmlStream {
 public:
  /// `encoding`, where not empty, stands above what the document declares.
  XmlStream(XmlHandler& handler, ReadContext& context, std::string_view encoding = {});
  ~XmlStream();
  XmlStream(XmlStream const&) = delete;
  XmlStream& operator=(XmlStream const&) = delete;

  /// The next piece, `last` with the final one (which may be empty). False once the document is
  /// broken or the context has ended; all later calls then do nothing.
  bool feed(std::string_view bytes, bool last);
  /// What is wrong with the document, as "line 3: mismatched tag"; empty while nothing is.
  std::string const& fault() const;

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace morvakit
