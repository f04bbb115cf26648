#include <charconv>
#include <string>
#include <vector>

#include "host/utf8.h"
#include "morvakit/formats.h"
#include "morvakit/office/drawing_text.h"
#include "morvakit/office/open_package.h"

namespace morvakit {

namespace {

using Orlec::ParseTextType;

enum class WordTag {
  other,
  run_text,
  paragraph,
  cell,
  row,
  tab,
  line_break,
  hyphen,
  symbol,
  left_out,  ///< deleted text, field codes and formatting
  field_mark,
  control_value,
  control_item,
  text_box,
  phonetic,
  word_art,
  object_name,
};

constexpr Namespace vml_space{"urn:schemas-microsoft-com:vml", "urn:schemas-microsoft-com:vml"};
constexpr Namespace placement_space{
    "http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing",
    "http://purl.oclc.org/ooxml/drawingml/wordprocessingDrawing"};

TagTable<WordTag> const& tags() {
  using enum WordTag;
  static TagTable<WordTag> const table{
      {word_space, "t", run_text},
      {math_space, "t", run_text},
      {drawing_space, "t", run_text},
      {word_space, "p", paragraph},
      {drawing_space, "p", paragraph},
      {word_space, "tc", cell},
      {word_space, "tr", row},
      {word_space, "tab", tab},
      {word_space, "ptab", tab},
      {word_space, "br", line_break},
      {word_space, "cr", line_break},
      {drawing_space, "br", line_break},
      {word_space, "noBreakHyphen", hyphen},
      {word_space, "sym", symbol},
      {word_space, "pPr", left_out},
      {word_space, "rPr", left_out},
      {word_space, "tblPr", left_out},
      {word_space, "tblGrid", left_out},
      {word_space, "trPr", left_out},
      {word_space, "tcPr", left_out},
      {word_space, "sectPr", left_out},
      {word_space, "del", left_out},
      {word_space, "moveFrom", left_out},
      {word_space, "delText", left_out},
      {word_space, "instrText", left_out},
      {word_space, "delInstrText", left_out},
      {word_space, "fldChar", field_mark},
      {word_space, "default", control_value},
      {word_space, "listEntry", control_value},
      {word_space, "helpText", control_value},
      {word_space, "statusText", control_value},
      {word_space, "alias", control_value},
      {word_space, "listItem", control_item},
      {word_space, "txbxContent", text_box},
      {word_space, "rt", phonetic},
      {vml_space, "textpath", word_art},
      {placement_space, "docPr", object_name},
  };
  return table;
}

/// Reads the body, or one of the parts beside it, all of whose text is of one kind.
class WordHandler final : public TaggedHandler<WordTag> {
 public:
  WordHandler(TextFlow& flow, ParseTextType kind)
      : TaggedHandler(tags()), flow_(flow), base_kind_(kind), kind_(kind) {}

 private:
  bool open(WordTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(WordTag tag) override;
  void text(std::string_view utf8) override;

  void shown(std::string_view utf8);
  void symbol(std::string_view code);
  void field_mark(std::string_view type);
  bool in_field_code() const;

  TextFlow& flow_;
  ParseTextType base_kind_;
  ParseTextType kind_;
  int text_depth_ = 0;
  /// The open fields from the outermost in: whether each one's result has begun.
  std::vector<bool> field_has_result_;
};

bool WordHandler::in_field_code() const {
  for (bool const has_result : field_has_result_) {
    if (!has_result) {
      return true;
    }
  }
  return false;
}

void WordHandler::shown(std::string_view utf8) {
  if (!in_field_code()) {
    flow_.text(kind_, utf8);
  }
}

/// Symbol fonts put their characters into the private use area, where they mean nothing as text.
void WordHandler::symbol(std::string_view code) {
  constexpr std::uint32_t private_use = 0xE000;
  std::uint32_t value = 0;
  std::from_chars(code.data(), code.data() + code.size(), value, 16);
  bool const is_text = value >= 0x20 && (value < private_use || value > 0xF8FF);
  wchar_t const character = is_text ? static_cast<wchar_t>(value) : L' ';
  shown(morvabs::to_utf8(std::wstring_view(&character, 1)));
}

void WordHandler::field_mark(std::string_view type) {
  constexpr std::size_t deepest = 1000;
  if (type == "begin" && field_has_result_.size() < deepest) {
    field_has_result_.push_back(false);
  } else if (type == "separate" && !field_has_result_.empty()) {
    field_has_result_.back() = true;
  } else if (type == "end" && !field_has_result_.empty()) {
    field_has_result_.pop_back();
  }
}

bool WordHandler::open(WordTag tag, XmlName const& /*name*/, XmlAttributes const& attributes) {
  switch (tag) {
    case WordTag::left_out:
      return false;
    case WordTag::run_text:
      ++text_depth_;
      break;
    case WordTag::tab:
      shown("\t");
      break;
    case WordTag::line_break:
      shown("\n");
      break;
    case WordTag::hyphen:
      shown("-");
      break;
    case WordTag::symbol:
      symbol(attributes.get("char"));
      break;
    case WordTag::field_mark:
      field_mark(attributes.get("fldCharType"));
      break;
    case WordTag::control_value:
      flow_.line(Orlec::ParseTextType_control, attributes.get("val"));
      break;
    case WordTag::control_item: {
      auto const label = attributes.get("displayText");
      flow_.line(Orlec::ParseTextType_control, label.empty() ? attributes.get("value") : label);
      break;
    }
    case WordTag::text_box:
      flow_.separate(kind_, '\n');
      break;
    case WordTag::phonetic:
      kind_ = Orlec::ParseTextType_other;
      break;
    case WordTag::word_art:
      flow_.line(kind_, attributes.get("string"));
      break;
    case WordTag::object_name:
      flow_.line(Orlec::ParseTextType_other, attributes.get("title"));
      flow_.line(Orlec::ParseTextType_other, attributes.get("descr"));
      break;
    default:
      break;
  }
  return true;
}

void WordHandler::close(WordTag tag) {
  switch (tag) {
    case WordTag::run_text:
      --text_depth_;
      break;
    case WordTag::cell:
      flow_.separate(kind_, '\t');
      break;
    case WordTag::paragraph:
      // A field whose result never comes must not swallow the rest of the document.
      if (in_field_code()) {
        field_has_result_.clear();
      }
      flow_.separate(kind_, '\n');
      break;
    case WordTag::row:
    case WordTag::text_box:
      flow_.separate(kind_, '\n');
      break;
    case WordTag::phonetic:
      flow_.separate(kind_, ' ');
      kind_ = base_kind_;
      break;
    default:
      break;
  }
}

void WordHandler::text(std::string_view utf8) {
  if (text_depth_ > 0) {
    shown(utf8);
  }
}

/// The kind of text in a part beside the body; `main` where the part is none of those.
ParseTextType kind_of(std::string_view relationship_type) {
  if (relationship_type == "header" || relationship_type == "footer") {
    return Orlec::ParseTextType_hf;
  }
  if (relationship_type == "comments") {
    return Orlec::ParseTextType_comment;
  }
  if (relationship_type == "footnotes") {
    return Orlec::ParseTextType_fn;
  }
  if (relationship_type == "endnotes") {
    return Orlec::ParseTextType_en;
  }
  return Orlec::ParseTextType_main;
}

/// Reads a part and what it refers to; the relationships of the part, none where it was read
/// before.
std::vector<Relationship> read_part(OpenPackage& package, TextFlow& flow, std::string const& part,
                                    ParseTextType kind) {
  if (!package.is_unread(part)) {
    return {};
  }
  WordHandler handler(flow, kind);
  package.parse_once(part, handler);
  flow.separate(kind, '\n');
  auto relationships = package.relationships(part);
  read_graphics(package, relationships, flow);
  read_controls(package, relationships, flow);
  read_link_targets(relationships, flow);
  return relationships;
}

}  // namespace

void read_docx(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  OpenPackage package(reader, context);
  if (!package.container().is_open()) {
    return;
  }
  auto const document = package.main_part();
  if (context.ended()) {
    return;
  }
  TextFlow flow(context);
  auto const relationships = read_part(package, flow, document, Orlec::ParseTextType_main);
  for (auto const& relationship : relationships) {
    auto const kind = kind_of(relationship.type);
    if (kind != Orlec::ParseTextType_main && !relationship.external &&
        package.expect(relationship.target)) {
      read_part(package, flow, relationship.target, kind);
    }
  }
  read_package_properties(package, flow);
  count_stated_pages(package);
  package.read_embedded_parts();
}

}  // namespace morvakit
