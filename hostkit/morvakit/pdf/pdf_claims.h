#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include <Object.h>
#include <Parser.h>
#include <Stream.h>

#include "host/Orlec/IFile.h"

namespace morvakit {

/// The largest number of objects that the cross-reference tables of a document speak of. The
/// library makes room for as many, forty bytes each, before it looks for the first, so that a few
/// bytes of a file would cost any amount of memory. Tables and streams are found and taken apart as
/// the library does it; where one is broken, so are those in front of it.
class PdfTables {
 public:
  /// `stream`: of the reader's bytes.
  PdfTables(Orlec::Reader const& reader, BaseStream& stream);

  std::int64_t objects() const { return objects_; }

 private:
  void find_last();
  void take(Parser& parser);
  void take_table(Parser& parser);
  void take_stream(Parser& parser);
  void open(Object const& position);
  void claim(std::int64_t objects);

  Orlec::Reader const& reader_;
  /// Where the header stands, from which all positions count.
  std::int64_t start_ = 0;
  std::int64_t objects_ = 0;
  std::vector<std::int64_t> open_;
  std::set<std::int64_t> met_;
};

/// The same of a document whose tables are lost, where the library goes by the numbers of the
/// objects, and by what the trailers say, wherever they stand. Looks at every byte.
std::int64_t highest_object_number(Orlec::Reader const& reader, BaseStream& stream);

}  // namespace morvakit
