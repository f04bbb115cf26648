#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/utf8.h"
#include "morvakit/drawing_text.h"
#include "morvakit/formats.h"
#include "morvakit/number_format.h"
#include "morvakit/open_package.h"
#include "morvakit/shared_strings.h"

namespace morvakit {

namespace {

/// Text that is put together before it is delivered is never longer than this.
constexpr std::size_t longest_piece = std::size_t{64} << 10;

constexpr Namespace thread_space{
    "http://schemas.microsoft.com/office/spreadsheetml/2018/threadedcomments",
    "http://schemas.microsoft.com/office/spreadsheetml/2018/threadedcomments"};
constexpr Namespace vml_space{"urn:schemas-microsoft-com:vml", "urn:schemas-microsoft-com:vml"};

template <typename Number>
Number to_number(std::string_view text, Number otherwise, int base = 10) {
  Number value = otherwise;
  std::from_chars(text.data(), text.data() + text.size(), value, base);
  return value;
}

/// Characters that XML cannot hold stand in cells as "_x000D_". Only line ends and tabs are of use.
std::string decode_escapes(std::string_view text) {
  constexpr std::size_t length = 7;
  std::string result;
  std::size_t at = 0;
  while ((at = text.find("_x")) != std::string_view::npos) {
    bool const is_escape = at + length <= text.size() && text[at + length - 1] == '_' &&
                           text.substr(at + 2, 4).find_first_not_of("0123456789ABCDEFabcdef") ==
                               std::string_view::npos;
    result.append(text.substr(0, is_escape ? at : at + 2));
    if (is_escape) {
      auto const value = to_number<std::uint32_t>(text.substr(at + 2, 4), 0, 16);
      auto const character = static_cast<wchar_t>(value == '\t' || value >= 0x20 ? value : '\n');
      morvabs::append_utf8(result, std::wstring_view(&character, 1));
    }
    text.remove_prefix(is_escape ? at + length : at + 2);
  }
  return result.append(text);
}

/// What a workbook says about all its sheets.
struct Workbook {
  struct Sheet {
    std::string name;
    std::string relation;
  };

  std::vector<Sheet> sheets;
  std::vector<NumberKind> styles;
  bool from_1904 = false;
};

class WorkbookHandler final : public XmlHandler {
 public:
  WorkbookHandler(ReadContext& context, Workbook& workbook)
      : context_(context), workbook_(workbook) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (!sheet_space.is(name.space)) {
      return;
    }
    if (name.local == "sheet") {
      Workbook::Sheet sheet{std::string(attributes.get("name")),
                            std::string(relation_id(attributes))};
      if (context_.charge_memory(sizeof sheet + sheet.name.size() + sheet.relation.size())) {
        workbook_.sheets.push_back(std::move(sheet));
      }
    } else if (name.local == "workbookPr") {
      auto const value = attributes.get("date1904");
      workbook_.from_1904 = value == "1" || value == "true";
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  Workbook& workbook_;
};

/// Finds out what the cell styles make of numbers.
class StyleHandler final : public XmlHandler {
 public:
  StyleHandler(ReadContext& context, Workbook& workbook) : context_(context), workbook_(workbook) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    constexpr std::size_t about_one_entry = 64;
    bool const is_format = name.local == "numFmt" || name.local == "xf";
    if (is_format && !context_.charge_memory(about_one_entry)) {
      return;
    }
    if (name.local == "numFmt") {
      custom_[to_number(attributes.get("numFmtId"), -1)] =
          kind_of_format(attributes.get("formatCode"));
    } else if (name.local == "cellXfs") {
      in_cell_styles_ = true;
    } else if (name.local == "xf" && in_cell_styles_) {
      int const number = to_number(attributes.get("numFmtId"), 0);
      auto const found = custom_.find(number);
      workbook_.styles.push_back(found != custom_.end() ? found->second
                                                        : kind_of_builtin_format(number));
    }
  }
  void end(XmlName const& name) override {
    in_cell_styles_ = in_cell_styles_ && name.local != "cellXfs";
  }
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  Workbook& workbook_;
  std::unordered_map<int, NumberKind> custom_;
  bool in_cell_styles_ = false;
};

enum class SheetTag {
  other,
  cell,
  row,
  value,
  text,
  item,      ///< a shared string
  left_out,  ///< formulas, phonetic readings
  header,
  comment,
  threaded_text,
  box,
};

TagTable<SheetTag> const& tags() {
  using enum SheetTag;
  static TagTable<SheetTag> const table{
      {sheet_space, "c", cell},
      {sheet_space, "row", row},
      {sheet_space, "v", value},
      {sheet_space, "t", text},
      {sheet_space, "si", item},
      {sheet_space, "f", left_out},
      {sheet_space, "rPh", left_out},
      {sheet_space, "oddHeader", header},
      {sheet_space, "oddFooter", header},
      {sheet_space, "evenHeader", header},
      {sheet_space, "evenFooter", header},
      {sheet_space, "firstHeader", header},
      {sheet_space, "firstFooter", header},
      {sheet_space, "comment", comment},
      {thread_space, "text", threaded_text},
      {vml_space, "textbox", box},
  };
  return table;
}

class StringsHandler final : public TaggedHandler<SheetTag> {
 public:
  explicit StringsHandler(SharedStrings& strings) : TaggedHandler(tags()), strings_(strings) {}

 private:
  bool open(SheetTag tag, XmlName const& /*name*/, XmlAttributes const& /*attributes*/) override {
    if (tag == SheetTag::item) {
      strings_.next();
    }
    in_text_ = in_text_ || tag == SheetTag::text;
    return tag != SheetTag::left_out;
  }
  void close(SheetTag tag) override {
    if (tag == SheetTag::text) {
      deliver();
      in_text_ = false;
    }
  }
  void text(std::string_view utf8) override {
    if (in_text_) {
      piece_.append(utf8);
      if (piece_.size() > longest_piece) {
        deliver();
      }
    }
  }
  void deliver() {
    strings_.append(decode_escapes(piece_));
    piece_.clear();
  }

  SharedStrings& strings_;
  std::string piece_;
  bool in_text_ = false;
};

/// The text of a printed header or footer, without the codes for fonts, page numbers and the like.
std::string header_text(std::string_view code) {
  constexpr std::string_view digits = "0123456789";
  std::string result;
  std::size_t at = 0;
  while ((at = code.find('&')) != std::string_view::npos && at + 1 < code.size()) {
    result.append(code.substr(0, at));
    char const what = code[at + 1];
    code.remove_prefix(at + 2);
    if (what == '&') {
      result += '&';
    } else if (what == '"') {
      code.remove_prefix(std::min(code.find('"'), code.size() - 1) + (code.empty() ? 0 : 1));
    } else if (digits.find(what) != std::string_view::npos) {
      code.remove_prefix(std::min(code.find_first_not_of(digits), code.size()));
    } else if (what == 'K') {
      code.remove_prefix(std::min<std::size_t>(6, code.size()));
    } else if ((what == 'L' || what == 'C' || what == 'R') && !result.empty()) {
      result += '\t';
    }
  }
  return result.append(code);
}

/// Reads the cells of a sheet, and its printed headers and footers.
class SheetHandler final : public TaggedHandler<SheetTag> {
 public:
  SheetHandler(TextFlow& flow, Workbook const& workbook, SharedStrings const& strings)
      : TaggedHandler(tags()), flow_(flow), workbook_(workbook), strings_(strings) {}

 private:
  bool open(SheetTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(SheetTag tag) override;
  void text(std::string_view utf8) override;

  bool is_text_cell() const { return type_ == "str" || type_ == "inlineStr"; }
  void deliver_text();
  void close_cell();

  TextFlow& flow_;
  Workbook const& workbook_;
  SharedStrings const& strings_;
  std::string type_;
  std::uint32_t style_ = 0;
  std::string piece_;
  int capture_depth_ = 0;
};

bool SheetHandler::open(SheetTag tag, XmlName const& /*name*/, XmlAttributes const& attributes) {
  switch (tag) {
    case SheetTag::left_out:
      return false;
    case SheetTag::cell:
      type_ = attributes.get("t");
      style_ = to_number<std::uint32_t>(attributes.get("s"), 0);
      piece_.clear();
      break;
    case SheetTag::text:
      type_ = "inlineStr";
      ++capture_depth_;
      break;
    case SheetTag::value:
      ++capture_depth_;
      break;
    case SheetTag::header:
      piece_.clear();
      ++capture_depth_;
      break;
    default:
      break;
  }
  return true;
}

void SheetHandler::deliver_text() {
  flow_.text(Orlec::ParseTextType_main, decode_escapes(piece_));
  piece_.clear();
}

void SheetHandler::close_cell() {
  if (is_text_cell()) {
    deliver_text();
  } else if (type_ == "s") {
    auto const number = to_number<std::uint64_t>(piece_, UINT64_MAX);
    flow_.text(Orlec::ParseTextType_main, strings_.get(number));
  } else if (type_ == "b") {
    flow_.text(Orlec::ParseTextType_main, piece_.empty() ? "" : piece_ == "0" ? "FALSE" : "TRUE");
  } else if (type_ == "e" || type_ == "d") {
    flow_.text(Orlec::ParseTextType_main, piece_);
  } else {
    auto const kind =
        style_ < workbook_.styles.size() ? workbook_.styles[style_] : NumberKind::number;
    flow_.text(Orlec::ParseTextType_main, format_number(piece_, kind, workbook_.from_1904));
  }
  piece_.clear();
  flow_.separate(Orlec::ParseTextType_main, '\t');
}

void SheetHandler::close(SheetTag tag) {
  switch (tag) {
    case SheetTag::cell:
      close_cell();
      break;
    case SheetTag::row:
      flow_.separate(Orlec::ParseTextType_main, '\n');
      break;
    case SheetTag::text:
    case SheetTag::value:
      --capture_depth_;
      break;
    case SheetTag::header:
      --capture_depth_;
      flow_.line(Orlec::ParseTextType_hf, header_text(piece_));
      piece_.clear();
      break;
    default:
      break;
  }
}

void SheetHandler::text(std::string_view utf8) {
  if (capture_depth_ == 0) {
    return;
  }
  if (piece_.size() > longest_piece && is_text_cell()) {
    deliver_text();
  }
  if (piece_.size() <= longest_piece) {
    piece_.append(utf8);
  }
}

/// Reads the parts beside a sheet: comments of both sorts, and the captions of form controls.
class SheetCommentHandler final : public TaggedHandler<SheetTag> {
 public:
  SheetCommentHandler(TextFlow& flow, Orlec::ParseTextType kind)
      : TaggedHandler(tags()), flow_(flow), kind_(kind) {}

 private:
  static bool holds_text(SheetTag tag) {
    return tag == SheetTag::text || tag == SheetTag::threaded_text || tag == SheetTag::box;
  }
  bool open(SheetTag tag, XmlName const& /*name*/, XmlAttributes const& /*attributes*/) override {
    text_depth_ += holds_text(tag) ? 1 : 0;
    return tag != SheetTag::left_out;
  }
  void close(SheetTag tag) override {
    text_depth_ -= holds_text(tag) ? 1 : 0;
    if (tag == SheetTag::comment || tag == SheetTag::threaded_text || tag == SheetTag::box) {
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
  if (package.was_parsed(part)) {
    return;
  }
  DrawingHandler handler(flow, Orlec::ParseTextType_main);
  package.parse_once(part, handler);
  auto const relationships = package.relationships(part);
  read_graphics(package, relationships, flow);
  read_link_targets(relationships, flow);
}

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

void read_workbook_parts(OpenPackage& package, std::vector<Relationship> const& relationships,
                         Workbook& workbook, SharedStrings& strings) {
  for (auto const& relationship : relationships) {
    if (relationship.type == "styles") {
      StyleHandler handler(package.context(), workbook);
      package.parse_once(relationship.target, handler);
    } else if (relationship.type == "sharedStrings") {
      if (auto const index = package.container().find(relationship.target)) {
        strings.expect(package.container().stated_size(*index));
      }
      StringsHandler handler(strings);
      package.parse_once(relationship.target, handler);
    }
  }
}

}  // namespace

void read_xlsx(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  OpenPackage package(reader, context);
  if (!package.container().is_open()) {
    return;
  }
  auto const part = package.main_part();
  if (context.ended()) {
    return;
  }
  TextFlow flow(context);
  Workbook workbook;
  WorkbookHandler handler(context, workbook);
  package.parse_once(part, handler);
  auto const relationships = package.relationships(part);
  SharedStrings strings(context);
  read_workbook_parts(package, relationships, workbook, strings);
  RelationshipsById const by_id(relationships);
  for (auto const& sheet : workbook.sheets) {
    flow.line(Orlec::ParseTextType_main, sheet.name);
    auto const* const target = by_id.find(sheet.relation);
    if (target != nullptr && !target->external && !package.was_parsed(target->target)) {
      SheetHandler cells(flow, workbook, strings);
      package.parse_once(target->target, cells);
      flow.separate(Orlec::ParseTextType_main, '\n');
      read_beside_sheet(package, target->target, flow);
    }
    if (!context.keep_going()) {
      return;
    }
  }
  read_package_properties(package, flow);
}

}  // namespace morvakit
