#pragma once

#include <memory>
#include <string_view>

#include "host/Orlec/IFile.h"

#include "tessarine/ole_storage.h"

namespace morvakit {

/// The file that an OLE2 storage is only the wrapping of: a package of another format, a packaged
/// file with a name of its own, the content of a foreign program's object. Its path is its own name
/// where it has one, else `name`. Null where the storage wraps none. The bytes below the storage
/// have to outlive it.
std::unique_ptr<Orlec::Reader> open_wrapped_file(tessarine::OleStorage const& storage,
                                                 std::string_view name);

/// The file in the data of a packager's object, which begin at `offset`, as RTF and the OLE of
/// before compound files have them. Its path is as above. Null where the data are none.
std::unique_ptr<Orlec::Reader> open_packaged_file(std::unique_ptr<Orlec::Reader> data,
                                                  std::int64_t offset, std::string_view name);

}  // namespace morvakit
