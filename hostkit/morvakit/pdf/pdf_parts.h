#pragma once

#include <string>
#include <vector>

#include <Object.h>
#include <PDFDoc.h>

#include "morvakit/pdf/pdf_component.h"
#include "morvakit/pdf/pdf_objects.h"

namespace morvakit {

/// What a document holds beside its pages.
class PdfParts {
 public:
  PdfParts(PDFDoc& document, PdfSink& sink);

  /// Delivers the XFA form and the metadata where there are any.
  void read_form();
  void read_metadata();

  /// Remembers a file that is attached: its specification as it stands, a reference or not. What
  /// the document says about it is delivered as other text.
  void add_file(Object const& specification);
  /// The files that the catalog lists.
  void add_listed_files();
  /// Delivers the files, each once.
  void read_files();

 private:
  void add_tree(Object const& root);
  void add_names(Object const& node);
  bool read_stream(Object const& stream);

  PDFDoc& document_;
  PdfSink& sink_;
  Object catalog_;
  std::vector<Object> file_specifications_;
  PdfObjectsMet files_met_;
  PdfObjectsMet streams_met_;
};

}  // namespace morvakit
