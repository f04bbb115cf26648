#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/mail/tnef_properties.h"
#include "morvakit/spool.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::int64_t file_header_size = 6;
/// Level, number and length.
constexpr std::int64_t attribute_header_size = 9;
constexpr std::int64_t checksum_size = 2;

/// Attributes by number and type.
enum Attribute : std::uint32_t {
  attribute_subject = 0x00018004,
  attribute_body = 0x0002800c,
  attribute_attachment_title = 0x00018010,
  attribute_attachment_data = 0x0006800f,
  attribute_attachment_begin = 0x00069002,
  attribute_properties = 0x00069003,
  attribute_recipients = 0x00069004,
  attribute_attachment_properties = 0x00069005,
  attribute_code_page = 0x00069007,
};

/// The attributes of a file in turn. What they hold stays in the file.
class TnefReader {
 public:
  TnefReader(Orlec::Reader const& file, ReadContext& context)
      : file_(file), context_(context), message_(file) {}

  void run() {
    for (auto offset = file_header_size;
         offset + attribute_header_size <= file_.GetSize() && context_.keep_going();) {
      auto const header = tessarine::read_piece(file_, offset, attribute_header_size);
      auto const begin = offset + attribute_header_size;
      auto const size = std::int64_t{tessarine::little32(header, 5)};
      if (size > file_.GetSize() - begin) {
        context_.note(Orlec::ParseOutcome::damaged, "an attribute is longer than the file");
      }
      auto const end = std::min(begin + size, file_.GetSize());
      take(tessarine::little32(header, 1), begin, end);
      offset = end + checksum_size;
    }
    deliver();
  }

 private:
  void take(std::uint32_t attribute, std::int64_t begin, std::int64_t end) {
    switch (attribute) {
      case attribute_code_page:
        code_page_ = static_cast<int>(
            tessarine::little32(tessarine::read_piece(file_, begin, 4), 0) & 0xffffU);
        break;
      case attribute_properties:
        message_.add_row(begin, end, context_);
        break;
      case attribute_recipients:
        recipients_begin_ = begin;
        recipients_end_ = end;
        break;
      case attribute_subject:
        add_text(message_, MapiId::subject, begin, end);
        break;
      case attribute_body:
        add_text(message_, MapiId::body, begin, end);
        break;
      case attribute_attachment_begin:
        begin_attachment();
        break;
      default:
        take_of_attachment(attribute, begin, end);
    }
  }

  void take_of_attachment(std::uint32_t attribute, std::int64_t begin, std::int64_t end) {
    if (attachments_.empty()) {
      return;
    }
    auto& attachment = *attachments_.back();
    if (attribute == attribute_attachment_title) {
      add_text(attachment, MapiId::attach_short_name, begin, end);
    } else if (attribute == attribute_attachment_data) {
      add(attachment, MapiId::attach_data, MapiType::binary, begin, end);
    } else if (attribute == attribute_attachment_properties) {
      attachment.add_row(begin, end, context_);
    }
  }

  void begin_attachment() {
    auto const most = context_.limits().i_entries;
    if (static_cast<std::int64_t>(attachments_.size()) >= most) {
      context_.end(Orlec::ParseOutcome::limit_reached,
                   "over " + std::to_string(most) + " attachments");
      return;
    }
    attachments_.push_back(std::make_unique<TnefItem>(file_));
  }

  void add_text(TnefItem& item, MapiId id, std::int64_t begin, std::int64_t end) {
    add(item, id, MapiType::text_8, begin, end);
  }

  void add(TnefItem& item, MapiId id, MapiType type, std::int64_t begin, std::int64_t end) {
    if (context_.charge_memory(sizeof(TnefProperty))) {
      item.add({{static_cast<std::uint16_t>(id), type}, begin, end - begin, false});
    }
  }

  void deliver() {
    if (context_.ended()) {
      return;
    }
    message_.set_code_page(code_page_);
    read_mapi_message(message_, context_);
    read_recipients();
    bool const is_envelope = is_mapi_envelope(message_, context_);
    for (auto const& attachment : attachments_) {
      if (!context_.keep_going()) {
        return;
      }
      attachment->set_code_page(code_page_);
      read_attachment(*attachment, is_envelope);
    }
  }

  void read_recipients() {
    auto const count = tessarine::little32(tessarine::read_piece(file_, recipients_begin_, 4), 0);
    auto offset = recipients_begin_ + 4;
    for (std::uint32_t i = 0; i < count && offset < recipients_end_ && context_.keep_going(); ++i) {
      TnefItem recipient(file_);
      recipient.set_code_page(code_page_);
      offset = recipient.add_row(offset, recipients_end_, context_);
      read_mapi_recipient(recipient, context_);
    }
  }

  /// An attached message or object stands behind the identifier of its interface.
  void read_attachment(TnefItem const& attachment, bool is_of_envelope) {
    constexpr std::int64_t identifier_size = 16;
    auto const object =
        attachment.bytes({static_cast<std::uint16_t>(MapiId::attach_data), MapiType::object});
    if (object == nullptr) {
      read_mapi_attachment(attachment, is_of_envelope, context_);
      return;
    }
    auto const name = attachment.text(MapiId::display_name, context_);
    read_embedded(
        ReaderSlice(*object, name.empty() ? "message" : name, identifier_size, object->GetSize()),
        context_);
  }

  Orlec::Reader const& file_;
  ReadContext& context_;
  TnefItem message_;
  std::vector<std::unique_ptr<TnefItem>> attachments_;
  std::int64_t recipients_begin_ = 0;
  std::int64_t recipients_end_ = 0;
  int code_page_ = 0;
};

}  // namespace

void read_tnef(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  TnefReader(reader, context).run();
}

}  // namespace morvakit
