#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "morvakit/archive/zip_container.h"
#include "morvakit/embedded.h"
#include "morvakit/fixed/ofd_page.h"
#include "morvakit/formats.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/element_text.h"
#include "morvakit/xml/part_path.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

/// A document's state at one time, as a file of the package describes it.
struct OfdVersion {
  std::string part;
  double index = 0;
  bool is_current = false;
};

/// Of one file there may be several documents, and of each document several versions.
struct OfdBody {
  std::string root;
  std::vector<OfdVersion> versions;
};

/// Reads OFD.xml: which documents there are, and their properties.
class OfdRootHandler final : public ElementText {
 public:
  explicit OfdRootHandler(TextFlow& flow) : ElementText(flow.context()), flow_(flow) {}

  std::vector<OfdBody> const& bodies() const { return bodies_; }

 private:
  struct Property {
    std::string_view element;
    std::string_view name;
  };
  static constexpr std::array<Property, 9> properties{{{"Title", "title"},
                                                       {"Author", "author"},
                                                       {"Subject", "subject"},
                                                       {"Abstract", "description"},
                                                       {"Keyword", "keywords"},
                                                       {"CreationDate", "created"},
                                                       {"ModDate", "modified"},
                                                       {"Creator", "application"},
                                                       {"CustomData", ""}}};

  static Property const* find(std::string_view element) {
    auto const* const found =
        std::find_if(properties.begin(), properties.end(),
                     [element](Property const& known) { return known.element == element; });
    return found == properties.end() ? nullptr : found;
  }

  bool is_wanted(std::string_view name) const override {
    return name == "DocRoot" || find(name) != nullptr;
  }

  void on_element(std::string_view name, XmlAttributes const& attributes) override {
    if (name == "DocBody" && flow_.context().charge_memory(sizeof(OfdBody))) {
      bodies_.emplace_back();
    } else if (auto const part = attributes.get("BaseLoc");
               name == "Version" && !bodies_.empty() &&
               flow_.context().charge_memory(part.size() + sizeof(OfdVersion))) {
      auto index = attributes.get("Index");
      bodies_.back().versions.push_back(
          {std::string(part), take_number(index), attributes.get("Current") == "true"});
    } else if (name == "CustomData") {
      custom_name_ = attributes.get("Name");
    }
  }

  void on_text(std::string_view name, std::string_view text) override {
    auto const* const property = find(name);
    if (property == nullptr) {
      if (!bodies_.empty() && flow_.context().charge_memory(text.size())) {
        bodies_.back().root = text;
      }
    } else {
      auto const shown =
          property->name.empty() ? std::string(custom_name_) : std::string(property->name);
      flow_.line(Orlec::ParseTextType_property, shown + ": " + std::string(text));
    }
  }

  TextFlow& flow_;
  std::vector<OfdBody> bodies_;
  std::string custom_name_;
};

/// Reads a document's description: its pages, templates, and where the rest stands.
class OfdDocumentHandler final : public ElementText {
 public:
  explicit OfdDocumentHandler(TextFlow& flow) : ElementText(flow.context()), flow_(flow) {}

  std::vector<std::string> pages;
  std::unordered_map<std::string, std::string> templates;  ///< by ID
  std::vector<std::string> resources;
  std::vector<std::string> annotations;
  std::vector<std::string> attachments;
  std::vector<std::string> others;  ///< custom tags and extensions

 private:
  bool is_wanted(std::string_view name) const override {
    return name == "PublicRes" || name == "DocumentRes" || name == "Annotations" ||
           name == "Attachments" || name == "CustomTags" || name == "Extensions";
  }

  void on_element(std::string_view name, XmlAttributes const& attributes) override {
    auto const part = attributes.get("BaseLoc");
    if (name == "Page" && flow_.context().charge_memory(part.size() + sizeof(std::string))) {
      pages.emplace_back(part);
    } else if (auto const id = attributes.get("ID");
               name == "TemplatePage" &&
               flow_.context().charge_memory(id.size() + part.size() + 2 * sizeof(std::string))) {
      templates.emplace(id, part);
    } else if (name == "OutlineElem") {
      flow_.line(Orlec::ParseTextType_other, trimmed(attributes.get("Title")));
    } else if (name == "Bookmark") {
      flow_.line(Orlec::ParseTextType_other, trimmed(attributes.get("Name")));
    } else if (name == "URI") {
      flow_.line(Orlec::ParseTextType_other, attributes.get("URI"));
    }
  }

  void on_text(std::string_view name, std::string_view text) override {
    auto& list = name == "Annotations"   ? annotations
                 : name == "Attachments" ? attachments
                 : name.ends_with("Res") ? resources
                                         : others;
    if (flow_.context().charge_memory(text.size() + sizeof(std::string))) {
      list.emplace_back(text);
    }
  }

  TextFlow& flow_;
};

/// Reads a list of files, and the root of the document in the description of a version.
class OfdListHandler final : public ElementText {
 public:
  using ElementText::ElementText;

  std::vector<std::string> files;

 private:
  bool is_wanted(std::string_view name) const override {
    return name == "FileLoc" || name == "DocRoot";
  }
  void on_text(std::string_view /*name*/, std::string_view text) override {
    if (context().charge_memory(text.size() + sizeof(std::string))) {
      files.emplace_back(text);
    }
  }
};

/// Reads what programs add to a document in vocabularies of their own: each element with text that
/// is no reference is a line.
class OfdDataHandler final : public ElementText {
 public:
  explicit OfdDataHandler(TextFlow& flow) : ElementText(flow.context()), flow_(flow) {}

 private:
  // Dates and references would be noise.
  bool is_wanted(std::string_view name) const override {
    return name != "ObjectRef" && name != "FileLoc" && name != "ExtendData" && name != "Date";
  }
  void on_text(std::string_view /*name*/, std::string_view text) override {
    flow_.line(Orlec::ParseTextType_other, text);
  }

  TextFlow& flow_;
};

/// Reads one OFD package.
class OfdPackage {
 public:
  OfdPackage(Orlec::Reader const& reader, ReadContext& context)
      : context_(context), flow_(context), container_(reader, context) {}

  void read();

 private:
  std::string locate(std::string_view source, std::string_view target) const;
  bool parse_once(std::string const& part, XmlHandler& handler,
                  PartFault fault = PartFault::damage);
  std::vector<std::string> list(std::string const& part);
  std::string newest_root(OfdBody const& body);
  void read_lost_documents();
  void read_document(std::string const& root);
  void read_page(std::string const& root, OfdDocumentHandler const& document,
                 std::string const& part);
  void read_part(std::string const& part);
  void read_annotations(std::string const& root, OfdDocumentHandler const& document);
  void read_others(std::string const& root, OfdDocumentHandler const& document);
  void read_attachments();
  bool is_locked() const;

  ReadContext& context_;
  TextFlow flow_;
  ZipContainer container_;
  std::unordered_set<std::uint64_t> parsed_;
  std::vector<std::uint64_t> attachments_;
};

/// The part that an address means. By the rules it begins at the part that holds it or, with a
/// slash in front, at the top; some writers leave the slash out.
std::string OfdPackage::locate(std::string_view source, std::string_view target) const {
  auto part = resolve_part(source, target);
  if (!container_.find(part)) {
    auto from_top = resolve_part({}, target);
    return container_.find(from_top) ? from_top : part;
  }
  return part;
}

/// False where there is no such part. One that was parsed before is passed over.
bool OfdPackage::parse_once(std::string const& part, XmlHandler& handler, PartFault fault) {
  auto const index = container_.find(part);
  if (index && !context_.ended() && parsed_.insert(*index).second) {
    parse_part(container_, context_, part, handler, fault);
  }
  return index.has_value();
}

/// The files that a list names.
std::vector<std::string> OfdPackage::list(std::string const& part) {
  OfdListHandler handler(context_);
  parse_once(part, handler, PartFault::ignored);
  std::vector<std::string> files;
  for (auto const& file : handler.files) {
    auto located = locate(part, file);
    if (!context_.charge_memory(located.size() + sizeof(std::string))) {
      break;
    }
    files.push_back(std::move(located));
  }
  return files;
}

std::string OfdPackage::newest_root(OfdBody const& body) {
  auto const newest = std::max_element(
      body.versions.begin(), body.versions.end(), [](OfdVersion const& one, OfdVersion const& two) {
        return one.is_current != two.is_current ? two.is_current : one.index < two.index;
      });
  if (newest != body.versions.end()) {
    auto const part = locate({}, newest->part);
    OfdListHandler version(context_);
    if (parse_once(part, version) && !version.files.empty()) {
      auto root = locate(part, version.files.back());
      if (container_.find(root)) {
        return root;
      }
    }
  }
  return locate({}, body.root);
}

/// Reads a page, template or resource that stands by itself.
void OfdPackage::read_part(std::string const& part) {
  OfdPageHandler handler(flow_, [](std::string_view, bool) {});
  parse_once(part, handler);
  handler.finish();
}

void OfdPackage::read_page(std::string const& root, OfdDocumentHandler const& document,
                           std::string const& part) {
  std::vector<std::string> in_front;
  OfdPageHandler page(flow_, [&](std::string_view id, bool is_in_front) {
    auto const found = document.templates.find(std::string(id));
    if (found == document.templates.end()) {
      return;
    }
    auto template_part = locate(root, found->second);
    if (!is_in_front) {
      read_part(template_part);
    } else if (context_.charge_memory(template_part.size() + sizeof(std::string))) {
      in_front.push_back(std::move(template_part));
    }
  });
  if (!parse_once(part, page)) {
    context_.note(Orlec::ParseOutcome::damaged, "the part " + part + " is missing");
  }
  page.finish();
  for (auto const& other : in_front) {
    read_part(other);
  }
  for (auto const& resource : page.resources()) {
    read_part(locate(part, trimmed(resource)));
  }
}

void OfdPackage::read_annotations(std::string const& root, OfdDocumentHandler const& document) {
  for (auto const& annotations : document.annotations) {
    for (auto const& part : list(locate(root, annotations))) {
      OfdAnnotationHandler handler(flow_);
      parse_once(part, handler);
    }
  }
}

void OfdPackage::read_others(std::string const& root, OfdDocumentHandler const& document) {
  for (auto const& other : document.others) {
    auto const part = locate(root, other);
    for (auto const& listed : list(part)) {
      OfdDataHandler handler(flow_);
      parse_once(listed, handler, PartFault::ignored);
    }
  }
  for (auto const& attachments : document.attachments) {
    for (auto const& part : list(locate(root, attachments))) {
      if (auto const index = container_.find(part); index && parsed_.insert(*index).second) {
        attachments_.push_back(*index);
      }
    }
  }
}

void OfdPackage::read_document(std::string const& root) {
  OfdDocumentHandler document(flow_);
  if (!parse_once(root, document)) {
    context_.note(Orlec::ParseOutcome::damaged, "the part " + root + " is missing");
    return;
  }
  context_.count_pages(static_cast<std::int64_t>(document.pages.size()));
  for (auto const& page : document.pages) {
    if (!context_.keep_going()) {
      return;
    }
    read_page(root, document, locate(root, page));
  }
  for (auto const& resource : document.resources) {
    read_part(locate(root, resource));
  }
  read_annotations(root, document);
  read_others(root, document);
}

/// Reads the documents of a package whose own description leads to none.
void OfdPackage::read_lost_documents() {
  for (std::uint64_t i = 0; i < container_.count() && context_.keep_going(); ++i) {
    if (container_.name(i).ends_with("Document.xml")) {
      read_document(container_.name(i));
    }
  }
  for (std::uint64_t i = 0; i < container_.count() && context_.keep_going(); ++i) {
    if (container_.name(i).ends_with("Content.xml")) {
      read_part(container_.name(i));
    }
  }
}

void OfdPackage::read_attachments() {
  for (auto const index : attachments_) {
    Spool file(container_.name(index), context_);
    container_.read(index, [&](std::string_view bytes) { return file.append(bytes); });
    if (!read_embedded(file, context_)) {
      return;
    }
  }
}

/// Whether the package says that parts of it are encrypted. They keep their names.
bool OfdPackage::is_locked() const {
  return container_.find("Encryptions.xml") || container_.find("META-INF/Encryptions.xml");
}

void OfdPackage::read() {
  if (!container_.is_open()) {
    return;
  }
  OfdRootHandler root(flow_);
  parse_once("OFD.xml", root);
  bool is_found = false;
  for (auto const& body : root.bodies()) {
    auto const part = newest_root(body);
    is_found = is_found || container_.find(part).has_value();
    read_document(part);
  }
  if (!is_found) {
    context_.note(Orlec::ParseOutcome::damaged, "the part OFD.xml names no document");
    read_lost_documents();
  }
  if (is_locked() && context_.outcome() != Orlec::ParseOutcome::text) {
    context_.end(Orlec::ParseOutcome::encrypted, "the document needs a password");
  }
  read_attachments();
}

}  // namespace

void read_ofd(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  OfdPackage(reader, context).read();
}

}  // namespace morvakit
