#include "tessarine/zip_directory.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "tessarine/byte_reader.h"
#include "tessarine/zip_unpacker.h"

namespace tessarine {
namespace {

constexpr std::size_t end_size = 22;
constexpr std::size_t locator_size = 20;
constexpr std::size_t large_end_size = 56;
constexpr std::size_t record_size = 46;
constexpr std::uint32_t stands_elsewhere = 0xffffffff;

std::int64_t signed_of(std::uint64_t offset) {
  return static_cast<std::int64_t>(
      std::min<std::uint64_t>(offset, std::numeric_limits<std::int64_t>::max()));
}

std::string piece_at(Orlec::Reader const& reader, std::uint64_t offset, std::uint64_t size) {
  return read_piece(reader, signed_of(offset), signed_of(size));
}

/// Whether the file can be read at all: a piece does not tell a fault from the end.
bool can_be_read(Orlec::Reader const& reader) {
  char byte = 0;
  return reader.GetSize() == 0 || reader.ReadAt(reader.GetSize() - 1, &byte, 1) >= 0;
}

/// What the end of a container says about its directories.
struct DirectoryClaim {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;

  void add_bytes(std::uint64_t more) {
    bytes += std::min(more, std::numeric_limits<std::uint64_t>::max() - bytes);
  }
};

/// The places of all end records in the last bytes, the last first, and what they claim together.
std::vector<std::size_t> find_ends(Orlec::Reader const& reader, std::string_view tail,
                                   DirectoryClaim& claim) {
  std::vector<std::size_t> ends;
  for (auto at = tail.find("PK"); at != std::string_view::npos; at = tail.find("PK", at + 2)) {
    auto const record = tail.substr(at);
    if (record.starts_with("PK\6\7")) {
      auto const large = piece_at(reader, little64(record, 8), large_end_size);
      claim.entries = std::max({claim.entries, little64(large, 24), little64(large, 32)});
      claim.add_bytes(little64(large, 40));
    } else if (record.starts_with("PK\5\6")) {
      auto const bytes = little32(record, 12);
      claim.add_bytes(bytes == stands_elsewhere ? 0 : bytes);
      ends.push_back(at);
    }
  }
  std::reverse(ends.begin(), ends.end());
  return ends;
}

/// The contents of an extra field; null where there is none of that kind.
std::optional<std::string_view> find_extra(std::string_view extra, std::uint16_t kind) {
  while (extra.size() >= 4) {
    auto const content = extra.substr(4, little16(extra, 2));
    if (content.size() < little16(extra, 2)) {
      return std::nullopt;
    }
    if (little16(extra, 0) == kind) {
      return content;
    }
    extra.remove_prefix(4 + content.size());
  }
  return std::nullopt;
}

/// Replaces the sizes and the place that do not fit into 32 bits. False where they are missing.
bool take_large_fields(ZipRecord& record, std::string_view extra) {
  constexpr std::uint16_t large_fields = 0x0001;
  auto const large = find_extra(extra, large_fields);
  std::size_t at = 0;
  for (auto* const field : {&record.unpacked, &record.packed, &record.offset}) {
    if (*field != stands_elsewhere) {
      continue;
    }
    if (!large || large->size() < at + 8) {
      return false;
    }
    *field = little64(*large, at);
    at += 8;
  }
  return true;
}

/// A name may stand a second time in UTF-8, with the checksum of the first.
void take_unicode_name(ZipRecord& record, std::string_view extra) {
  constexpr std::uint16_t unicode_name = 0x7075;
  constexpr std::size_t head_size = 5;
  auto const second = find_extra(extra, unicode_name);
  if (!second || second->size() < head_size || second->front() != 1) {
    return;
  }
  if (zip_checksum(0, record.name) == little32(*second, 1)) {
    record.name = second->substr(head_size);
  }
}

}  // namespace

/// What an end record says, in its usual form or in the large one in front of it.
struct ZipDirectory::End {
  std::uint64_t entries = 0;
  std::uint64_t bytes = 0;
  std::uint64_t offset = 0;
  bool is_large = false;
};

ZipState ZipDirectory::read(Orlec::Reader const& reader, ZipBounds bounds) {
  constexpr std::int64_t longest_tail = 65535 + end_size + locator_size;
  auto const start = std::max<std::int64_t>(0, reader.GetSize() - longest_tail);
  auto const tail = read_piece(reader, start, longest_tail);
  DirectoryClaim claim;
  auto const ends = find_ends(reader, tail, claim);
  if (claim.entries > bounds.entries) {
    return ZipState::too_many_entries;
  }
  if (claim.bytes > bounds.directory_bytes) {
    return ZipState::directory_too_large;
  }
  auto state = ZipState::no_directory;
  for (std::size_t const end : ends) {
    auto const found = read_at(reader, tail, end, static_cast<std::uint64_t>(start) + end, bounds);
    if (found == ZipState::open || found == ZipState::too_many_entries) {
      return found;
    }
    records_.clear();
    bytes_.clear();
    state = found == ZipState::no_directory ? state : found;
  }
  return can_be_read(reader) ? state : ZipState::unreadable;
}

/// Reads the directory of the end record at `place` in the tail, which is at `offset` in the file.
ZipState ZipDirectory::read_at(Orlec::Reader const& reader, std::string_view tail,
                               std::size_t place, std::uint64_t offset, ZipBounds bounds) {
  auto const record = tail.substr(place);
  if (record.size() < end_size || little16(record, 8) != little16(record, 10)) {
    return ZipState::no_directory;
  }
  End end{little16(record, 10), little32(record, 12), little32(record, 16)};
  bool has_other_disks = little32(record, 4) != 0;
  if (place >= locator_size && tail.substr(place - locator_size).starts_with("PK\6\7")) {
    auto const large = piece_at(reader, little64(tail, place - locator_size + 8), large_end_size);
    if (large.size() < large_end_size || !large.starts_with("PK\6\6")) {
      return ZipState::damaged;
    }
    has_other_disks = little64(large, 16) != 0 || little64(large, 24) != little64(large, 32);
    end = {little64(large, 32), little64(large, 40), little64(large, 48), true};
  }
  bool const is_comment_cut = record.size() - end_size < little16(record, 20);
  if (has_other_disks || is_comment_cut || end.offset > offset || end.bytes > offset - end.offset) {
    return ZipState::damaged;
  }
  bytes_ = piece_at(reader, end.offset, end.bytes);
  return bytes_.size() < end.bytes ? ZipState::damaged : list(end, bounds);
}

ZipState ZipDirectory::list(End const& end, ZipBounds bounds) {
  records_.reserve(std::min<std::uint64_t>(end.entries, bytes_.size() / record_size));
  for (std::string_view rest = bytes_; !rest.empty();) {
    if (!rest.starts_with("PK\1\2")) {
      return ZipState::no_directory;
    }
    auto const name_size = little16(rest, 28);
    auto const extra_size = little16(rest, 30);
    auto const size = record_size + name_size + extra_size + little16(rest, 32);
    if (rest.size() < size) {
      return ZipState::damaged;
    }
    constexpr int encrypted_by_its_method = 99;
    ZipRecord record{rest.substr(record_size, name_size),
                     little32(rest, 24),
                     little32(rest, 20),
                     little32(rest, 42),
                     little32(rest, 16),
                     little16(rest, 10)};
    record.is_encrypted = (little16(rest, 8) & 1U) != 0 || record.method == encrypted_by_its_method;
    auto const extra = rest.substr(record_size + name_size, extra_size);
    if (!take_large_fields(record, extra)) {
      return ZipState::damaged;
    }
    take_unicode_name(record, extra);
    records_.push_back(record);
    if (records_.size() > bounds.entries) {
      return ZipState::too_many_entries;
    }
    rest.remove_prefix(size);
  }
  // Some writers of more entries than the usual form can count keep to it all the same.
  auto const beyond = records_.size() - end.entries;
  bool const is_counted = end.is_large ? beyond == 0 : beyond % 0x10000 == 0;
  return is_counted ? ZipState::open : ZipState::damaged;
}

}  // namespace tessarine
