#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/Orlec/IFile.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Reads a file line by line through a small window. Lines end in a line feed, with or without a
/// carriage return; where the beginning of the file has none, in a carriage return.
class LineReader {
 public:
  struct Line {
    /// Where the line stands in the file.
    std::int64_t offset = 0;
    /// Its bytes, the line's end included, valid until the next call. A line longer than the window
    /// comes in pieces.
    std::string_view bytes;
    /// False for all pieces of a long line but the first.
    bool begins = true;

    std::int64_t end() const { return offset + static_cast<std::int64_t>(bytes.size()); }
    /// The line without its end.
    std::string_view text() const;
  };

  LineReader(Orlec::Reader const& reader, ReadContext& context)
      : reader_(reader), context_(context) {}

  /// False at the end of the file, and when reading is to stop.
  bool next(Line& line);

 private:
  bool fill();

  Orlec::Reader const& reader_;
  ReadContext& context_;
  std::string window_;
  std::size_t at_ = 0;
  std::int64_t window_offset_ = 0;
  char line_end_ = '\n';
  bool begins_ = true;
  bool is_at_end_ = false;
};

}  // namespace morvakit
