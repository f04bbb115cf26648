#include "morvakit/formats.h"
#include "morvakit/mail/mail_message.h"

namespace morvakit {

void read_mhtml(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
                ReadContext& context) {
  read_mail(reader, MailForm::web_archive, context);
}

}  // namespace morvakit
