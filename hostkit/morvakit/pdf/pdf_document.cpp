#include "morvakit/pdf/pdf_document.h"

#include <memory>
#include <utility>

#include <Catalog.h>
#include <Gfx.h>
#include <XRef.h>

#include "host/utf8.h"
#include "morvakit/pdf/pdf_objects.h"
#include "morvakit/pdf/pdf_page_device.h"
#include "morvakit/pdf/pdf_text.h"

namespace morvakit {

namespace {

constexpr int outline_depth_limit = 64;

bool stop_wanted(void* device) {
  return static_cast<PdfPageDevice*>(device)->stop_wanted();
}

/// What the text of a comment or the value of a field says is told on its own; drawn as well, it
/// would stand in the main text too. A signature says nothing but by what it looks like.
bool is_part_of_page(Annot* annotation, void* /*unused*/) {
  auto const& object = annotation->getAnnotObj();
  switch (annotation->getType()) {
    case Annot::typeText:
    case Annot::typePopup:
      return false;
    case Annot::typeFreeText:
      return object.isDict() && to_text(annotation->getContents()).empty() &&
             !object.getDict()->hasKey("RC");
    case Annot::typeWidget: {
      auto const type =
          object.isDict() ? Form::fieldLookup(object.getDict(), "FT") : Object(objNull);
      return !type.isName("Tx") && !type.isName("Ch") && !type.isName("Btn");
    }
    default:
      return true;
  }
}

/// What draws a page, as it stands there; the library gives it looked up only.
Object reference_of_content(Page& page, PDFDoc& document) {
  auto const entries = Object(page.getRef()).fetch(document.getXRef());
  return entries.isDict() ? entries.dictLookupNF("Contents").copy() : Object(objNull);
}

/// The library's time for a tree of pages grows with the square of its depth. False for one that is
/// deeper than any is, in a document that has enough objects for it to matter.
bool is_page_tree_sound(PDFDoc& document, PdfSink& sink) {
  constexpr int deepest = 1000;
  constexpr int harmless = 20000;
  struct Node {
    Object reference;
    int depth;
  };
  auto* const objects = document.getXRef();
  auto const catalog = objects->getCatalog();
  if (objects->getNumObjects() - document.getNumPages() < harmless || !catalog.isDict()) {
    return true;
  }
  PdfObjectsMet met;
  std::vector<Node> open;
  open.push_back({catalog.getDict()->lookupNF("Pages").copy(), 0});
  while (!open.empty() && sink.keep_going()) {
    auto const [reference, depth] = std::move(open.back());
    open.pop_back();
    auto const node = reference.isRef() ? reference.fetch(objects) : reference.copy();
    auto const kids = node.isDict() ? node.dictLookup("Kids") : Object(objNull);
    if (depth > deepest) {
      return false;
    }
    for (int i = 0; kids.isArray() && i < kids.arrayGetLength(); ++i) {
      if (met.is_new(kids.arrayGetNF(i))) {
        open.push_back({kids.arrayGetNF(i).copy(), depth + 1});
      }
    }
  }
  return true;
}

}  // namespace

void PdfDocumentText::read() {
  read_properties();
  if (!is_page_tree_sound(document_, sink_)) {
    sink_.end(Orlec::ParseOutcome::limit_reached, "tree of pages over 1000 deep");
    return;
  }
  check_fields(form_check_.is_form_sound());
  going_ = going_ && resources_.take_form();
  auto const pages = document_.getNumPages();
  for (int page = 1; page <= pages && keep_going(); ++page) {
    read_page(page);
  }
  read_other_fields();
  if (auto* const outline = going_ ? document_.getOutline() : nullptr; outline != nullptr) {
    read_outline(outline->getItems(), 0);
  }
  if (keep_going()) {
    parts_.read_form();
    parts_.read_metadata();
    parts_.add_listed_files();
    parts_.read_files();
  }
}

void PdfDocumentText::add_line(Orlec::ParseTextType type, std::string const& text) {
  if (!text.empty()) {
    going_ = going_ && sink_.separate(type, '\n') && sink_.text(type, text);
  }
}

void PdfDocumentText::read_properties() {
  struct Property {
    char const* key;
    char const* name;
  };
  constexpr Property properties[] = {
      {"Title", "title"}, {"Author", "author"}, {"Subject", "subject"}, {"Keywords", "keywords"}};
  auto const info = document_.getDocInfo();
  if (!info.isDict()) {
    return;
  }
  for (auto const& property : properties) {
    auto const text = to_text(info.dictLookup(property.key), sink_);
    if (!text.empty()) {
      going_ = going_ && sink_.property(property.name, text);
    }
  }
}

void PdfDocumentText::take_output(void* self, char const* text, int length) {
  static_cast<PdfDocumentText*>(self)->page_text_.append(text, static_cast<std::size_t>(length));
}

void PdfDocumentText::check_fields(bool are_sound) {
  if (!are_sound && has_sound_fields_) {
    has_sound_fields_ = false;
    sink_.note(Orlec::ParseOutcome::limit_reached, "form fields nested over 500 deep");
  }
}

/// Fills the text of the page; true when it has more characters than the order of reading allows.
/// With the annotations the library would make the fields.
bool PdfDocumentText::draw(Page& page, bool in_reading_order) {
  constexpr double resolution = 72.0;
  page_text_.clear();
  PdfPageDevice device(take_output, this, sink_, in_reading_order);
  if (has_sound_fields_) {
    page.display(&device, resolution, resolution, 0, true, false, false, stop_wanted, &device,
                 is_part_of_page, nullptr);
  } else {
    std::unique_ptr<Gfx> const graphics(page.createGfx(&device, resolution, resolution, 0, true,
                                                       false, -1, -1, -1, -1, false, stop_wanted,
                                                       &device));
    auto contents = page.getContents();
    if (!contents.isNull()) {
      graphics->display(&contents);
    }
  }
  if (device.is_cut()) {
    sink_.note(Orlec::ParseOutcome::limit_reached, "a page has too many forms or saved states");
  }
  return device.is_crowded();
}

void PdfDocumentText::read_page(int number) {
  auto* const page = document_.getPage(number);
  if (page == nullptr) {
    sink_.note(Orlec::ParseOutcome::damaged, "page " + std::to_string(number) + " cannot be read");
    return;
  }
  has_page_ = true;
  sink_.count_pages(1);
  auto const annotations = page->getAnnotsObject();
  if (has_sound_fields_) {
    check_fields(form_check_.are_sound(annotations));
  }
  if (!resources_.take(*page->getResourceDictObject()) ||
      !resources_.take_content(reference_of_content(*page, document_)) ||
      !resources_.take_annotations(annotations)) {
    going_ = false;
    return;
  }
  auto is_crowded = draw(*page, true);
  if (is_crowded) {
    is_crowded = draw(*page, false);
  }
  auto text = join_han_lines(without_ligatures(page_text_));
  text.resize(text.find_last_not_of(" \n\t") + 1);
  if (!text.empty()) {
    has_main_text_ = true;
    add_line(Orlec::ParseTextType_main, text);
  }
  if (is_crowded) {
    sink_.end(Orlec::ParseOutcome::limit_reached, "a page has too many characters");
  }
  read_annotations(annotations);
  read_widgets(*page);
}

/// As they stand in the file: the library leaves out those that it could not draw.
void PdfDocumentText::read_annotations(Object const& annotations) {
  for (int i = 0; annotations.isArray() && i < annotations.arrayGetLength() && keep_going(); ++i) {
    auto const annotation = annotations.arrayGet(i);
    if (annotation.isDict()) {
      read_annotation(annotation);
    }
  }
}

void PdfDocumentText::read_annotation(Object const& annotation) {
  auto const type = annotation.dictLookup("Subtype");
  if (type.isName("Widget")) {
    return;
  }
  auto text = to_text(annotation.dictLookup("Contents"), sink_);
  if (text.empty()) {
    text = text_of_markup(to_text(annotation.dictLookup("RC"), sink_));
  }
  // A window mostly repeats what it is the window of.
  auto const parent = type.isName("Popup") ? annotation.dictLookup("Parent") : Object(objNull);
  if (!parent.isDict() || to_text(parent.dictLookup("Contents"), sink_) != text) {
    add_line(Orlec::ParseTextType_comment, text);
  }
  if (type.isName("Link")) {
    read_link(annotation);
  } else if (type.isName("FileAttachment")) {
    parts_.add_file(annotation.getDict()->lookupNF("FS"));
  }
}

void PdfDocumentText::read_link(Object const& annotation) {
  auto const action = annotation.dictLookup("A");
  if (action.isDict()) {
    add_line(Orlec::ParseTextType_other, to_text(action.dictLookup("URI"), sink_));
  }
}

void PdfDocumentText::read_widgets(Page& page) {
  if (!has_sound_fields_) {
    return;
  }
  auto const fields = page.getFormWidgets();
  for (int i = 0; fields != nullptr && i < fields->getNumWidgets(); ++i) {
    auto* const widget = fields->getWidget(i);
    if (widget == nullptr || !keep_going()) {
      return;
    }
    add_line(Orlec::ParseTextType_control, to_text(widget->getAlternateUiName()));
    auto* const annotation = widget->getWidgetAnnotation();
    auto* const look = annotation == nullptr ? nullptr : annotation->getAppearCharacs();
    if (look != nullptr && widget->getType() == formButton) {
      read_caption(*look);
    }
    if (auto* const field = widget->getField(); field != nullptr) {
      fields_on_pages_.insert(field);
      read_value(*field);
    }
  }
}

/// The caption of a check box is the number of its sign in a font of signs.
void PdfDocumentText::read_caption(AnnotAppearanceCharacs const& look) {
  auto const caption = to_text(look.getNormalCaption());
  if (caption.size() > 1) {
    add_line(Orlec::ParseTextType_control, caption);
  }
}

/// Fields that a program fills or reads, which no page shows.
void PdfDocumentText::read_other_fields() {
  auto* const form = going_ && has_sound_fields_ ? document_.getCatalog()->getForm() : nullptr;
  std::vector<FormField*> open;
  for (int i = form == nullptr ? 0 : form->getNumFields(); i > 0; --i) {
    open.push_back(form->getRootField(i - 1));
  }
  while (!open.empty() && keep_going()) {
    auto* const field = open.back();
    open.pop_back();
    for (int i = field->getNumChildren(); i > 0; --i) {
      open.push_back(field->getChildren(i - 1));
    }
    if (field->getNumChildren() == 0 && fields_on_pages_.insert(field).second) {
      add_line(Orlec::ParseTextType_control, to_text(field->getAlternateUiName()));
      read_value(*field);
    }
  }
}

void PdfDocumentText::read_value(FormField& field) {
  constexpr int password = 1 << 13;
  auto* const dictionary = field.getObj()->isDict() ? field.getObj()->getDict() : nullptr;
  if (dictionary == nullptr) {
    return;
  }
  if (field.getType() == formChoice) {
    read_choice(*dictionary);
  } else if (field.getType() == formText) {
    auto const flags = Form::fieldLookup(dictionary, "Ff");
    if (!flags.isInt() || (flags.getInt() & password) == 0) {
      add_line(Orlec::ParseTextType_control, to_text(Form::fieldLookup(dictionary, "V"), sink_));
    }
  }
}

/// The options as a user reads them, then what is stored and drawn besides: a value typed in, or
/// the one that an option stands for.
void PdfDocumentText::read_choice(Dict& field) {
  std::unordered_set<std::string> options;
  auto const stated = Form::fieldLookup(&field, "Opt");
  for (int i = 0; stated.isArray() && i < stated.arrayGetLength() && keep_going(); ++i) {
    auto const option = stated.arrayGet(i);
    bool const is_pair = option.isArray() && option.arrayGetLength() > 1;
    auto text = to_text(is_pair ? option.arrayGet(1) : option.copy(), sink_);
    add_line(Orlec::ParseTextType_control, text);
    options.insert(std::move(text));
  }
  auto const add_value = [&](Object const& value) {
    auto const text = to_text(value, sink_);
    if (options.count(text) == 0) {
      add_line(Orlec::ParseTextType_control, text);
    }
  };
  auto const stored = Form::fieldLookup(&field, "V");
  add_value(stored);
  for (int i = 0; stored.isArray() && i < stored.arrayGetLength() && keep_going(); ++i) {
    add_value(stored.arrayGet(i));
  }
}

void PdfDocumentText::read_outline(std::vector<OutlineItem*> const* items, int depth) {
  if (items == nullptr || items->empty()) {
    return;
  }
  if (depth > outline_depth_limit) {
    sink_.note(Orlec::ParseOutcome::limit_reached,
               "outline nested over " + std::to_string(outline_depth_limit) + " deep");
    return;
  }
  for (auto* const item : *items) {
    if (!keep_going()) {
      return;
    }
    std::wstring title;
    for (int i = 0; i < item->getTitleLength(); ++i) {
      title += static_cast<wchar_t>(item->getTitle()[i]);
    }
    add_line(Orlec::ParseTextType_other, morvabs::to_utf8(title));
    item->open();
    read_outline(item->getKids(), depth + 1);
  }
}

}  // namespace morvakit
