#include "hostkit/morvakit/office_documents.h"

#include <algorithm>

namespace {

std::string const transitional = "http://schemas.openxmlformats.org/";
std::string const strict_base = "http://purl.oclc.org/ooxml/";

std::string relation_space(bool strict) {
  return strict ? strict_base + "officeDocument/relationships"
                : transitional + "officeDocument/2006/relationships";
}

std::string common_spaces(bool strict) {
  return " xmlns:r=\"" + relation_space(strict) + "\" xmlns:a=\"" +
         (strict ? strict_base + "drawingml/main" : transitional + "drawingml/2006/main") +
         "\" xmlns:m=\"" + transitional + "officeDocument/2006/math\" xmlns:mc=\"" + transitional +
         "markup-compatibility/2006\" xmlns:c=\"" + transitional +
         "drawingml/2006/chart\" xmlns:v=\"urn:schemas-microsoft-com:vml\" xmlns:wp=\"" +
         transitional + "drawingml/2006/wordprocessingDrawing\"";
}

std::string element(std::string_view root, std::string const& spaces, std::string_view content) {
  auto const name = std::string(root.substr(0, root.find(' ')));
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><" + std::string(root) + spaces + ">" +
         std::string(content) + "</" + name + ">";
}

std::string relations_name(std::string const& source) {
  auto const slash = source.rfind('/');
  auto const cut = slash == std::string::npos ? 0 : slash + 1;
  return source.substr(0, cut) + "_rels/" + source.substr(cut) + ".rels";
}

}  // namespace

std::string word_part(std::string_view root, std::string_view content, bool strict) {
  return element(root,
                 " xmlns:w=\"" +
                     (strict ? strict_base + "wordprocessingml/main"
                             : transitional + "wordprocessingml/2006/main") +
                     "\"" + common_spaces(strict),
                 content);
}

std::string sheet_part(std::string_view root, std::string_view content) {
  return element(root,
                 " xmlns=\"" + transitional + "spreadsheetml/2006/main\" xmlns:xdr=\"" +
                     transitional + "drawingml/2006/spreadsheetDrawing\"" + common_spaces(false),
                 content);
}

std::string slide_part(std::string_view root, std::string_view content) {
  return element(root,
                 " xmlns:p=\"" + transitional + "presentationml/2006/main\"" + common_spaces(false),
                 content);
}

std::string odf_part(std::string_view root, std::string_view content) {
  std::string spaces;
  for (auto const* const name : {"office", "text", "table", "style", "form", "presentation"}) {
    spaces += std::string(" xmlns:") + name + "=\"urn:oasis:names:tc:opendocument:xmlns:" + name +
              ":1.0\"";
  }
  spaces += " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\"";
  spaces += " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\"";
  spaces += " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\"";
  spaces += " xmlns:xlink=\"http://www.w3.org/1999/xlink\"";
  spaces += " xmlns:dc=\"http://purl.org/dc/elements/1.1/\"";
  return element(root, spaces, content);
}

std::string shape(std::string_view text, std::string_view placeholder) {
  std::string const holder =
      placeholder.empty() ? "" : "<p:ph type=\"" + std::string(placeholder) + "\"/>";
  return "<p:sp><p:nvSpPr><p:cNvPr id=\"1\" name=\"n\"/><p:nvPr>" + holder +
         "</p:nvPr></p:nvSpPr><p:txBody><a:p><a:r><a:t>" + std::string(text) +
         "</a:t></a:r></a:p></p:txBody></p:sp>";
}

OfficeDocument OfficeDocument::word(std::string_view body, bool strict) {
  OfficeDocument document;
  document.strict_ = strict;
  document.types_ =
      "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml";
  document.relation("", "rId1", "officeDocument", "word/document.xml");
  document.part("word/document.xml",
                word_part("w:document", "<w:body>" + std::string(body) + "</w:body>", strict));
  return document;
}

OfficeDocument OfficeDocument::workbook(std::string_view sheet_data, std::string_view content) {
  OfficeDocument document;
  document.types_ = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml";
  document.relation("", "rId1", "officeDocument", "xl/workbook.xml");
  document.relation("xl/workbook.xml", "rId1", "worksheet", "worksheets/sheet1.xml");
  document.part("xl/workbook.xml", sheet_part("workbook", content));
  document.part("xl/worksheets/sheet1.xml", sheet_part("worksheet", sheet_data));
  return document;
}

OfficeDocument OfficeDocument::binary_workbook(std::string_view workbook, std::string_view sheet) {
  OfficeDocument document;
  document.types_ = "application/vnd.ms-excel.sheet.binary.macroEnabled.main";
  document.relation("", "rId1", "officeDocument", "xl/workbook.bin");
  document.relation("xl/workbook.bin", "rId1", "worksheet", "worksheets/sheet1.bin");
  document.part("xl/workbook.bin", workbook);
  document.part("xl/worksheets/sheet1.bin", sheet);
  return document;
}

OfficeDocument OfficeDocument::show(std::string_view shapes, std::string_view content) {
  OfficeDocument document;
  document.types_ =
      "application/vnd.openxmlformats-officedocument.presentationml.presentation.main+xml";
  document.relation("", "rId1", "officeDocument", "ppt/presentation.xml");
  document.relation("ppt/presentation.xml", "rId1", "slide", "slides/slide1.xml");
  document.part("ppt/presentation.xml", slide_part("p:presentation", content));
  document.part(
      "ppt/slides/slide1.xml",
      slide_part("p:sld", "<p:cSld><p:spTree>" + std::string(shapes) + "</p:spTree></p:cSld>"));
  return document;
}

OfficeDocument OfficeDocument::open_document(std::string_view kind, std::string_view body) {
  OfficeDocument document;
  document.is_package_ = false;
  document.part("mimetype", "application/vnd.oasis.opendocument." + std::string(kind));
  document.part("content.xml",
                odf_part("office:document-content",
                         "<office:body><office:" + std::string(kind) + ">" + std::string(body) +
                             "</office:" + std::string(kind) + "></office:body>"));
  return document;
}

OfficeDocument& OfficeDocument::part(std::string_view name, std::string_view content) {
  zip_.add(name, content);
  return *this;
}

OfficeDocument& OfficeDocument::part(std::string_view name, std::string_view content,
                                     ZipWriter::Options const& options) {
  zip_.add(name, content, options);
  return *this;
}

OfficeDocument& OfficeDocument::relation(std::string_view source, std::string_view id,
                                         std::string_view type, std::string_view target,
                                         bool external) {
  relations_.push_back(
      {std::string(source), "<Relationship Id=\"" + std::string(id) + "\" Type=\"" +
                                relation_space(strict_) + "/" + std::string(type) + "\" Target=\"" +
                                std::string(target) +
                                (external ? "\" TargetMode=\"External\"/>" : "\"/>")});
  return *this;
}

std::string OfficeDocument::bytes() const {
  ZipWriter zip = zip_;
  if (!is_package_) {
    return zip.bytes();
  }
  auto rest = relations_;
  while (!rest.empty()) {
    auto const source = rest.front().source;
    std::string xml;
    for (auto const& relation : rest) {
      xml += relation.source == source ? relation.xml : "";
    }
    rest.erase(std::remove_if(rest.begin(), rest.end(),
                              [&](Relation const& relation) { return relation.source == source; }),
               rest.end());
    zip.add(relations_name(source), "<Relationships xmlns=\"" + transitional +
                                        "package/2006/relationships\">" + xml + "</Relationships>");
  }
  auto const main = types_.find("wordprocessingml") != std::string::npos ? "/word/document.xml"
                    : types_.find("spreadsheetml") != std::string::npos  ? "/xl/workbook.xml"
                    : types_.find("sheet.binary") != std::string::npos   ? "/xl/workbook.bin"
                                                                         : "/ppt/presentation.xml";
  zip.add("[Content_Types].xml", "<Types xmlns=\"" + transitional +
                                     "package/2006/content-types\"><Default Extension=\"xml\" "
                                     "ContentType=\"application/xml\"/><Override PartName=\"" +
                                     main + "\" ContentType=\"" + types_ + "\"/></Types>");
  return zip.bytes();
}
