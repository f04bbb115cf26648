#pragma once

#include <cstdint>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/doc/doc_header.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// A run of characters that stand together in the document's main stream.
struct WordPiece {
  /// Positions of the first character and of that behind the last.
  std::int64_t begin = 0;
  std::int64_t end = 0;
  /// Where it begins in the stream.
  std::int64_t offset = 0;
  /// UTF-16, else bytes in the document's code page.
  bool is_wide = false;
  /// Marked as deleted as a whole.
  bool is_deleted = false;
};

/// The pieces of a document in the order of their characters, without gaps. Damage is noted, and
/// what is in order in front of it stays; without any table, the text is taken as one piece.
/// `tables` may be null.
std::vector<WordPiece> read_pieces(WordHeader const& header, Orlec::Reader const& stream,
                                   Orlec::Reader const* tables, ReadContext& context);

}  // namespace morvakit
