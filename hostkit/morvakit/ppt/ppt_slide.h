#pragma once

#include <cstdint>
#include <span>
#include <unordered_set>
#include <vector>

#include "morvakit/ppt/ppt_records.h"
#include "morvakit/ppt/ppt_text.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// What a sheet of a presentation is, which decides where its text goes.
enum class PptSheetRole {
  slide,   ///< main text
  notes,   ///< the speaker's notes on a slide
  master,  ///< only what is no placeholder, which is what slides show: headers and footers
};

/// Reads what stands on a slide, a page of notes or a master: the shapes in the order in which they
/// are drawn, the comments, headers and footers.
class PptSheetHandler final : public PptHandler {
 public:
  /// `outline`: the texts of the sheet that stand in the presentation's outline. Placeholders refer
  /// to them by their number.
  PptSheetHandler(PptStream& stream, TextFlow& flow, PptSheetRole role,
                  std::span<PptText const> outline);

  /// To be called when all has been read: delivers the texts of the outline that no shape has.
  void finish();

  /// Identifier of the master behind a slide, and of the notes on it; 0 where there are none.
  std::uint32_t master() const { return master_; }
  std::uint32_t notes() const { return notes_; }

 private:
  struct Shape {
    bool is_deleted = false;
    bool is_group = false;
    bool is_placeholder = false;
    bool is_footer = false;
    std::uint32_t top = 0;
    std::string word_art;
    std::vector<PptText> texts;
    std::vector<std::uint32_t> outline_numbers;
  };
  struct Group {
    bool is_table = false;
    bool has_cells = false;
    std::uint32_t row_top = 0;
  };

  bool open(PptRecord const& record) override;
  void close(PptRecord const& record) override;
  void atom(PptRecord const& record) override;
  void take_shape_atom(PptRecord const& record);
  void take_properties(PptRecord const& record);
  void take_string(PptRecord const& record);
  void deliver_shape();
  void deliver_shown();
  void separate_cell(Orlec::ParseTextType kind);
  void deliver_outline(std::uint32_t number, Orlec::ParseTextType kind);
  Orlec::ParseTextType kind_of_shape() const;

  PptStream& stream_;
  TextFlow& flow_;
  PptSheetRole role_;
  std::span<PptText const> outline_;
  std::vector<bool> is_delivered_;
  std::unordered_set<std::size_t> digests_;
  std::uint32_t master_ = 0;
  std::uint32_t notes_ = 0;
  std::vector<Group> groups_;
  Shape shape_;
  int shape_depth_ = 0;
  bool in_comment_ = false;
  bool in_headers_ = false;
  bool has_comment_tags_ = false;
};

}  // namespace morvakit
