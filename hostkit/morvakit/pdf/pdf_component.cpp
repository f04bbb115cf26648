#include "morvakit/pdf/pdf_component.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include <Error.h>
#include <ErrorCodes.h>
#include <GlobalParams.h>
#include <PDFDoc.h>
#include <Stream.h>

#include "host/export.h"
#include "morvakit/pdf/pdf_claims.h"
#include "morvakit/pdf/pdf_document.h"

#include "tessarine/pdf_component.h"

namespace morvakit {

namespace {

constexpr std::int64_t object_limit = 8388607;

/// The bytes of a document, as long as the library is to have any: what it does not ask between its
/// steps it finds out by the end of the file.
struct DocumentBytes {
  Orlec::Reader const& reader;
  std::function<bool()> keep_going;
  bool is_closed = false;

  std::int64_t read(std::int64_t offset, char* buffer, std::int64_t size) const {
    return is_closed || !keep_going()
               ? 0
               : std::max<std::int64_t>(reader.ReadAt(offset, buffer, size), 0);
  }
};

/// Serves the bytes of a document; neither maps the file nor holds a copy of it.
class ReaderStream final : public BaseSeekInputStream {
 public:
  explicit ReaderStream(DocumentBytes const& bytes)
      : ReaderStream(bytes, 0, false, bytes.reader.GetSize(), Object(objNull)) {}
  ReaderStream(DocumentBytes const& bytes, Goffset from, bool is_limited, Goffset size,
               Object&& dictionary)
      : BaseSeekInputStream(from, is_limited, size, std::move(dictionary)), bytes_(bytes) {}
  ReaderStream(ReaderStream const&) = delete;
  ReaderStream& operator=(ReaderStream const&) = delete;
  ~ReaderStream() override { close(); }

  BaseStream* copy() override {
    return new ReaderStream(bytes_, start, limited, length, dict.copy());
  }
  Stream* makeSubStream(Goffset from, bool is_limited, Goffset size, Object&& dictionary) override {
    return new ReaderStream(bytes_, from, is_limited, size, std::move(dictionary));
  }
  /// More than a file that is laid out for the network can state: the library takes it for any
  /// other, and does not make room for as many pages and hints as it claims to have.
  Goffset getLength() override {
    constexpr Goffset beyond = Goffset{1} << 33;
    return limited || length == 0 ? length : std::max(length, beyond);
  }

 private:
  Goffset currentPos() const override { return position_; }
  void setCurrentPos(Goffset offset) override { position_ = offset; }
  Goffset read(char* buffer, Goffset size) override {
    auto const got = bytes_.read(position_, buffer, size);
    position_ += got;
    return got;
  }

  DocumentBytes const& bytes_;
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
  /// `keep_going`: whether there is time left.
  OpenedDocument(Orlec::Reader const& reader, std::function<bool()> keep_going)
      : bytes_{reader, std::move(keep_going)} {
    initialize();
    ReaderStream stream(bytes_);
    claimed_ = PdfTables(reader, stream).objects();
    if (is_believable()) {
      document_ = std::make_unique<PDFDoc>(new ReaderStream(bytes_), std::optional<GooString>{},
                                           std::optional<GooString>{}, nullptr,
                                           [this] { take_rebuilding(); });
    }
  }
  OpenedDocument(OpenedDocument const&) = delete;
  OpenedDocument& operator=(OpenedDocument const&) = delete;

  /// Not to be asked for where the claims of the document are not believable.
  PDFDoc& document() { return *document_; }
  /// Whether the document has room for as many objects as it claims to have. One takes a byte at
  /// the least, even where many are packed together; a million do no harm.
  bool has_room_for_objects() const {
    constexpr std::int64_t harmless = 1 << 20;
    return claimed_ <= std::max(bytes_.reader.GetSize(), harmless);
  }
  /// Whether there are no more than the format recommends readers to take, either.
  bool is_believable() const { return has_room_for_objects() && claimed_ <= object_limit; }
  bool needs_password() const {
    return document_ != nullptr && !document_->isOk() && document_->getErrorCode() == errEncrypted;
  }
  /// The cross-reference table is broken; what was found without it takes its place.
  bool is_rebuilt() const { return is_rebuilt_; }

 private:
  void take_rebuilding() {
    if (!std::exchange(is_rebuilt_, true)) {
      ReaderStream stream(bytes_);
      claimed_ = std::max(claimed_, highest_object_number(bytes_.reader, stream));
      bytes_.is_closed = !is_believable();
    }
  }

  DocumentBytes bytes_;
  std::int64_t claimed_ = 0;
  bool is_rebuilt_ = false;
  std::unique_ptr<PDFDoc> document_;
};

void end_unbelievable(OpenedDocument const& opened, PdfSink& sink) {
  if (opened.has_room_for_objects()) {
    sink.end(Orlec::ParseOutcome::limit_reached,
             "over " + std::to_string(object_limit) + " objects");
  } else {
    sink.end(Orlec::ParseOutcome::damaged,
             "the document claims to have more objects than it has bytes");
  }
}

void end_unreadable(OpenedDocument& opened, PdfSink& sink) {
  if (opened.needs_password()) {
    sink.end(Orlec::ParseOutcome::encrypted, "a password is needed to open the document");
  } else {
    sink.end(Orlec::ParseOutcome::damaged, opened.document().getErrorCode() == errBadCatalog
                                               ? "the catalog of pages cannot be read"
                                               : "the cross-reference table cannot be read");
  }
}

void read_document(Orlec::Reader const& reader, PdfSink& sink) {
  OpenedDocument opened(reader, [&sink] { return sink.keep_going(); });
  if (!opened.is_believable()) {
    end_unbelievable(opened, sink);
    return;
  }
  auto& document = opened.document();
  if (!document.isOk()) {
    end_unreadable(opened, sink);
    return;
  }
  PdfDocumentText text(document, sink);
  text.read();
  if (!opened.is_believable()) {
    end_unbelievable(opened, sink);
  } else if (!text.has_page()) {
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
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    auto const keep_going = [end] { return std::chrono::steady_clock::now() < end; };
    return morvakit::OpenedDocument(reader, keep_going).needs_password();
  } catch (std::exception const&) {
    return false;
  }
}

extern "C" MORVA_EXPORT char const* morvakit_prepare() {
  morvakit::initialize();
  return MORVAKIT_POPPLER_DATA;
}
