#pragma once

#include "host/Orlec/IFile.h"
#include "host/export.h"

namespace tessarine {

/// Types of file that are told apart by content. Macro, template and show variants count as their
/// base type; the suffix tells them apart.
enum class FileType {
  unknown,
  empty,
  // Text
  plain_text,
  csv,
  markdown,
  source_code,
  xml,
  html,
  // Office Open XML (transitional and strict)
  docx,
  xlsx,
  pptx,
  xlsb,
  // OpenDocument, in ZIP and flat
  odt,
  ods,
  odp,
  odg,
  flat_odf,
  // OLE2
  doc,
  xls,
  ppt,
  msg,
  ole_other,
  // Others
  pdf,
  rtf,
  eml,
  mbox,
  mhtml,
  tnef,
  epub,
  ofd,
  xps,
  zip,
  tar,
  gzip,
  other_archive,
  image,
  media,
  executable,
  /// A known format that holds no document: database, font.
  other_binary,
};

/// What is known of a file without parsing it.
struct Recognition {
  FileType type = FileType::unknown;
  /// Usual suffix of the type or variant, lower case without the point, as "docm"; empty if
  /// unknown.
  char const* suffix = "";
  /// The content cannot be read without a password.
  bool encrypted = false;
};

/// Recognises a document by its content. Its name is used for nothing but to tell apart kinds of
/// plain text (CSV, Markdown, source code; a single message or a mailbox) and of encrypted Office
/// packages, which show nothing else. A container that is cut short is recognised by what is left
/// of it. Reads a few hundred KiB, and the directory of a container; of a PDF up to 4 MiB.
MORVA_EXPORT Recognition recognize(Orlec::Reader const& reader);

}  // namespace tessarine
