#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/Orlec/IFile.h"
#include "morvakit/archive/archive_stream.h"
#include "morvakit/archive/lzma_unpacker.h"
#include "morvakit/parse_watch.h"

namespace morvakit {

/// The file of the component that unpacks archives: the libraries behind it are loaded when a
/// document asks for them.
inline constexpr char const* archive_component_file = "libmorvakit-archive.so";

/// Offered by the component: what the functions of the same names without "component" do.
using OpenArchiveFunction = void (*)(std::unique_ptr<ArchiveStream>& opened,
                                     Orlec::Reader const& reader, ParseWatch& watch,
                                     ArchiveLayout layout, ArchivePacking packing);
using OpenLzmaFunction = void (*)(std::unique_ptr<LzmaUnpacker>& opened, Orlec::Reader const& data,
                                  ParseWatch& watch, std::vector<LzmaStep> const& steps,
                                  std::int64_t unpacked);

inline constexpr char const* open_archive_symbol = "morvakit_open_archive";
inline constexpr char const* open_lzma_symbol = "morvakit_open_lzma";

/// Begins to read an archive. The reader and the watch have to outlive the stream, here and below.
/// Null, with the parse ended, where the component is not installed.
std::unique_ptr<ArchiveStream> open_archive(Orlec::Reader const& reader, ParseWatch& watch,
                                            ArchiveLayout layout, ArchivePacking packing);
/// Begins to unpack bare data of a container, which unpacks to `unpacked` bytes by `steps`, the
/// first of them first. As above where the component is missing.
std::unique_ptr<LzmaUnpacker> open_lzma(Orlec::Reader const& data, ParseWatch& watch,
                                        std::vector<LzmaStep> const& steps, std::int64_t unpacked);

}  // namespace morvakit
