#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/utf8.h"
#include "morvakit/fixed/placed_text.h"
#include "morvakit/formats.h"
#include "morvakit/office/open_package.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/part_path.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

/// Gathers the parts that a sequence of documents or a document lists, in their order.
class SourceHandler final : public XmlHandler {
 public:
  SourceHandler(ReadContext& context, std::string_view part) : context_(context), part_(part) {}

  std::vector<std::string> documents;
  std::vector<std::string> pages;

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    bool const is_page = name.local == "PageContent";
    if (!is_page && name.local != "DocumentReference") {
      return;
    }
    auto source = resolve_part(part_, attributes.get("Source"));
    if (context_.charge_memory(source.size() + sizeof(std::string))) {
      (is_page ? pages : documents).push_back(std::move(source));
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  ReadContext& context_;
  std::string part_;
};

/// Reads the outline that a viewer shows beside the pages.
class OutlineHandler final : public XmlHandler {
 public:
  explicit OutlineHandler(TextFlow& flow) : flow_(flow) {}

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    if (name.local == "OutlineEntry") {
      flow_.line(Orlec::ParseTextType_other, attributes.get("Description"));
    }
  }
  void end(XmlName const& /*name*/) override {}
  void characters(std::string_view /*utf8*/) override {}

  TextFlow& flow_;
};

/// The list of glyphs beside a string: how many of its characters belong together, and how far the
/// next ones stand from them.
class GlyphIndices {
 public:
  explicit GlyphIndices(std::string_view list) : rest_(list) {}

  struct Cluster {
    std::size_t characters = 1;  ///< in units of UTF-16
    double advance = 0;          ///< in hundredths of the font's size
    bool has_advance = false;    ///< else it is the font's own
  };

  Cluster take() {
    Cluster cluster;
    auto item = take_item();
    std::size_t glyphs = 1;
    if (item.starts_with('(')) {
      auto const close = std::min(item.find(')'), item.size());
      auto const colon = std::min(item.find(':'), close);
      cluster.characters = read_count(item.substr(1, colon - 1));
      glyphs = colon < close ? read_count(item.substr(colon + 1, close - colon - 1)) : 1;
      item.remove_prefix(std::min(close + 1, item.size()));
    }
    cluster.has_advance = add_advance(item, cluster.advance);
    while (--glyphs > 0 && !rest_.empty()) {
      cluster.has_advance = add_advance(take_item(), cluster.advance) && cluster.has_advance;
    }
    return cluster;
  }

 private:
  std::string_view take_item() {
    auto const item = rest_.substr(0, rest_.find(';'));
    rest_.remove_prefix(std::min(item.size() + 1, rest_.size()));
    return item;
  }

  static std::size_t read_count(std::string_view digits) {
    std::size_t count = 1;
    std::from_chars(digits.data(), digits.data() + digits.size(), count);
    return std::max<std::size_t>(count, 1);
  }

  static bool add_advance(std::string_view item, double& advance) {
    auto const comma = item.find(',');
    auto number = comma == std::string_view::npos ? std::string_view{} : item.substr(comma + 1);
    number = number.substr(0, number.find(','));
    bool const is_given = !number.empty();
    advance += take_number(number);
    return is_given;
  }

  std::string_view rest_;
};

/// Reads the text of one page, in the order in which it is drawn.
class XpsPageHandler final : public XmlHandler {
 public:
  explicit XpsPageHandler(TextFlow& flow) : flow_(flow), text_(flow, Orlec::ParseTextType_main) {}

  void finish() { text_.end_line(); }

 private:
  struct Glyphs {
    std::string text;
    std::string indices;
    std::string font;
    PagePoint origin;
    double size = 0;
    bool is_leftward = false;
  };

  static bool is_placed(std::string_view name) { return name == "Canvas" || name == "Glyphs"; }

  void start(XmlName const& name, XmlAttributes const& attributes) override;
  void end(XmlName const& name) override;
  void characters(std::string_view /*utf8*/) override {}

  void take_glyphs(XmlAttributes const& attributes);
  void take_alternative(XmlAttributes const& attributes);
  void transform(std::string_view list);
  void add_run();

  TextFlow& flow_;
  PlacedText text_;
  std::vector<PageMatrix> matrices_;
  bool in_transform_ = false;
  Glyphs glyphs_;
  std::wstring codes_;
  std::vector<PlacedText::Character> run_;
};

/// Has the innermost element transformed by a matrix.
void XpsPageHandler::transform(std::string_view list) {
  auto const outer = matrices_.size() > 1 ? matrices_[matrices_.size() - 2] : PageMatrix{};
  matrices_.back() = read_matrix(list).within(outer);
}

void XpsPageHandler::take_glyphs(XmlAttributes const& attributes) {
  auto text = attributes.get("UnicodeString");
  // A brace in front would begin an extension of the language but for this escape.
  text.remove_prefix(text.starts_with("{}") ? 2 : 0);
  auto x = attributes.get("OriginX");
  auto y = attributes.get("OriginY");
  auto size = attributes.get("FontRenderingEmSize");
  auto level = attributes.get("BidiLevel");
  glyphs_ = {std::string(text),
             std::string(attributes.get("Indices")),
             std::string(attributes.get("FontUri")),
             {take_number(x), take_number(y)},
             take_number(size),
             !level.empty() && (level.back() - '0') % 2 != 0};
}

/// What is said of a drawing to those who cannot see it, and where a click on it leads.
void XpsPageHandler::take_alternative(XmlAttributes const& attributes) {
  flow_.line(Orlec::ParseTextType_other, attributes.get("AutomationProperties.Name"));
  flow_.line(Orlec::ParseTextType_other, attributes.get("AutomationProperties.HelpText"));
  if (auto const address = attributes.get("FixedPage.NavigateUri");
      address.find(':') != std::string_view::npos) {
    flow_.line(Orlec::ParseTextType_other, address);
  }
}

void XpsPageHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  if (is_placed(name.local)) {
    matrices_.emplace_back();
    auto const matrix = attributes.get("RenderTransform");
    transform(matrix.starts_with('{') ? std::string_view{} : matrix);
  }
  if (name.local == "Glyphs") {
    take_glyphs(attributes);
  } else if (name.local == "ImageBrush") {
    flow_.context().count_images(1);
  } else if (name.local == "Canvas.RenderTransform" || name.local == "Glyphs.RenderTransform") {
    in_transform_ = !matrices_.empty();
  } else if (in_transform_ && name.local == "MatrixTransform") {
    transform(attributes.get("Matrix"));
  }
  take_alternative(attributes);
}

void XpsPageHandler::end(XmlName const& name) {
  if (name.local == "Glyphs") {
    add_run();
  }
  in_transform_ = in_transform_ && !name.local.ends_with(".RenderTransform");
  if (is_placed(name.local)) {
    matrices_.pop_back();
  }
}

void XpsPageHandler::add_run() {
  constexpr std::size_t longest_run = 4096;
  auto const& matrix = matrices_.back();
  auto const step = glyphs_.is_leftward ? -glyphs_.size : glyphs_.size;
  RunStyle const style{matrix.turn({step, 0}), glyphs_.font};
  codes_.clear();
  morvabs::append_wide(codes_, glyphs_.text);
  GlyphIndices indices(glyphs_.indices);
  GlyphIndices::Cluster cluster;
  std::size_t held = 0;  // units of UTF-16 that the cluster has still to take
  auto pen = glyphs_.origin;
  bool is_known = true;
  run_.clear();
  for (wchar_t const code : codes_) {
    if (held == 0) {
      cluster = indices.take();
      held = cluster.characters;
    }
    run_.push_back({code, matrix.apply(pen), is_known});
    auto const units = std::min(std::size_t{code > 0xFFFF ? 2U : 1U}, held);
    held -= units;
    is_known = is_known && cluster.has_advance;
    pen.x += step / 100 * cluster.advance * static_cast<double>(units) /
             static_cast<double>(cluster.characters);
    if (run_.size() >= longest_run) {
      text_.add(run_, style);
      run_.clear();
    }
  }
  text_.add(run_, style);
}

/// Reads one package.
class XpsPackage {
 public:
  XpsPackage(Orlec::Reader const& reader, ReadContext& context)
      : flow_(context), package_(reader, context) {}

  void read();

 private:
  std::vector<std::string> parts_ending_in(std::string_view suffix);
  void read_sequence(std::string const& part);
  void read_document(std::string const& part);
  void read_page(std::string const& part);

  TextFlow flow_;
  OpenPackage package_;
  bool has_page_ = false;
};

std::vector<std::string> XpsPackage::parts_ending_in(std::string_view suffix) {
  std::vector<std::string> parts;
  for (std::uint64_t i = 0; i < package_.container().count(); ++i) {
    auto const& name = package_.container().name(i);
    if (name.ends_with(suffix)) {
      parts.push_back(name);
    }
  }
  std::sort(parts.begin(), parts.end());
  return parts;
}

void XpsPackage::read_page(std::string const& part) {
  auto& context = package_.context();
  if (package_.expect(part) && package_.is_unread(part) && context.keep_going()) {
    XpsPageHandler page(flow_);
    package_.parse_once(part, page);
    page.finish();
    context.count_pages(1);
    has_page_ = true;
  }
}

void XpsPackage::read_document(std::string const& part) {
  if (!package_.expect(part)) {
    return;
  }
  SourceHandler document(package_.context(), part);
  package_.parse_once(part, document);
  for (auto const& page : document.pages) {
    read_page(page);
  }
  for (auto const& relationship : package_.relationships(part)) {
    if (relationship.type == "documentstructure" && !relationship.external) {
      OutlineHandler outline(flow_);
      package_.parse_once(relationship.target, outline, PartFault::ignored);
    }
  }
}

void XpsPackage::read_sequence(std::string const& part) {
  SourceHandler sequence(package_.context(), part);
  package_.parse_once(part, sequence);
  for (auto const& document : sequence.documents) {
    if (package_.context().keep_going()) {
      read_document(document);
    }
  }
}

void XpsPackage::read() {
  if (!package_.container().is_open()) {
    return;
  }
  auto& context = package_.context();
  for (auto const& relationship : package_.relationships({})) {
    if (relationship.type == "fixedrepresentation" && !relationship.external) {
      read_sequence(relationship.target);
    }
  }
  if (!has_page_ && context.keep_going()) {
    context.note(Orlec::ParseOutcome::damaged, "the package names no pages");
    for (auto const& page : parts_ending_in(".fpage")) {
      read_page(page);
    }
  }
  read_package_properties(package_, flow_);
}

}  // namespace

void read_xps(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  XpsPackage(reader, context).read();
}

}  // namespace morvakit
