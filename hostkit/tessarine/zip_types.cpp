#include "tessarine/zip_types.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "morvabs/text_decoder.h"

#include "tessarine/byte_reader.h"
#include "tessarine/zip_listing.h"

namespace tessarine {
namespace {

constexpr std::int64_t description_limit = std::int64_t{1} << 20;

struct NamedType {
  std::string_view name;
  FileType type;
  char const* suffix;
};

// Content types of the main parts; strict and transitional documents share them.
constexpr std::array office_types{
    NamedType{"wordprocessingml.document.main+xml", FileType::docx, "docx"},
    NamedType{"ms-word.document.macroenabled.main+xml", FileType::docx, "docm"},
    NamedType{"wordprocessingml.template.main+xml", FileType::docx, "dotx"},
    NamedType{"ms-word.template.macroenabledtemplate.main+xml", FileType::docx, "dotm"},
    NamedType{"spreadsheetml.sheet.main+xml", FileType::xlsx, "xlsx"},
    NamedType{"ms-excel.sheet.macroenabled.main+xml", FileType::xlsx, "xlsm"},
    NamedType{"spreadsheetml.template.main+xml", FileType::xlsx, "xltx"},
    NamedType{"ms-excel.template.macroenabled.main+xml", FileType::xlsx, "xltm"},
    NamedType{"ms-excel.addin.macroenabled.main+xml", FileType::xlsx, "xlam"},
    NamedType{"ms-excel.sheet.binary.macroenabled.main", FileType::xlsb, "xlsb"},
    NamedType{"presentationml.presentation.main+xml", FileType::pptx, "pptx"},
    NamedType{"ms-powerpoint.presentation.macroenabled.main+xml", FileType::pptx, "pptm"},
    NamedType{"presentationml.template.main+xml", FileType::pptx, "potx"},
    NamedType{"ms-powerpoint.template.macroenabled.main+xml", FileType::pptx, "potm"},
    NamedType{"presentationml.slideshow.main+xml", FileType::pptx, "ppsx"},
    NamedType{"ms-powerpoint.slideshow.macroenabled.main+xml", FileType::pptx, "ppsm"},
    NamedType{"ms-powerpoint.addin.macroenabled.main+xml", FileType::pptx, "ppam"},
    NamedType{"ms-package.xps-fixeddocumentsequence+xml", FileType::xps, "xps"},
    NamedType{"ms-visio.drawing.main+xml", FileType::zip, "vsdx"},
};

// Where the description is lost, the usual name of the main part still tells the base type.
constexpr std::array office_parts{
    NamedType{"word/document.xml", FileType::docx, "docx"},
    NamedType{"xl/workbook.bin", FileType::xlsb, "xlsb"},
    NamedType{"xl/workbook.xml", FileType::xlsx, "xlsx"},
    NamedType{"ppt/presentation.xml", FileType::pptx, "pptx"},
    NamedType{"word/", FileType::docx, "docx"},
    NamedType{"xl/", FileType::xlsx, "xlsx"},
    NamedType{"ppt/", FileType::pptx, "pptx"},
    NamedType{"fixeddocseq.fdseq", FileType::xps, "xps"},
    NamedType{"fixeddocumentsequence.fdseq", FileType::xps, "xps"},
};

constexpr std::array open_document_types{
    NamedType{"application/vnd.oasis.opendocument.text", FileType::odt, "odt"},
    NamedType{"application/vnd.oasis.opendocument.text-template", FileType::odt, "ott"},
    NamedType{"application/vnd.oasis.opendocument.text-master", FileType::odt, "odm"},
    NamedType{"application/vnd.oasis.opendocument.text-web", FileType::odt, "oth"},
    NamedType{"application/vnd.oasis.opendocument.spreadsheet", FileType::ods, "ods"},
    NamedType{"application/vnd.oasis.opendocument.spreadsheet-template", FileType::ods, "ots"},
    NamedType{"application/vnd.oasis.opendocument.presentation", FileType::odp, "odp"},
    NamedType{"application/vnd.oasis.opendocument.presentation-template", FileType::odp, "otp"},
    NamedType{"application/vnd.oasis.opendocument.graphics", FileType::odg, "odg"},
    NamedType{"application/vnd.oasis.opendocument.graphics-template", FileType::odg, "otg"},
    NamedType{"application/vnd.sun.xml.writer", FileType::odt, "sxw"},
    NamedType{"application/vnd.sun.xml.writer.template", FileType::odt, "stw"},
    NamedType{"application/vnd.sun.xml.writer.global", FileType::odt, "sxg"},
    NamedType{"application/vnd.sun.xml.calc", FileType::ods, "sxc"},
    NamedType{"application/vnd.sun.xml.calc.template", FileType::ods, "stc"},
    NamedType{"application/vnd.sun.xml.impress", FileType::odp, "sxi"},
    NamedType{"application/vnd.sun.xml.impress.template", FileType::odp, "sti"},
    NamedType{"application/vnd.sun.xml.draw", FileType::odg, "sxd"},
    NamedType{"application/epub+zip", FileType::epub, "epub"},
};

// Value of an attribute within one tag, in lower case; empty where the tag has none.
std::string_view attribute(std::string_view tag, std::string_view name) {
  for (auto found = tag.find(name); found != std::string_view::npos;
       found = tag.find(name, found + 1)) {
    auto rest = tag.substr(found + name.size());
    auto const is_whole_name = found == 0 || tag[found - 1] <= ' ' || tag[found - 1] == ':';
    auto const equals = rest.find_first_not_of(" \t\r\n");
    if (!is_whole_name || equals == std::string_view::npos || rest[equals] != '=') {
      continue;
    }
    auto const quote = rest.find_first_of("\"'", equals);
    if (quote == std::string_view::npos) {
      return {};
    }
    auto const end = rest.find(rest[quote], quote + 1);
    return end == std::string_view::npos ? std::string_view{}
                                         : rest.substr(quote + 1, end - quote - 1);
  }
  return {};
}

// Calls `visit` with each tag of an XML text until it says true. A "<" within what looks like a tag
// begins another one: each byte is looked at in one tag only.
template <typename Visit>
void visit_tags(std::string_view xml, Visit visit) {
  for (auto open = xml.find('<'); open != std::string_view::npos; open = xml.find('<', open + 1)) {
    auto const close = xml.find_first_of("<>", open + 1);
    if (close == std::string_view::npos) {
      return;
    }
    if (xml[close] == '>' && visit(xml.substr(open + 1, close - open - 1))) {
      return;
    }
  }
}

// A description part in lower-case UTF-8, whatever its encoding.
std::string description(ZipListing const& zip, std::string_view name) {
  auto const bytes = zip.content(name, description_limit);
  return bytes.empty() ? std::string{} : ascii_lower(morvabs::decode_text(bytes));
}

std::string main_part_name(std::string_view relationships) {
  std::string part;
  visit_tags(relationships, [&part](std::string_view tag) {
    if (attribute(tag, "type").ends_with("/officedocument")) {
      part = attribute(tag, "target");
    }
    return !part.empty();
  });
  return part.starts_with('/') || part.empty() ? part : "/" + part;
}

Recognition recognize_office(ZipListing const& zip) {
  auto const types = description(zip, "[Content_Types].xml");
  auto const relationships = description(zip, "_rels/.rels");
  auto const main_part = main_part_name(relationships);
  Recognition recognition;
  visit_tags(types, [&](std::string_view tag) {
    auto const content_type = attribute(tag, "contenttype");
    auto const* const known = std::find_if(
        office_types.begin(), office_types.end(),
        [content_type](NamedType const& type) { return content_type.ends_with(type.name); });
    if (known == office_types.end()) {
      return false;
    }
    // The first one counts unless the relationships name another part as the main one.
    auto const is_main = attribute(tag, "partname") == main_part;
    if (recognition.type == FileType::unknown || is_main) {
      recognition = {known->type, known->suffix};
    }
    return is_main;
  });
  // Its standardised form has the same content types.
  if (recognition.type == FileType::xps &&
      relationships.find("schemas.openxps.org") != std::string::npos) {
    recognition.suffix = "oxps";
  }
  if (recognition.type != FileType::unknown) {
    return recognition;
  }
  auto const* const known =
      std::find_if(office_parts.begin(), office_parts.end(),
                   [&zip](NamedType const& part) { return zip.has_below(part.name); });
  return known == office_parts.end() ? Recognition{} : Recognition{known->type, known->suffix};
}

Recognition recognize_media_type(std::string_view media_type) {
  auto const first = media_type.find_first_not_of(" \t\r\n\xef\xbb\xbf");
  auto const last = media_type.find_last_not_of(std::string_view(" \t\r\n\0", 5));
  if (first == std::string_view::npos || last == std::string_view::npos || last < first) {
    return {};
  }
  auto const trimmed = ascii_lower(media_type.substr(first, last - first + 1));
  auto const* const known =
      std::find_if(open_document_types.begin(), open_document_types.end(),
                   [&trimmed](NamedType const& type) { return type.name == trimmed; });
  return known == open_document_types.end() ? Recognition{}
                                            : Recognition{known->type, known->suffix};
}

// Whether the text of a document is encrypted, by its manifest: a picture or a script may be so
// without it.
bool has_encrypted_text(std::string_view manifest) {
  bool holds_text = false;
  bool is_encrypted = false;
  visit_tags(manifest, [&](std::string_view tag) {
    auto const name = tag.substr(0, tag.find_first_of(" \t\r\n"));
    if (name.ends_with("file-entry")) {
      auto const path = attribute(tag, "full-path");
      holds_text = path == "content.xml" || path == "encrypted-package";
    }
    is_encrypted = holds_text && name.find("encryption-data") != std::string_view::npos;
    return is_encrypted;
  });
  return is_encrypted;
}

Recognition recognize_open_document(ZipListing const& zip) {
  auto recognition = recognize_media_type(zip.content("mimetype", 256));
  if (recognition.type == FileType::epub) {
    return recognition;
  }
  auto const manifest = description(zip, "META-INF/manifest.xml");
  if (recognition.type == FileType::unknown) {
    visit_tags(manifest, [&recognition](std::string_view tag) {
      if (attribute(tag, "full-path") == "/") {
        recognition = recognize_media_type(attribute(tag, "media-type"));
      }
      return recognition.type != FileType::unknown;
    });
  }
  if (recognition.type == FileType::unknown && zip.has("content.xml") &&
      (zip.has("META-INF/manifest.xml") || zip.has("styles.xml"))) {
    recognition = {FileType::odt, "odt"};
  }
  if (recognition.type != FileType::unknown) {
    recognition.encrypted = has_encrypted_text(manifest);
  }
  return recognition;
}

Recognition recognize_by_entries(ZipListing const& zip) {
  if (zip.has("OFD.xml")) {
    return {FileType::ofd, "ofd"};
  }
  if (zip.has("META-INF/encryptions.xml") || zip.has("encryptions.xml")) {
    return {FileType::ofd, "ofd", true};
  }
  if (zip.has("META-INF/container.xml")) {
    return {FileType::epub, "epub"};
  }
  if (zip.has("AndroidManifest.xml")) {
    return {FileType::zip, "apk"};
  }
  return {FileType::zip, zip.has("META-INF/MANIFEST.MF") ? "jar" : "zip"};
}

bool is_locked(ZipListing const& zip) {
  constexpr std::array<std::string_view, 6> main_parts{
      "word/document.xml", "xl/workbook.xml", "ppt/presentation.xml",
      "content.xml",       "OFD.xml",         "META-INF/container.xml"};
  return std::any_of(main_parts.begin(), main_parts.end(),
                     [&zip](std::string_view part) { return zip.is_encrypted(part); });
}

}  // namespace

bool is_zip(std::string_view head) {
  return head.starts_with("PK\3\4") || head.starts_with("PK\5\6") ||
         head.starts_with("PK\7\10PK\3\4");
}

Recognition office_type_by_name(std::string_view suffix) {
  auto const* const known =
      std::find_if(office_types.begin(), office_types.end(),
                   [suffix](NamedType const& type) { return suffix == type.suffix; });
  return known == office_types.end() ? Recognition{} : Recognition{known->type, known->suffix};
}

Recognition recognize_zip(Orlec::Reader const& reader) {
  ZipListing const zip(reader);
  for (auto const recognize_by :
       {recognize_open_document, recognize_office, recognize_by_entries}) {
    if (auto recognition = recognize_by(zip); recognition.type != FileType::unknown) {
      // Of a package that is cut short, nothing but its description may be left.
      if (recognition.type == FileType::zip && zip.has("[Content_Types].xml")) {
        auto const named = office_type_by_name(name_suffix(reader));
        recognition = named.type == FileType::unknown ? recognition : named;
      }
      // Of an archive, members that are open can be read beside one that is not.
      recognition.encrypted =
          recognition.encrypted || (recognition.type != FileType::zip && is_locked(zip));
      return recognition;
    }
  }
  return {FileType::zip, "zip"};
}

}  // namespace tessarine
