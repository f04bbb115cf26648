#include "tessarine/zip_archive.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include <zip.h>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

/// Lets the ZIP library read from a `Reader`.
class ReaderSource {
 public:
  explicit ReaderSource(Orlec::Reader const& reader) : reader_(reader) {}

  Orlec::Reader const& reader() const { return reader_; }

  static zip_int64_t call(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) {
    return static_cast<ReaderSource*>(self)->serve(data, length, command);
  }

 private:
  zip_int64_t serve(void* data, zip_uint64_t length, zip_source_cmd_t command);
  zip_int64_t read(void* data, zip_uint64_t length);
  zip_int64_t seek(void* data, zip_uint64_t length);
  zip_int64_t stat(void* data, zip_uint64_t length);

  Orlec::Reader const& reader_;
  std::int64_t position_ = 0;
  zip_error_t error_{};
};

zip_int64_t ReaderSource::serve(void* data, zip_uint64_t length, zip_source_cmd_t command) {
  switch (command) {
    case ZIP_SOURCE_OPEN:
      position_ = 0;
      return 0;
    case ZIP_SOURCE_READ:
      return read(data, length);
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
      return 0;
    case ZIP_SOURCE_STAT:
      return stat(data, length);
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&error_, data, length);
    case ZIP_SOURCE_SEEK:
      return seek(data, length);
    case ZIP_SOURCE_TELL:
      return position_;
    case ZIP_SOURCE_SUPPORTS:
      return zip_source_make_command_bitmap(
          ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
          ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, ZIP_SOURCE_FREE, -1);
    default:
      zip_error_set(&error_, ZIP_ER_OPNOTSUPP, 0);
      return -1;
  }
}

zip_int64_t ReaderSource::read(void* data, zip_uint64_t length) {
  auto const got = reader_.ReadAt(position_, data, static_cast<std::int64_t>(length));
  if (got < 0) {
    zip_error_set(&error_, ZIP_ER_READ, 0);
    return -1;
  }
  position_ += got;
  return got;
}

zip_int64_t ReaderSource::seek(void* data, zip_uint64_t length) {
  auto const size = static_cast<zip_uint64_t>(reader_.GetSize());
  auto const target = zip_source_seek_compute_offset(static_cast<zip_uint64_t>(position_), size,
                                                     data, length, &error_);
  if (target < 0) {
    return -1;
  }
  position_ = target;
  return 0;
}

zip_int64_t ReaderSource::stat(void* data, zip_uint64_t length) {
  if (length < sizeof(zip_stat_t)) {
    return -1;
  }
  zip_stat_t status;
  zip_stat_init(&status);
  status.valid = ZIP_STAT_SIZE;
  status.size = static_cast<zip_uint64_t>(reader_.GetSize());
  std::memcpy(data, &status, sizeof status);
  return sizeof status;
}

/// What the end of a container says about its directory.
struct DirectoryClaim {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;

  void add_bytes(std::uint64_t more) {
    bytes += std::min(more, std::numeric_limits<std::uint64_t>::max() - bytes);
  }
};

/// The record behind a locator, which takes the end record's place where its fields are too small.
void add_large_claim(Orlec::Reader const& reader, std::uint64_t offset, DirectoryClaim& claim) {
  if (offset >= static_cast<std::uint64_t>(reader.GetSize())) {
    return;
  }
  auto const record = read_piece(reader, static_cast<std::int64_t>(offset), 56);
  claim.entries = std::max({claim.entries, little64(record, 24), little64(record, 32)});
  claim.add_bytes(little64(record, 40));
}

/// What all end records in the container's last bytes claim. The ZIP library makes room for what is
/// claimed, and reads the directories of all of them, so that the claims have to be checked first.
DirectoryClaim find_claim(Orlec::Reader const& reader) {
  constexpr std::int64_t end_and_locator_size = 22 + 20;
  constexpr std::int64_t longest_tail = 65535 + end_and_locator_size;
  constexpr std::uint32_t stands_elsewhere = 0xffffffff;
  auto const start = std::max<std::int64_t>(0, reader.GetSize() - longest_tail);
  auto const tail = read_piece(reader, start, longest_tail);
  DirectoryClaim claim;
  for (auto at = tail.find("PK"); at != std::string::npos; at = tail.find("PK", at + 2)) {
    auto const record = std::string_view(tail).substr(at);
    auto const bytes = little32(record, 12);
    if (record.starts_with("PK\6\7")) {
      add_large_claim(reader, little64(record, 8), claim);
    } else if (record.starts_with("PK\5\6") && bytes != stands_elsewhere) {
      claim.add_bytes(bytes);
    }
  }
  return claim;
}

ZipState state_of_error(int code) {
  switch (code) {
    case ZIP_ER_READ:
    case ZIP_ER_SEEK:
      return ZipState::unreadable;
    case ZIP_ER_NOZIP:
      return ZipState::no_directory;
    default:
      return ZipState::damaged;
  }
}

/// Only methods whose memory does not depend on what the entry claims.
bool is_known_method(zip_uint16_t method) {
  return method == ZIP_CM_STORE || method == ZIP_CM_DEFLATE ||
         (method == ZIP_CM_BZIP2 && zip_compression_method_supported(method, 0) != 0);
}

std::int64_t bounded(zip_uint64_t size, std::int64_t most) {
  return static_cast<std::int64_t>(std::min(size, static_cast<zip_uint64_t>(most)));
}

}  // namespace

std::string zip_name_key(std::string_view name) {
  auto key = ascii_lower(name);
  // Some writers put backslashes between the parts of a name.
  std::replace(key.begin(), key.end(), '\\', '/');
  return key.starts_with('/') ? key.substr(1) : key;
}

struct ZipPart::Stream {
  struct Close {
    void operator()(zip_file_t* opened) const { zip_fclose(opened); }
  };
  std::unique_ptr<zip_file_t, Close> file;
};

ZipPart::ZipPart(std::unique_ptr<Stream> stream, ZipFault fault)
    : stream_(std::move(stream)), fault_(fault) {}
ZipPart::~ZipPart() = default;
ZipPart::ZipPart(ZipPart&& other) noexcept = default;
ZipPart& ZipPart::operator=(ZipPart&& other) noexcept = default;

std::int64_t ZipPart::read(char* buffer, std::size_t size) {
  if (fault_ != ZipFault::none) {
    return -1;
  }
  auto const got = zip_fread(stream_->file.get(), buffer, size);
  if (got < 0) {
    fault_ = ZipFault::damaged;
    return -1;
  }
  return got;
}

struct ZipArchive::Archive {
  explicit Archive(Orlec::Reader const& reader) : source(reader) {}

  struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
  };

  ReaderSource source;
  std::unique_ptr<zip_t, Discard> zip;
};

ZipArchive::ZipArchive(Orlec::Reader const& reader, ZipBounds bounds)
    : archive_(std::make_unique<Archive>(reader)), state_(open_directory(bounds)) {}

ZipArchive::~ZipArchive() = default;

ZipState ZipArchive::open_directory(ZipBounds bounds) {
  auto const claim = find_claim(archive_->source.reader());
  if (claim.entries > bounds.entries) {
    return ZipState::too_many_entries;
  }
  if (claim.bytes > bounds.directory_bytes) {
    return ZipState::directory_too_large;
  }
  auto& zip = archive_->zip;
  zip_error_t error;
  zip_error_init(&error);
  auto* const input = zip_source_function_create(ReaderSource::call, &archive_->source, &error);
  if (input != nullptr) {
    zip.reset(zip_open_from_source(input, ZIP_RDONLY, &error));
    if (!zip) {
      zip_source_free(input);
    }
  }
  auto const code = zip_error_code_zip(&error);
  zip_error_fini(&error);
  if (!zip) {
    return state_of_error(code);
  }
  if (count() > bounds.entries) {
    zip.reset();
    return ZipState::too_many_entries;
  }
  return ZipState::open;
}

std::uint64_t ZipArchive::count() const {
  auto* const zip = archive_->zip.get();
  return zip == nullptr ? 0 : static_cast<std::uint64_t>(zip_get_num_entries(zip, 0));
}

ZipEntry ZipArchive::entry(std::uint64_t index) const {
  zip_stat_t status;
  zip_stat_init(&status);
  if (index >= count() ||
      zip_stat_index(archive_->zip.get(), index, ZIP_FL_ENC_RAW, &status) != 0 ||
      status.name == nullptr) {
    return {};
  }
  return {status.name,
          bounded(status.size, std::numeric_limits<std::int64_t>::max()),
          bounded(status.comp_size, archive_->source.reader().GetSize()),
          status.comp_method,
          is_known_method(status.comp_method),
          status.encryption_method != ZIP_EM_NONE};
}

ZipPart ZipArchive::open(std::uint64_t index) const {
  auto const about = entry(index);
  if (about.is_encrypted) {
    return {nullptr, ZipFault::encrypted};
  }
  if (index < count() && !about.is_supported) {
    return {nullptr, ZipFault::unsupported};
  }
  auto* const file = index < count() ? zip_fopen_index(archive_->zip.get(), index, 0) : nullptr;
  if (file == nullptr) {
    return {nullptr, ZipFault::damaged};
  }
  auto stream = std::make_unique<ZipPart::Stream>();
  stream->file.reset(file);
  return {std::move(stream), ZipFault::none};
}

}  // namespace tessarine
