#include <charconv>
#include <string>
#include <vector>

#include "host/utf8.h"
#include "morvakit/formats.h"
#include "morvakit/office/open_package.h"
#include "morvakit/office/shared_strings.h"
#include "morvakit/office/sheet_parts.h"
#include "morvakit/sheet/cell_styles.h"
#include "morvakit/sheet/sheet_text.h"
#include "morvakit/xml/tagged_handler.h"

namespace morvakit {

namespace {

/// Text that is put together before it is delivered is never longer than this.
constexpr std::size_t longest_piece = std::size_t{64} << 10;

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

  explicit Workbook(ReadContext& context) : styles(context) {}

  std::vector<Sheet> sheets;
  CellStyles styles;
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
      workbook_.styles.count_from_1904(value == "1" || value == "true");
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
  explicit StyleHandler(CellStyles& styles) : styles_(styles) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local == "numFmt") {
      styles_.add_format(to_number(attributes.get("numFmtId"), -1), attributes.get("formatCode"));
    } else if (name.local == "cellXfs") {
      in_cell_styles_ = true;
    } else if (name.local == "xf" && in_cell_styles_) {
      styles_.add_style(to_number(attributes.get("numFmtId"), 0));
    }
  }
  void end(XmlName const& name) override {
    in_cell_styles_ = in_cell_styles_ && name.local != "cellXfs";
  }
  void characters(std::string_view /*utf8*/) override {}

  CellStyles& styles_;
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

/// Reads the cells of a sheet, and its printed headers and footers.
class SheetHandler final : public TaggedHandler<SheetTag> {
 public:
  SheetHandler(TextFlow& flow, CellStyles const& styles, SharedStrings const& strings)
      : TaggedHandler(tags()), flow_(flow), styles_(styles), strings_(strings) {}

 private:
  bool open(SheetTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(SheetTag tag) override;
  void text(std::string_view utf8) override;

  bool is_text_cell() const { return type_ == "str" || type_ == "inlineStr"; }
  void deliver_text();
  void close_cell();

  TextFlow& flow_;
  CellStyles const& styles_;
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
      type_.clear();
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
    flow_.text(Orlec::ParseTextType_main, styles_.text(piece_, style_));
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

void read_workbook_parts(OpenPackage& package, std::vector<Relationship> const& relationships,
                         Workbook& workbook, SharedStrings& strings) {
  for (auto const& relationship : relationships) {
    if (relationship.type == "styles") {
      StyleHandler handler(workbook.styles);
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
  Workbook workbook(context);
  WorkbookHandler handler(context, workbook);
  package.parse_once(part, handler);
  auto const relationships = package.relationships(part);
  SharedStrings strings(context);
  read_workbook_parts(package, relationships, workbook, strings);
  RelationshipsById const by_id(relationships);
  for (auto const& sheet : workbook.sheets) {
    context.count_pages(1);
    flow.line(Orlec::ParseTextType_main, sheet.name);
    auto const* const target = by_id.find(sheet.relation);
    if (target == nullptr) {
      context.note(Orlec::ParseOutcome::damaged, "a sheet is missing");
    } else if (!target->external && package.expect(target->target) &&
               package.is_unread(target->target)) {
      SheetHandler cells(flow, workbook.styles, strings);
      package.parse_once(target->target, cells);
      flow.separate(Orlec::ParseTextType_main, '\n');
      read_beside_sheet(package, target->target, flow);
    }
    if (!context.keep_going()) {
      return;
    }
  }
  read_package_properties(package, flow);
  package.read_embedded_parts();
}

}  // namespace morvakit
