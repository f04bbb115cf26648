#pragma once

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// What a mail stands in.
enum class MailForm {
  message,      ///< a file of its own
  mailbox,      ///< a mailbox, one message after the other
  web_archive,  ///< a web page with its parts, which has the form of a mail
  content,      ///< what a message is wrapped around, such as its signed content
};

/// Reads one mail: the subject and the text as main text, the header block as properties, then
/// attachments.
void read_mail(Orlec::Reader const& reader, MailForm form, ReadContext& context);

}  // namespace morvakit
