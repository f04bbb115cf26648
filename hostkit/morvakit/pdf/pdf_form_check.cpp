#include "morvakit/pdf/pdf_form_check.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <Dict.h>
#include <XRef.h>

#include "morvakit/pdf/pdf_objects.h"

namespace morvakit {

bool PdfFormCheck::is_sound(Object const& field) {
  constexpr int deepest = 500;
  std::vector<int> chain;
  int above = 0;
  auto node = field.copy();
  while (node.isDict()) {
    auto const& parent = node.getDict()->lookupNF("Parent");
    if (parent.isRef()) {
      auto const known = depths_.find(parent.getRefNum());
      if (known != depths_.end()) {
        above = known->second + 1;
        break;
      }
      chain.push_back(parent.getRefNum());
    }
    if (static_cast<int>(chain.size()) > deepest) {
      return false;
    }
    auto next = node.dictLookup("Parent");
    node = std::move(next);
  }
  std::for_each(chain.rbegin(), chain.rend(),
                [&](int number) { depths_.emplace(number, above++); });
  return above <= deepest;
}

bool PdfFormCheck::are_sound(Object const& annotations) {
  for (int i = 0; annotations.isArray() && i < annotations.arrayGetLength(); ++i) {
    auto const annotation = annotations.arrayGet(i);
    bool const is_field = annotation.isDict() && annotation.dictLookup("Subtype").isName("Widget");
    if (!sink_.keep_going() || (is_field && !is_sound(annotation))) {
      return false;
    }
  }
  return true;
}

bool PdfFormCheck::is_form_sound() {
  auto const catalog = document_.getXRef()->getCatalog();
  auto const form = catalog.isDict() ? catalog.dictLookup("AcroForm") : Object(objNull);
  auto fields = form.isDict() ? form.dictLookup("Fields") : Object(objNull);
  PdfObjectsMet met;
  std::vector<Object> open;
  open.push_back(std::move(fields));
  while (!open.empty()) {
    auto const siblings = std::move(open.back());
    open.pop_back();
    for (int i = 0; siblings.isArray() && i < siblings.arrayGetLength(); ++i) {
      if (!met.is_new(siblings.arrayGetNF(i))) {
        continue;
      }
      auto const field = siblings.arrayGet(i);
      if (!sink_.keep_going() || !is_sound(field)) {
        return false;
      }
      if (field.isDict()) {
        open.push_back(field.dictLookup("Kids"));
      }
    }
  }
  return true;
}

}  // namespace morvakit
