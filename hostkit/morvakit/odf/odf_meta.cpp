#include "morvakit/odf/odf_meta.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace morvakit {

namespace {

constexpr std::int64_t most_pages = 10'000'000;

std::int64_t read_pages(std::string_view digits) {
  std::int64_t pages = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), pages);
  return std::clamp<std::int64_t>(pages, 0, most_pages);
}

}  // namespace

void OdfMetaHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  depth_ += depth_ > 0 || name.local == "meta" ? 1 : 0;
  if (depth_ == 0) {
    return;
  }
  if (name.local == "document-statistic") {
    pages_ = read_pages(attributes.get("page-count"));
  }
  static_cast<XmlHandler&>(properties_).start(name, attributes);
}

void OdfMetaHandler::end(XmlName const& name) {
  if (depth_ > 0) {
    --depth_;
    static_cast<XmlHandler&>(properties_).end(name);
  }
}

void OdfMetaHandler::characters(std::string_view utf8) {
  if (depth_ > 0) {
    static_cast<XmlHandler&>(properties_).characters(utf8);
  }
}

}  // namespace morvakit
