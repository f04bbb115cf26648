#include "morvakit/text/html_component.h"

#include <new>

#include <libxml/HTMLparser.h>

#include "host/export.h"

namespace morvakit {

namespace {

std::string_view view(xmlChar const* text) {
  return reinterpret_cast<char const*>(text);
}

HtmlEvents& events_of(void* self) {
  return *static_cast<HtmlEvents*>(self);
}

void on_start(void* self, xmlChar const* name, xmlChar const** attributes) {
  events_of(self).start(view(name), {attributes});
}

void on_end(void* self, xmlChar const* name) {
  events_of(self).end(view(name));
}

void on_characters(void* self, xmlChar const* text, int length) {
  events_of(self).characters(
      std::string_view(reinterpret_cast<char const*>(text), static_cast<std::size_t>(length)));
}

xmlSAXHandler make_handler() {
  xmlSAXHandler handler{};
  handler.startElement = on_start;
  handler.endElement = on_end;
  handler.characters = on_characters;
  handler.ignorableWhitespace = on_characters;
  return handler;
}

class LibraryParser : public HtmlParser {
 public:
  explicit LibraryParser(HtmlEvents& events)
      : parser_(htmlCreatePushParserCtxt(&handler_, &events, nullptr, 0, nullptr,
                                         XML_CHAR_ENCODING_UTF8)) {
    if (parser_ == nullptr) {
      throw std::bad_alloc();
    }
    // The text is in UTF-8 by now, whatever the page says of itself.
    htmlCtxtUseOptions(parser_.get(), HTML_PARSE_RECOVER | HTML_PARSE_NOERROR |
                                          HTML_PARSE_NOWARNING | HTML_PARSE_NONET |
                                          HTML_PARSE_IGNORE_ENC);
  }

  void feed(std::string_view utf8, bool last) override {
    htmlParseChunk(parser_.get(), utf8.data(), static_cast<int>(utf8.size()), last ? 1 : 0);
    if (parser_->errNo == XML_ERR_NO_MEMORY) {
      throw std::bad_alloc();
    }
  }

 private:
  struct Free {
    void operator()(htmlParserCtxtPtr parser) const { htmlFreeParserCtxt(parser); }
  };

  xmlSAXHandler handler_ = make_handler();
  std::unique_ptr<htmlParserCtxt, Free> parser_;
};

}  // namespace

}  // namespace morvakit

extern "C" MORVA_EXPORT void morvakit_make_html_parser(std::unique_ptr<morvakit::HtmlParser>& made,
                                                       morvakit::HtmlEvents& events) {
  made = std::make_unique<morvakit::LibraryParser>(events);
}
