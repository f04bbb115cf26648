#include <algorithm>
#include <charconv>
#include <string>
#include <unordered_set>
#include <vector>

#include "morvakit/formats.h"
#include "morvakit/office_properties.h"
#include "morvakit/tagged_handler.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml_part.h"
#include "morvakit/zip_container.h"

namespace morvakit {

namespace {

using Orlec::ParseTextType;

// The vocabularies of OpenDocument, and of its forerunner.
constexpr Namespace text_space{"urn:oasis:names:tc:opendocument:xmlns:text:1.0",
                               "http://openoffice.org/2000/text"};
constexpr Namespace table_space{"urn:oasis:names:tc:opendocument:xmlns:table:1.0",
                                "http://openoffice.org/2000/table"};
constexpr Namespace office_space{"urn:oasis:names:tc:opendocument:xmlns:office:1.0",
                                 "http://openoffice.org/2000/office"};
constexpr Namespace draw_space{"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0",
                               "http://openoffice.org/2000/drawing"};
constexpr Namespace style_space{"urn:oasis:names:tc:opendocument:xmlns:style:1.0",
                                "http://openoffice.org/2000/style"};
constexpr Namespace form_space{"urn:oasis:names:tc:opendocument:xmlns:form:1.0",
                               "http://openoffice.org/2000/form"};
constexpr Namespace presentation_space{"urn:oasis:names:tc:opendocument:xmlns:presentation:1.0",
                                       "http://openoffice.org/2000/presentation"};
constexpr Namespace vector_space{"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0",
                                 "http://www.w3.org/2000/svg"};
constexpr Namespace formula_space{"http://www.w3.org/1998/Math/MathML",
                                  "http://www.w3.org/1998/Math/MathML"};

enum class OdfTag {
  other,
  paragraph,
  blanks,
  tab,
  line_break,
  note,
  footnote,
  endnote,
  annotation,
  speaker_notes,
  header_footer,
  declaration,  ///< header, footer or date of a show, named once and used on many pages
  left_out,
  phonetic,
  sheet,
  row,
  cell,
  frame,
  text_box,
  object,
  description,
  form_element,
  formula_text,
  master_page,
};

TagTable<OdfTag> const& tags() {
  using enum OdfTag;
  static TagTable<OdfTag> const table{
      {text_space, "p", paragraph},
      {text_space, "h", paragraph},
      {text_space, "s", blanks},
      {text_space, "tab", tab},
      {text_space, "tab-stop", tab},
      {text_space, "line-break", line_break},
      {text_space, "note", note},
      {text_space, "footnote", footnote},
      {text_space, "endnote", endnote},
      {text_space, "note-citation", left_out},
      {text_space, "footnote-citation", left_out},
      {text_space, "endnote-citation", left_out},
      {text_space, "tracked-changes", left_out},
      {text_space, "script", left_out},
      {text_space, "ruby-text", phonetic},
      {table_space, "tracked-changes", left_out},
      {office_space, "annotation", annotation},
      {office_space, "scripts", left_out},
      {office_space, "binary-data", left_out},
      {presentation_space, "notes", speaker_notes},
      {presentation_space, "header-decl", declaration},
      {presentation_space, "footer-decl", declaration},
      {presentation_space, "date-time-decl", declaration},
      {style_space, "header", header_footer},
      {style_space, "header-left", header_footer},
      {style_space, "header-first", header_footer},
      {style_space, "footer", header_footer},
      {style_space, "footer-left", header_footer},
      {style_space, "footer-first", header_footer},
      {style_space, "master-page", master_page},
      {table_space, "table", sheet},
      {table_space, "table-row", row},
      {table_space, "table-cell", cell},
      {table_space, "covered-table-cell", cell},
      {draw_space, "frame", frame},
      {draw_space, "text-box", text_box},
      {draw_space, "object", object},
      {vector_space, "title", description},
      {vector_space, "desc", description},
      {form_space, "button", form_element},
      {form_space, "checkbox", form_element},
      {form_space, "combobox", form_element},
      {form_space, "fixed-text", form_element},
      {form_space, "formatted-text", form_element},
      {form_space, "frame", form_element},
      {form_space, "item", form_element},
      {form_space, "listbox", form_element},
      {form_space, "number", form_element},
      {form_space, "option", form_element},
      {form_space, "radio", form_element},
      {form_space, "text", form_element},
      {form_space, "textarea", form_element},
      {form_space, "date", form_element},
      {form_space, "time", form_element},
      {formula_space, "mi", formula_text},
      {formula_space, "mn", formula_text},
      {formula_space, "mo", formula_text},
      {formula_space, "mtext", formula_text},
      {formula_space, "annotation", left_out},
  };
  return table;
}

bool is_xml_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Which part of a document is read.
enum class OdfPart { content, styles };

/// Reads the text of `content.xml` or `styles.xml`.
class OdfHandler final : public TaggedHandler<OdfTag> {
 public:
  OdfHandler(TextFlow& flow, OdfPart part, bool is_spreadsheet)
      : TaggedHandler(tags()), flow_(flow), part_(part), is_spreadsheet_(is_spreadsheet) {
    places_.push_back({});
  }

  /// Addresses of the objects that stand in the document.
  std::vector<std::string> const& objects() const { return objects_; }

 private:
  bool open(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(OdfTag tag) override;
  void text(std::string_view utf8) override;

  ParseTextType kind() const { return places_.back().kind; }
  bool is_shown() const;
  bool open_text(OdfTag tag, XmlAttributes const& attributes);
  bool open_block(OdfTag tag, XmlName const& name, XmlAttributes const& attributes);
  void begin_kind(ParseTextType kind, bool characters_count = false);
  void end_kind();
  void blanks(std::string_view count);
  void cell_value(XmlAttributes const& attributes);
  void close_cell();
  void form_element(XmlAttributes const& attributes);
  void object(XmlAttributes const& attributes);
  void collapsed(std::string_view utf8);

  /// Where text goes, and what stands around it there: a note within a paragraph is a place of its
  /// own.
  struct Place {
    ParseTextType kind = Orlec::ParseTextType_main;
    int text_depth = 0;  ///< open elements whose characters are text
    bool after_blank = true;
  };

  struct Cell {
    std::string value;  ///< what is written where the cell holds no paragraph
    bool has_paragraph = false;
  };

  TextFlow& flow_;
  OdfPart part_;
  bool is_spreadsheet_;
  std::vector<Place> places_;
  std::vector<Cell> cells_;
  std::vector<std::string> objects_;
  std::unordered_set<std::string> known_objects_;
  int master_depth_ = 0;
};

/// Styles hold sample text; only headers, footers and what stands on master pages is the
/// document's.
bool OdfHandler::is_shown() const {
  return part_ == OdfPart::content || master_depth_ > 0;
}

void OdfHandler::begin_kind(ParseTextType kind, bool characters_count) {
  places_.push_back({kind, characters_count ? 1 : 0, true});
  flow_.separate(kind, '\n');
}

void OdfHandler::end_kind() {
  flow_.separate(kind(), '\n');
  places_.pop_back();
}

void OdfHandler::blanks(std::string_view count) {
  constexpr std::size_t most = 64;
  std::size_t number = 1;
  std::from_chars(count.data(), count.data() + count.size(), number);
  flow_.text(kind(), std::string(std::min(number, most), ' '));
  places_.back().after_blank = true;
}

/// Some writers store a cell's value and leave out the paragraph that shows it.
void OdfHandler::cell_value(XmlAttributes const& attributes) {
  constexpr std::size_t longest_value = std::size_t{32} << 10;
  Cell cell;
  for (auto const* const name :
       {"string-value", "date-value", "time-value", "boolean-value", "value"}) {
    if (cell.value.empty()) {
      cell.value = attributes.get(name).substr(0, longest_value);
    }
  }
  cells_.push_back(std::move(cell));
}

void OdfHandler::close_cell() {
  if (!cells_.back().has_paragraph && is_spreadsheet_ && is_shown()) {
    flow_.text(kind(), cells_.back().value);
  }
  cells_.pop_back();
  flow_.separate(kind(), '\t');
}

void OdfHandler::form_element(XmlAttributes const& attributes) {
  for (auto const* const name : {"label", "value", "current-value", "title"}) {
    flow_.line(Orlec::ParseTextType_control, attributes.get(form_space.name, name));
    flow_.line(Orlec::ParseTextType_control, attributes.get(form_space.other_name, name));
  }
}

void OdfHandler::object(XmlAttributes const& attributes) {
  constexpr std::size_t most = 10000;
  auto address = attributes.get("href");
  if (address.substr(0, 2) == "./") {
    address.remove_prefix(2);
  } else if (address.substr(0, 1) == "#") {
    address.remove_prefix(1);
  }
  bool const is_new =
      !address.empty() && objects_.size() < most && known_objects_.emplace(address).second;
  if (is_new && flow_.context().charge_memory(2 * address.size())) {
    objects_.emplace_back(address);
  }
}

/// What stands within a paragraph. True where the tag was one of those.
bool OdfHandler::open_text(OdfTag tag, XmlAttributes const& attributes) {
  switch (tag) {
    case OdfTag::paragraph:
      if (!cells_.empty()) {
        cells_.back().has_paragraph = true;
      }
      ++places_.back().text_depth;
      places_.back().after_blank = true;
      return true;
    case OdfTag::description:
    case OdfTag::phonetic:
      begin_kind(Orlec::ParseTextType_other, true);
      return true;
    case OdfTag::formula_text:
      ++places_.back().text_depth;
      return true;
    case OdfTag::blanks:
      blanks(attributes.get("c"));
      return true;
    case OdfTag::tab:
      flow_.text(kind(), "\t");
      places_.back().after_blank = true;
      return true;
    case OdfTag::line_break:
      flow_.text(kind(), "\n");
      places_.back().after_blank = true;
      return true;
    default:
      return false;
  }
}

/// What holds paragraphs, or stands beside them. False where it is to be left out.
bool OdfHandler::open_block(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) {
  switch (tag) {
    case OdfTag::left_out:
      return false;
    case OdfTag::note:
      begin_kind(attributes.get("note-class") == "endnote" ? Orlec::ParseTextType_en
                                                           : Orlec::ParseTextType_fn);
      break;
    case OdfTag::footnote:
      begin_kind(Orlec::ParseTextType_fn);
      break;
    case OdfTag::endnote:
      begin_kind(Orlec::ParseTextType_en);
      break;
    case OdfTag::annotation:
      begin_kind(Orlec::ParseTextType_comment);
      break;
    case OdfTag::speaker_notes:
      // On a master page they hold nothing but prompts.
      if (part_ == OdfPart::styles) {
        return false;
      }
      begin_kind(Orlec::ParseTextType_remark);
      break;
    case OdfTag::master_page:
      ++master_depth_;
      begin_kind(Orlec::ParseTextType_hf);
      break;
    case OdfTag::header_footer:
      begin_kind(Orlec::ParseTextType_hf);
      break;
    case OdfTag::declaration:
      begin_kind(Orlec::ParseTextType_hf, true);
      break;
    case OdfTag::frame:
      return attributes.get("placeholder") != "true" || part_ == OdfPart::content;
    case OdfTag::text_box:
      flow_.separate(kind(), '\n');
      break;
    case OdfTag::sheet:
      if (is_spreadsheet_ && is_shown()) {
        flow_.line(kind(), attributes.get(name.space, "name"));
      }
      break;
    case OdfTag::cell:
      cell_value(attributes);
      break;
    case OdfTag::object:
      object(attributes);
      break;
    case OdfTag::form_element:
      form_element(attributes);
      break;
    default:
      break;
  }
  return true;
}

bool OdfHandler::open(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) {
  return open_text(tag, attributes) || open_block(tag, name, attributes);
}

void OdfHandler::close(OdfTag tag) {
  switch (tag) {
    case OdfTag::paragraph:
      --places_.back().text_depth;
      flow_.separate(kind(), '\n');
      break;
    case OdfTag::formula_text:
      --places_.back().text_depth;
      flow_.separate(kind(), ' ');
      break;
    case OdfTag::master_page:
      --master_depth_;
      end_kind();
      break;
    case OdfTag::note:
    case OdfTag::footnote:
    case OdfTag::endnote:
    case OdfTag::annotation:
    case OdfTag::speaker_notes:
    case OdfTag::header_footer:
    case OdfTag::phonetic:
    case OdfTag::description:
    case OdfTag::declaration:
      end_kind();
      break;
    case OdfTag::text_box:
    case OdfTag::sheet:
    case OdfTag::row:
      flow_.separate(kind(), '\n');
      break;
    case OdfTag::cell:
      close_cell();
      break;
    default:
      break;
  }
}

/// White space in paragraphs counts as one blank, and as none at their beginning.
void OdfHandler::collapsed(std::string_view utf8) {
  while (!utf8.empty()) {
    auto const* const word_end = std::find_if(utf8.begin(), utf8.end(), is_xml_blank);
    auto const length = static_cast<std::size_t>(word_end - utf8.begin());
    if (length > 0) {
      flow_.text(kind(), utf8.substr(0, length));
      places_.back().after_blank = false;
      utf8.remove_prefix(length);
      continue;
    }
    if (!places_.back().after_blank) {
      flow_.text(kind(), " ");
      places_.back().after_blank = true;
    }
    utf8.remove_prefix(std::min(utf8.find_first_not_of(" \t\r\n"), utf8.size()));
  }
}

void OdfHandler::text(std::string_view utf8) {
  if (places_.back().text_depth > 0 && is_shown()) {
    collapsed(utf8);
  }
}

/// Finds out whether the parts that hold the text are encrypted.
class ManifestHandler final : public XmlHandler {
 public:
  bool is_encrypted() const { return encrypted_; }

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local == "file-entry") {
      auto const path = attributes.get("full-path");
      holds_text_ = path == "content.xml" || path == "encrypted-package";
    }
    encrypted_ = encrypted_ || (holds_text_ && name.local == "encryption-data");
  }
  void end(XmlName const& name) override {
    holds_text_ = holds_text_ && name.local != "file-entry";
  }
  void characters(std::string_view /*utf8*/) override {}

  bool holds_text_ = false;
  bool encrypted_ = false;
};

/// Charts and formulas within the document: their text follows the body's.
void read_objects(ZipContainer& container, std::vector<std::string> const& objects,
                  TextFlow& flow) {
  for (auto const& object : objects) {
    if (!flow.context().keep_going()) {
      return;
    }
    flow.separate(Orlec::ParseTextType_main, '\n');
    OdfHandler handler(flow, OdfPart::content, false);
    parse_part(container, flow.context(), object + "/content.xml", handler);
  }
}

}  // namespace

void read_odf(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
              ReadContext& context) {
  ZipContainer container(reader, context);
  if (!container.is_open()) {
    return;
  }
  ManifestHandler manifest;
  parse_part(container, context, "META-INF/manifest.xml", manifest, PartFault::ignored);
  if (manifest.is_encrypted()) {
    context.end(Orlec::ParseOutcome::encrypted, "the document needs a password");
    return;
  }
  bool const is_spreadsheet = recognition.type == tessarine::FileType::ods;
  TextFlow flow(context);
  OdfHandler content(flow, OdfPart::content, is_spreadsheet);
  if (!parse_part(container, context, "content.xml", content)) {
    context.end(Orlec::ParseOutcome::damaged, "the part content.xml is missing");
    return;
  }
  read_objects(container, content.objects(), flow);
  OdfHandler styles(flow, OdfPart::styles, false);
  parse_part(container, context, "styles.xml", styles);
  PropertyHandler properties(flow, 3);
  parse_part(container, context, "meta.xml", properties);
}

}  // namespace morvakit
