#pragma once

#include <memory>
#include <string_view>

namespace morvakit {

/// The attributes of an element.
struct HtmlAttributes {
  /// Names, each with its value behind it, which may be null; null behind the last one, or at all.
  unsigned char const* const* pairs = nullptr;

  /// The value of an attribute; empty where there is none.
  std::string_view get(std::string_view name) const {
    auto const text = [](unsigned char const* bytes) -> std::string_view {
      return bytes == nullptr ? std::string_view{} : reinterpret_cast<char const*>(bytes);
    };
    for (auto const* pair = pairs; pair != nullptr && pair[0] != nullptr; pair += 2) {
      if (name == text(pair[0])) {
        return text(pair[1]);
      }
    }
    return {};
  }
};

/// What a page consists of, in its order: what is valid, is so until the call returns.
class HtmlEvents {
 public:
  HtmlEvents() = default;
  HtmlEvents(HtmlEvents const&) = delete;
  HtmlEvents& operator=(HtmlEvents const&) = delete;

  virtual void start(std::string_view name, HtmlAttributes const& attributes) = 0;
  virtual void end(std::string_view name) = 0;
  virtual void characters(std::string_view utf8) = 0;

 protected:
  ~HtmlEvents() = default;
};

/// Takes a page in pieces, however broken it is, and tells of its contents.
class HtmlParser {
 public:
  HtmlParser() = default;
  HtmlParser(HtmlParser const&) = delete;
  HtmlParser& operator=(HtmlParser const&) = delete;
  virtual ~HtmlParser() = default;

  virtual void feed(std::string_view utf8, bool last) = 0;
};

/// The file of the component that parses HTML, whose library is loaded when a page asks for it.
inline constexpr char const* html_component_file = "libmorvakit-html.so";

/// Offered by the component under `make_html_parser_symbol`: makes a parser, which the events have
/// to outlive.
using MakeHtmlParserFunction = void (*)(std::unique_ptr<HtmlParser>& made, HtmlEvents& events);

inline constexpr char const* make_html_parser_symbol = "morvakit_make_html_parser";

}  // namespace morvakit
