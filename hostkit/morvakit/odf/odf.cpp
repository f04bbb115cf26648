#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "morvakit/archive/zip_container.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/odf/odf_meta.h"
#include "morvakit/odf/odf_text.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/part_path.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

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

/// Reads the document of a package, and those that are embedded in it as directories of the same
/// package.
class OdfPackage {
 public:
  OdfPackage(Orlec::Reader const& reader, ReadContext& context)
      : context_(context), container_(reader, context) {}

  void read(bool is_spreadsheet);

 private:
  void count_pictures();
  void read_document(std::string const& directory, bool is_spreadsheet, ReadContext& context);
  void read_object(std::string const& part, ReadContext& context);

  ReadContext& context_;
  ZipContainer container_;
  /// The document and its objects, by their places in the container: objects may name each other in
  /// circles, and each by many names.
  std::unordered_set<std::uint64_t> objects_;
};

void OdfPackage::count_pictures() {
  for (std::uint64_t i = 0; i < container_.count(); ++i) {
    std::string_view const name = container_.name(i);
    bool const is_picture = name.starts_with("Pictures/") || name.starts_with("media/");
    context_.count_images(is_picture && !name.ends_with('/') ? 1 : 0);
  }
}

void OdfPackage::read_object(std::string const& part, ReadContext& context) {
  auto const directory = part + "/";
  auto const content = container_.find(directory + "content.xml");
  auto const place = content ? content : container_.find(part);
  if (!place || !objects_.insert(*place).second) {
    return;
  }
  if (content) {
    read_embedded(part, context,
                  [&](ReadContext& inner) { read_document(directory, false, inner); });
  } else {
    Spool file(part, context);
    container_.read(*place, [&](std::string_view bytes) { return file.append(bytes); });
    read_embedded(file, context);
  }
}

void OdfPackage::read_document(std::string const& directory, bool is_spreadsheet,
                               ReadContext& context) {
  TextFlow flow(context);
  OdfTextHandler content(flow, OdfPart::content, is_spreadsheet);
  if (!parse_part(container_, context, directory + "content.xml", content)) {
    context.end(Orlec::ParseOutcome::damaged, "the part content.xml is missing");
    return;
  }
  OdfTextHandler styles(flow, OdfPart::styles, false);
  parse_part(container_, context, directory + "styles.xml", styles);
  OdfMetaHandler meta(flow);
  parse_part(container_, context, directory + "meta.xml", meta);
  context.count_pages(content.pages() > 0 ? content.pages() : meta.pages());
  for (auto const& address : content.objects()) {
    auto const part = resolve_part(directory, address.substr(address.starts_with('#') ? 1 : 0));
    if (context.keep_going()) {
      read_object(part, context);
    }
  }
}

void OdfPackage::read(bool is_spreadsheet) {
  if (!container_.is_open()) {
    return;
  }
  ManifestHandler manifest;
  parse_part(container_, context_, "META-INF/manifest.xml", manifest, PartFault::ignored);
  if (manifest.is_encrypted()) {
    context_.end(Orlec::ParseOutcome::encrypted, "the document needs a password");
    return;
  }
  count_pictures();
  if (auto const content = container_.find("content.xml")) {
    objects_.insert(*content);
  }
  read_document({}, is_spreadsheet, context_);
}

}  // namespace

void read_odf(Orlec::Reader const& reader, tessarine::Recognition const& recognition,
              ReadContext& context) {
  OdfPackage(reader, context).read(recognition.type == tessarine::FileType::ods);
}

}  // namespace morvakit
