#pragma once

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

#include "tessarine/file_type.h"
#include "tessarine/ole_storage.h"

namespace morvakit {

/// Reads one document of a format, delivering its text and ending the context where something is
/// wrong.
using ReadFunction = void (*)(Orlec::Reader const& reader,
                              tessarine::Recognition const& recognition, ReadContext& context);

/// The same for a format of OLE2, where a document is a storage, a file's root or one within it.
using StorageReadFunction = void (*)(tessarine::OleStorage const& storage, ReadContext& context);

/// How the documents of a type are read; null where there is no such way.
struct Format {
  tessarine::FileType type;
  ReadFunction file = nullptr;
  StorageReadFunction storage = nullptr;
  /// Reads what is left of a document of OLE2 whose directory is lost.
  ReadFunction remains = nullptr;

  bool is_readable() const { return file != nullptr || storage != nullptr; }
};

/// The format of a type, without any reader for one that is not read. `formats.cpp` holds the
/// table: a new format is one source and one line there.
Format find_format(tessarine::FileType type);

// The readers, one source each.
void read_plain_text(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xml(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_html(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_doc(tessarine::OleStorage const&, ReadContext&);
void read_doc_remains(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_docx(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xls(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xls_storage(tessarine::OleStorage const&, ReadContext&);
void read_ppt(tessarine::OleStorage const&, ReadContext&);
void read_ppt_remains(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xlsb(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xlsx(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_pptx(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_odf(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_flat_odf(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_epub(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_xps(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_ofd(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_eml(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_mbox(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_mhtml(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_msg(tessarine::OleStorage const&, ReadContext&);
void read_tnef(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_pdf(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_rtf(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_zip(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);
void read_archive(Orlec::Reader const&, tessarine::Recognition const&, ReadContext&);

}  // namespace morvakit
