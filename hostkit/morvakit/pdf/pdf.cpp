#include <memory>
#include <set>
#include <string>
#include <utility>

#include "morvabs/component.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/pdf/pdf_component.h"
#include "morvakit/pdf/pdf_xml.h"
#include "morvakit/spool.h"

#include "tessarine/pdf_component.h"

namespace morvakit {

namespace {

/// An XML document within the document.
class XmlPart {
 public:
  XmlPart(std::unique_ptr<XmlHandler> handler, ReadContext& context)
      : handler_(std::move(handler)), stream_(*handler_, context) {}

  bool feed(std::string_view bytes, bool last) { return stream_.feed(bytes, last); }
  std::string const& fault() const { return stream_.fault(); }

 private:
  std::unique_ptr<XmlHandler> handler_;
  XmlStream stream_;
};

class ContextSink final : public PdfSink {
 public:
  explicit ContextSink(ReadContext& context) : context_(context), flow_(context) {}

  bool text(Orlec::ParseTextType type, std::string_view utf8) override {
    return context_.text(type, utf8);
  }
  bool separate(Orlec::ParseTextType type, char separator) override {
    return context_.separate(type, separator);
  }
  void count_pages(std::int64_t number) override { context_.count_pages(number); }
  void count_images(std::int64_t number) override { context_.count_images(number); }
  bool keep_going() override { return context_.keep_going(); }
  bool charge_expansion(std::int64_t packed, std::int64_t unpacked, std::int64_t added) override {
    return context_.charge_expansion(packed, unpacked, added);
  }
  void end(Orlec::ParseOutcome outcome, std::string_view reason) override {
    context_.end(outcome, reason);
  }
  void note(Orlec::ParseOutcome outcome, std::string_view reason) override {
    context_.note(outcome, reason);
  }

  bool property(std::string_view name, std::string_view value) override {
    if (stated_.insert(std::string(name)).second) {
      flow_.line(Orlec::ParseTextType_property, std::string(name) + ": " + std::string(value));
    }
    return !context_.ended();
  }

  bool begin_part(PdfPart part, std::string_view name) override {
    part_ = part;
    size_ = 0;
    if (part == PdfPart::file) {
      file_ = std::make_unique<Spool>(name, context_);
    } else if (part == PdfPart::form) {
      flow_.separate(Orlec::ParseTextType_control, '\n');
      xml_ = std::make_unique<XmlPart>(std::make_unique<XfaHandler>(flow_), context_);
    } else {
      auto take = [this](std::string_view key, std::string_view value) { property(key, value); };
      xml_ = std::make_unique<XmlPart>(std::make_unique<XmpHandler>(context_, take), context_);
    }
    return context_.keep_going();
  }

  bool part_bytes(std::string_view bytes, std::int64_t packed) override {
    auto const added = static_cast<std::int64_t>(bytes.size());
    size_ += added;
    if (!context_.keep_going() || !context_.charge_expansion(packed, size_, added)) {
      return false;
    }
    return part_ == PdfPart::file ? file_->append(bytes) : xml_->feed(bytes, false);
  }

  bool end_part() override {
    if (part_ == PdfPart::file) {
      auto const file = std::exchange(file_, nullptr);
      return read_embedded(*file, context_);
    }
    auto const xml = std::exchange(xml_, nullptr);
    xml->feed({}, true);
    // Metadata are often ill-formed in good documents.
    if (part_ == PdfPart::form && !xml->fault().empty()) {
      context_.note(Orlec::ParseOutcome::damaged, "the form's XML, " + xml->fault());
    }
    return context_.keep_going();
  }

 private:
  ReadContext& context_;
  TextFlow flow_;
  std::set<std::string> stated_;
  PdfPart part_ = PdfPart::file;
  std::int64_t size_ = 0;
  std::unique_ptr<Spool> file_;
  std::unique_ptr<XmlPart> xml_;
};

}  // namespace

void read_pdf(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  static auto const read = reinterpret_cast<ReadPdfFunction>(
      morvabs::component_function(tessarine::pdf_component_file, read_pdf_symbol));
  if (read == nullptr) {
    context.end(Orlec::ParseOutcome::not_supported, "the PDF component is not installed");
    return;
  }
  ContextSink sink(context);
  read(reader, sink);
}

}  // namespace morvakit
