#pragma once

#include <map>

#include <Object.h>
#include <PDFDoc.h>

#include "morvakit/pdf/pdf_component.h"

namespace morvakit {

/// Whether the library can take the form fields of a document. It follows a field's parents by
/// calling itself, so that a chain of them as long as a file can make it would exhaust the stack.
class PdfFormCheck {
 public:
  PdfFormCheck(PDFDoc& document, PdfSink& sink) : document_(document), sink_(sink) {}

  /// All fields of the form.
  bool is_form_sound();
  /// What may be a field among the annotations of a page.
  bool are_sound(Object const& annotations);

 private:
  bool is_sound(Object const& field);

  PDFDoc& document_;
  PdfSink& sink_;
  /// Numbers of objects, and how many parents are above each.
  std::map<int, int> depths_;
};

}  // namespace morvakit
