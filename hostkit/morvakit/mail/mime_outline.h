#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/mail/mime_decoding.h"
#include "morvakit/mail/mime_header.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// One part of a mail: the mail itself, or a part of a part.
struct MimePart {
  /// Media type and its parameters; "text/plain" where the mail says nothing.
  MimeValue type;
  MimeValue disposition;
  Transfer transfer = Transfer::identity;
  /// Without its angle brackets.
  std::string content_id;
  /// Position of the part that this one belongs to; its own for the mail itself.
  std::size_t parent = 0;
  /// Where the content stands in the file.
  std::int64_t begin = 0;
  std::int64_t end = 0;

  bool is_multipart() const { return type.value.starts_with("multipart/"); }
  /// The file's name as the mail gives it, in UTF-8; empty where it gives none.
  std::string_view file_name() const;
};

/// What a mail is made of: where its parts stand, none of their content.
struct MimeOutline {
  /// The fields of the mail's own header block, in their order.
  std::vector<MimeField> fields;
  /// The mail itself and all its parts in the order in which they stand, each in front of its own
  /// parts.
  std::vector<MimePart> parts;
};

/// Reads a mail once, line by line. What is wrong with its form is put up with as mail programs do;
/// a bound that is passed (parts, their depth, the size of header blocks) is noted in the context,
/// and what lies behind it is left out.
MimeOutline outline_mail(Orlec::Reader const& reader, ReadContext& context);

}  // namespace morvakit
