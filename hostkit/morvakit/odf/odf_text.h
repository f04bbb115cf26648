#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "morvakit/text_flow.h"
#include "morvakit/xml/tagged_handler.h"

namespace morvakit {

enum class OdfTag;

/// Which part of a document is read; `flat` for one that is a single file.
enum class OdfPart { content, styles, flat };

/// Reads the text of an OpenDocument, or of a document of its forerunner.
class OdfTextHandler final : public TaggedHandler<OdfTag> {
 public:
  OdfTextHandler(TextFlow& flow, OdfPart part, bool is_spreadsheet);

  /// Addresses of the objects that stand in the document and are kept elsewhere.
  std::vector<std::string> const& objects() const { return objects_; }
  /// Whether the bytes of a file stand within the document.
  bool has_data() const { return has_data_; }
  /// Slides or sheets.
  std::int64_t pages() const { return pages_; }

 private:
  bool open(OdfTag tag, XmlName const& name, XmlAttributes const& attributes) override;
  void close(OdfTag tag) override;
  void text(std::string_view utf8) override;

  Orlec::ParseTextType kind() const { return places_.back().kind; }
  bool is_shown() const;
  bool open_text(OdfTag tag, XmlAttributes const& attributes);
  bool open_block(OdfTag tag, XmlName const& name, XmlAttributes const& attributes);
  bool open_kind(OdfTag tag, XmlAttributes const& attributes);
  void begin_kind(Orlec::ParseTextType kind, bool characters_count = false);
  void end_kind();
  void blanks(std::string_view count);
  void open_sheet(XmlName const& name, XmlAttributes const& attributes);
  void cell_value(XmlAttributes const& attributes);
  void close_cell();
  void form_element(XmlAttributes const& attributes);
  void object(XmlAttributes const& attributes);
  void link(XmlAttributes const& attributes);
  void collapsed(std::string_view utf8);

  /// Where text goes, and what stands around it there: a note within a paragraph is a place of its
  /// own.
  struct Place {
    Orlec::ParseTextType kind = Orlec::ParseTextType_main;
    int text_depth = 0;  ///< open elements whose characters are text
    bool after_blank = true;
  };

  struct Cell {
    std::string value;  ///< what is written where the cell holds no paragraph
    bool has_paragraph = false;
  };

  TextFlow& flow_;
  OdfPart part_;
  bool is_spreadsheet_;
  std::vector<Place> places_;
  std::vector<Cell> cells_;
  std::vector<std::string> objects_;
  std::unordered_set<std::string> known_objects_;
  int master_depth_ = 0;
  int body_depth_ = 0;
  int sheet_depth_ = 0;
  int object_depth_ = 0;
  bool has_data_ = false;
  std::int64_t pages_ = 0;
};

}  // namespace morvakit
