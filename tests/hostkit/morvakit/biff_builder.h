#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/tessarine/compound_image.h"
#include "hostkit/tessarine/memory_reader.h"

namespace test {

/// A record of a workbook's stream.
inline std::string biff(std::uint16_t type, std::string_view body = {}) {
  return little(type, 2) + little(body.size(), 2) + std::string(body);
}

/// The record that begins a part of a stream: 5 the globals, 16 a sheet, 32 a chart.
inline std::string biff_begin(unsigned part, unsigned version = 8) {
  std::string const rest(version == 8 ? 12 : 4, '\0');
  switch (version) {
    case 2:
      return biff(0x0009, little(2, 2) + little(part, 2));
    case 3:
      return biff(0x0209, little(0, 2) + little(part, 2) + little(0, 2));
    case 4:
      return biff(0x0409, little(0, 2) + little(part, 2) + little(0, 2));
    default:
      return biff(0x0809, little(version == 8 ? 0x0600 : 0x0500, 2) + little(part, 2) + rest);
  }
}

inline std::string biff_end() {
  return biff(0x000a);
}

inline std::string utf16(std::u16string_view text) {
  std::string bytes;
  for (auto const unit : text) {
    bytes += little(unit, 2);
  }
  return bytes;
}

/// A string behind its length, in one byte or two, as version 8 writes it.
inline std::string biff_string(std::u16string_view text, int length_bytes = 2) {
  return little(text.size(), length_bytes) + little(1, 1) + utf16(text);
}
inline std::string biff_string(std::string_view text, int length_bytes = 2) {
  return little(text.size(), length_bytes) + little(0, 1) + std::string(text);
}
/// As the versions before write it.
inline std::string old_string(std::string_view text, int length_bytes = 2) {
  return little(text.size(), length_bytes) + std::string(text);
}

inline std::string number_bytes(double value) {
  return little(std::bit_cast<std::uint64_t>(value), 8);
}

/// Row, column and style at the front of each cell.
inline std::string place(unsigned row, unsigned column, unsigned style = 0) {
  return little(row, 2) + little(column, 2) + little(style, 2);
}
inline std::string label(unsigned row, unsigned column, std::string_view text) {
  return biff(0x0204, place(row, column) + biff_string(text));
}
inline std::string number(unsigned row, unsigned column, double value, unsigned style = 0) {
  return biff(0x0203, place(row, column, style) + number_bytes(value));
}
inline std::string shared(unsigned row, unsigned column, unsigned string) {
  return biff(0x00fd, place(row, column) + little(string, 4));
}

/// An object on a sheet and the text that stands in it.
inline std::string object(unsigned type, std::string_view text) {
  return biff(0x005d, little(0x15, 2) + little(18, 2) + little(type, 2) + std::string(16, '\0')) +
         biff(0x01b6, std::string(10, '\0') + little(text.size(), 2) + little(16, 2) +
                          std::string(4, '\0')) +
         biff(0x003c, little(0, 1) + std::string(text)) + biff(0x003c, std::string(16, '\x01'));
}

/// A stream with globals and sheets.
class BiffBook {
 public:
  explicit BiffBook(unsigned version = 8) : version_(version) {}

  BiffBook& global(std::string const& records) {
    globals_ += records;
    return *this;
  }
  BiffBook& sheet(std::string const& name, std::string const& records, unsigned part = 16) {
    sheets_.push_back({name, biff_begin(part, version_) + records + biff_end(), 0, 0});
    return *this;
  }
  /// Bytes by which the stated position of the last sheet is wrong.
  BiffBook& misplaced(int by) {
    sheets_.back().misplaced_by = by;
    return *this;
  }
  /// Hides the last sheet.
  BiffBook& hidden() {
    sheets_.back().state = 1;
    return *this;
  }

  std::string bytes() const {
    auto position = globals(std::vector<std::size_t>(sheets_.size())).size();
    std::vector<std::size_t> positions;
    std::string records;
    for (auto const& sheet : sheets_) {
      positions.push_back(position + static_cast<std::size_t>(sheet.misplaced_by));
      position += sheet.records.size();
      records += sheet.records;
    }
    return globals(positions) + records;
  }

 private:
  struct Sheet {
    std::string name;
    std::string records;
    int misplaced_by;
    unsigned state;
  };

  std::string globals(std::vector<std::size_t> const& positions) const {
    auto bytes = biff_begin(5, version_) + globals_;
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
      auto const& sheet = sheets_[i];
      bytes += biff(0x0085,
                    little(positions[i], 4) + little(sheet.state, 1) + little(0, 1) +
                        (version_ == 8 ? biff_string(sheet.name, 1) : old_string(sheet.name, 1)));
    }
    return bytes + biff_end();
  }

  unsigned version_;
  std::string globals_;
  std::vector<Sheet> sheets_;
};

/// The stream as it lies in a file: behind the head of a compound file, with a directory.
inline std::string in_compound_file(std::string stream, std::string const& name = "Workbook") {
  constexpr std::size_t least_size_of_large_streams = 4096;
  stream.resize(std::max(stream.size(), least_size_of_large_streams), '\0');
  CompoundImage image;
  image.add_stream(name, stream);
  return image.bytes();
}

}  // namespace test
