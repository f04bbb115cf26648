
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>

#include "host/export.h"
#include "morvakit/archive/archive_component.h"
#include "morvakit/archive/lzma_stream.h"

namespace morvakit {

namespace {

/// The library turns names from and into the encoding of the thread's locale. As long as this
/// lives, that is UTF-8.
class Utf8Names {
 public:
  Utf8Names() : former_(uselocale(locale())) {}
  ~Utf8Names() { uselocale(former_); }
  Utf8Names(Utf8Names const&) = delete;
  Utf8Names& operator=(Utf8Names const&) = delete;

 private:
  /// A null one, where the system has none, leaves the thread's as it is.
  static locale_t locale() {
    static locale_t const utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return utf8;
  }

  locale_t former_;
};

int filter_code(ArchivePacking packing) {
  switch (packing) {
    case ArchivePacking::gzip:
      return ARCHIVE_FILTER_GZIP;
    case ArchivePacking::bzip2:
      return ARCHIVE_FILTER_BZIP2;
    case ArchivePacking::zstd:
      return ARCHIVE_FILTER_ZSTD;
    case ArchivePacking::lz4:
      return ARCHIVE_FILTER_LZ4;
    case ArchivePacking::none:
    case ArchivePacking::xz:
      break;
  }
  return ARCHIVE_FILTER_NONE;
}

/// Whether unpacking a member takes no more memory than its format needs: in a ZIP it may be packed
/// by methods whose dictionary has the size that the member claims.
bool is_bounded(archive* library) {
  if ((archive_format(library) & ARCHIVE_FORMAT_BASE_MASK) != ARCHIVE_FORMAT_ZIP) {
    return true;
  }
  std::string_view const format = archive_format_name(library);
  return format.ends_with("(uncompressed)") || format.ends_with("(deflation)") ||
         format.ends_with("(bzip)");
}

void support_layout(archive* library, ArchiveLayout layout) {
  switch (layout) {
    case ArchiveLayout::tar_or_file:
      archive_read_support_format_tar(library);
      archive_read_support_format_raw(library);
      archive_read_support_format_empty(library);
      break;
    case ArchiveLayout::rar:
      archive_read_support_format_rar(library);
      archive_read_support_format_rar5(library);
      break;
    case ArchiveLayout::cabinet:
      archive_read_support_format_cab(library);
      break;
    case ArchiveLayout::cpio:
      archive_read_support_format_cpio(library);
      break;
    case ArchiveLayout::ar:
      archive_read_support_format_ar(library);
      break;
    case ArchiveLayout::zip_headers:
      archive_read_support_format_zip_streamable(library);
      break;
  }
}

/// Lets the library read from a `Reader`.
struct Input {
  Input(Orlec::Reader const& whole, ParseWatch& parse) : reader(whole), watch(parse) {}

  static la_ssize_t read(archive* /*library*/, void* self, void const** buffer) {
    auto& input = *static_cast<Input*>(self);
    try {
      return input.next(buffer);
    } catch (...) {
      // Not through the library.
      input.thrown = std::current_exception();
      return -1;
    }
  }
  static la_int64_t skip(archive* /*library*/, void* self, la_int64_t request) {
    return static_cast<Input*>(self)->skip_bytes(request);
  }
  static la_int64_t seek(archive* /*library*/, void* self, la_int64_t offset, int whence) {
    return static_cast<Input*>(self)->seek_to(offset, whence);
  }

  /// Throws what was thrown while the library read, and ends the parse where the library itself got
  /// no memory: a file may ask it for more than any machine has.
  void check(archive* library);

  la_ssize_t next(void const** buffer);
  la_int64_t skip_bytes(la_int64_t request);
  la_int64_t seek_to(la_int64_t offset, int whence);

  Orlec::Reader const& reader;
  ParseWatch& watch;
  std::optional<LzmaStream> xz;
  std::vector<char> piece = std::vector<char>(std::size_t{64} << 10);
  std::int64_t position = 0;
  std::exception_ptr thrown;
};

void Input::check(archive* library) {
  if (thrown) {
    std::rethrow_exception(std::exchange(thrown, nullptr));
  }
  if (archive_errno(library) == ENOMEM) {
    watch.end(Orlec::ParseOutcome::failed, "there is no memory to unpack it");
  }
}

la_ssize_t Input::next(void const** buffer) {
  if (!watch.keep_going()) {
    return -1;
  }
  if (xz) {
    auto const unpacked = xz->next();
    *buffer = unpacked.data();
    return unpacked.empty() && xz->has_failed() ? -1 : static_cast<la_ssize_t>(unpacked.size());
  }
  auto const got = reader.ReadAt(position, piece.data(), static_cast<std::int64_t>(piece.size()));
  position += std::max<std::int64_t>(got, 0);
  *buffer = piece.data();
  return got;
}

la_int64_t Input::skip_bytes(la_int64_t request) {
  auto const rest = std::max<std::int64_t>(reader.GetSize() - position, 0);
  auto const skipped = std::clamp<std::int64_t>(request, 0, rest);
  position += skipped;
  return skipped;
}

la_int64_t Input::seek_to(la_int64_t offset, int whence) {
  auto const size = reader.GetSize();
  std::int64_t const base = whence == SEEK_CUR ? position : whence == SEEK_END ? size : 0;
  std::int64_t target = 0;
  if (__builtin_add_overflow(base, offset, &target) || target < 0) {
    return ARCHIVE_FATAL;
  }
  position = target;
  return position;
}

struct Library {
  struct Free {
    void operator()(archive* opened) const { archive_read_free(opened); }
  };

  std::unique_ptr<archive, Free> handle{archive_read_new()};
  /// The member at hand. The library's own is made too late, and then taken to be there.
  struct FreeEntry {
    void operator()(archive_entry* made) const { archive_entry_free(made); }
  };
  std::unique_ptr<archive_entry, FreeEntry> entry{archive_entry_new2(handle.get())};
  bool is_open = false;
  /// What cannot be unpacked at all looks like nothing to the library.
  bool may_be_broken = false;
  /// What is left of the member's piece at hand, how many zeros stand in front of it, and how much
  /// of the member was handed out.
  std::string_view piece;
  std::int64_t hole = 0;
  std::int64_t position = 0;

  bool is_at_end = false;

  bool next_piece();
};

/// False at the member's end and behind a fault.
bool Library::next_piece() {
  void const* data = nullptr;
  std::size_t size = 0;
  la_int64_t offset = 0;
  auto const result = archive_read_data_block(handle.get(), &data, &size, &offset);
  is_at_end = result == ARCHIVE_EOF;
  if (is_at_end || result < ARCHIVE_WARN || offset < position) {
    return false;
  }
  piece = {static_cast<char const*>(data), size};
  hole = offset - position;
  return true;
}

class LibraryStream : public ArchiveStream {
 public:
  LibraryStream(Orlec::Reader const& reader, ParseWatch& watch, ArchiveLayout layout,
                ArchivePacking packing);

  Step next(ArchiveEntry& entry) override;
  std::int64_t read(char* buffer, std::size_t size) override;

 private:
  Input input_;
  Library library_;
};

LibraryStream::LibraryStream(Orlec::Reader const& reader, ParseWatch& watch, ArchiveLayout layout,
                             ArchivePacking packing)
    : input_(reader, watch) {
  Utf8Names const names;
  auto* const library = library_.handle.get();
  if (library == nullptr || library_.entry == nullptr) {
    throw std::bad_alloc();
  }
  support_layout(library, layout);
  archive_read_set_read_callback(library, Input::read);
  if (archive_read_set_callback_data(library, &input_) != ARCHIVE_OK) {
    throw std::bad_alloc();
  }
  if (packing == ArchivePacking::xz) {
    input_.xz.emplace(reader, watch);
  } else if (packing == ArchivePacking::none) {
    archive_read_set_skip_callback(library, Input::skip);
    archive_read_set_seek_callback(library, Input::seek);
  } else if (archive_read_append_filter(library, filter_code(packing)) != ARCHIVE_OK) {
    return;
  }
  library_.is_open = archive_read_open1(library) == ARCHIVE_OK;
  input_.check(library);
  library_.may_be_broken = archive_errno(library) != 0;
}

ArchiveStream::Step LibraryStream::next(ArchiveEntry& entry) {
  Utf8Names const names;
  auto* const library = library_.handle.get();
  archive_entry* const found = library_.entry.get();
  library_.piece = {};
  library_.hole = 0;
  library_.position = 0;
  auto const result = library_.is_open ? archive_read_next_header2(library, found) : ARCHIVE_FATAL;
  input_.check(library);
  if (result == ARCHIVE_EOF) {
    bool const is_broken =
        library_.may_be_broken && archive_format(library) == ARCHIVE_FORMAT_EMPTY;
    return is_broken ? Step::damaged : Step::end;
  }
  if (result < ARCHIVE_WARN) {
    bool const is_locked = library_.is_open && archive_read_has_encrypted_entries(library) == 1;
    return is_locked ? Step::encrypted : Step::damaged;
  }
  char const* const name = archive_entry_pathname(found);
  bool const is_named = name != nullptr && archive_format(library) != ARCHIVE_FORMAT_RAW;
  entry.name = is_named ? name : "";
  // Some writers leave out what kind of file it is.
  auto const kind = archive_entry_filetype(found);
  entry.is_file = kind == AE_IFREG || kind == 0;
  entry.is_encrypted = archive_entry_is_encrypted(found) != 0;
  entry.is_supported = is_bounded(library);
  return Step::entry;
}

std::int64_t LibraryStream::read(char* buffer, std::size_t size) {
  Utf8Names const names;
  auto& library = library_;
  while (library.hole == 0 && library.piece.empty()) {
    if (!library.next_piece()) {
      input_.check(library.handle.get());
      return library.is_at_end ? 0 : -1;
    }
  }
  auto const most = static_cast<std::int64_t>(size);
  auto const is_hole = library.hole > 0;
  auto const got =
      std::min(most, is_hole ? library.hole : static_cast<std::int64_t>(library.piece.size()));
  if (is_hole) {
    std::memset(buffer, 0, static_cast<std::size_t>(got));
    library.hole -= got;
  } else {
    std::memcpy(buffer, library.piece.data(), static_cast<std::size_t>(got));
    library.piece.remove_prefix(static_cast<std::size_t>(got));
  }
  library.position += got;
  return got;
}

}  // namespace

}  // namespace morvakit

extern "C" MORVA_EXPORT void morvakit_open_archive(std::unique_ptr<morvakit::ArchiveStream>& opened,
                                                   Orlec::Reader const& reader,
                                                   morvakit::ParseWatch& watch,
                                                   morvakit::ArchiveLayout layout,
                                                   morvakit::ArchivePacking packing) {
  opened = std::make_unique<morvakit::LibraryStream>(reader, watch, layout, packing);
}

extern "C" MORVA_EXPORT void morvakit_open_lzma(std::unique_ptr<morvakit::LzmaUnpacker>& opened,
                                                Orlec::Reader const& data,
                                                morvakit::ParseWatch& watch,
                                                std::vector<morvakit::LzmaStep> const& steps,
                                                std::int64_t unpacked) {
  opened = std::make_unique<morvakit::LzmaStream>(data, watch, steps, unpacked);
}
