#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hostkit/morvakit/zip_writer.h"

/// Builds Office Open XML packages and OpenDocument files from pieces of XML.
class OfficeDocument {
 public:
  /// A package whose main part has that name and content type; `strict` takes the strict
  /// vocabulary.
  static OfficeDocument word(std::string_view body, bool strict = false);
  /// `content` of the workbook names the sheets; the first has that data.
  static OfficeDocument workbook(
      std::string_view sheet_data,
      std::string_view content = R"(<sheets><sheet name="First" r:id="rId1"/></sheets>)");
  /// The same of binary records, with the first sheet under the id "rId1".
  static OfficeDocument binary_workbook(std::string_view workbook, std::string_view sheet);
  /// `content` of the presentation names the slides; the first has those shapes.
  static OfficeDocument show(
      std::string_view shapes,
      std::string_view content = R"(<p:sldIdLst><p:sldId id="256" r:id="rId1"/></p:sldIdLst>)");
  /// `kind`: "text", "spreadsheet" or "presentation".
  static OfficeDocument open_document(std::string_view kind, std::string_view body);

  OfficeDocument& part(std::string_view name, std::string_view content);
  OfficeDocument& part(std::string_view name, std::string_view content,
                       ZipWriter::Options const& options);
  /// A relationship from the part of that name ("" for the package).
  OfficeDocument& relation(std::string_view source, std::string_view id, std::string_view type,
                           std::string_view target, bool external = false);
  std::string bytes() const;

 private:
  struct Relation {
    std::string source;
    std::string xml;
  };

  ZipWriter zip_;
  std::vector<Relation> relations_;
  std::string types_;
  bool is_package_ = true;
  bool strict_ = false;
};

/// Root elements with all namespaces that tests use.
std::string word_part(std::string_view root, std::string_view content, bool strict = false);
std::string sheet_part(std::string_view root, std::string_view content);
std::string slide_part(std::string_view root, std::string_view content);
std::string odf_part(std::string_view root, std::string_view content);
/// A slide's shape with one paragraph; `placeholder` empty for none.
std::string shape(std::string_view text, std::string_view placeholder = {});
