#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/archive/lzma_unpacker.h"
#include "morvakit/read_context.h"

namespace morvakit {

/// Files of a 7z archive that are packed together, one behind the other.
struct SevenZipFolder {
  /// How it is unpacked; without a step it is stored as it is.
  std::vector<LzmaStep> steps;
  bool is_supported = true;  ///< whether all steps are known here
  bool is_encrypted = false;
  std::int64_t offset = 0;  ///< of the packed data, from the beginning of the archive
  std::int64_t packed = 0;
  std::int64_t unpacked = 0;
  /// Sizes of the files in it, in bytes, as they follow each other.
  std::vector<std::int64_t> files;
};

struct SevenZipFile {
  std::string name;  ///< UTF-8
  /// Whether it stands in a folder: directories and empty files do not.
  bool has_content = true;
};

/// The directory of a 7z archive, as it is published with the format. Files that have content
/// stand in the folders in the same order.
struct SevenZipDirectory {
  std::vector<SevenZipFolder> folders;
  std::vector<SevenZipFile> files;
};

/// Reads the directory. Ends the context where it is broken, over a bound or needs a password.
SevenZipDirectory read_seven_zip_directory(Orlec::Reader const& reader, ReadContext& context);

}  // namespace morvakit
