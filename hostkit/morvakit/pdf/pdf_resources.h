#pragma once

#include <vector>

#include <Object.h>
#include <PDFDoc.h>

#include "morvakit/pdf/pdf_bounds.h"
#include "morvakit/pdf/pdf_component.h"
#include "morvakit/pdf/pdf_objects.h"

namespace morvakit {

/// Goes through what pages are drawn with before they are: counts pictures, and finds what the
/// library could not take: streams that unpack to too much, maps of too many characters. It follows
/// the maps that a font's map of characters is based on by calling itself, so that a chain of them
/// as long as a file can make it would exhaust the stack. What is referred to from several places
/// is gone through once.
class PdfResources {
 public:
  PdfResources(PDFDoc& document, PdfSink& sink) : document_(document), sink_(sink), bounds_(sink) {}

  /// What the fields of the form are drawn with, a page, or the annotations of one. False, with the
  /// reading ended, where there is what the library cannot take, or reading is to stop.
  bool take_form();
  bool take(Object const& resources);
  bool take_annotations(Object const& annotations);
  /// What draws a page, as it stands there: a reference to a stream, or to several, or several.
  bool take_content(Object const& reference);

 private:
  struct Open {
    Object resources;
    /// Those of a page or a form, but not of a pattern or a character.
    bool has_pictures_to_count;
  };

  /// What has been met is kept by what it was taken for: an object may stand where it is nothing to
  /// be looked into, and where it is, later. Pictures are counted once.
  struct Met {
    PdfObjectsMet resources;
    PdfObjectsMet pictures;
    PdfObjectsMet forms;
  };

  bool take_open();
  bool take_next(Open const& open);
  bool take_pictures(Object const& pictures, bool is_counted);
  bool take_fonts(Object const& fonts);
  bool take_font(Object const& font);
  bool take_font_program(Object const& font);
  bool take_maps(Object const& font);
  bool take_drawn_characters(Object const& font);
  bool take_states(Object const& states);
  bool take_patterns(Object const& patterns);
  bool take_colors(Object const& spaces);
  bool take_stream(Object const& reference);
  void open_resources(Object const& reference, bool has_pictures_to_count);
  bool open_form(Object const& reference, bool has_pictures_to_count = true);
  Object fetch(Object const& reference) const { return reference.fetch(document_.getXRef()); }

  PDFDoc& document_;
  PdfSink& sink_;
  PdfBounds bounds_;
  Met counted_;
  /// What is drawn by patterns and characters.
  Met uncounted_;
  PdfObjectsMet streams_;
  PdfObjectsMet fonts_;
  PdfObjectsMet states_;
  PdfObjectsMet patterns_;
  PdfObjectsMet colors_;
  /// Resources that are still to be gone through.
  std::vector<Open> open_;
};

}  // namespace morvakit
