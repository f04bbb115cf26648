#include <string>

#include <dlfcn.h>

#include "morvakit/formats.h"
#include "morvakit/pdf_component.h"

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

 private:
  ReadContext& context_;
};

/// Path of the component: beside this library. Never a bare name, which the system would look for
/// in directories that others may write to.
std::string component_path() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&read_pdf), &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  std::string const own = info.dli_fname;
  auto const slash = own.rfind('/');
  return slash == std::string::npos ? std::string{} : own.substr(0, slash + 1) + pdf_component_file;
}

ReadPdfFunction load_component() {
  auto const path = component_path();
  if (path.empty()) {
    return nullptr;
  }
  // It stays loaded: its libraries keep state of their own until the process ends.
  auto* const component = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  return component == nullptr
             ? nullptr
             : reinterpret_cast<ReadPdfFunction>(dlsym(component, read_pdf_symbol));
}

}  // namespace

void read_pdf(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  static ReadPdfFunction const read = load_component();
  if (read == nullptr) {
    context.end(Orlec::ParseOutcome::not_supported, "the PDF component is not installed");
    return;
  }
  ContextSink sink(context);
  read(reader, sink);
}

}  // namespace morvakit
