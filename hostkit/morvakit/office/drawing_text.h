#pragma once

#include <string>
#include <string_view>

#include "morvakit/office/open_package.h"
#include "morvakit/sheet/number_format.h"
#include "morvakit/text_flow.h"
#include "morvakit/xml/tagged_handler.h"

namespace morvakit {

enum class DrawingTag {
  other,
  run_text,
  paragraph,
  line_break,
  cell,
  row,
  shape,
  placeholder,
  object_name,
  cached_strings,
  cached_numbers,
  cached_value,
  number_format,
  comment_text,
};

/// What a part with drawings is, which decides where its text goes.
enum class DrawingRole {
  body,      ///< all text to the kind given; on slides, dates, footers and numbers to headers and
             ///< footers
  backdrop,  ///< a master or layout: only text that is no placeholder, which is what slides show
};

/// Reads the text of shapes, tables, diagrams, charts and slides.
class DrawingHandler final : public TaggedHandler<DrawingTag> {
 public:
  DrawingHandler(TextFlow& flow, Orlec::ParseTextType kind, DrawingRole role = DrawingRole::body);

 private:
  bool open(DrawingTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(DrawingTag tag) override;
  void text(std::string_view utf8) override;
  void enter_placeholder(std::string_view type);
  void close_value();

  TextFlow& flow_;
  Orlec::ParseTextType base_kind_;
  DrawingRole role_;
  Orlec::ParseTextType kind_;
  bool hidden_ = false;
  int text_depth_ = 0;
  int strings_depth_ = 0;
  int numbers_depth_ = 0;
  /// What the numbers of a chart stand for, and the one that is being read.
  NumberKind number_kind_ = NumberKind::number;
  std::string piece_;
  bool in_piece_ = false;
};

/// Reads the diagrams and charts among a part's relationships into the main text.
void read_graphics(OpenPackage& package, std::vector<Relationship> const& relationships,
                   TextFlow& flow);

}  // namespace morvakit
