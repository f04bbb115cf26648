#pragma once

#include <string_view>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseText.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// How the text of a mail is written beside its encoding.
struct MailTextForm {
  /// Lines that end in a blank go on in the next one (RFC 3676); with `drop_space` the blank was
  /// put there only for that.
  bool is_flowed = false;
  bool drop_space = false;
  /// Lines of a mailbox, where ">From " stands for "From ".
  bool is_mailbox = false;
};

/// Encoding of a mail's text by its first bytes, where the mail says `declared` of it; a byte-order
/// mark stands above it.
std::string find_mail_encoding(Orlec::Reader const& text, std::string_view declared);

/// Delivers a plain text, beginning on a new line, without the empty lines at its end.
void read_mail_text(Orlec::Reader const& text, std::string_view declared_encoding,
                    Orlec::ParseTextType type, MailTextForm const& form, ReadContext& context);

/// Delivers an HTML text as main text, beginning on a new line.
void read_mail_html(Orlec::Reader const& text, std::string_view declared_encoding,
                    ReadContext& context);

/// Delivers what an iCalendar says in words: summary, place and description of its entries.
void read_mail_calendar(Orlec::Reader const& text, std::string_view declared_encoding,
                        ReadContext& context);

}  // namespace morvakit
