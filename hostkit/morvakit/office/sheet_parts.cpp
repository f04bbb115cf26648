#include "morvakit/office/sheet_parts.h"

#include "morvakit/office/drawing_text.h"
#include "morvakit/xml/tagged_handler.h"

namespace morvakit {

namespace {

constexpr Namespace thread_space{
    "http://schemas.microsoft.com/office/spreadsheetml/2018/threadedcomments",
    "http://schemas.microsoft.com/office/spreadsheetml/2018/threadedcomments"};
constexpr Namespace vml_space{"urn:schemas-microsoft-com:vml", "urn:schemas-microsoft-com:vml"};

enum class PartTag {
  other,
  text,
  phonetic,
  comment,
  threaded_text,
  box,
};

TagTable<PartTag> const& tags() {
  using enum PartTag;
  static TagTable<PartTag> const table{
      {sheet_space, "t", text},          {sheet_space, "rPh", phonetic},
      {sheet_space, "comment", comment}, {thread_space, "text", threaded_text},
      {vml_space, "textbox", box},
  };
  return table;
}

/// Reads comments of both sorts, and the captions of form controls.
class SheetCommentHandler final : public TaggedHandler<PartTag> {
 public:
  SheetCommentHandler(TextFlow& flow, Orlec::ParseTextType kind)
      : TaggedHandler(tags()), flow_(flow), kind_(kind) {}

 private:
  static bool holds_text(PartTag tag) {
    return tag == PartTag::text || tag == PartTag::threaded_text || tag == PartTag::box;
  }
  bool open(PartTag tag, XmlName const& /*name*/, XmlAttributes const& /*attributes*/) override {
    text_depth_ += holds_text(tag) ? 1 : 0;
    return tag != PartTag::phonetic;
  }
  void close(PartTag tag) override {
    text_depth_ -= holds_text(tag) ? 1 : 0;
    if (tag == PartTag::comment || tag == PartTag::threaded_text || tag == PartTag::box) {
      flow_.separate(kind_, '\n');
    }
  }
  void text(std::string_view utf8) override {
    bool const is_blank = utf8.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (text_depth_ > 0 && !(is_blank && kind_ == Orlec::ParseTextType_control)) {
      flow_.text(kind_, utf8);
    }
  }

  TextFlow& flow_;
  Orlec::ParseTextType kind_;
  int text_depth_ = 0;
};

void read_drawing(OpenPackage& package, std::string const& part, TextFlow& flow) {
  if (!package.is_unread(part)) {
    return;
  }
  DrawingHandler handler(flow, Orlec::ParseTextType_main);
  package.parse_once(part, handler);
  auto const relationships = package.relationships(part);
  read_graphics(package, relationships, flow);
  read_link_targets(relationships, flow);
}

}  // namespace

void read_beside_sheet(OpenPackage& package, std::string const& part, TextFlow& flow) {
  auto const relationships = package.relationships(part);
  for (auto const& relationship : relationships) {
    if (relationship.external) {
      continue;
    }
    if (relationship.type == "drawing") {
      read_drawing(package, relationship.target, flow);
    } else if (relationship.type == "comments" || relationship.type == "threadedComment") {
      SheetCommentHandler handler(flow, Orlec::ParseTextType_comment);
      package.parse_once(relationship.target, handler);
    } else if (relationship.type == "vmlDrawing") {
      SheetCommentHandler handler(flow, Orlec::ParseTextType_control);
      package.parse_once(relationship.target, handler, PartFault::ignored);
    }
  }
  read_controls(package, relationships, flow);
  read_link_targets(relationships, flow);
}

}  // namespace morvakit
