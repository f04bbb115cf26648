#include "morvakit/formats.h"

namespace morvakit {

ReadFunction find_reader(tessarine::FileType type) {
  using tessarine::FileType;
  switch (type) {
    case FileType::empty:
    case FileType::plain_text:
    case FileType::csv:
    case FileType::markdown:
    case FileType::source_code:
      return read_plain_text;
    case FileType::xml:
      return read_xml;
    case FileType::flat_odf:
      return read_flat_odf;
    case FileType::html:
      return read_html;
    case FileType::docx:
      return read_docx;
    case FileType::xls:
      return read_xls;
    case FileType::xlsb:
      return read_xlsb;
    case FileType::xlsx:
      return read_xlsx;
    case FileType::pptx:
      return read_pptx;
    case FileType::odt:
    case FileType::ods:
    case FileType::odp:
    case FileType::odg:
      return read_odf;
    case FileType::ofd:
      return read_ofd;
    case FileType::epub:
      return read_epub;
    case FileType::xps:
      return read_xps;
    case FileType::rtf:
      return read_rtf;
    case FileType::eml:
      return read_eml;
    case FileType::mbox:
      return read_mbox;
    case FileType::mhtml:
      return read_mhtml;
    case FileType::tnef:
      return read_tnef;
    case FileType::pdf:
      if constexpr (MORVAKIT_WITH_PDF) {
        return read_pdf;
      }
      return nullptr;
    case FileType::zip:
      return read_zip;
    case FileType::tar:
    case FileType::gzip:
    case FileType::other_archive:
      return read_archive;
    default:
      return nullptr;
  }
}

StorageReadFunction find_storage_reader(tessarine::FileType type) {
  using tessarine::FileType;
  switch (type) {
    case FileType::doc:
      return read_doc;
    case FileType::msg:
      return read_msg;
    case FileType::xls:
      return read_xls_storage;
    case FileType::ppt:
      return read_ppt;
    default:
      return nullptr;
  }
}

ReadFunction find_remains_reader(tessarine::FileType type) {
  switch (type) {
    case tessarine::FileType::doc:
      return read_doc_remains;
    case tessarine::FileType::ppt:
      return read_ppt_remains;
    default:
      return nullptr;
  }
}

bool can_read(tessarine::FileType type) {
  return find_reader(type) != nullptr || find_storage_reader(type) != nullptr;
}

}  // namespace morvakit
