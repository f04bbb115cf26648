#include "morvakit/formats.h"

#include <algorithm>
#include <iterator>

namespace morvakit {

namespace {

using tessarine::FileType;

constexpr Format formats[] = {
    {.type = FileType::empty, .file = read_plain_text},
    {.type = FileType::plain_text, .file = read_plain_text},
    {.type = FileType::csv, .file = read_plain_text},
    {.type = FileType::markdown, .file = read_plain_text},
    {.type = FileType::source_code, .file = read_plain_text},
    {.type = FileType::xml, .file = read_xml},
    {.type = FileType::html, .file = read_html},
    {.type = FileType::docx, .file = read_docx},
    {.type = FileType::xlsx, .file = read_xlsx},
    {.type = FileType::pptx, .file = read_pptx},
    {.type = FileType::xlsb, .file = read_xlsb},
    {.type = FileType::odt, .file = read_odf},
    {.type = FileType::ods, .file = read_odf},
    {.type = FileType::odp, .file = read_odf},
    {.type = FileType::odg, .file = read_odf},
    {.type = FileType::flat_odf, .file = read_flat_odf},
    {.type = FileType::doc, .storage = read_doc, .remains = read_doc_remains},
    {.type = FileType::xls, .file = read_xls, .storage = read_xls_storage},
    {.type = FileType::ppt, .storage = read_ppt, .remains = read_ppt_remains},
    {.type = FileType::msg, .storage = read_msg},
#if MORVAKIT_WITH_PDF
    {.type = FileType::pdf, .file = read_pdf},
#endif
    {.type = FileType::rtf, .file = read_rtf},
    {.type = FileType::eml, .file = read_eml},
    {.type = FileType::mbox, .file = read_mbox},
    {.type = FileType::mhtml, .file = read_mhtml},
    {.type = FileType::tnef, .file = read_tnef},
    {.type = FileType::epub, .file = read_epub},
    {.type = FileType::ofd, .file = read_ofd},
    {.type = FileType::xps, .file = read_xps},
    {.type = FileType::zip, .file = read_zip},
    {.type = FileType::tar, .file = read_archive},
    {.type = FileType::gzip, .file = read_archive},
    {.type = FileType::other_archive, .file = read_archive},
};

}  // namespace

Format find_format(FileType type) {
  auto const* const found =
      std::find_if(std::begin(formats), std::end(formats),
                   [type](Format const& format) { return format.type == type; });
  return found == std::end(formats) ? Format{.type = type} : *found;
}

}  // namespace morvakit
