#pragma once

#include <vector>

#include <Object.h>
#include <PDFDoc.h>

#include "morvakit/pdf/pdf_component.h"
#include "morvakit/pdf/pdf_objects.h"

namespace morvakit {

/// Goes through what pages are drawn with before they are: counts pictures, and finds what the
/// library could not take. It follows the maps that a font's map of characters is based on by
/// calling itself, so that a chain of them as long as a file can make it would exhaust the stack.
class PdfResources {
 public:
  PdfResources(PDFDoc& document, PdfSink& sink) : document_(document), sink_(sink) {}

  /// What the fields of the form are drawn with, a page, or the annotations of one. False, with the
  /// reading ended, where there is what the library cannot take, or reading is to stop.
  bool take_form();
  bool take(Object const& resources);
  bool take_annotations(Object const& annotations);

 private:
  bool take_open();
  void take_pictures(Object const& pictures);
  bool take_fonts(Object const& fonts);
  bool take_font(Object const& font);
  bool take_states(Object const& states);
  void open_form(Object const& form);

  PDFDoc& document_;
  PdfSink& sink_;
  PdfObjectsMet met_;
  /// Resources that are still to be gone through.
  std::vector<Object> open_;
};

}  // namespace morvakit
