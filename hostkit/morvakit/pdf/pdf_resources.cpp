#include "morvakit/pdf/pdf_resources.h"

#include <utility>

#include <Dict.h>
#include <Stream.h>
#include <XRef.h>

namespace morvakit {

namespace {

Object value_of(Object const& dictionary, char const* key) {
  return dictionary.isDict() ? dictionary.dictLookup(key) : Object(objNull);
}

Object reference_of(Object const& dictionary, char const* key) {
  return dictionary.isDict() ? dictionary.dictLookupNF(key).copy() : Object(objNull);
}

}  // namespace

bool PdfResources::take_form() {
  auto const form = value_of(document_.getXRef()->getCatalog(), "AcroForm");
  return !form.isDict() || take(form.dictLookup("DR"));
}

bool PdfResources::take(Object const& resources) {
  open_.push_back({resources.copy(), true});
  return take_open();
}

bool PdfResources::take_content(Object const& reference) {
  auto const content = fetch(reference);
  for (int i = 0; content.isArray() && i < content.arrayGetLength(); ++i) {
    if (!take_stream(content.arrayGetNF(i))) {
      return false;
    }
  }
  return content.isArray() || take_stream(reference);
}

bool PdfResources::take_stream(Object const& reference) {
  return !streams_.is_new(reference) || bounds_.is_bounded(fetch(reference));
}

bool PdfResources::take_annotations(Object const& annotations) {
  for (int i = 0; annotations.isArray() && i < annotations.arrayGetLength(); ++i) {
    auto const looks = value_of(annotations.arrayGet(i), "AP");
    if (!open_form(reference_of(looks, "N"))) {
      return false;
    }
    auto const look = value_of(looks, "N");
    for (int state = 0; look.isDict() && state < look.dictGetLength(); ++state) {
      if (!open_form(look.dictGetValNF(state))) {
        return false;
      }
    }
    if (!take_open()) {
      return false;
    }
  }
  return true;
}

bool PdfResources::take_open() {
  while (!open_.empty() && sink_.keep_going()) {
    auto const [reference, has_pictures_to_count] = std::move(open_.back());
    open_.pop_back();
    Open const next{fetch(reference), has_pictures_to_count};
    if (next.resources.isDict() && !take_next(next)) {
      return false;
    }
  }
  return sink_.keep_going();
}

bool PdfResources::take_next(Open const& open) {
  auto const& resources = open.resources;
  return take_pictures(resources.dictLookup("XObject"), open.has_pictures_to_count) &&
         take_fonts(resources.dictLookup("Font")) &&
         take_states(resources.dictLookup("ExtGState")) &&
         take_patterns(resources.dictLookup("Pattern")) &&
         take_patterns(resources.dictLookup("Shading")) &&
         take_colors(resources.dictLookup("ColorSpace"));
}

void PdfResources::open_resources(Object const& reference, bool has_pictures_to_count) {
  auto& met = has_pictures_to_count ? counted_ : uncounted_;
  if (met.resources.is_new(reference)) {
    open_.push_back({reference.copy(), has_pictures_to_count});
  }
}

bool PdfResources::open_form(Object const& reference, bool has_pictures_to_count) {
  auto& met = has_pictures_to_count ? counted_ : uncounted_;
  if (!met.forms.is_new(reference)) {
    return true;
  }
  auto const form = fetch(reference);
  if (form.isStream()) {
    open_resources(form.streamGetDict()->lookupNF("Resources"), has_pictures_to_count);
  }
  return bounds_.is_bounded(form);
}

bool PdfResources::take_pictures(Object const& pictures, bool is_counted) {
  auto& met = is_counted ? counted_ : uncounted_;
  for (int i = 0; pictures.isDict() && i < pictures.dictGetLength() && sink_.keep_going(); ++i) {
    auto const& reference = pictures.dictGetValNF(i);
    if (!reference.isRef() || !met.pictures.is_new(reference)) {
      continue;
    }
    auto const picture = pictures.dictGetVal(i);
    auto const subtype =
        picture.isStream() ? picture.streamGetDict()->lookup("Subtype") : Object(objNull);
    if (subtype.isName("Image")) {
      sink_.count_images(is_counted ? 1 : 0);
    } else if (subtype.isName("Form") && !open_form(reference, is_counted)) {
      return false;
    }
  }
  return true;
}

bool PdfResources::take_fonts(Object const& fonts) {
  for (int i = 0; fonts.isDict() && i < fonts.dictGetLength() && sink_.keep_going(); ++i) {
    if (fonts_.is_new(fonts.dictGetValNF(i)) && !take_font(fonts.dictGetVal(i))) {
      return false;
    }
  }
  return true;
}

bool PdfResources::take_font(Object const& font) {
  auto const descendants = value_of(font, "DescendantFonts");
  bool const has_descendant = descendants.isArray() && descendants.arrayGetLength() > 0;
  return take_maps(font) && take_font_program(font) && take_drawn_characters(font) &&
         (!has_descendant || take_font_program(descendants.arrayGet(0)));
}

bool PdfResources::take_maps(Object const& font) {
  constexpr int deepest = 100;
  auto map = value_of(font, "Encoding");
  for (int depth = 0; map.isStream(); ++depth) {
    if (depth > deepest) {
      sink_.end(Orlec::ParseOutcome::limit_reached,
                "maps of characters based on each other over 100 deep");
      return false;
    }
    if (!bounds_.is_sound_map(map)) {
      return false;
    }
    auto base = map.streamGetDict()->lookup("UseCMap");
    map = std::move(base);
  }
  return bounds_.is_sound_map(value_of(font, "ToUnicode"));
}

bool PdfResources::take_font_program(Object const& font) {
  auto const descriptor = value_of(font, "FontDescriptor");
  return take_stream(reference_of(font, "CIDToGIDMap")) &&
         take_stream(reference_of(descriptor, "FontFile")) &&
         take_stream(reference_of(descriptor, "FontFile2")) &&
         take_stream(reference_of(descriptor, "FontFile3"));
}

/// The characters of a font may be drawn as a page is.
bool PdfResources::take_drawn_characters(Object const& font) {
  auto const characters = value_of(font, "CharProcs");
  for (int i = 0; characters.isDict() && i < characters.dictGetLength() && sink_.keep_going();
       ++i) {
    if (!take_stream(characters.dictGetValNF(i))) {
      return false;
    }
  }
  if (characters.isDict()) {
    open_resources(font.dictLookupNF("Resources"), false);
  }
  return true;
}

bool PdfResources::take_states(Object const& states) {
  for (int i = 0; states.isDict() && i < states.dictGetLength() && sink_.keep_going(); ++i) {
    if (!states_.is_new(states.dictGetValNF(i))) {
      continue;
    }
    auto const state = states.dictGetVal(i);
    auto const font = value_of(state, "Font");
    bool const has_font = font.isArray() && font.arrayGetLength() > 0;
    if (has_font && fonts_.is_new(font.arrayGetNF(0)) && !take_font(font.arrayGet(0))) {
      return false;
    }
    if (!open_form(reference_of(value_of(state, "SMask"), "G"))) {
      return false;
    }
  }
  return true;
}

/// Patterns are drawn as a page is, or by a shading; shadings stand for themselves too.
bool PdfResources::take_patterns(Object const& patterns) {
  for (int i = 0; patterns.isDict() && i < patterns.dictGetLength() && sink_.keep_going(); ++i) {
    auto const& reference = patterns.dictGetValNF(i);
    if (!patterns_.is_new(reference)) {
      continue;
    }
    auto const pattern = patterns.dictGetVal(i);
    bool const is_shading = pattern.isStream() && pattern.streamGetDict()->hasKey("ShadingType");
    if (is_shading ? !bounds_.is_sound_shading(pattern)
                   : !open_form(reference, false) ||
                         !bounds_.is_sound_shading(value_of(pattern, "Shading"))) {
      return false;
    }
  }
  return true;
}

/// A color space is an array, of which some hold a stream.
bool PdfResources::take_colors(Object const& spaces) {
  for (int i = 0; spaces.isDict() && i < spaces.dictGetLength() && sink_.keep_going(); ++i) {
    auto const space =
        colors_.is_new(spaces.dictGetValNF(i)) ? spaces.dictGetVal(i) : Object(objNull);
    for (int part = 1; space.isArray() && part < space.arrayGetLength(); ++part) {
      if (!take_stream(space.arrayGetNF(part))) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace morvakit
