#include "tessarine/zip_listing.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <zip.h>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

constexpr zip_int64_t entry_limit = 100000;
// What is searched, in all, for the next header behind entries that do not tell their length.
constexpr std::int64_t header_search_limit = std::int64_t{1} << 20;

struct Source {
  Orlec::Reader const* reader = nullptr;
  std::int64_t position = 0;
  zip_error_t error{};
};

zip_int64_t seek_source(Source& source, void* data, zip_uint64_t length) {
  auto const target = zip_source_seek_compute_offset(
      static_cast<zip_uint64_t>(source.position),
      static_cast<zip_uint64_t>(source.reader->GetSize()), data, length, &source.error);
  if (target < 0) {
    return -1;
  }
  source.position = target;
  return 0;
}

zip_int64_t read_source(Source& source, void* data, zip_uint64_t length) {
  auto const got = source.reader->ReadAt(source.position, data, static_cast<std::int64_t>(length));
  if (got < 0) {
    zip_error_set(&source.error, ZIP_ER_READ, 0);
    return -1;
  }
  source.position += got;
  return got;
}

zip_int64_t serve_source(void* state, void* data, zip_uint64_t length, zip_source_cmd_t command) {
  auto& source = *static_cast<Source*>(state);
  switch (command) {
    case ZIP_SOURCE_OPEN:
      source.position = 0;
      return 0;
    case ZIP_SOURCE_READ:
      return read_source(source, data, length);
    case ZIP_SOURCE_SEEK:
      return seek_source(source, data, length);
    case ZIP_SOURCE_TELL:
      return source.position;
    case ZIP_SOURCE_STAT: {
      auto* const stat = static_cast<zip_stat_t*>(data);
      zip_stat_init(stat);
      stat->size = static_cast<zip_uint64_t>(source.reader->GetSize());
      stat->valid = ZIP_STAT_SIZE;
      return static_cast<zip_int64_t>(sizeof(*stat));
    }
    case ZIP_SOURCE_ERROR:
      return zip_error_to_data(&source.error, data, length);
    case ZIP_SOURCE_SUPPORTS:
      return zip_source_make_command_bitmap(
          ZIP_SOURCE_OPEN, ZIP_SOURCE_READ, ZIP_SOURCE_CLOSE, ZIP_SOURCE_STAT, ZIP_SOURCE_ERROR,
          ZIP_SOURCE_FREE, ZIP_SOURCE_SEEK, ZIP_SOURCE_TELL, ZIP_SOURCE_SUPPORTS, -1);
    default:
      return 0;
  }
}

struct DiscardArchive {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, DiscardArchive>;

Archive open_archive(Source& source) {
  zip_error_t error;
  zip_error_init(&error);
  auto* const zip_source = zip_source_function_create(serve_source, &source, &error);
  Archive archive(zip_source == nullptr ? nullptr
                                        : zip_open_from_source(zip_source, ZIP_RDONLY, &error));
  if (archive == nullptr && zip_source != nullptr) {
    zip_source_free(zip_source);
  }
  zip_error_fini(&error);
  return archive;
}

// Some writers put backslashes between the parts of a name.
std::string normal_name(std::string_view name) {
  auto normal = ascii_lower(name);
  std::replace(normal.begin(), normal.end(), '\\', '/');
  return normal;
}

}  // namespace

struct ZipListing::Entry {
  std::string name;  // lower case, with "/" between its parts
  bool encrypted = false;
  std::int64_t index = -1;  // in the directory; -1 where the entry was found by its own header
  std::int64_t offset = 0;  // of the data of an entry that is stored as it is, found by its header
  std::int64_t stored = 0;  // length of that data; 0 for packed data
};

struct ZipListing::State {
  Source source;
  Archive archive;
  std::vector<Entry> entries;
};

ZipListing::ZipListing(Orlec::Reader const& reader) : state_(std::make_unique<State>()) {
  state_->source.reader = &reader;
  if (!list_directory()) {
    follow_headers();
  }
}

ZipListing::~ZipListing() = default;

bool ZipListing::empty() const {
  return state_->entries.empty();
}

bool ZipListing::list_directory() {
  state_->archive = open_archive(state_->source);
  auto const& archive = state_->archive;
  if (archive == nullptr) {
    return false;
  }
  auto const count = std::min<zip_int64_t>(zip_get_num_entries(archive.get(), 0), entry_limit);
  for (zip_int64_t i = 0; i < count; ++i) {
    zip_stat_t stat;
    zip_stat_init(&stat);
    if (zip_stat_index(archive.get(), static_cast<zip_uint64_t>(i), ZIP_FL_ENC_RAW, &stat) != 0 ||
        (stat.valid & ZIP_STAT_NAME) == 0) {
      continue;
    }
    auto const encrypted =
        (stat.valid & ZIP_STAT_ENCRYPTION_METHOD) != 0 && stat.encryption_method != ZIP_EM_NONE;
    state_->entries.push_back({normal_name(stat.name), encrypted, i});
  }
  return true;
}

void ZipListing::follow_headers() {
  std::int64_t position = 0;
  std::int64_t searched = 0;
  while (searched < header_search_limit &&
         static_cast<zip_int64_t>(state_->entries.size()) < entry_limit) {
    auto const header = read_piece(*state_->source.reader, position, 30);
    if (header.size() < 30 || !header.starts_with("PK\3\4")) {
      auto const piece = read_piece(*state_->source.reader, position, 1 << 16);
      auto const next = piece.find("PK\3\4", 1);
      if (piece.size() < 30) {
        return;
      }
      auto const step = next == std::string::npos ? piece.size() - 3 : next;
      position += static_cast<std::int64_t>(step);
      searched += static_cast<std::int64_t>(step);
      continue;
    }
    auto const name = read_piece(*state_->source.reader, position + 30, little16(header, 26));
    auto const data = position + 30 + little16(header, 26) + little16(header, 28);
    auto const length = std::int64_t{little32(header, 18)};
    auto const is_stored = little16(header, 8) == 0;
    state_->entries.push_back(
        {normal_name(name), (little16(header, 6) & 1U) != 0, -1, data, is_stored ? length : 0});
    // Each entry counts a little, so that a chain of empty ones ends too.
    searched += 256;
    position = data + (length == 0xffffffff ? 0 : length);
  }
}

ZipListing::Entry const* ZipListing::find(std::string_view name) const {
  auto const normal = normal_name(name);
  auto const found = std::find_if(state_->entries.begin(), state_->entries.end(),
                                  [&normal](Entry const& entry) { return entry.name == normal; });
  return found == state_->entries.end() ? nullptr : &*found;
}

bool ZipListing::has(std::string_view name) const {
  return find(name) != nullptr;
}

bool ZipListing::has_below(std::string_view prefix) const {
  auto const normal = normal_name(prefix);
  return std::any_of(state_->entries.begin(), state_->entries.end(),
                     [&normal](Entry const& entry) { return entry.name.starts_with(normal); });
}

bool ZipListing::is_encrypted(std::string_view name) const {
  auto const* const entry = find(name);
  return entry != nullptr && entry->encrypted;
}

std::string ZipListing::content(std::string_view name, std::int64_t limit) const {
  auto const* const entry = find(name);
  if (entry == nullptr || entry->encrypted) {
    return {};
  }
  if (entry->index < 0) {
    return read_piece(*state_->source.reader, entry->offset, std::min(entry->stored, limit));
  }
  auto* const file =
      zip_fopen_index(state_->archive.get(), static_cast<zip_uint64_t>(entry->index), 0);
  if (file == nullptr) {
    return {};
  }
  std::string content;
  char buffer[8192];
  while (static_cast<std::int64_t>(content.size()) < limit) {
    auto const want =
        std::min<std::int64_t>(limit - static_cast<std::int64_t>(content.size()), sizeof(buffer));
    auto const got = zip_fread(file, buffer, static_cast<zip_uint64_t>(want));
    if (got <= 0) {
      break;
    }
    content.append(buffer, static_cast<std::size_t>(got));
  }
  zip_fclose(file);
  return content;
}

}  // namespace tessarine
