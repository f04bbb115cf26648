#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "morvakit/formats.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

/// Attributes that are written for a person to read, in the vocabularies that are met most.
bool carries_text(std::string_view name) {
  constexpr std::array<std::string_view, 12> names{
      "alt",   "caption",     "comment", "content", "description", "heading",
      "label", "placeholder", "subject", "summary", "text",        "title"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

/// An element ends a line: in a vocabulary that is not known, most elements are fields or
/// paragraphs.
class TextHandler : public XmlHandler {
 public:
  explicit TextHandler(ReadContext& context) : context_(context) {}

  void start(XmlName const& name, XmlAttributes const& attributes) override {
    context_.separate(Orlec::ParseTextType_main, '\n');
    pending_blank_ = false;
    depth_of_code_ +=
        depth_of_code_ != 0 || name.local == "style" || name.local == "script" ? 1 : 0;
    for (std::size_t i = 0; i < attributes.count(); ++i) {
      if (carries_text(attributes.name(i).local) && !attributes.value(i).empty()) {
        context_.separate(Orlec::ParseTextType_other, '\n');
        context_.text(Orlec::ParseTextType_other, attributes.value(i));
      }
    }
  }

  void end(XmlName const& /*name*/) override {
    context_.separate(Orlec::ParseTextType_main, '\n');
    pending_blank_ = false;
    depth_of_code_ -= depth_of_code_ != 0 ? 1 : 0;
  }

  void characters(std::string_view utf8) override {
    if (depth_of_code_ != 0) {
      return;
    }
    // Indentation is no text, while a line end within a paragraph is a blank.
    constexpr std::string_view blanks = " \t\r\n";
    while (!utf8.empty()) {
      auto const begin = std::min(utf8.find_first_not_of(blanks), utf8.size());
      pending_blank_ = pending_blank_ || begin != 0;
      utf8.remove_prefix(begin);
      auto const word = utf8.substr(0, utf8.find_first_of(blanks));
      if (!word.empty()) {
        deliver(word);
      }
      utf8.remove_prefix(word.size());
    }
  }

 private:
  void deliver(std::string_view word) {
    if (pending_blank_) {
      context_.separate(Orlec::ParseTextType_main, ' ');
    }
    pending_blank_ = false;
    context_.text(Orlec::ParseTextType_main, word);
  }

  ReadContext& context_;
  bool pending_blank_ = false;
  std::int64_t depth_of_code_ = 0;
};

}  // namespace

void read_xml(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  TextHandler handler(context);
  parse_file(reader, context, handler);
}

}  // namespace morvakit
