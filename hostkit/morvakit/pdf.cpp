#include "morvakit/formats.h"
#include "morvakit/pdf_component.h"

#include "tessarine/pdf_component_loader.h"

namespace morvakit {

namespace {

class ContextSink final : public PdfSink {
 public:
  explicit ContextSink(ReadContext& context) : context_(context) {}

  bool text(Orlec::ParseTextType type, std::string_view utf8) override {
    return context_.text(type, utf8);
  }
  bool separate(Orlec::ParseTextType type, char separator) override {
    return context_.separate(type, separator);
  }
  bool keep_going() override { return context_.keep_going(); }
  void end(Orlec::ParseOutcome outcome, std::string_view reason) override {
    context_.end(outcome, reason);
  }
  void note(Orlec::ParseOutcome outcome, std::string_view reason) override {
    context_.note(outcome, reason);
  }

 private:
  ReadContext& context_;
};

}  // namespace

void read_pdf(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  static auto const read =
      reinterpret_cast<ReadPdfFunction>(tessarine::pdf_component_function(read_pdf_symbol));
  if (read == nullptr) {
    context.end(Orlec::ParseOutcome::not_supported, "the PDF component is not installed");
    return;
  }
  ContextSink sink(context);
  read(reader, sink);
}

}  // namespace morvakit
