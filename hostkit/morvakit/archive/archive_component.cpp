#include "morvakit/archive/archive_component.h"

#include "morvabs/component.h"

namespace morvakit {

namespace {

void* find_function(char const* symbol) {
  return morvabs::component_function(archive_component_file, symbol);
}

void miss_component(ParseWatch& watch) {
  watch.end(Orlec::ParseOutcome::not_supported, "the archive component is not installed");
}

}  // namespace

std::unique_ptr<ArchiveStream> open_archive(Orlec::Reader const& reader, ParseWatch& watch,
                                            ArchiveLayout layout, ArchivePacking packing) {
  static auto const open =
      reinterpret_cast<OpenArchiveFunction>(find_function(open_archive_symbol));
  std::unique_ptr<ArchiveStream> opened;
  if (open == nullptr) {
    miss_component(watch);
  } else {
    open(opened, reader, watch, layout, packing);
  }
  return opened;
}

std::unique_ptr<LzmaUnpacker> open_lzma(Orlec::Reader const& data, ParseWatch& watch,
                                        std::vector<LzmaStep> const& steps, std::int64_t unpacked) {
  static auto const open = reinterpret_cast<OpenLzmaFunction>(find_function(open_lzma_symbol));
  std::unique_ptr<LzmaUnpacker> opened;
  if (open == nullptr) {
    miss_component(watch);
  } else {
    open(opened, data, watch, steps, unpacked);
  }
  return opened;
}

}  // namespace morvakit
