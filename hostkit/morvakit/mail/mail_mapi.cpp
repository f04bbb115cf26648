#include "morvakit/mail/mail_mapi.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>

#include "morvabs/text_decoder.h"
#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/mail/mail_message.h"
#include "morvakit/mail/mail_rtf.h"
#include "morvakit/mail/mail_smime.h"
#include "morvakit/mail/mail_text.h"
#include "morvakit/mail/mime_header.h"
#include "morvakit/spool.h"
#include "morvakit/text/code_page.h"
#include "morvakit/text_flow.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using namespace std::string_view_literals;
using Orlec::ParseOutcome;
using tessarine::FileType;

constexpr auto main_text = Orlec::ParseTextType_main;
constexpr auto property = Orlec::ParseTextType_property;
constexpr std::int64_t longest_short_text = std::int64_t{1} << 20;

constexpr MapiTag tag(MapiId id, MapiType type) {
  return {static_cast<std::uint16_t>(id), type};
}

/// Texts of a message, a contact or a task that are delivered as properties.
struct NamedText {
  std::uint16_t id;
  std::string_view name;
};

constexpr std::array property_texts{
    NamedText{0x0037, "subject"},     NamedText{0x0042, "from"},
    NamedText{0x0065, "from"},        NamedText{0x5d02, "from"},
    NamedText{0x0c1a, "sender"},      NamedText{0x0c1f, "sender"},
    NamedText{0x5d01, "sender"},      NamedText{0x0050, "reply-to"},
    NamedText{0x0070, "topic"},       NamedText{0x0040, "received by"},
    NamedText{0x0044, "received by"}, NamedText{0x3ffa, "last modified by"},
    NamedText{0x1035, "message-id"},  NamedText{0x3a05, "generation"},
    NamedText{0x3a06, "given name"},  NamedText{0x3a08, "phone"},
    NamedText{0x3a09, "phone"},       NamedText{0x3a0a, "initials"},
    NamedText{0x3a11, "surname"},     NamedText{0x3a15, "address"},
    NamedText{0x3a16, "company"},     NamedText{0x3a17, "title"},
    NamedText{0x3a18, "department"},  NamedText{0x3a19, "office"},
    NamedText{0x3a1a, "phone"},       NamedText{0x3a1b, "phone"},
    NamedText{0x3a1c, "phone"},       NamedText{0x3a23, "fax"},
    NamedText{0x3a24, "fax"},         NamedText{0x3a25, "fax"},
    NamedText{0x3a26, "country"},     NamedText{0x3a27, "locality"},
    NamedText{0x3a28, "state"},       NamedText{0x3a29, "street"},
    NamedText{0x3a2a, "postal code"}, NamedText{0x3a2f, "phone"},
    NamedText{0x3a30, "assistant"},   NamedText{0x3a44, "middle name"},
    NamedText{0x3a46, "profession"},  NamedText{0x3a48, "spouse"},
    NamedText{0x3a4e, "manager"},     NamedText{0x3a4f, "nickname"},
    NamedText{0x3a50, "web page"},    NamedText{0x3a51, "web page"},
    NamedText{0x3a5d, "street"},
};

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n\0"sv) == std::string_view::npos;
}

/// "2009-06-15T12:34:56Z" for 100-nanosecond steps since 1601.
std::string format_time(std::uint64_t time) {
  constexpr std::uint64_t steps_in_second = 10'000'000;
  constexpr std::int64_t seconds_in_day = 86400;
  constexpr std::int64_t days_to_1970 = 134774;
  constexpr std::int64_t last_day = 3'000'000;
  auto const seconds = static_cast<std::int64_t>(time / steps_in_second);
  auto const day = seconds / seconds_in_day;
  if (time == 0 || day > last_day) {
    return {};
  }
  std::chrono::year_month_day const date{
      std::chrono::sys_days{std::chrono::days{day - days_to_1970}}};
  auto const two = [](std::int64_t value) {
    auto const digits = std::to_string(value);
    return digits.size() < 2 ? "0" + digits : digits;
  };
  auto const second = seconds % seconds_in_day;
  return std::to_string(static_cast<int>(date.year())) + "-" +
         two(static_cast<unsigned>(date.month())) + "-" + two(static_cast<unsigned>(date.day())) +
         "T" + two(second / 3600) + ":" + two(second / 60 % 60) + ":" + two(second % 60) + "Z";
}

void read_properties(MapiItem const& message, TextFlow& flow) {
  for (auto const& known : property_texts) {
    if (auto const text = message.text(MapiId{known.id}, flow.context()); !is_blank(text)) {
      flow.line(property, std::string(known.name) + ": " + text);
    }
  }
  for (auto const id : {MapiId::client_submit_time, MapiId::delivery_time}) {
    auto const time = format_time(message.number(tag(id, MapiType::time)).value_or(0));
    if (!time.empty()) {
      flow.line(property, "date: " + time);
    }
  }
  struct Recipients {
    MapiId id;
    char const* name;
  };
  for (auto const& [id, name] :
       {Recipients{MapiId::display_to, "to: "}, Recipients{MapiId::display_cc, "cc: "},
        Recipients{MapiId::display_bcc, "bcc: "}}) {
    if (auto const text = message.text(id, flow.context()); !is_blank(text)) {
      flow.line(property, name + text);
    }
  }
}

std::string encoding_name(MapiItem const& item, MapiType type) {
  return type == MapiType::text_16 ? std::string("UTF-16LE") : code_page_name(item.code_page());
}

/// A short text of one of the types for text, as UTF-8.
std::string decode_mapi_text(Orlec::Reader const& bytes, MapiType type, int code_page,
                             ReadContext& context) {
  if (bytes.GetSize() > longest_short_text) {
    context.note(ParseOutcome::limit_reached,
                 "a property of a message over " + std::to_string(longest_short_text) + " bytes");
  }
  auto raw = tessarine::read_piece(bytes, 0, longest_short_text);
  std::string text;
  if (type == MapiType::text_16) {
    text = decode_utf16(raw);
  } else {
    morvabs::TextDecoder(choose_encoding(raw, code_page_name(code_page))).decode(raw, true, text);
  }
  text.resize(text.find_last_not_of(" \t\r\n\0"sv) + 1);
  std::replace(text.begin(), text.end(), '\0', ' ');
  return text;
}

/// The header block that the mail came with, and the named properties.
void read_other_texts(MapiItem const& message, TextFlow& flow) {
  for (auto const type : {MapiType::text_8, MapiType::text_16}) {
    auto const headers = message.bytes(tag(MapiId::transport_headers, type));
    if (headers != nullptr) {
      read_mail_text(*headers, encoding_name(message, type), Orlec::ParseTextType_other, {},
                     flow.context());
    }
    message.visit_named_texts(type, [&](Orlec::Reader const& bytes) {
      auto const text = decode_mapi_text(bytes, type, message.code_page(), flow.context());
      if (!is_blank(text)) {
        flow.line(Orlec::ParseTextType_other, text);
      }
      return flow.context().keep_going();
    });
  }
}

bool is_blank_body(Orlec::Reader const& body, ReadContext& context) {
  constexpr std::int64_t piece_size = std::int64_t{64} << 10;
  for (std::int64_t offset = 0; offset < body.GetSize() && context.keep_going();) {
    auto const piece = tessarine::read_piece(body, offset, piece_size);
    if (piece.empty()) {
      break;
    }
    if (!is_blank(piece)) {
      return false;
    }
    offset += static_cast<std::int64_t>(piece.size());
  }
  return true;
}

bool read_plain_body(MapiItem const& message, ReadContext& context) {
  for (auto const type : {MapiType::text_16, MapiType::text_8}) {
    auto const body = message.bytes(tag(MapiId::body, type));
    if (body == nullptr || is_blank_body(*body, context)) {
      continue;
    }
    read_mail_text(*body, encoding_name(message, type), main_text, {}, context);
    return true;
  }
  return false;
}

bool read_html_body(MapiItem const& message, ReadContext& context) {
  for (auto const type : {MapiType::binary, MapiType::text_16, MapiType::text_8}) {
    auto const body = message.bytes(tag(MapiId::html_body, type));
    if (body == nullptr || body->GetSize() == 0) {
      continue;
    }
    auto const page = message.number(tag(MapiId::internet_code_page, MapiType::integer));
    auto const code_page = page ? static_cast<int>(*page & 0xffffU) : message.code_page();
    read_mail_html(*body, code_page_name(code_page), context);
    return true;
  }
  return false;
}

void read_rtf_body(MapiItem const& message, ReadContext& context) {
  auto const packed = message.bytes(tag(MapiId::compressed_rtf, MapiType::binary));
  auto const read = find_format(FileType::rtf).file;
  if (packed == nullptr || packed->GetSize() == 0) {
    return;
  }
  Spool rtf({}, context);
  unpack_mail_rtf(*packed, rtf, context);
  if (read != nullptr && rtf.GetSize() > 0 && !context.ended()) {
    context.separate(main_text, '\n');
    read(rtf, {FileType::rtf, "rtf"}, context);
  }
}

void meet_encryption(bool is_of_envelope, ReadContext& context) {
  if (is_of_envelope) {
    context.end(ParseOutcome::encrypted, "the mail is encrypted");
  } else {
    context.note(ParseOutcome::incomplete, "an attached mail is encrypted");
  }
}

/// A signed or encrypted mail that is attached in its wrapping.
bool read_wrapped_mail(MapiItem const& attachment, bool is_of_envelope, Orlec::Reader const& file,
                       ReadContext& context) {
  auto const type = tessarine::ascii_lower(attachment.text(MapiId::attach_mime_type, context));
  if (type == "multipart/signed") {
    read_mail(file, MailForm::content, context);
    return true;
  }
  if (type == "application/x-microsoft-rpmsg-message") {
    meet_encryption(is_of_envelope, context);
    return true;
  }
  bool const is_smime = type == "application/pkcs7-mime" || type == "application/x-pkcs7-mime";
  auto const content = is_smime ? open_smime(file, context) : SmimeContent{};
  if (content.kind == SmimeKind::encrypted) {
    meet_encryption(is_of_envelope, context);
  } else if (content.kind == SmimeKind::signed_content) {
    read_mail(*content.bytes, MailForm::content, context);
  }
  return content.kind != SmimeKind::unknown;
}

}  // namespace

std::string MapiItem::text(MapiId id, ReadContext& context) const {
  for (auto const type : {MapiType::text_16, MapiType::text_8}) {
    if (auto const found = bytes(tag(id, type)); found != nullptr) {
      return decode_mapi_text(*found, type, code_page(), context);
    }
  }
  return {};
}

void read_mapi_message(MapiItem const& message, ReadContext& context) {
  TextFlow flow(context);
  if (auto const subject = message.text(MapiId::subject, context); !is_blank(subject)) {
    flow.line(main_text, subject);
  }
  read_properties(message, flow);
  if (!read_plain_body(message, context) && !read_html_body(message, context)) {
    read_rtf_body(message, context);
  }
  read_other_texts(message, flow);
}

void read_mapi_recipient(MapiItem const& recipient, ReadContext& context) {
  constexpr std::array<std::string_view, 4> kinds{"from", "to", "cc", "bcc"};
  auto const kind =
      recipient.number(tag(MapiId::recipient_type, MapiType::integer)).value_or(1) & 0xfU;
  auto const name = kinds[std::min<std::size_t>(kind, kinds.size() - 1)];
  std::string line;
  for (auto const id : {MapiId::display_name, MapiId::smtp_address, MapiId::email_address}) {
    auto const text = recipient.text(id, context);
    if (!is_blank(text) && line.find(text) == std::string::npos) {
      line += (line.empty() ? "" : " ") + text;
    }
  }
  if (!line.empty()) {
    TextFlow(context).line(property, std::string(name) + ": " + line);
  }
}

bool is_mapi_envelope(MapiItem const& message, ReadContext& context) {
  constexpr std::string_view protected_class = "rpmsg.message";
  auto const message_class = tessarine::ascii_lower(message.text(MapiId::message_class, context));
  bool is_envelope = message_class.starts_with("ipm.note.smime");
  // A protected message has an ordinary class, and tells by a named property what it is.
  for (auto const type : {MapiType::text_16, MapiType::text_8}) {
    message.visit_named_texts(type, [&](Orlec::Reader const& bytes) {
      constexpr std::int64_t longest_class = 64;
      is_envelope = is_envelope || (bytes.GetSize() <= longest_class &&
                                    decode_mapi_text(bytes, type, message.code_page(), context) ==
                                        protected_class);
      return !is_envelope && context.keep_going();
    });
  }
  return is_envelope;
}

bool read_mapi_attachment(MapiItem const& attachment, bool is_of_envelope, ReadContext& context) {
  auto const data = attachment.bytes(tag(MapiId::attach_data, MapiType::binary));
  if (data == nullptr) {
    return context.keep_going();
  }
  auto name = attachment.text(MapiId::attach_long_name, context);
  name = name.empty() ? attachment.text(MapiId::attach_short_name, context) : name;
  ReaderSlice const file(*data, name, 0, data->GetSize());
  if (read_wrapped_mail(attachment, is_of_envelope, file, context)) {
    return context.keep_going();
  }
  bool const is_shown = !attachment.text(MapiId::attach_content_id, context).empty();
  if (is_shown && tessarine::recognize(file).type == FileType::image) {
    context.count_images(1);
    return context.keep_going();
  }
  return read_embedded(file, context);
}

}  // namespace morvakit
