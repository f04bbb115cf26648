#include "morvakit/pdf/pdf_component.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Stream.h>

#include "host/export.h"
#include "morvakit/pdf/pdf_document.h"

#include "tessarine/pdf_component.h"

namespace morvakit {

namespace {

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
  PdfDocumentText text(document, sink);
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
