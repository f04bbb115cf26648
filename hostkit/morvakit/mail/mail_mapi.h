#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Types of the properties of a MAPI item.
enum class MapiType : std::uint16_t {
  integer = 0x0003,
  boolean = 0x000b,
  object = 0x000d,
  text_8 = 0x001e,
  text_16 = 0x001f,
  time = 0x0040,
  binary = 0x0102,
  many_text_8 = 0x101e,
  many_text_16 = 0x101f,
};

/// Properties that readers ask for by their number.
enum class MapiId : std::uint16_t {
  message_class = 0x001a,
  subject = 0x0037,
  client_submit_time = 0x0039,
  transport_headers = 0x007d,
  recipient_type = 0x0c15,
  display_bcc = 0x0e02,
  display_cc = 0x0e03,
  display_to = 0x0e04,
  delivery_time = 0x0e06,
  body = 0x1000,
  compressed_rtf = 0x1009,
  html_body = 0x1013,
  display_name = 0x3001,
  email_address = 0x3003,
  attach_data = 0x3701,
  attach_short_name = 0x3704,
  attach_method = 0x3705,
  attach_long_name = 0x3707,
  attach_mime_type = 0x370e,
  attach_content_id = 0x3712,
  smtp_address = 0x39fe,
  internet_code_page = 0x3fde,
  message_code_page = 0x3ffd,
};

struct MapiTag {
  std::uint16_t id = 0;
  MapiType type = MapiType::integer;

  auto operator<=>(MapiTag const&) const = default;
};

/// A message, recipient or attachment as a bag of properties, whatever file it stands in.
class MapiItem {
 public:
  MapiItem() = default;
  virtual ~MapiItem() = default;
  MapiItem(MapiItem const&) = delete;
  MapiItem& operator=(MapiItem const&) = delete;

  /// The bytes of a property of variable size; null where there is none. The item has to outlive
  /// them.
  virtual std::unique_ptr<Orlec::Reader> bytes(MapiTag tag) const = 0;
  /// The value of a property of fixed size.
  virtual std::optional<std::uint64_t> number(MapiTag tag) const = 0;
  /// Takes one text; false to have no more.
  using TextConsumer = std::function<bool(Orlec::Reader const& bytes)>;
  /// Gives the texts of one type of all named properties, one by one.
  virtual void visit_named_texts(MapiType type, TextConsumer const& consumer) const = 0;

  /// Code page of the item's 8-bit text; 0 where it says nothing.
  virtual int code_page() const = 0;

  /// A short text as UTF-8, its first MiB, which is noted in the context where there is more; empty
  /// where there is none.
  std::string text(MapiId id, ReadContext& context) const;
};

/// Delivers a message's subject and body as main text, of several bodies the plain one unless it is
/// blank, its sender and dates as properties, and the texts of its named properties as other text.
void read_mapi_message(MapiItem const& message, ReadContext& context);

/// Delivers one of a message's recipients as a property.
void read_mapi_recipient(MapiItem const& recipient, ReadContext& context);

/// Whether a message is only the envelope of a signed or encrypted mail that is attached to it.
bool is_mapi_envelope(MapiItem const& message, ReadContext& context);

/// Reads the file that is attached; one that belongs to the layout of the text is counted as a
/// picture if it is one. An encrypted mail is the whole of an envelope, and ends the context; as
/// one among the files of a message it is noted. False when reading is to stop.
bool read_mapi_attachment(MapiItem const& attachment, bool is_of_envelope, ReadContext& context);

}  // namespace morvakit
