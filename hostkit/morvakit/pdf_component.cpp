#include "morvakit/pdf_component.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include <Annot.h>
#include <Catalog.h>
#include <Error.h>
#include <ErrorCodes.h>
#include <Form.h>
#include <GlobalParams.h>
#include <Outline.h>
#include <PDFDoc.h>
#include <Page.h>
#include <Stream.h>
#include <TextOutputDev.h>
#include <UTF.h>

#include "host/export.h"
#include "host/utf8.h"
#include "morvakit/pdf_text.h"

#include "tessarine/pdf_component_loader.h"

namespace morvakit {

namespace {

constexpr int outline_depth_limit = 64;

/// Serves the bytes of a document; neither maps the file nor holds a copy of it.
class ReaderStream final : public BaseSeekInputStream {
 public:
  ReaderStream(Orlec::Reader const& reader, Goffset from, bool is_limited, Goffset size,
               Object&& dictionary)
      : BaseSeekInputStream(from, is_limited, size, std::move(dictionary)), reader_(reader) {}
  ReaderStream(ReaderStream const&) = delete;
  ReaderStream& operator=(ReaderStream const&) = delete;
  ~ReaderStream() override { close(); }

  BaseStream* copy() override {
    return new ReaderStream(reader_, start, limited, length, dict.copy());
  }
  Stream* makeSubStream(Goffset from, bool is_limited, Goffset size, Object&& dictionary) override {
    return new ReaderStream(reader_, from, is_limited, size, std::move(dictionary));
  }

 private:
  Goffset currentPos() const override { return position_; }
  void setCurrentPos(Goffset offset) override { position_ = offset; }
  Goffset read(char* buffer, Goffset size) override {
    auto const got = std::max<std::int64_t>(reader_.ReadAt(position_, buffer, size), 0);
    position_ += got;
    return got;
  }

  Orlec::Reader const& reader_;
  Goffset position_ = 0;
};

void ignore_error(ErrorCategory /*category*/, Goffset /*position*/, char const* /*message*/) {}

void initialize() {
  static std::once_flag once;
  std::call_once(once, [] {
    // What is wrong with a document is told by the outcome; the library would write it to standard
    // error, line by line.
    setErrorCallback(ignore_error);
    globalParams = std::make_unique<GlobalParams>();
    globalParams->setTextEncoding("UTF-8");
    globalParams->setProfileCommands(false);
    globalParams->setErrQuiet(true);
  });
}

/// A text string of the file, in UTF-16 with a mark or in the format's own 8-bit set.
std::string to_text(GooString const* string) {
  if (string == nullptr) {
    return {};
  }
  Unicode* characters = nullptr;
  auto const count = TextStringToUCS4(string->toStr(), &characters);
  std::wstring wide;
  for (int i = 0; i < count; ++i) {
    auto const character = static_cast<wchar_t>(characters[i]);
    wide += character == L'\r' ? L'\n' : character == L'\0' ? L' ' : character;
  }
  gfree(characters);
  return morvabs::to_utf8(wide);
}

/// Gathers the text of a page, and knows when a page asks for more than a page can want.
class PageDevice final : public TextOutputDev {
 public:
  /// In reading order, finding columns and lines takes time that grows with the square of their
  /// number; in the order of the file it takes none.
  PageDevice(TextOutputFunc output, void* target, PdfSink& sink, bool is_reading_order)
      : TextOutputDev(output, target, false, 0.0, !is_reading_order),
        sink_(sink),
        character_limit_(is_reading_order ? ordered_limit : unordered_limit) {
    setTextEOL(eolUnix);
    setTextPageBreaks(false);
  }

  bool is_crowded() const { return characters_ > character_limit_; }
  /// Whether the rest of the page was left out, as drawing it would take no end.
  bool is_cut() const { return is_cut_; }
  bool stop_wanted() { return is_crowded() || is_cut() || !sink_.keep_going(); }

  void drawChar(GfxState* state, double x, double y, double dx, double dy, double origin_x,
                double origin_y, CharCode code, int bytes, Unicode const* characters,
                int count) override {
    if (++characters_ <= character_limit_) {
      TextOutputDev::drawChar(state, x, y, dx, dy, origin_x, origin_y, code, bytes, characters,
                              count);
    }
  }
  /// Forms may contain forms, so that few bytes ask for endless work: said to be drawn by this
  /// device, which draws nothing, they end at once when it is to stop.
  bool useDrawForm() override {
    is_cut_ = is_cut_ || ++forms_ > form_limit;
    return stop_wanted();
  }
  void saveState(GfxState* state) override {
    is_cut_ = is_cut_ || ++depth_ > saved_state_limit;
    TextOutputDev::saveState(state);
  }
  void restoreState(GfxState* state) override {
    --depth_;
    TextOutputDev::restoreState(state);
  }
  void endPage() override {
    if (!is_crowded() || character_limit_ == unordered_limit) {
      TextOutputDev::endPage();
    }
  }

 private:
  static constexpr std::int64_t ordered_limit = 60000;
  static constexpr std::int64_t unordered_limit = 2000000;
  static constexpr std::int64_t saved_state_limit = 10000;
  static constexpr std::int64_t form_limit = 100000;

  PdfSink& sink_;
  std::int64_t character_limit_;
  std::int64_t characters_ = 0;
  std::int64_t depth_ = 0;
  std::int64_t forms_ = 0;
  bool is_cut_ = false;
};

class DocumentText {
 public:
  DocumentText(PDFDoc& document, PdfSink& sink) : document_(document), sink_(sink) {}

  void read() {
    read_properties();
    auto const pages = document_.getNumPages();
    for (int page = 1; page <= pages && going_ && sink_.keep_going(); ++page) {
      read_page(page);
    }
    if (auto* const outline = going_ ? document_.getOutline() : nullptr; outline != nullptr) {
      read_outline(outline->getItems(), 0);
    }
  }

  bool has_main_text() const { return has_main_text_; }
  bool has_page() const { return has_page_; }

 private:
  void add_line(Orlec::ParseTextType type, std::string const& text) {
    if (!text.empty()) {
      going_ = going_ && sink_.separate(type, '\n') && sink_.text(type, text);
    }
  }

  void read_properties() {
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
      auto const value = info.dictLookup(property.key);
      auto const text = value.isString() ? to_text(value.getString()) : std::string{};
      if (!text.empty()) {
        add_line(Orlec::ParseTextType_property, property.name + (": " + text));
      }
    }
  }

  static bool stop_wanted(void* device) { return static_cast<PageDevice*>(device)->stop_wanted(); }

  /// What the annotations say is told on its own; drawn as well, it would stand in the main text
  /// too.
  static bool is_part_of_page(Annot* annotation, void* /*self*/) {
    auto const type = annotation->getType();
    return type != Annot::typeWidget && type != Annot::typeText && type != Annot::typeFreeText &&
           type != Annot::typePopup;
  }

  static void take_output(void* self, char const* text, int length) {
    auto& document = *static_cast<DocumentText*>(self);
    document.page_text_.append(text, static_cast<std::size_t>(length));
  }

  /// Fills the text of the page; true when it has more characters than the order of reading allows.
  bool draw(int number, bool in_reading_order) {
    constexpr double resolution = 72.0;
    page_text_.clear();
    PageDevice device(take_output, this, sink_, in_reading_order);
    document_.displayPage(&device, number, resolution, resolution, 0, true, false, false,
                          stop_wanted, &device, is_part_of_page, this);
    if (device.is_cut()) {
      sink_.note(Orlec::ParseOutcome::limit_reached, "a page has too many forms or saved states");
    }
    return device.is_crowded();
  }

  void read_page(int number) {
    auto* const page = document_.getPage(number);
    if (page == nullptr) {
      return;
    }
    has_page_ = true;
    auto is_crowded = draw(number, true);
    if (is_crowded) {
      is_crowded = draw(number, false);
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
    read_annotations(*page);
    read_fields(*page);
  }

  void read_annotations(Page& page) {
    auto* const annotations = page.getAnnots();
    if (annotations == nullptr) {
      return;
    }
    for (auto* const annotation : annotations->getAnnots()) {
      auto const type = annotation->getType();
      if (!going_ || !sink_.keep_going()) {
        return;
      }
      if (type != Annot::typeWidget && type != Annot::typePopup) {
        add_line(Orlec::ParseTextType_comment, to_text(annotation->getContents()));
      }
    }
  }

  void read_fields(Page& page) {
    auto const fields = page.getFormWidgets();
    for (int i = 0; fields != nullptr && i < fields->getNumWidgets(); ++i) {
      auto* const widget = fields->getWidget(i);
      if (widget == nullptr || !going_ || !sink_.keep_going()) {
        return;
      }
      add_line(Orlec::ParseTextType_control, to_text(widget->getAlternateUiName()));
      auto* const annotation = widget->getWidgetAnnotation();
      auto* const look = annotation == nullptr ? nullptr : annotation->getAppearCharacs();
      if (look != nullptr && widget->getType() == formButton) {
        read_caption(*look);
      }
      read_value(*widget);
    }
  }

  /// The caption of a check box is the number of its sign in a font of signs.
  void read_caption(AnnotAppearanceCharacs const& look) {
    auto const caption = to_text(look.getNormalCaption());
    if (caption.size() > 1) {
      add_line(Orlec::ParseTextType_control, caption);
    }
  }

  void read_value(FormWidget& widget) {
    if (auto const* const text = dynamic_cast<FormWidgetText*>(&widget); text != nullptr) {
      if (!text->isPassword()) {
        add_line(Orlec::ParseTextType_control, to_text(text->getContent()));
      }
    } else if (auto* const choice = dynamic_cast<FormWidgetChoice*>(&widget); choice != nullptr) {
      read_choice(*choice);
    }
  }

  /// The options as a user reads them, then what is stored and drawn besides: a value typed in, or
  /// the one that an option stands for.
  void read_choice(FormWidgetChoice& choice) {
    std::unordered_set<std::string> options;
    for (int i = 0; i < choice.getNumChoices() && going_ && sink_.keep_going(); ++i) {
      auto option = to_text(choice.getChoice(i));
      add_line(Orlec::ParseTextType_control, option);
      options.insert(std::move(option));
    }
    auto const add_value = [&](Object const& value) {
      auto text = value.isString() ? to_text(value.getString()) : std::string{};
      if (options.count(text) == 0) {
        add_line(Orlec::ParseTextType_control, text);
      }
    };
    auto const stored = Form::fieldLookup(choice.getField()->getObj()->getDict(), "V");
    add_value(stored);
    for (int i = 0; stored.isArray() && i < stored.arrayGetLength(); ++i) {
      if (!going_ || !sink_.keep_going()) {
        return;
      }
      add_value(stored.arrayGet(i));
    }
  }

  void read_outline(std::vector<OutlineItem*> const* items, int depth) {
    if (items == nullptr || depth > outline_depth_limit) {
      return;
    }
    for (auto* const item : *items) {
      if (!going_ || !sink_.keep_going()) {
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

  PDFDoc& document_;
  PdfSink& sink_;
  std::string page_text_;
  bool going_ = true;
  bool has_main_text_ = false;
  bool has_page_ = false;
};

/// A document that was opened without a password, as far as it could be.
class OpenedDocument {
 public:
  explicit OpenedDocument(Orlec::Reader const& reader) {
    initialize();
    document_ = std::make_unique<PDFDoc>(
        new ReaderStream(reader, 0, false, reader.GetSize(), Object(objNull)),
        std::optional<GooString>{}, std::optional<GooString>{}, nullptr,
        [this] { is_rebuilt_ = true; });
  }
  OpenedDocument(OpenedDocument const&) = delete;
  OpenedDocument& operator=(OpenedDocument const&) = delete;

  PDFDoc& document() { return *document_; }
  bool needs_password() const {
    return !document_->isOk() && document_->getErrorCode() == errEncrypted;
  }
  /// The cross-reference table is broken; what was found without it takes its place.
  bool is_rebuilt() const { return is_rebuilt_; }

 private:
  bool is_rebuilt_ = false;
  std::unique_ptr<PDFDoc> document_;
};

void read_document(Orlec::Reader const& reader, PdfSink& sink) {
  OpenedDocument opened(reader);
  auto& document = opened.document();
  if (!document.isOk()) {
    if (opened.needs_password()) {
      sink.end(Orlec::ParseOutcome::encrypted, "a password is needed to open the document");
    } else {
      sink.end(Orlec::ParseOutcome::damaged, document.getErrorCode() == errBadCatalog
                                                 ? "the catalog of pages cannot be read"
                                                 : "the cross-reference table cannot be read");
    }
    return;
  }
  DocumentText text(document, sink);
  text.read();
  if (!text.has_page()) {
    sink.end(Orlec::ParseOutcome::damaged, "no page can be read");
  } else if (opened.is_rebuilt() && !text.has_main_text()) {
    sink.end(Orlec::ParseOutcome::damaged,
             "the cross-reference table is broken and no text was found without it");
  }
}

}  // namespace

}  // namespace morvakit

extern "C" MORVA_EXPORT void morvakit_read_pdf(Orlec::Reader const& reader,
                                               morvakit::PdfSink& sink) {
  try {
    morvakit::read_document(reader, sink);
  } catch (std::exception const&) {
    // A size or a position in the file that makes no sense comes out of the library as an
    // exception.
    sink.end(Orlec::ParseOutcome::damaged, "the structure of the document makes no sense");
  }
}

extern "C" MORVA_EXPORT bool morvakit_pdf_needs_password(Orlec::Reader const& reader) {
  try {
    return morvakit::OpenedDocument(reader).needs_password();
  } catch (std::exception const&) {
    return false;
  }
}
