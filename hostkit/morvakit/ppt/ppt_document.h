#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "morvakit/ppt/ppt_records.h"
#include "morvakit/ppt/ppt_text.h"
#include "morvakit/text_flow.h"

namespace morvakit {

/// A slide, master or page of notes as the presentation's own record lists it.
struct PptListedSheet {
  /// Number of the object that it is.
  std::uint32_t object = 0;
  /// What other sheets refer to it by.
  std::uint32_t identifier = 0;
  /// Index of its first text in the outline.
  std::size_t first_text = 0;
};

/// An embedded object.
struct PptListedObject {
  std::uint32_t object = 0;
  std::string name;
};

/// Reads the presentation's own record, which holds no sheets but lists them, and has the text of
/// their outline. Delivers the targets of links, and the headers and footers that all slides have;
/// counts the pictures.
class PptDocumentHandler final : public PptHandler {
 public:
  enum List : std::size_t { slides, masters, notes, list_count };

  PptDocumentHandler(PptStream& stream, TextFlow& flow)
      : stream_(stream), flow_(flow), collector_(stream, texts_) {}

  std::vector<PptListedSheet> const& list(List list) const { return lists_[list]; }
  std::vector<PptListedObject> const& objects() const { return objects_; }
  /// The texts in the outline of the sheet with that index in its list.
  std::span<PptText const> outline(List list, std::size_t index) const;

 private:
  bool open(PptRecord const& record) override;
  void close(PptRecord const& record) override;
  void atom(PptRecord const& record) override;
  void take_sheet(PptRecord const& record);
  void take_object(PptRecord const& record);
  void take_string(PptRecord const& record);
  void count_picture(PptRecord const& record);

  PptStream& stream_;
  TextFlow& flow_;
  std::array<std::vector<PptListedSheet>, list_count> lists_;
  /// Where the texts of a list end.
  std::array<std::size_t, list_count> text_ends_{};
  std::vector<PptText> texts_;
  PptTextCollector collector_;
  std::vector<PptListedObject> objects_;
  std::size_t list_ = list_count;
  /// The record that strings belong to.
  std::uint16_t around_ = 0;
};

}  // namespace morvakit
