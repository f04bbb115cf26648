#include <algorithm>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "morvakit/embedded.h"
#include "morvakit/formats.h"
#include "morvakit/ole/ole_properties.h"
#include "morvakit/spool.h"
#include "morvakit/text_flow.h"
#include "morvakit/xls/biff_sheet.h"
#include "morvakit/xls/biff_stream.h"
#include "morvakit/xls/biff_workbook.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

BiffPart part_of(BiffStream const& records) {
  return static_cast<BiffPart>(tessarine::little16(records.body(), 2));
}

/// Where the parts begin that follow the present one.
std::vector<std::int64_t> find_parts(BiffStream& records) {
  std::vector<std::int64_t> found;
  int depth = 0;
  auto position = records.position();
  while (records.next()) {
    if (biff::is_begin(records.type()) && depth++ == 0) {
      if (!records.context().charge_memory(BiffWorkbook::kept_per_sheet)) {
        break;
      }
      found.push_back(position);
    }
    depth -= records.type() == biff::end && depth > 0 ? 1 : 0;
    position = records.position();
  }
  return found;
}

std::vector<std::int64_t> sorted_positions(std::vector<BiffWorkbook::Sheet> const& sheets) {
  std::vector<std::int64_t> positions(sheets.size());
  std::transform(sheets.begin(), sheets.end(), positions.begin(),
                 [](BiffWorkbook::Sheet const& sheet) { return sheet.position; });
  std::sort(positions.begin(), positions.end());
  return positions;
}

/// Puts sheets that are not where the workbook says to where the parts are that belong to no other
/// sheet. A sheet without a part gets a position behind the end. Where the workbook knows of no
/// sheets, all parts are sheets without names.
void repair_positions(std::vector<BiffWorkbook::Sheet>& sheets,
                      std::vector<std::int64_t> const& parts) {
  auto const is_part = [&parts](std::int64_t position) {
    return std::binary_search(parts.begin(), parts.end(), position);
  };
  sheets.resize(sheets.empty() ? parts.size() : sheets.size());
  auto const taken = sorted_positions(sheets);
  auto next = parts.begin();
  for (auto& sheet : sheets) {
    if (is_part(sheet.position)) {
      continue;
    }
    while (next != parts.end() && std::binary_search(taken.begin(), taken.end(), *next)) {
      ++next;
    }
    sheet.position = next != parts.end() ? *next++ : INT64_MAX;
  }
}

/// Reads the records of one workbook.
class StreamReader {
 public:
  StreamReader(Orlec::Reader const& stream, TextFlow& flow)
      : size_(stream.GetSize()),
        flow_(flow),
        records_(stream, flow.context()),
        workbook_(flow.context()) {}

  void read() {
    if (!records_.next() || !biff::is_begin(records_.type())) {
      flow_.context().note(Orlec::ParseOutcome::damaged, "the workbook's beginning is missing");
      return;
    }
    workbook_.begin(records_);
    if (part_of(records_) != BiffPart::globals) {
      records_.seek(0);
      BiffSheetReader(records_, workbook_, flow_).read(size_, true);
      return;
    }
    while (records_.next() && records_.type() != biff::end) {
      workbook_.take(records_);
    }
    if (records_.type() != biff::end) {
      records_.note_cut();
    }
    if (!flow_.context().ended()) {
      read_sheets();
    }
  }

 private:
  bool begins_part(std::int64_t position) {
    records_.seek(position);
    return records_.next() && biff::is_begin(records_.type());
  }

  void read_sheets() {
    auto& sheets = workbook_.sheets();
    auto const behind_globals = records_.position();
    bool const is_sound =
        !sheets.empty() && std::all_of(sheets.begin(), sheets.end(), [this](auto const& sheet) {
          return begins_part(sheet.position);
        });
    if (!is_sound) {
      flow_.context().note(Orlec::ParseOutcome::damaged, "a sheet is not where the workbook says");
      records_.seek(behind_globals);
      auto const parts = find_parts(records_);
      if (flow_.context().ended()) {
        return;
      }
      repair_positions(sheets, parts);
    }
    // No sheet goes on into the next one, so that nothing is read twice.
    auto const begins = sorted_positions(sheets);
    for (auto const& sheet : sheets) {
      auto const behind = std::upper_bound(begins.begin(), begins.end(), sheet.position);
      read_sheet(sheet, behind != begins.end() ? *behind : size_);
      if (!flow_.context().keep_going()) {
        return;
      }
    }
  }

  void read_sheet(BiffWorkbook::Sheet const& sheet, std::int64_t end) {
    flow_.context().count_pages(1);
    flow_.line(Orlec::ParseTextType_main, sheet.name);
    if (!read_.insert(sheet.position).second) {
      flow_.context().note(Orlec::ParseOutcome::damaged, "two sheets lie at one place");
      return;
    }
    records_.seek(sheet.position);
    BiffSheetReader(records_, workbook_, flow_).read(end, false);
  }

  std::int64_t size_;
  TextFlow& flow_;
  BiffStream records_;
  BiffWorkbook workbook_;
  /// Where the sheets that were read begin.
  std::unordered_set<std::int64_t> read_;
};

void read_stream(Orlec::Reader const& stream, ReadContext& context) {
  TextFlow flow(context);
  StreamReader(stream, flow).read();
}

/// The bytes behind the head of a compound file whose directory is lost, as when the file was cut:
/// its first stream, where that lies there in one piece.
void read_remains(Orlec::Reader const& file, ReadContext& context) {
  constexpr std::int64_t power_offset = 30;
  constexpr std::uint16_t power_of_large_sectors = 12;
  auto const power = tessarine::little16(tessarine::read_piece(file, power_offset, 2), 0);
  std::int64_t const sector_size = power == power_of_large_sectors ? 4096 : 512;
  ReaderSlice const stream(file, {}, sector_size, file.GetSize() - sector_size);
  read_stream(stream, context);
}

/// The documents in a workbook have storages of their own, which their names tell.
void read_embedded_storages(tessarine::OleStorage const& storage, ReadContext& context) {
  for (auto const& entry : storage.entries()) {
    if (entry.is_storage && entry.name.starts_with("MBD") &&
        !read_embedded(storage.storage(entry.name), entry.name, context)) {
      return;
    }
  }
}

}  // namespace

void read_xls_storage(tessarine::OleStorage const& storage, ReadContext& context) {
  auto stream = storage.stream("Workbook");
  if (stream == nullptr) {
    stream = storage.stream("Book");
  }
  if (stream != nullptr) {
    read_stream(*stream, context);
  } else {
    context.note(Orlec::ParseOutcome::damaged, "the workbook's stream is missing");
  }
  TextFlow flow(context);
  read_ole_properties(storage, flow);
  read_embedded_storages(storage, context);
}

void read_xls(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  constexpr std::int64_t record_type_size = 2;
  auto const head = tessarine::read_piece(reader, 0, record_type_size);
  if (biff::is_begin(tessarine::little16(head, 0))) {
    read_stream(reader, context);
    return;
  }
  tessarine::OleStorage const root(reader);
  if (!root.fault().empty()) {
    context.note(
        root.is_over_bound() ? Orlec::ParseOutcome::limit_reached : Orlec::ParseOutcome::damaged,
        root.fault());
  }
  if (root.has("Workbook") || root.has("Book")) {
    read_xls_storage(root, context);
  } else {
    read_remains(reader, context);
  }
}

}  // namespace morvakit
