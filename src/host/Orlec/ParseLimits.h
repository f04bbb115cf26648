#pragma once

#include <cstdint>

namespace Orlec {

/// Bounds on what one file may cost, all that is embedded in it included. A file that goes over one
/// of them ends with the outcome `limit_reached` (or `timed_out`), the name of the bound as the
/// reason, and the text read so far.
struct ParseLimits {
  /// Size of the file itself, and of each file embedded in it, in bytes.
  std::int64_t i_input_bytes = std::int64_t{512} << 20;
  /// Bytes that all parts of a container may unpack to together.
  std::int64_t i_expanded_bytes = std::int64_t{4} << 30;
  /// Unpacked size of one part of a container over its packed size; counts from 64 MiB on.
  std::int64_t i_expansion_ratio = 250;
  /// Entries in one container: of a ZIP, TAR or OLE2 directory, or parts of a mail.
  std::int64_t i_entries = 20000;
  /// How deep files are embedded in each other: the file itself is at depth 0.
  std::int64_t i_nesting = 8;
  /// Depth of nested elements in XML and HTML, and of groups in RTF.
  std::int64_t i_xml_depth = 1000;
  /// Bytes that the entities of one XML document may expand to where that is over a hundred times
  /// what stands in it. External entities are never read.
  std::int64_t i_entity_bytes = std::int64_t{8} << 20;
  /// Bytes of all lists that a reader has to keep: shared strings, styles, parts, relationships.
  std::int64_t i_list_bytes = std::int64_t{256} << 20;
  /// Characters of main text that are kept in memory, and the same again for all other kinds
  /// together.
  std::int64_t i_memory_chars = std::int64_t{16} << 20;
  /// Bytes of main text that are written to an output file.
  std::int64_t i_output_bytes = std::int64_t{1} << 30;
  /// Time for one file, in milliseconds.
  std::int64_t i_milliseconds = 120000;
};

}  // namespace Orlec
