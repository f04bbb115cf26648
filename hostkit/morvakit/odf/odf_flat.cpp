#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/mail/mime_decoding.h"
#include "morvakit/odf/odf_meta.h"
#include "morvakit/odf/odf_text.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/xml_part.h"

namespace morvakit {

namespace {

/// Reads a document that is one stream: the text by the handler of the parts, and the properties.
class FlatHandler final : public XmlHandler {
 public:
  FlatHandler(TextFlow& flow, bool is_spreadsheet)
      : text_(flow, OdfPart::flat, is_spreadsheet), meta_(flow) {}

  OdfTextHandler const& text() const { return text_; }
  OdfMetaHandler const& meta() const { return meta_; }

 private:
  void start(XmlName const& name, XmlAttributes const& attributes) override {
    meta_.start(name, attributes);
    static_cast<XmlHandler&>(text_).start(name, attributes);
  }
  void end(XmlName const& name) override {
    meta_.end(name);
    static_cast<XmlHandler&>(text_).end(name);
  }
  void characters(std::string_view utf8) override {
    meta_.characters(utf8);
    static_cast<XmlHandler&>(text_).characters(utf8);
  }

  OdfTextHandler text_;
  OdfMetaHandler meta_;
};

/// Reads the files that stand in the document as text, one after the other.
class FlatObjectsHandler final : public XmlHandler {
 public:
  explicit FlatObjectsHandler(ReadContext& context) : context_(context) {}

 private:
  void start(XmlName const& name, XmlAttributes const& /*attributes*/) override {
    if (name.local == "binary-data" && is_object_) {
      file_ = std::make_unique<Spool>(std::string_view{}, context_);
      decoder_ = std::make_unique<TransferDecoder>(Transfer::base64);
    }
    is_object_ = name.local == "object" || name.local == "object-ole";
  }

  void end(XmlName const& /*name*/) override {
    is_object_ = false;
    if (file_ != nullptr) {
      bytes_.clear();
      decoder_->finish(bytes_);
      file_->append(bytes_);
      read_embedded(*std::exchange(file_, nullptr), context_);
    }
  }

  void characters(std::string_view utf8) override {
    if (file_ != nullptr) {
      bytes_.clear();
      decoder_->decode(utf8, bytes_);
      file_->append(bytes_);
    }
  }

  ReadContext& context_;
  bool is_object_ = false;
  std::unique_ptr<Spool> file_;
  std::unique_ptr<TransferDecoder> decoder_;
  std::string bytes_;
};

}  // namespace

void read_flat_odf(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
                   ReadContext& context) {
  TextFlow flow(context);
  FlatHandler document(flow, false);
  parse_file(reader, context, document);
  auto const& text = document.text();
  context.count_pages(text.pages() > 0 ? text.pages() : document.meta().pages());
  if (text.has_data() && context.keep_going()) {
    FlatObjectsHandler objects(context);
    parse_file(reader, context, objects);
  }
}

}  // namespace morvakit
