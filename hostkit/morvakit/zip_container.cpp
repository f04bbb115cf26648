#include "morvakit/zip_container.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <unordered_map>
#include <vector>

#include <zip.h>

namespace morvakit {

namespace {

using Orlec::ParseOutcome;

/// How a part is looked up when no name fits exactly.
std::string loose_name(std::string_view name) {
  if (!name.empty() && (name.front() == '/' || name.front() == '\\')) {
    name.remove_prefix(1);
  }
  std::string result(name);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') {
      c = static_cast<char>(c - 'A' + 'a');
    } else if (c == '\\') {
      c = '/';
    }
  }
  return result;
}

/// Lets the ZIP library read from a `Reader`.
class ReaderSource {
 public:
  explicit ReaderSource(Orlec::Reader const& reader) : reader_(reader) {}

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

std::uint64_t little_endian(unsigned char const* bytes, int count) {
  std::uint64_t value = 0;
  for (int i = count - 1; i >= 0; --i) {
    value = value << 8 | bytes[i];
  }
  return value;
}

/// What the end of a container says about its directory.
struct DirectoryClaim {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;
};

constexpr std::size_t end_size = 22;
constexpr std::size_t locator_size = 20;
constexpr std::size_t large_end_size = 56;

/// The record behind a locator, which takes the end record's place where its fields are too small.
void add_large_claim(Orlec::Reader const& reader, std::uint64_t offset, DirectoryClaim& claim) {
  std::array<unsigned char, large_end_size> record{};
  constexpr auto size = static_cast<std::int64_t>(large_end_size);
  if (offset < static_cast<std::uint64_t>(reader.GetSize()) &&
      reader.ReadAt(static_cast<std::int64_t>(offset), record.data(), size) == size) {
    claim.entries = std::max({claim.entries, little_endian(record.data() + 24, 8),
                              little_endian(record.data() + 32, 8)});
    claim.bytes = std::max(claim.bytes, little_endian(record.data() + 40, 8));
  }
}

/// The largest directory that any end record in the container's last bytes claims. The ZIP library
/// makes room for what is claimed, so that the claim has to be checked first.
DirectoryClaim find_claim(Orlec::Reader const& reader) {
  constexpr std::int64_t longest_tail = 65535 + end_size + locator_size;
  auto const size = reader.GetSize();
  auto const start = std::max<std::int64_t>(0, size - longest_tail);
  std::vector<unsigned char> tail(static_cast<std::size_t>(size - start));
  auto const got = reader.ReadAt(start, tail.data(), size - start);
  tail.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  DirectoryClaim claim;
  for (std::size_t at = 0; at + locator_size <= tail.size(); ++at) {
    auto const* const here = tail.data() + at;
    if (here[0] != 'P' || here[1] != 'K') {
      continue;
    }
    if (here[2] == 6 && here[3] == 7) {
      add_large_claim(reader, little_endian(here + 8, 8), claim);
    } else if (here[2] == 5 && here[3] == 6) {
      constexpr std::uint64_t stands_elsewhere = 0xFFFFFFFF;
      auto const bytes = little_endian(here + 12, 4);
      claim.bytes = std::max(claim.bytes, bytes == stands_elsewhere ? 0 : bytes);
    }
  }
  return claim;
}

}  // namespace

struct ZipContainer::Archive {
  explicit Archive(Orlec::Reader const& reader)
      : source(reader), file_size(static_cast<zip_uint64_t>(reader.GetSize())) {}

  struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
  };

  struct Entry {
    std::string name;
    zip_uint64_t packed = 0;
    zip_uint64_t unpacked = 0;
    zip_uint16_t compression = 0;
    bool encrypted = false;
    bool doubled = false;
  };

  bool open(ReadContext& context);
  void list();

  ReaderSource source;
  zip_uint64_t file_size;
  std::unique_ptr<zip_t, Discard> zip;
  std::vector<Entry> entries;
  std::unordered_map<std::string, std::uint64_t> exact;
  std::unordered_map<std::string, std::uint64_t> loose;
};

bool ZipContainer::Archive::open(ReadContext& context) {
  zip_error_t error;
  zip_error_init(&error);
  auto* const input = zip_source_function_create(ReaderSource::call, &source, &error);
  if (input != nullptr) {
    zip.reset(zip_open_from_source(input, ZIP_RDONLY, &error));
    if (!zip) {
      zip_source_free(input);
    }
  }
  auto const code = zip_error_code_zip(&error);
  zip_error_fini(&error);
  if (zip) {
    return true;
  }
  if (code == ZIP_ER_READ || code == ZIP_ER_SEEK) {
    return context.end(ParseOutcome::failed, "the file cannot be read");
  }
  return context.end(ParseOutcome::damaged, code == ZIP_ER_NOZIP ? "the ZIP directory is missing"
                                                                 : "the ZIP directory is broken");
}

void ZipContainer::Archive::list() {
  auto const count = static_cast<std::uint64_t>(zip_get_num_entries(zip.get(), 0));
  entries.resize(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    auto& entry = entries[i];
    zip_stat_t status;
    zip_stat_init(&status);
    char const* const name = zip_get_name(zip.get(), i, ZIP_FL_ENC_RAW);
    if (name == nullptr || zip_stat_index(zip.get(), i, ZIP_FL_ENC_RAW, &status) != 0) {
      continue;
    }
    entry.name = name;
    entry.packed = std::min(status.comp_size, file_size);  // the directory may lie
    entry.unpacked = status.size;
    entry.compression = status.comp_method;
    entry.encrypted = status.encryption_method != ZIP_EM_NONE;
    auto const [first, is_new] = exact.emplace(entry.name, i);
    entry.doubled = !is_new;
    entries[first->second].doubled = !is_new || entries[first->second].doubled;
    loose.emplace(loose_name(entry.name), i);
  }
}

ZipContainer::ZipContainer(Orlec::Reader const& reader, ReadContext& context)
    : context_(context), archive_(std::make_unique<Archive>(reader)) {
  auto const most =
      static_cast<std::uint64_t>(std::max<std::int64_t>(context.limits().i_entries, 0));
  auto const refuse = [&] {
    archive_->zip.reset();
    context.end(ParseOutcome::limit_reached,
                "a container of over " + std::to_string(most) + " entries");
  };
  constexpr std::uint64_t largest_directory = std::uint64_t{64} << 20;
  auto const claim = find_claim(reader);
  if (claim.entries > most) {
    refuse();
    return;
  }
  if (claim.bytes > largest_directory) {
    context.end(ParseOutcome::limit_reached,
                "a ZIP directory over " + std::to_string(largest_directory) + " bytes");
    return;
  }
  if (!archive_->open(context)) {
    return;
  }
  if (static_cast<std::uint64_t>(zip_get_num_entries(archive_->zip.get(), 0)) > most) {
    refuse();
    return;
  }
  archive_->list();
}

ZipContainer::~ZipContainer() = default;

bool ZipContainer::is_open() const {
  return archive_->zip != nullptr;
}

std::uint64_t ZipContainer::count() const {
  return archive_->entries.size();
}

std::string const& ZipContainer::name(std::uint64_t index) const {
  static std::string const none;
  return index < count() ? archive_->entries[index].name : none;
}

std::int64_t ZipContainer::stated_size(std::uint64_t index) const {
  constexpr auto most = static_cast<zip_uint64_t>(INT64_MAX);
  return index < count()
             ? static_cast<std::int64_t>(std::min(archive_->entries[index].unpacked, most))
             : 0;
}

std::optional<std::uint64_t> ZipContainer::find(std::string_view name) const {
  if (auto const found = archive_->exact.find(std::string(name)); found != archive_->exact.end()) {
    return found->second;
  }
  if (auto const found = archive_->loose.find(loose_name(name)); found != archive_->loose.end()) {
    return found->second;
  }
  return std::nullopt;
}

bool ZipContainer::read(std::uint64_t index, Consumer const& consumer) {
  if (index >= count() || context_.ended()) {
    return false;
  }
  auto const& entry = archive_->entries[index];
  if (entry.encrypted) {
    return context_.end(ParseOutcome::encrypted, "the document needs a password");
  }
  if (entry.compression != ZIP_CM_STORE && entry.compression != ZIP_CM_DEFLATE &&
      zip_compression_method_supported(entry.compression, 0) == 0) {
    context_.note(ParseOutcome::not_supported, "the part " + entry.name + " is packed by method " +
                                                   std::to_string(entry.compression));
    return false;
  }
  if (entry.doubled) {
    context_.note(ParseOutcome::damaged, "two parts have the name " + entry.name);
  }
  struct Close {
    void operator()(zip_file_t* file) const { zip_fclose(file); }
  };
  std::unique_ptr<zip_file_t, Close> const file(zip_fopen_index(archive_->zip.get(), index, 0));
  std::vector<char> buffer(std::size_t{64} << 10);
  std::int64_t unpacked = 0;
  auto const packed = static_cast<std::int64_t>(entry.packed);
  while (file) {
    auto const got = zip_fread(file.get(), buffer.data(), buffer.size());
    if (got == 0) {
      return true;
    }
    if (got < 0) {
      break;
    }
    unpacked += got;
    if (!context_.charge_expansion(packed, unpacked, got) || !context_.keep_going() ||
        !consumer(std::string_view(buffer.data(), static_cast<std::size_t>(got)))) {
      return false;
    }
  }
  context_.note(ParseOutcome::damaged, "the part " + entry.name + " cannot be unpacked");
  return false;
}

}  // namespace morvakit
