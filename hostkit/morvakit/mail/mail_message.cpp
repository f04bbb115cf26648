#include "morvakit/mail/mail_message.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>

#include "morvabs/text_decoder.h"
#include "morvakit/embedded.h"
#include "morvakit/mail/mail_parts.h"
#include "morvakit/mail/mail_smime.h"
#include "morvakit/mail/mail_text.h"
#include "morvakit/mail/mime_outline.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using tessarine::FileType;

constexpr auto main_text = Orlec::ParseTextType_main;
constexpr std::int64_t piece_size = std::int64_t{64} << 10;
/// What tells a picture, and an armor.
constexpr std::int64_t head_size = std::int64_t{16} << 10;

template <std::size_t N>
bool is_one_of(std::array<std::string_view, N> const& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool is_property(std::string_view field) {
  constexpr std::array<std::string_view, 14> names{
      "subject", "from",     "sender",   "reply-to",    "to",        "cc",         "bcc",
      "date",    "keywords", "comments", "resent-from", "resent-to", "newsgroups", "organization"};
  return is_one_of(names, field);
}

/// Fields about the form of the mail, and those with signatures in place of words.
bool is_form(std::string_view field) {
  constexpr std::array<std::string_view, 6> names{
      "mime-version", "dkim-signature", "domainkey-signature", "x-google-dkim-signature",
      "face",         "x-face"};
  return field.starts_with("content-") || field.starts_with("arc-") || is_one_of(names, field);
}

/// Whether the mail alone knows the encoding of a file.
bool is_bare_text(FileType type) {
  return type == FileType::plain_text || type == FileType::csv || type == FileType::markdown ||
         type == FileType::source_code || type == FileType::unknown;
}

class MailReader {
 public:
  /// `depth`: of the wrappings around it; `is_file`: whether a file is this mail and nothing else.
  MailReader(Orlec::Reader const& reader, MailForm form, int depth, bool is_file,
             ReadContext& context)
      : reader_(reader),
        form_(form),
        depth_(depth),
        is_file_(is_file),
        context_(context),
        outline_(outline_mail(reader, context)) {}

  void run() {
    if (context_.ended()) {
      return;
    }
    if (form_ != MailForm::content) {
      read_header();
    }
    RoleOptions options;
    options.is_web_archive = form_ == MailForm::web_archive;
    options.is_blank = [this](MimePart const& part) { return is_blank(part); };
    roles_ = find_part_roles(outline_, options);
    for (auto const number : reading_order(outline_)) {
      if (!context_.keep_going()) {
        return;
      }
      read_text(number);
    }
    for (std::size_t number = 0; number < roles_.size(); ++number) {
      if (!context_.keep_going()) {
        return;
      }
      read_file(number);
    }
  }

 private:
  void read_header() {
    TextFlow flow(context_);
    bool is_subject_read = form_ == MailForm::web_archive;
    for (auto const& field : outline_.fields) {
      if (is_form(field.name) || field.value.empty() || !context_.keep_going()) {
        continue;
      }
      auto const value = decode_header(field.value);
      if (field.name == "subject" && !std::exchange(is_subject_read, true)) {
        flow.line(main_text, value);
      }
      auto const type =
          is_property(field.name) ? Orlec::ParseTextType_property : Orlec::ParseTextType_other;
      flow.line(type, field.name + ": " + value);
    }
  }

  /// The content of a part, decoded; null where the context has ended.
  std::unique_ptr<Orlec::Reader> open(MimePart const& part, std::string_view name) {
    auto const size = part.end - part.begin;
    if (part.transfer == Transfer::identity) {
      return std::make_unique<ReaderSlice>(reader_, name, part.begin, size);
    }
    auto spool = std::make_unique<Spool>(name, context_);
    decode(part, size, [&spool](std::string_view bytes) { return spool->append(bytes); });
    return spool;
  }

  /// Decodes what stands in the first `size` bytes of a part.
  template <typename Consumer>
  void decode(MimePart const& part, std::int64_t size, Consumer const& consumer) {
    TransferDecoder decoder(part.transfer);
    std::string bytes;
    auto const end = std::min(part.end, part.begin + size);
    for (auto offset = part.begin; offset < end && context_.keep_going();) {
      auto const piece = tessarine::read_piece(reader_, offset, std::min(piece_size, end - offset));
      if (piece.empty()) {
        break;
      }
      offset += static_cast<std::int64_t>(piece.size());
      bytes.clear();
      decoder.decode(piece, bytes);
      if (!consumer(bytes)) {
        return;
      }
    }
    bytes.clear();
    decoder.finish(bytes);
    consumer(bytes);
  }

  std::string head(MimePart const& part) {
    std::string bytes;
    decode(part, head_size, [&bytes](std::string_view piece) {
      bytes += piece;
      return true;
    });
    return bytes;
  }

  bool is_blank(MimePart const& part) {
    bool is_blank = true;
    decode(part, part.end - part.begin, [&is_blank](std::string_view piece) {
      is_blank = is_blank && piece.find_first_not_of(" \t\r\n\xa0\xc2") == std::string_view::npos;
      return is_blank;
    });
    return is_blank;
  }

  void read_text(std::size_t number) {
    auto const& part = outline_.parts[number];
    auto const role = roles_[number];
    auto const charset = part.type.parameter("charset");
    if (role == PartRole::text) {
      read_plain(number, charset);
    } else if (role == PartRole::html) {
      read_mail_html(*open(part, {}), charset, context_);
    } else if (role == PartRole::calendar) {
      read_mail_calendar(*open(part, {}), charset, context_);
    } else if (role == PartRole::report) {
      read_mail_text(*open(part, {}), charset, Orlec::ParseTextType_other, {}, context_);
    } else if (role == PartRole::smime) {
      read_smime_part(number);
    } else if (role == PartRole::encrypted) {
      meet_encryption(number);
    }
  }

  void read_plain(std::size_t number, std::string_view charset) {
    auto const& part = outline_.parts[number];
    auto const text = open(part, {});
    if (tessarine::read_piece(*text, 0, head_size).find("-----BEGIN PGP MESSAGE-----") <
        most_before_armor) {
      meet_encryption(number);
      return;
    }
    MailTextForm text_form;
    text_form.is_flowed = tessarine::ascii_lower(part.type.parameter("format")) == "flowed";
    text_form.drop_space = tessarine::ascii_lower(part.type.parameter("delsp")) == "yes";
    text_form.is_mailbox = form_ == MailForm::mailbox && part.transfer == Transfer::identity;
    read_mail_text(*text, charset, main_text, text_form, context_);
  }

  void read_smime_part(std::size_t number) {
    constexpr int deepest_wrapping = 4;
    auto const wrapped = open(outline_.parts[number], "smime.p7m");
    auto const content = open_smime(*wrapped, context_);
    if (content.kind == SmimeKind::encrypted) {
      meet_encryption(number);
    } else if (content.kind == SmimeKind::signed_content && depth_ < deepest_wrapping) {
      bool const is_file = is_file_ && number == 0;
      MailReader(*content.bytes, MailForm::content, depth_ + 1, is_file, context_).run();
    } else {
      context_.note(ParseOutcome::incomplete, "a part of the mail is wrapped in an unknown way");
    }
  }

  void meet_encryption(std::size_t number) {
    if (is_file_ && number == 0) {
      context_.end(ParseOutcome::encrypted, "the mail is encrypted");
    } else {
      context_.note(ParseOutcome::incomplete,
                    number == 0 ? "a mail is encrypted" : "a part of the mail is encrypted");
    }
  }

  void read_file(std::size_t number) {
    auto const& part = outline_.parts[number];
    if (roles_[number] == PartRole::attachment) {
      read_attachment(part);
    } else if (roles_[number] == PartRole::picture) {
      read_picture(part);
    } else if (roles_[number] == PartRole::machinery) {
      read_machinery(part);
    }
  }

  /// What is called a picture is one only if it looks like one. A drawing in XML is one that may
  /// hold words.
  void read_picture(MimePart const& part) {
    Spool beginning(part.file_name(), context_);
    beginning.append(head(part));
    auto const found = tessarine::recognize(beginning);
    bool const is_picture = found.type == FileType::image || found.type == FileType::empty ||
                            found.type == FileType::unknown;
    context_.count_images(is_picture || std::string_view(found.suffix) == "svg" ? 1 : 0);
    if (!is_picture) {
      read_attachment(part);
    }
  }

  /// A signature or the like is a short text in an armor, or is no known type.
  void read_machinery(MimePart const& part) {
    auto const type = tessarine::recognize(*open(part, part.file_name())).type;
    bool const is_armor = is_bare_text(type) && part.end - part.begin <= head_size &&
                          head(part).find("-----BEGIN ") < most_before_armor;
    if (!is_armor && type != FileType::unknown && type != FileType::empty) {
      read_attachment(part);
    }
  }

  void read_attachment(MimePart const& part) {
    bool const is_mail = part.type.value == "message/rfc822" || part.type.value == "message/global";
    auto const name = is_mail && part.file_name().empty() ? "message.eml" : part.file_name();
    auto const file = open(part, name);
    auto const charset = part.type.parameter("charset");
    bool const is_text = part.type.value.starts_with("text/") && part.type.value != "text/html" &&
                         part.type.value != "text/xml" && part.type.value != "text/rtf";
    if (is_text && !charset.empty() && is_bare_text(tessarine::recognize(*file).type)) {
      read_embedded(*in_utf8(*file, name, charset), context_);
    } else {
      read_embedded(*file, context_);
    }
  }

  /// A text file whose encoding only the mail knows.
  std::unique_ptr<Orlec::Reader> in_utf8(Orlec::Reader const& file, std::string_view name,
                                         std::string_view charset) {
    auto spool = std::make_unique<Spool>(name, context_);
    morvabs::TextDecoder decoder(find_mail_encoding(file, charset));
    std::string utf8;
    std::int64_t offset = 0;
    for (bool last = false; !last && context_.keep_going();) {
      auto const piece = tessarine::read_piece(file, offset, piece_size);
      offset += static_cast<std::int64_t>(piece.size());
      last = piece.empty();
      utf8.clear();
      decoder.decode(piece, last, utf8);
      last = !spool->append(utf8) || last;
    }
    return spool;
  }

  /// The armor of an encrypted text begins its body.
  static constexpr std::size_t most_before_armor = 200;

  Orlec::Reader const& reader_;
  MailForm form_;
  int depth_;
  bool is_file_;
  ReadContext& context_;
  MimeOutline outline_;
  std::vector<PartRole> roles_;
};

}  // namespace

void read_mail(Orlec::Reader const& reader, MailForm form, ReadContext& context) {
  MailReader(reader, form, 0, form == MailForm::message, context).run();
}

}  // namespace morvakit
