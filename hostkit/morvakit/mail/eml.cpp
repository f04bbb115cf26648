#include "morvakit/formats.h"
#include "morvakit/mail/mail_message.h"

namespace morvakit {

void read_eml(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  read_mail(reader, MailForm::message, context);
}

}  // namespace morvakit
