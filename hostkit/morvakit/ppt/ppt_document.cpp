#include "morvakit/ppt/ppt_document.h"

#include <algorithm>

namespace morvakit {

bool PptDocumentHandler::open(PptRecord const& record) {
  switch (record.type) {
    case ppt::tag_data:
      return false;
    case ppt::slide_list:
      list_ = std::min<std::size_t>(record.instance, list_count);
      return list_ != list_count;
    case ppt::headers_footers:
    case ppt::hyperlink:
    case ppt::ole_embedded:
      around_ = record.type;
      break;
    default:
      break;
  }
  return true;
}

void PptDocumentHandler::close(PptRecord const& record) {
  if (record.type == ppt::slide_list && list_ != list_count) {
    text_ends_[list_] = texts_.size();
    list_ = list_count;
  } else if (record.type == around_) {
    around_ = 0;
  }
}

void PptDocumentHandler::atom(PptRecord const& record) {
  switch (record.type) {
    case ppt::slide_persist:
      take_sheet(record);
      break;
    case ppt::ole_object_atom:
      take_object(record);
      break;
    case ppt::string:
      take_string(record);
      break;
    case ppt::stored_picture:
      count_picture(record);
      break;
    default:
      if (list_ != list_count && !lists_[list_].empty()) {
        collector_.take(record);
      }
      break;
  }
}

void PptDocumentHandler::take_sheet(PptRecord const& record) {
  constexpr std::int64_t place_of_identifier = 12;
  if (list_ != list_count && stream_.context().charge_memory(sizeof(PptListedSheet))) {
    lists_[list_].push_back(
        {stream_.number(record, 0), stream_.number(record, place_of_identifier), texts_.size()});
  }
}

void PptDocumentHandler::take_object(PptRecord const& record) {
  constexpr std::int64_t place_of_object = 16;
  if (around_ == ppt::ole_embedded && stream_.context().charge_memory(sizeof(PptListedObject))) {
    objects_.push_back({stream_.number(record, place_of_object), {}});
  }
}

/// Strings have no type of their own: what they are, tells their number and the record around them.
void PptDocumentHandler::take_string(PptRecord const& record) {
  constexpr std::uint16_t name_of_object = 1;
  constexpr std::uint16_t target_of_link = 1;
  constexpr std::int64_t longest_name = 256;
  if (around_ == ppt::headers_footers) {
    deliver_text(stream_, {record, {}}, Orlec::ParseTextType_hf, flow_);
  } else if (around_ == ppt::hyperlink && record.instance == target_of_link) {
    deliver_text(stream_, {record, {}}, Orlec::ParseTextType_other, flow_);
  } else if (around_ == ppt::ole_embedded && record.instance == name_of_object &&
             !objects_.empty() && objects_.back().name.empty()) {
    objects_.back().name = short_text(stream_.content(record, 0, longest_name));
  }
}

void PptDocumentHandler::count_picture(PptRecord const& record) {
  constexpr std::int64_t place_of_uses = 24;
  stream_.context().count_images(stream_.number(record, place_of_uses) != 0 ? 1 : 0);
}

std::span<PptText const> PptDocumentHandler::outline(List list, std::size_t index) const {
  auto const& sheets = lists_[list];
  auto const first = sheets[index].first_text;
  auto const end =
      index + 1 < sheets.size() ? sheets[index + 1].first_text : std::max(first, text_ends_[list]);
  return std::span(texts_).subspan(first, std::max(end, first) - first);
}

}  // namespace morvakit
