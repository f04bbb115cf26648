#include "morvakit/ppt/ppt_slide.h"

#include <algorithm>
#include <utility>

#include "morvakit/ppt/ppt_shape.h"

namespace morvakit {

namespace {

using Orlec::ParseTextType;

/// Placeholders for dates, slide numbers, footers and headers.
bool is_footer_placeholder(std::uint32_t kind) {
  return kind >= 7 && kind <= 10;
}

}  // namespace

PptSheetHandler::PptSheetHandler(PptStream& stream, TextFlow& flow, PptSheetRole role,
                                 std::span<PptText const> outline)
    : stream_(stream),
      flow_(flow),
      role_(role),
      outline_(outline),
      is_delivered_(outline.size(), false) {}

bool PptSheetHandler::open(PptRecord const& record) {
  switch (record.type) {
    case ppt::shape_group:
      groups_.push_back({});
      break;
    case ppt::shape:
      // A shape in a shape takes nothing from the one around it.
      if (shape_depth_++ > 0) {
        deliver_shape();
      }
      break;
    case ppt::tag_data:
      return has_comment_tags_ && shape_depth_ == 0;
    case ppt::comment:
      in_comment_ = true;
      break;
    case ppt::headers_footers:
      in_headers_ = true;
      break;
    default:
      break;
  }
  return true;
}

void PptSheetHandler::close(PptRecord const& record) {
  switch (record.type) {
    case ppt::shape_group:
      groups_.pop_back();
      break;
    case ppt::shape:
      deliver_shape();
      --shape_depth_;
      break;
    case ppt::comment:
      in_comment_ = false;
      break;
    case ppt::headers_footers:
      in_headers_ = false;
      break;
    default:
      break;
  }
}

void PptSheetHandler::atom(PptRecord const& record) {
  constexpr std::int64_t master_of_slide = 12;
  constexpr std::int64_t notes_of_slide = 16;
  constexpr std::uint32_t kind_mask = 0xff;
  switch (record.type) {
    case ppt::slide_atom:
      master_ = stream_.number(record, master_of_slide);
      notes_ = stream_.number(record, notes_of_slide);
      break;
    case ppt::string:
      take_string(record);
      break;
    case ppt::shape_atom:
      take_shape_atom(record);
      break;
    case ppt::shape_properties:
    case ppt::more_shape_properties:
      take_properties(record);
      break;
    case ppt::place_in_group:
      shape_.top = stream_.number(record, 4);
      break;
    case ppt::placeholder:
      shape_.is_placeholder = true;
      shape_.is_footer = is_footer_placeholder(stream_.number(record, 4) & kind_mask);
      break;
    case ppt::newest_placeholder:
      shape_.is_placeholder = true;
      break;
    case ppt::newer_placeholder:
      shape_.is_placeholder = true;
      shape_.is_footer = true;
      break;
    case ppt::outline_text_ref:
      if (shape_depth_ > 0 && stream_.context().charge_memory(sizeof(std::uint32_t))) {
        shape_.outline_numbers.push_back(stream_.number(record, 0));
      }
      break;
    default:
      if (shape_depth_ > 0) {
        PptTextCollector(stream_, shape_.texts).take(record);
      }
      break;
  }
}

void PptSheetHandler::take_shape_atom(PptRecord const& record) {
  constexpr std::uint32_t flag_group = 0x1;
  constexpr std::uint32_t flag_deleted = 0x8;
  auto const flags = stream_.number(record, 4);
  shape_.is_group = (flags & flag_group) != 0;
  shape_.is_deleted = (flags & flag_deleted) != 0;
}

void PptSheetHandler::take_properties(PptRecord const& record) {
  auto properties = read_shape_properties(stream_, record);
  if (shape_.is_group && properties.is_table && !groups_.empty()) {
    groups_.back().is_table = true;
  }
  if (!properties.word_art.empty()) {
    shape_.word_art = std::move(properties.word_art);
  }
  if (role_ != PptSheetRole::master && !shape_.is_deleted) {
    flow_.line(ParseTextType::ParseTextType_other, properties.description);
  }
}

/// Strings have no type of their own: what they are, tells their number and the record around them.
void PptSheetHandler::take_string(PptRecord const& record) {
  constexpr std::uint16_t text_of_comment = 1;
  constexpr std::int64_t longest_tag = 64;
  if (in_comment_) {
    if (record.instance == text_of_comment) {
      deliver_text(stream_, {record, {}}, Orlec::ParseTextType_comment, flow_);
    }
  } else if (in_headers_) {
    deliver_text(stream_, {record, {}}, Orlec::ParseTextType_hf, flow_);
  } else {
    has_comment_tags_ = short_text(stream_.content(record, 0, longest_tag)) == "___PPT10";
  }
}

ParseTextType PptSheetHandler::kind_of_shape() const {
  if (role_ == PptSheetRole::master || shape_.is_footer) {
    return Orlec::ParseTextType_hf;
  }
  return role_ == PptSheetRole::notes ? Orlec::ParseTextType_remark : Orlec::ParseTextType_main;
}

/// Cells are the shapes of a group, row by row.
void PptSheetHandler::separate_cell(ParseTextType kind) {
  if (groups_.empty() || !groups_.back().is_table || shape_.is_group) {
    return;
  }
  auto& group = groups_.back();
  if (group.has_cells) {
    flow_.separate(kind, group.row_top == shape_.top ? '\t' : '\n');
  }
  group.has_cells = true;
  group.row_top = shape_.top;
}

void PptSheetHandler::deliver_shape() {
  bool const is_hidden =
      shape_.is_deleted || (role_ == PptSheetRole::master && shape_.is_placeholder);
  if (!is_hidden) {
    deliver_shown();
  }
  shape_ = {};
}

void PptSheetHandler::deliver_shown() {
  auto const kind = kind_of_shape();
  separate_cell(kind);
  if (!shape_.word_art.empty()) {
    flow_.line(kind, shape_.word_art);
  }
  for (auto const number : shape_.outline_numbers) {
    deliver_outline(number, kind);
  }
  for (auto const& text : shape_.texts) {
    auto const digest = deliver_text(stream_, text, kind, flow_);
    if (!outline_.empty() && stream_.context().charge_memory(sizeof(digest))) {
      digests_.insert(digest);
    }
  }
}

void PptSheetHandler::deliver_outline(std::uint32_t number, ParseTextType kind) {
  if (number < outline_.size() && !is_delivered_[number]) {
    is_delivered_[number] = true;
    deliver_text(stream_, outline_[number], kind, flow_);
  }
}

void PptSheetHandler::finish() {
  for (std::uint32_t number = 0; number < outline_.size(); ++number) {
    bool const stands_in_shape =
        is_delivered_[number] || digests_.count(text_digest(stream_, outline_[number])) != 0;
    if (!stands_in_shape) {
      deliver_outline(number, role_ == PptSheetRole::notes ? Orlec::ParseTextType_remark
                                                           : Orlec::ParseTextType_main);
    }
  }
}

}  // namespace morvakit
