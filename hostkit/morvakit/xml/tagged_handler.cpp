#include "morvakit/xml/tagged_handler.h"

#include <algorithm>
#include <array>

namespace morvakit {

namespace {

constexpr std::string_view compatibility =
    "http://schemas.openxmlformats.org/markup-compatibility/2006";

/// The usual prefixes of the extensions whose text is read here.
constexpr std::array<std::string_view, 34> understood_prefixes{
    "a14",   "a16", "am3d", "aink", "c14",  "c15", "c16",    "cx",  "cx1",   "cx2",  "cx4", "dgm",
    "dgm14", "dsp", "p14",  "p15",  "p159", "v2",  "w14",    "w15", "w16",   "wp14", "wpc", "wpg",
    "wpi",   "wps", "x14",  "x15",  "x16",  "xr",  "w16cex", "sle", "sle15", "ma14"};

bool is_understood(std::string_view prefix) {
  return std::find(understood_prefixes.begin(), understood_prefixes.end(), prefix) !=
         understood_prefixes.end();
}

/// `prefixes`: names with blanks between them, all of which have to be understood.
bool are_understood(std::string_view prefixes) {
  constexpr std::string_view blanks = " \t\r\n";
  while (true) {
    auto const start = prefixes.find_first_not_of(blanks);
    if (start == std::string_view::npos) {
      return true;
    }
    prefixes.remove_prefix(start);
    auto const length = std::min(prefixes.find_first_of(blanks), prefixes.size());
    if (!is_understood(prefixes.substr(0, length))) {
      return false;
    }
    prefixes.remove_prefix(length);
  }
}

}  // namespace

bool AlternateContent::owns(XmlName const& name) {
  return name.space == compatibility;
}

bool AlternateContent::enter(XmlName const& name, XmlAttributes const& attributes) {
  if (name.local == "AlternateContent") {
    taken_.push_back(false);
    return true;
  }
  bool const is_branch = name.local == "Choice" || name.local == "Fallback";
  if (!is_branch || taken_.empty()) {
    return true;
  }
  if (taken_.back() || (name.local == "Choice" && !are_understood(attributes.get("Requires")))) {
    return false;
  }
  taken_.back() = true;
  return true;
}

void AlternateContent::leave(XmlName const& name) {
  if (name.local == "AlternateContent") {
    taken_.pop_back();
  }
}

}  // namespace morvakit
