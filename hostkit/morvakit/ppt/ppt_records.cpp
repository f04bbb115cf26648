#include "morvakit/ppt/ppt_records.h"

#include <algorithm>
#include <vector>

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::int64_t head_size = 8;
/// Deeper than groups within groups are ever drawn.
constexpr std::size_t deepest = 200;

}  // namespace

bool PptStream::is_whole() const {
  char last = '\0';
  return size() == 0 || bytes_->ReadAt(size() - 1, &last, 1) == 1;
}

std::optional<PptRecord> PptStream::record_at(std::int64_t offset, std::int64_t end) const {
  end = std::min(end, size());
  if (offset < 0 || offset > end - head_size) {
    return std::nullopt;
  }
  char bytes[head_size];
  if (bytes_->ReadAt(offset, bytes, head_size) != head_size) {
    return std::nullopt;
  }
  std::string_view const head(bytes, head_size);
  constexpr std::uint16_t version_mask = 0xf;
  auto const first = tessarine::little16(head, 0);
  PptRecord record;
  record.type = tessarine::little16(head, 2);
  record.instance = static_cast<std::uint16_t>(first >> 4U);
  record.holds_records = (first & version_mask) == version_mask || record.type == ppt::tag_data;
  record.offset = offset + head_size;
  record.size = std::int64_t{tessarine::little32(head, 4)};
  if (record.size > end - record.offset) {
    record.is_cut = true;
    record.size = end - record.offset;
  }
  return record;
}

void PptStream::walk(PptRecord const& outer, PptHandler& handler) {
  std::vector<PptRecord> open;
  auto offset = outer.offset;
  note_if_cut(outer);
  while (context_.keep_going()) {
    auto const end = open.empty() ? outer.end() : open.back().end();
    auto const record = record_at(offset, end);
    if (!record) {
      if (open.empty()) {
        return;
      }
      handler.close(open.back());
      offset = end;
      open.pop_back();
      continue;
    }
    note_if_cut(*record);
    if (!record->holds_records) {
      handler.atom(*record);
      offset = record->end();
    } else if (open.size() < deepest && handler.open(*record)) {
      open.push_back(*record);
      offset = record->offset;
    } else {
      if (open.size() == deepest) {
        context_.note(Orlec::ParseOutcome::limit_reached,
                      "records nested over " + std::to_string(deepest) + " deep");
      }
      offset = record->end();
    }
  }
}

void PptStream::note_if_cut(PptRecord const& record) {
  if (record.is_cut) {
    context_.note(Orlec::ParseOutcome::damaged, "a record of the presentation is cut short");
  }
}

std::string PptStream::content(PptRecord const& record, std::int64_t offset,
                               std::int64_t limit) const {
  return tessarine::read_piece(*bytes_, record.offset + offset,
                               std::min(limit, record.size - offset));
}

std::uint32_t PptStream::number(PptRecord const& record, std::int64_t offset) const {
  return tessarine::little32(content(record, offset, 4), 0);
}

}  // namespace morvakit
