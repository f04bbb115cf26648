#include "morvakit/pdf/pdf_resources.h"

#include <utility>

#include <Dict.h>
#include <Stream.h>
#include <XRef.h>

namespace morvakit {

bool PdfResources::take_form() {
  auto const catalog = document_.getXRef()->getCatalog();
  auto const form = catalog.isDict() ? catalog.dictLookup("AcroForm") : Object(objNull);
  return !form.isDict() || take(form.dictLookup("DR"));
}

bool PdfResources::take(Object const& resources) {
  open_.push_back(resources.copy());
  return take_open();
}

bool PdfResources::take_annotations(Object const& annotations) {
  for (int i = 0; annotations.isArray() && i < annotations.arrayGetLength(); ++i) {
    auto const annotation = annotations.arrayGet(i);
    auto const looks = annotation.isDict() ? annotation.dictLookup("AP") : Object(objNull);
    auto const look = looks.isDict() ? looks.dictLookup("N") : Object(objNull);
    open_form(look);
    for (int state = 0; look.isDict() && state < look.dictGetLength(); ++state) {
      open_form(look.dictGetVal(state));
    }
    if (!take_open()) {
      return false;
    }
  }
  return true;
}

bool PdfResources::take_open() {
  while (!open_.empty() && sink_.keep_going()) {
    auto const resources = std::move(open_.back());
    open_.pop_back();
    if (!resources.isDict()) {
      continue;
    }
    take_pictures(resources.dictLookup("XObject"));
    if (!take_fonts(resources.dictLookup("Font")) ||
        !take_states(resources.dictLookup("ExtGState"))) {
      return false;
    }
  }
  return sink_.keep_going();
}

void PdfResources::open_form(Object const& form) {
  if (form.isStream()) {
    open_.push_back(form.streamGetDict()->lookup("Resources"));
  }
}

/// A picture or form is gone through once in the document, by its reference.
void PdfResources::take_pictures(Object const& pictures) {
  for (int i = 0; pictures.isDict() && i < pictures.dictGetLength() && sink_.keep_going(); ++i) {
    auto const& reference = pictures.dictGetValNF(i);
    if (!reference.isRef() || !met_.is_new(reference)) {
      continue;
    }
    auto const picture = pictures.dictGetVal(i);
    auto const subtype =
        picture.isStream() ? picture.streamGetDict()->lookup("Subtype") : Object(objNull);
    if (subtype.isName("Image")) {
      sink_.count_images(1);
    } else if (subtype.isName("Form")) {
      open_form(picture);
    }
  }
}

bool PdfResources::take_fonts(Object const& fonts) {
  for (int i = 0; fonts.isDict() && i < fonts.dictGetLength() && sink_.keep_going(); ++i) {
    if (met_.is_new(fonts.dictGetValNF(i)) && !take_font(fonts.dictGetVal(i))) {
      return false;
    }
  }
  return true;
}

bool PdfResources::take_font(Object const& font) {
  constexpr int deepest = 100;
  auto map = font.isDict() ? font.dictLookup("Encoding") : Object(objNull);
  for (int depth = 0; map.isStream(); ++depth) {
    if (depth > deepest) {
      sink_.end(Orlec::ParseOutcome::limit_reached,
                "maps of characters based on each other over 100 deep");
      return false;
    }
    auto base = map.streamGetDict()->lookup("UseCMap");
    map = std::move(base);
  }
  return true;
}

bool PdfResources::take_states(Object const& states) {
  for (int i = 0; states.isDict() && i < states.dictGetLength() && sink_.keep_going(); ++i) {
    auto const& reference = states.dictGetValNF(i);
    if (!met_.is_new(reference)) {
      continue;
    }
    auto const state = states.dictGetVal(i);
    auto const font = state.isDict() ? state.dictLookup("Font") : Object(objNull);
    auto const mask = state.isDict() ? state.dictLookup("SMask") : Object(objNull);
    if (font.isArray() && font.arrayGetLength() > 0 && !take_font(font.arrayGet(0))) {
      return false;
    }
    if (mask.isDict() && met_.is_new(mask.getDict()->lookupNF("G"))) {
      open_form(mask.dictLookup("G"));
    }
  }
  return true;
}

}  // namespace morvakit
