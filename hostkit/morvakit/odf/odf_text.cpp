#include "morvakit/odf/odf_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace morvakit {

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
  formula_text,
  master_page,
  body,
  spreadsheet,
  slide,
  picture,
  data,  ///< the bytes of a file, as text
  link,
  message,  ///< what a cell says of the values that it takes
};

namespace {

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
      {office_space, "binary-data", data},
      {office_space, "body", body},
      {office_space, "spreadsheet", spreadsheet},
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
      {draw_space, "object-ole", object},
      {draw_space, "page", slide},
      {draw_space, "image", picture},
      {draw_space, "a", link},
      {text_space, "a", link},
      {table_space, "help-message", message},
      {table_space, "error-message", message},
      {vector_space, "title", description},
      {vector_space, "desc", description},
      {formula_space, "mi", formula_text},
      {formula_space, "mn", formula_text},
      {formula_space, "mo", formula_text},
      {formula_space, "mtext", formula_text},
      {formula_space, "annotation", left_out},
  };
  return table;
}

/// Whether an element is a control of a form whose caption or value a user sees.
bool is_control(XmlName const& name) {
  constexpr std::array<std::string_view, 15> controls{
      "button", "checkbox", "combobox", "fixed-text", "formatted-text", "frame", "item", "listbox",
      "number", "option",   "radio",    "text",       "textarea",       "date",  "time"};
  return form_space.is(name.space) &&
         std::find(controls.begin(), controls.end(), name.local) != controls.end();
}

bool is_xml_blank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

OdfTextHandler::OdfTextHandler(TextFlow& flow, OdfPart part, bool is_spreadsheet)
    : TaggedHandler(tags()), flow_(flow), part_(part), is_spreadsheet_(is_spreadsheet) {
  places_.push_back({});
}

/// Styles hold sample text; only headers, footers and what stands on master pages is the
/// document's.
bool OdfTextHandler::is_shown() const {
  return part_ == OdfPart::content || master_depth_ > 0 || body_depth_ > 0;
}

void OdfTextHandler::begin_kind(Orlec::ParseTextType kind, bool characters_count) {
  places_.push_back({kind, characters_count ? 1 : 0, true});
  flow_.separate(kind, '\n');
}

void OdfTextHandler::end_kind() {
  flow_.separate(kind(), '\n');
  places_.pop_back();
}

void OdfTextHandler::blanks(std::string_view count) {
  constexpr std::size_t most = 64;
  std::size_t number = 1;
  std::from_chars(count.data(), count.data() + count.size(), number);
  flow_.text(kind(), std::string(std::min(number, most), ' '));
  places_.back().after_blank = true;
}

/// Some writers store a cell's value and leave out the paragraph that shows it.
void OdfTextHandler::cell_value(XmlAttributes const& attributes) {
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

void OdfTextHandler::close_cell() {
  if (!cells_.back().has_paragraph && is_spreadsheet_ && is_shown()) {
    flow_.text(kind(), cells_.back().value);
  }
  cells_.pop_back();
  flow_.separate(kind(), '\t');
}

void OdfTextHandler::form_element(XmlAttributes const& attributes) {
  for (auto const* const name : {"label", "value", "current-value", "title"}) {
    flow_.line(Orlec::ParseTextType_control, attributes.get(form_space.name, name));
    flow_.line(Orlec::ParseTextType_control, attributes.get(form_space.other_name, name));
  }
}

void OdfTextHandler::open_sheet(XmlName const& name, XmlAttributes const& attributes) {
  ++sheet_depth_;
  if (is_spreadsheet_ && is_shown()) {
    pages_ += sheet_depth_ == 1 ? 1 : 0;
    flow_.line(kind(), attributes.get(name.space, "name"));
  }
}

/// Objects are read where all other text has been; one that stands within the document is read in
/// its place.
void OdfTextHandler::object(XmlAttributes const& attributes) {
  ++object_depth_;
  auto& context = flow_.context();
  auto const address = std::string(attributes.get("href"));
  auto const most = context.limits().i_entries;
  if (address.empty() || known_objects_.count(address) != 0) {
    return;
  }
  if (static_cast<std::int64_t>(objects_.size()) >= most) {
    context.note(Orlec::ParseOutcome::limit_reached, "over " + std::to_string(most) + " objects");
  } else if (context.charge_memory(2 * (sizeof(std::string) + address.size()))) {
    known_objects_.insert(address);
    objects_.push_back(address);
  }
}

/// The address of a place outside the document.
void OdfTextHandler::link(XmlAttributes const& attributes) {
  auto const address = attributes.get("href");
  if (is_shown() && address.find(':') != std::string_view::npos) {
    flow_.line(Orlec::ParseTextType_other, address);
  }
}

/// What stands within a paragraph. True where the tag was one of those.
bool OdfTextHandler::open_text(OdfTag tag, XmlAttributes const& attributes) {
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

/// What has a kind of its own. True where the tag was one of those.
bool OdfTextHandler::open_kind(OdfTag tag, XmlAttributes const& attributes) {
  switch (tag) {
    case OdfTag::note:
      begin_kind(attributes.get("note-class") == "endnote" ? Orlec::ParseTextType_en
                                                           : Orlec::ParseTextType_fn);
      return true;
    case OdfTag::footnote:
      begin_kind(Orlec::ParseTextType_fn);
      return true;
    case OdfTag::endnote:
      begin_kind(Orlec::ParseTextType_en);
      return true;
    case OdfTag::annotation:
      begin_kind(Orlec::ParseTextType_comment);
      return true;
    case OdfTag::message:
      begin_kind(Orlec::ParseTextType_control);
      return true;
    case OdfTag::master_page:
      ++master_depth_;
      begin_kind(Orlec::ParseTextType_hf);
      return true;
    case OdfTag::header_footer:
      begin_kind(Orlec::ParseTextType_hf);
      return true;
    case OdfTag::declaration:
      begin_kind(Orlec::ParseTextType_hf, true);
      return true;
    default:
      return false;
  }
}

/// What holds paragraphs, or stands beside them. False where it is to be left out.
bool OdfTextHandler::open_block(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) {
  switch (tag) {
    case OdfTag::left_out:
      return false;
    case OdfTag::data:
      has_data_ = true;
      return false;
    case OdfTag::speaker_notes:
      // On a master page they hold nothing but prompts.
      if (part_ == OdfPart::styles || master_depth_ > 0) {
        return false;
      }
      begin_kind(Orlec::ParseTextType_remark);
      break;
    case OdfTag::frame:
      return attributes.get("placeholder") != "true" || part_ != OdfPart::styles;
    case OdfTag::body:
      ++body_depth_;
      break;
    case OdfTag::spreadsheet:
      is_spreadsheet_ = true;
      break;
    case OdfTag::slide:
      pages_ += is_shown() && object_depth_ == 0 ? 1 : 0;
      break;
    case OdfTag::picture:
      // The picture beside an object only stands for it.
      flow_.context().count_images(part_ == OdfPart::flat && object_depth_ == 0 ? 1 : 0);
      break;
    case OdfTag::link:
      link(attributes);
      break;
    case OdfTag::text_box:
      flow_.separate(kind(), '\n');
      break;
    case OdfTag::sheet:
      open_sheet(name, attributes);
      break;
    case OdfTag::cell:
      cell_value(attributes);
      break;
    case OdfTag::object:
      object(attributes);
      break;
    default:
      break;
  }
  return true;
}

bool OdfTextHandler::open(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) {
  if (tag == OdfTag::other && is_control(name)) {
    form_element(attributes);
  }
  return open_text(tag, attributes) || open_kind(tag, attributes) ||
         open_block(tag, name, attributes);
}

void OdfTextHandler::close(OdfTag tag) {
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
    case OdfTag::message:
      end_kind();
      break;
    case OdfTag::body:
      --body_depth_;
      break;
    case OdfTag::object:
      --object_depth_;
      break;
    case OdfTag::sheet:
      --sheet_depth_;
      flow_.separate(kind(), '\n');
      break;
    case OdfTag::text_box:
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
void OdfTextHandler::collapsed(std::string_view utf8) {
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

void OdfTextHandler::text(std::string_view utf8) {
  if (places_.back().text_depth > 0 && is_shown()) {
    collapsed(utf8);
  }
}

}  // namespace morvakit
