#include "morvakit/fixed/ofd_page.h"

#include <algorithm>

#include "host/utf8.h"

namespace morvakit {

namespace {

double number_of(std::string_view text, double otherwise) {
  return text.empty() ? otherwise : take_number(text);
}

}  // namespace

void OfdTextObjects::Distances::read(std::string_view list) {
  list_ = list;
  rest_ = list_;
  is_given_ = !list.empty();
  times_ = 0;
}

bool OfdTextObjects::Distances::take(double& distance) {
  while (times_ < 1) {
    auto const begin = rest_.find_first_not_of(" \t\r\n,");
    if (begin == std::string_view::npos) {
      return false;
    }
    rest_.remove_prefix(begin);
    bool const is_group = rest_.front() == 'g';
    rest_.remove_prefix(is_group ? 1 : 0);
    times_ = is_group ? take_number(rest_) : 1;
    repeated_ = take_number(rest_);
  }
  --times_;
  distance = repeated_;
  return true;
}

void OfdTextObjects::begin_object(XmlAttributes const& attributes) {
  auto boundary = attributes.get("Boundary");
  PageMatrix outer;
  outer.e = take_number(boundary);
  outer.f = take_number(boundary);
  matrix_ = read_matrix(attributes.get("CTM")).within(outer);
  size_ = number_of(attributes.get("Size"), 0);
  font_ = attributes.get("Font");
  object_place_ = {};
}

void OfdTextObjects::begin_code(XmlAttributes const& attributes) {
  object_place_ = {number_of(attributes.get("X"), object_place_.x),
                   number_of(attributes.get("Y"), object_place_.y)};
  place_ = object_place_;
  right_.read(attributes.get("DeltaX"));
  down_.read(attributes.get("DeltaY"));
  in_code_ = true;
  behind_line_end_ = false;
  is_continued_ = false;
}

/// Gives away the characters that are there with their places.
void OfdTextObjects::add_run() {
  bool const is_vertical = down_.is_given() && !right_.is_given();
  run_.clear();
  for (wchar_t const code : code_) {
    double x = 0;
    double y = 0;
    bool const is_first = run_.empty() && !is_continued_;
    bool const has_x = !is_first && right_.take(x);
    bool const has_y = !is_first && down_.take(y);
    place_ = {place_.x + x, place_.y + y};
    run_.push_back({code, matrix_.apply(place_), is_first || has_x || has_y});
  }
  is_continued_ = is_continued_ || !code_.empty();
  code_.clear();
  auto const em = is_vertical ? PagePoint{0, size_} : PagePoint{size_, 0};
  text_.add(run_, {matrix_.turn(em), font_});
}

void OfdTextObjects::start(XmlName const& name, XmlAttributes const& attributes) {
  if (name.local == "TextObject") {
    begin_object(attributes);
  } else if (name.local == "TextCode") {
    begin_code(attributes);
  }
}

void OfdTextObjects::end(XmlName const& name) {
  if (in_code_ && name.local == "TextCode") {
    add_run();
    in_code_ = false;
  }
}

/// A line end and the indentation behind it are the writing of the file, not of the page.
void OfdTextObjects::characters(std::string_view utf8) {
  constexpr std::size_t longest_run = 4096;
  constexpr std::string_view line_ends = "\r\n\t";
  while (in_code_ && !utf8.empty()) {
    if (behind_line_end_) {
      utf8.remove_prefix(std::min(utf8.find_first_not_of(" \r\n\t"), utf8.size()));
    }
    auto const length = std::min(utf8.find_first_of(line_ends), utf8.size());
    morvabs::append_wide(code_, utf8.substr(0, length));
    behind_line_end_ = length < utf8.size() || (behind_line_end_ && length == 0);
    utf8.remove_prefix(length);
    if (code_.size() >= longest_run) {
      add_run();
    }
  }
}

void OfdPageHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  if (name.local == "Template") {
    use_template_(attributes.get("TemplateID"), attributes.get("ZOrder") == "Foreground");
  } else if (name.local == "ImageObject") {
    flow_.context().count_images(1);
  } else if (name.local == "URI") {
    flow_.line(Orlec::ParseTextType_other, attributes.get("URI"));
  } else if (name.local == "PageRes" && flow_.context().charge_memory(sizeof(std::string))) {
    in_resource_ = true;
    resources_.emplace_back();
  }
  objects_.start(name, attributes);
}

void OfdPageHandler::end(XmlName const& name) {
  in_resource_ = in_resource_ && name.local != "PageRes";
  objects_.end(name);
}

void OfdPageHandler::characters(std::string_view utf8) {
  if (in_resource_ && flow_.context().charge_memory(utf8.size())) {
    resources_.back() += utf8;
  }
  objects_.characters(utf8);
}

OfdAnnotationHandler::OfdAnnotationHandler(TextFlow& flow)
    : flow_(flow),
      notes_(flow, Orlec::ParseTextType_comment),
      marks_(flow, Orlec::ParseTextType_other),
      objects_(&notes_) {}

void OfdAnnotationHandler::start(XmlName const& name, XmlAttributes const& attributes) {
  if (name.local == "Annot") {
    auto const type = attributes.get("Type");
    objects_ = type == "Stamp" || type == "Watermark" ? &marks_ : &notes_;
  } else if (name.local == "Remark" || name.local == "Parameter") {
    line_kind_ = name.local == "Remark" ? Orlec::ParseTextType_comment : Orlec::ParseTextType_other;
    in_line_ = true;
    flow_.separate(line_kind_, '\n');
  } else if (name.local == "ImageObject") {
    flow_.context().count_images(1);
  } else if (name.local == "URI") {
    flow_.line(Orlec::ParseTextType_other, attributes.get("URI"));
  }
  objects_->start(name, attributes);
}

void OfdAnnotationHandler::end(XmlName const& name) {
  if (in_line_ && (name.local == "Remark" || name.local == "Parameter")) {
    in_line_ = false;
    flow_.separate(line_kind_, '\n');
  }
  objects_->end(name);
  if (name.local == "Annot") {
    objects_->end_line();
  }
}

void OfdAnnotationHandler::characters(std::string_view utf8) {
  if (in_line_) {
    flow_.text(line_kind_, utf8);
  }
  objects_->characters(utf8);
}

}  // namespace morvakit
