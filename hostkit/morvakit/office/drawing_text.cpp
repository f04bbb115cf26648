#include "morvakit/office/drawing_text.h"

namespace morvakit {

namespace {

constexpr Namespace chart_space{"http://schemas.openxmlformats.org/drawingml/2006/chart",
                                "http://purl.oclc.org/ooxml/drawingml/chart"};
constexpr Namespace new_chart_space{"http://schemas.microsoft.com/office/drawing/2014/chartex",
                                    "http://schemas.microsoft.com/office/drawing/2014/chartex"};
constexpr Namespace sheet_drawing_space{
    "http://schemas.openxmlformats.org/drawingml/2006/spreadsheetDrawing",
    "http://purl.oclc.org/ooxml/drawingml/spreadsheetDrawing"};

TagTable<DrawingTag> const& tags() {
  using enum DrawingTag;
  static TagTable<DrawingTag> const table{
      {drawing_space, "t", run_text},
      {math_space, "t", run_text},
      {drawing_space, "p", paragraph},
      {drawing_space, "br", line_break},
      {drawing_space, "tc", cell},
      {drawing_space, "tr", row},
      {slide_space, "sp", shape},
      {slide_space, "graphicFrame", shape},
      {slide_space, "pic", shape},
      {slide_space, "ph", placeholder},
      {slide_space, "cNvPr", object_name},
      {sheet_drawing_space, "cNvPr", object_name},
      {slide_space, "text", comment_text},
      {chart_space, "strCache", cached_strings},
      {chart_space, "strLit", cached_strings},
      {chart_space, "tx", cached_strings},
      {chart_space, "numCache", cached_numbers},
      {chart_space, "numLit", cached_numbers},
      {chart_space, "v", cached_value},
      {chart_space, "formatCode", number_format},
      {new_chart_space, "strDim", cached_strings},
      {new_chart_space, "numDim", cached_numbers},
      {new_chart_space, "pt", cached_value},
      {new_chart_space, "txData", cached_strings},
      {new_chart_space, "v", cached_value},
  };
  return table;
}

}  // namespace

DrawingHandler::DrawingHandler(TextFlow& flow, Orlec::ParseTextType kind, DrawingRole role)
    : TaggedHandler(tags()), flow_(flow), base_kind_(kind), role_(role), kind_(kind) {}

void DrawingHandler::enter_placeholder(std::string_view type) {
  if (role_ == DrawingRole::backdrop) {
    hidden_ = true;
  } else if (type == "dt" || type == "ftr" || type == "hdr" || type == "sldNum") {
    kind_ = Orlec::ParseTextType_hf;
  }
}

bool DrawingHandler::open(DrawingTag tag, XmlName const& /*name*/,
                          XmlAttributes const& attributes) {
  switch (tag) {
    case DrawingTag::run_text:
    case DrawingTag::comment_text:
      ++text_depth_;
      break;
    case DrawingTag::cached_value:
      in_piece_ = numbers_depth_ > 0;
      text_depth_ += !in_piece_ && strings_depth_ > 0 ? 1 : 0;
      piece_.clear();
      break;
    case DrawingTag::number_format:
      in_piece_ = numbers_depth_ > 0;
      piece_.clear();
      break;
    case DrawingTag::cached_strings:
      ++strings_depth_;
      break;
    case DrawingTag::cached_numbers:
      ++numbers_depth_;
      number_kind_ = NumberKind::number;
      break;
    case DrawingTag::line_break:
      flow_.separate(kind_, '\n');
      break;
    case DrawingTag::placeholder:
      enter_placeholder(attributes.get("type"));
      break;
    case DrawingTag::object_name:
      if (role_ == DrawingRole::body) {
        flow_.line(Orlec::ParseTextType_other, attributes.get("title"));
        flow_.line(Orlec::ParseTextType_other, attributes.get("descr"));
      }
      break;
    default:
      break;
  }
  return true;
}

void DrawingHandler::close(DrawingTag tag) {
  switch (tag) {
    case DrawingTag::run_text:
      --text_depth_;
      break;
    case DrawingTag::comment_text:
      --text_depth_;
      flow_.separate(kind_, '\n');
      break;
    case DrawingTag::cached_value:
      close_value();
      break;
    case DrawingTag::number_format:
      number_kind_ = kind_of_format(piece_);
      in_piece_ = false;
      break;
    case DrawingTag::cached_strings:
      --strings_depth_;
      break;
    case DrawingTag::cached_numbers:
      --numbers_depth_;
      flow_.separate(kind_, '\n');
      break;
    case DrawingTag::cell:
      flow_.separate(kind_, '\t');
      break;
    case DrawingTag::paragraph:
    case DrawingTag::row:
      flow_.separate(kind_, '\n');
      break;
    case DrawingTag::shape:
      kind_ = base_kind_;
      hidden_ = false;
      break;
    default:
      break;
  }
}

void DrawingHandler::close_value() {
  if (numbers_depth_ > 0) {
    flow_.text(kind_, format_number(piece_, number_kind_, false));
    flow_.separate(kind_, '\t');
    in_piece_ = false;
    return;
  }
  text_depth_ -= strings_depth_ > 0 ? 1 : 0;
  flow_.separate(kind_, '\n');
}

void DrawingHandler::text(std::string_view utf8) {
  constexpr std::size_t longest_piece = 4096;
  if (in_piece_ && piece_.size() < longest_piece) {
    piece_.append(utf8.substr(0, longest_piece));
    return;
  }
  if (text_depth_ > 0 && !hidden_) {
    flow_.text(kind_, utf8);
  }
}

namespace {

void read_graphic(OpenPackage& package, std::string const& part, TextFlow& flow) {
  DrawingHandler handler(flow, Orlec::ParseTextType_main);
  package.parse_once(part, handler);
  flow.separate(Orlec::ParseTextType_main, '\n');
}

}  // namespace

void read_graphics(OpenPackage& package, std::vector<Relationship> const& relationships,
                   TextFlow& flow) {
  for (auto const& relationship : relationships) {
    bool const is_graphic = relationship.type == "diagramData" || relationship.type == "chart" ||
                            relationship.type == "chartEx";
    if (!is_graphic || relationship.external || !package.is_unread(relationship.target)) {
      continue;
    }
    read_graphic(package, relationship.target, flow);
    for (auto const& beside : package.relationships(relationship.target)) {
      if (beside.type == "chartUserShapes" && !beside.external) {
        read_graphic(package, beside.target, flow);
      }
    }
  }
}

}  // namespace morvakit
