#include "tessarine/zip_archive.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <utility>

#include "tessarine/byte_reader.h"
#include "tessarine/zip_directory.h"
#include "tessarine/zip_unpacker.h"

namespace tessarine {
namespace {

constexpr std::int64_t local_header_size = 30;

std::int64_t bounded(std::uint64_t size, std::int64_t most) {
  return static_cast<std::int64_t>(std::min(size, static_cast<std::uint64_t>(most)));
}

}  // namespace

std::string zip_name_key(std::string_view name) {
  auto key = ascii_lower(name);
  // Some writers put backslashes between the parts of a name.
  std::replace(key.begin(), key.end(), '\\', '/');
  return key.starts_with('/') ? key.substr(1) : key;
}

/// The packed bytes of an entry on their way out.
struct ZipPart::Stream {
  Stream(Orlec::Reader const& whole, ZipRecord const& entry)
      : reader(whole), record(entry), unpacker(make_zip_unpacker(entry.method)) {}

  bool skip_header();
  bool fill();
  std::int64_t read(std::span<char> room);
  void unpack(std::span<char>& room);

  Orlec::Reader const& reader;
  ZipRecord record;
  std::unique_ptr<ZipUnpacker> unpacker;
  std::array<char, 16 << 10> piece;
  std::span<char const> input;  // what is left of the piece
  std::int64_t position = 0;    // in the file, behind the piece
  std::uint64_t left = 0;       // of the packed bytes, behind the piece
  std::uint32_t checksum = 0;
  bool is_at_end = false;
  bool is_damaged = false;
};

/// Goes to the entry's data, behind a header of its own. Reads them together where it can.
bool ZipPart::Stream::skip_header() {
  constexpr auto last = std::numeric_limits<std::int64_t>::max();
  auto const offset = bounded(record.offset, last);
  auto const got = reader.ReadAt(offset, piece.data(), static_cast<std::int64_t>(piece.size()));
  std::string_view const bytes(piece.data(),
                               static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  if (got < local_header_size) {
    return false;
  }
  auto const header = local_header_size + little16(bytes, 26) + little16(bytes, 28);
  auto const data = std::min(got, header);
  auto const at_hand = static_cast<std::size_t>(bounded(record.packed, got - data));
  input = std::span<char const>(piece).subspan(static_cast<std::size_t>(data), at_hand);
  position = offset + std::max(got, header);
  left = record.packed - at_hand;
  return true;
}

/// False at the end of the packed bytes, and where they cannot be read.
bool ZipPart::Stream::fill() {
  auto const size = bounded(left, static_cast<std::int64_t>(piece.size()));
  auto const got = size == 0 ? 0 : reader.ReadAt(position, piece.data(), size);
  if (got <= 0) {
    is_damaged = size != 0;
    return false;
  }
  input = std::span<char const>(piece).first(static_cast<std::size_t>(got));
  position += got;
  left -= static_cast<std::uint64_t>(got);
  return true;
}

void ZipPart::Stream::unpack(std::span<char>& room) {
  while (!room.empty() && !is_at_end && !is_damaged) {
    bool const has_input = !input.empty() || fill();
    auto const room_before = room.size();
    auto const step = unpacker->unpack(input, room);
    is_damaged = is_damaged || step == ZipUnpacker::Step::damaged;
    is_at_end = step == ZipUnpacker::Step::end || (!has_input && room.size() == room_before);
  }
}

std::int64_t ZipPart::Stream::read(std::span<char> room) {
  auto rest = room;
  unpack(rest);
  auto const got = room.size() - rest.size();
  if (got == 0) {
    bool const is_whole = is_at_end && !is_damaged && checksum == record.checksum;
    return room.empty() || is_whole ? 0 : -1;
  }
  checksum = zip_checksum(checksum, room.first(got));
  return static_cast<std::int64_t>(got);
}

ZipPart::ZipPart(std::unique_ptr<Stream> stream, ZipFault fault)
    : stream_(std::move(stream)), fault_(fault) {}
ZipPart::~ZipPart() = default;
ZipPart::ZipPart(ZipPart&& other) noexcept = default;
ZipPart& ZipPart::operator=(ZipPart&& other) noexcept = default;

std::int64_t ZipPart::read(char* buffer, std::size_t size) {
  if (fault_ != ZipFault::none) {
    return -1;
  }
  auto const got = stream_->read({buffer, size});
  if (got < 0) {
    fault_ = ZipFault::damaged;
  }
  return got;
}

struct ZipArchive::Archive {
  Orlec::Reader const& reader;
  ZipDirectory directory;
};

ZipArchive::ZipArchive(Orlec::Reader const& reader, ZipBounds bounds)
    : archive_(std::make_unique<Archive>(Archive{reader, {}})),
      state_(archive_->directory.read(reader, bounds)) {}

ZipArchive::~ZipArchive() = default;

std::uint64_t ZipArchive::count() const {
  return archive_->directory.records().size();
}

ZipEntry ZipArchive::entry(std::uint64_t index) const {
  if (index >= count()) {
    return {};
  }
  auto const& record = archive_->directory.records()[index];
  return {record.name,
          bounded(record.unpacked, std::numeric_limits<std::int64_t>::max()),
          bounded(record.packed, archive_->reader.GetSize()),
          record.method,
          is_known_zip_method(record.method),
          record.is_encrypted};
}

ZipPart ZipArchive::open(std::uint64_t index) const {
  if (index >= count()) {
    return {nullptr, ZipFault::damaged};
  }
  auto const& record = archive_->directory.records()[index];
  if (record.is_encrypted) {
    return {nullptr, ZipFault::encrypted};
  }
  if (!is_known_zip_method(record.method)) {
    return {nullptr, ZipFault::unsupported};
  }
  auto stream = std::make_unique<ZipPart::Stream>(archive_->reader, record);
  // An entry without any data is empty, whatever else it claims.
  if (record.packed == 0) {
    stream->record.checksum = 0;
    stream->is_at_end = true;
  } else if (!stream->skip_header()) {
    return {nullptr, ZipFault::damaged};
  }
  return {std::move(stream), ZipFault::none};
}

}  // namespace tessarine
