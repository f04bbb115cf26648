#pragma once

#include <string>

#include "morvakit/ppt/ppt_records.h"

namespace morvakit {

/// What the properties of a drawn shape say that is text, or decides about text.
struct PptShapeProperties {
  std::string description;
  std::string word_art;
  bool is_table = false;
};

/// Reads one record of shape properties: a table of numbers, and behind it the data of those that
/// do not fit into it, as [MS-ODRAW] describes them.
PptShapeProperties read_shape_properties(PptStream const& stream, PptRecord const& record);

}  // namespace morvakit
