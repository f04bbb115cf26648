#pragma once

#include <string>
#include <string_view>

#include "hostkit/tessarine/memory_reader.h"
#include "hostkit/tessarine/ole_builder.h"
#include "hostkit/tessarine/zip_builder.h"

#include "tessarine/file_type.h"

namespace test {

inline tessarine::Recognition recognize(std::string const& bytes, char const* name = "file") {
  return tessarine::recognize(MemoryReader(bytes, name));
}

/// An Office package whose main part has that content type.
inline ZipBuilder office_package(std::string const& part, std::string const& content_type) {
  ZipBuilder zip;
  zip.add("[Content_Types].xml",
          "<Types><Default Extension=\"rels\" ContentType=\"application/"
          "vnd.openxmlformats-package.relationships+xml\"/><Override PartName=\"/" +
              part + "\" ContentType=\"" + content_type + "\"/></Types>");
  zip.add("_rels/.rels",
          "<Relationships><Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/"
          "officeDocument/2006/relationships/officeDocument\" Target=\"" +
              part + "\"/></Relationships>");
  zip.add(part, "<main/>");
  return zip;
}

inline std::string const word_type =
    "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";

inline ZipBuilder open_document(std::string const& media_type) {
  ZipBuilder zip;
  zip.add("mimetype", media_type);
  zip.add("content.xml", "<office:document-content/>");
  zip.add("META-INF/manifest.xml", "<manifest:manifest/>");
  return zip;
}

/// Beginning of a Word stream with the given flags.
inline std::string word_stream(unsigned flags) {
  return little(0xa5ec, 2) + little(0xc1, 2) + little(0, 6) + little(flags, 2) +
         std::string(8000, '\0');
}

inline std::string workbook_record(unsigned number, std::string const& content) {
  return little(number, 2) + little(content.size(), 2) + content;
}

inline std::string workbook_stream(bool with_password) {
  auto const begin = workbook_record(0x809, little(0x600, 2) + little(5, 2) + little(0, 12));
  auto const password = workbook_record(0x2f, std::string(54, 'x'));
  return begin + (with_password ? password : "") + workbook_record(0x0a, "") +
         std::string(5000, '\0');
}

inline std::string current_user(bool encrypted) {
  return little(0, 2) + little(0xff6, 2) + little(20, 4) + little(20, 4) +
         little(encrypted ? 0xf3d1c4dfU : 0xe391c05fU, 4) + little(0, 20);
}

}  // namespace test
