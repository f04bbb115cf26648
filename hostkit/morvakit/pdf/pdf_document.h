#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include <Annot.h>
#include <Form.h>
#include <Outline.h>
#include <PDFDoc.h>
#include <Page.h>

#include "morvakit/pdf/pdf_component.h"
#include "morvakit/pdf/pdf_form_check.h"
#include "morvakit/pdf/pdf_parts.h"
#include "morvakit/pdf/pdf_resources.h"

namespace morvakit {

/// Reads an open document into a sink.
class PdfDocumentText {
 public:
  PdfDocumentText(PDFDoc& document, PdfSink& sink)
      : document_(document),
        sink_(sink),
        parts_(document, sink),
        form_check_(document, sink),
        resources_(document, sink) {}

  void read();

  bool has_main_text() const { return has_main_text_; }
  bool has_page() const { return has_page_; }

 private:
  void add_line(Orlec::ParseTextType type, std::string const& text);
  bool keep_going() { return going_ && sink_.keep_going(); }

  void read_properties();
  void read_page(int number);
  void check_fields(bool are_sound);
  bool draw(Page& page, bool in_reading_order);
  void read_annotations(Object const& annotations);
  void read_annotation(Object const& annotation);
  void read_link(Object const& annotation);
  void read_widgets(Page& page);
  void read_caption(AnnotAppearanceCharacs const& look);
  void read_other_fields();
  void read_value(FormField& field);
  void read_choice(Dict& field);
  void read_outline(std::vector<OutlineItem*> const* items, int depth);

  static void take_output(void* self, char const* text, int length);

  PDFDoc& document_;
  PdfSink& sink_;
  PdfParts parts_;
  PdfFormCheck form_check_;
  PdfResources resources_;
  std::string page_text_;
  std::unordered_set<FormField const*> fields_on_pages_;
  bool going_ = true;
  bool has_sound_fields_ = true;
  bool has_main_text_ = false;
  bool has_page_ = false;
};

}  // namespace morvakit
