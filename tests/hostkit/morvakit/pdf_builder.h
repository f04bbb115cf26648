#pragma once

#include <string>
#include <vector>

namespace test {

/// Builds a PDF of hand-written objects; object 1 is the catalog.
class PdfBuilder {
 public:
  /// Adds an object and returns its reference, as "3 0 R".
  std::string add(std::string const& content) {
    objects_.push_back(content);
    return std::to_string(objects_.size()) + " 0 R";
  }
  std::string add_stream(std::string const& content, std::string const& entries = "") {
    return add("<</Length " + std::to_string(content.size()) + entries + ">>stream\n" + content +
               "\nendstream");
  }

  std::string bytes(std::string const& trailer_entries = "") const {
    std::string file = "%PDF-1.6\n";
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < objects_.size(); ++i) {
      offsets.push_back(file.size());
      file += std::to_string(i + 1) + " 0 obj\n" + objects_[i] + "\nendobj\n";
    }
    auto const table = file.size();
    file += "xref\n0 " + std::to_string(objects_.size() + 1) + "\n0000000000 65535 f \n";
    for (auto const offset : offsets) {
      auto const digits = std::to_string(offset);
      file += std::string(10 - digits.size(), '0') + digits + " 00000 n \n";
    }
    return file + "trailer\n<</Size " + std::to_string(objects_.size() + 1) + "/Root 1 0 R" +
           trailer_entries + ">>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
  }

 private:
  std::vector<std::string> objects_;
};

inline char const* const helvetica =
    "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding/WinAnsiEncoding>>";

/// A document of one page. Objects 1 to 5 are catalog, pages, page, content and font; what
/// `catalog` and `page` add to the first and third may refer to the objects that follow, from 6 on.
inline PdfBuilder one_page(std::string const& content, std::string const& font = helvetica,
                           std::string const& catalog = "", std::string const& page = "") {
  PdfBuilder pdf;
  pdf.add("<</Type/Catalog/Pages 2 0 R" + catalog + ">>");
  pdf.add("<</Type/Pages/Kids[3 0 R]/Count 1>>");
  pdf.add(
      "<</Type/Page/Parent 2 0 R/MediaBox[0 0 600 800]/Contents 4 0 R/Resources<</Font<</F1 5 0 "
      "R>>>>" +
      page + ">>");
  pdf.add_stream(content);
  pdf.add(font);
  return pdf;
}

inline std::string show(std::string const& text, int y = 700) {
  return "BT /F1 12 Tf 50 " + std::to_string(y) + " Td (" + text + ") Tj ET\n";
}

}  // namespace test
