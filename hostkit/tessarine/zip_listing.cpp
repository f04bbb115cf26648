#include "tessarine/zip_listing.h"

#include <algorithm>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

constexpr std::uint64_t entry_limit = 20000;
// What is searched, in all, for the next header behind entries that do not tell their length.
constexpr std::int64_t header_search_limit = std::int64_t{1} << 20;

}  // namespace

ZipListing::ZipListing(Orlec::Reader const& reader)
    : reader_(reader), archive_(reader, {entry_limit}) {
  if (archive_.state() == ZipState::open) {
    list_directory();
  } else {
    follow_headers();
  }
}

void ZipListing::list_directory() {
  for (std::uint64_t i = 0; i < archive_.count(); ++i) {
    auto const entry = archive_.entry(i);
    entries_.push_back(
        {zip_name_key(entry.name), entry.is_encrypted, static_cast<std::int64_t>(i)});
  }
}

void ZipListing::follow_headers() {
  std::int64_t position = 0;
  std::int64_t searched = 0;
  while (searched < header_search_limit && entries_.size() < entry_limit) {
    auto const header = read_piece(reader_, position, 30);
    if (header.size() < 30 || !header.starts_with("PK\3\4")) {
      auto const piece = read_piece(reader_, position, 1 << 16);
      auto const next = piece.find("PK\3\4", 1);
      if (piece.size() < 30) {
        return;
      }
      auto const step = next == std::string::npos ? piece.size() - 3 : next;
      position += static_cast<std::int64_t>(step);
      searched += static_cast<std::int64_t>(step);
      continue;
    }
    auto const name = read_piece(reader_, position + 30, little16(header, 26));
    auto const data = position + 30 + little16(header, 26) + little16(header, 28);
    auto const length = std::int64_t{little32(header, 18)};
    auto const is_stored = little16(header, 8) == 0;
    entries_.push_back(
        {zip_name_key(name), (little16(header, 6) & 1U) != 0, -1, data, is_stored ? length : 0});
    // Each entry counts a little, so that a chain of empty ones ends too.
    searched += 256;
    position = data + (length == 0xffffffff ? 0 : length);
  }
}

ZipListing::Entry const* ZipListing::find(std::string_view name) const {
  auto const key = zip_name_key(name);
  auto const found = std::find_if(entries_.begin(), entries_.end(),
                                  [&key](Entry const& entry) { return entry.name == key; });
  return found == entries_.end() ? nullptr : &*found;
}

bool ZipListing::has(std::string_view name) const {
  return find(name) != nullptr;
}

bool ZipListing::has_below(std::string_view prefix) const {
  auto const key = zip_name_key(prefix);
  return std::any_of(entries_.begin(), entries_.end(),
                     [&key](Entry const& entry) { return entry.name.starts_with(key); });
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
    return read_piece(reader_, entry->offset, std::min(entry->stored, limit));
  }
  auto part = archive_.open(static_cast<std::uint64_t>(entry->index));
  std::string content;
  char buffer[8192];
  while (static_cast<std::int64_t>(content.size()) < limit) {
    auto const want =
        std::min<std::int64_t>(limit - static_cast<std::int64_t>(content.size()), sizeof(buffer));
    auto const got = part.read(buffer, static_cast<std::size_t>(want));
    if (got <= 0) {
      break;
    }
    content.append(buffer, static_cast<std::size_t>(got));
  }
  return content;
}

}  // namespace tessarine
