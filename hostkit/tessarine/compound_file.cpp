#include "tessarine/compound_file.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>
#include <utility>

#include "host/Orlec/ParseLimits.h"
#include "host/utf8.h"

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

constexpr std::uint32_t no_sector = 0xffffffff;
/// Numbers from here on mark free sectors, ends of chains and the tables themselves.
constexpr std::uint32_t first_mark = 0xfffffffa;
constexpr std::uint32_t no_entry = 0xffffffff;
constexpr std::int64_t header_size = 512;
constexpr std::int64_t entry_size = 128;
constexpr std::int64_t number_size = 4;
/// A stream of small sectors is never longer: each of them may be a piece that is kept.
constexpr std::uint32_t most_small_below = 64 << 10;

std::int64_t round_up(std::int64_t value, std::int64_t unit) {
  return value / unit + (value % unit != 0 ? 1 : 0);
}

std::string entry_name(std::string_view entry) {
  constexpr std::size_t longest_name = 32;
  std::wstring name;
  for (std::size_t i = 0; i < longest_name && little16(entry, 2 * i) != 0; ++i) {
    auto const unit = wchar_t{little16(entry, 2 * i)};
    bool const is_second = unit >= 0xdc00 && unit <= 0xdfff;
    if (is_second && !name.empty() && name.back() >= 0xd800 && name.back() <= 0xdbff) {
      name.back() = 0x10000 + ((name.back() - 0xd800) << 10) + (unit - 0xdc00);
    } else {
      name += unit;
    }
  }
  return morvabs::to_utf8(name);
}

}  // namespace

void ScatteredBytes::append(std::int64_t place, std::int64_t size) {
  bool const continues = !pieces_.empty() && place >= 0 && pieces_.back().place >= 0 &&
                         pieces_.back().place + (size_ - pieces_.back().begin) == place;
  if (!continues) {
    pieces_.push_back({size_, place});
  }
  size_ += size;
}

std::size_t ScatteredBytes::piece_at(std::int64_t offset) const {
  auto const behind =
      std::upper_bound(pieces_.begin(), pieces_.end(), offset,
                       [](std::int64_t value, Piece const& piece) { return value < piece.begin; });
  return static_cast<std::size_t>(behind - pieces_.begin()) - 1;
}

std::int64_t ScatteredBytes::place(std::int64_t offset) const {
  if (offset < 0 || offset >= size_) {
    return -1;
  }
  auto const& piece = pieces_[piece_at(offset)];
  return piece.place < 0 ? -1 : piece.place + (offset - piece.begin);
}

std::int64_t ScatteredBytes::read_pieces(std::int64_t offset, char* buffer,
                                         std::int64_t size) const {
  auto const count = std::min(size, size_ - offset);
  std::int64_t done = 0;
  for (auto i = piece_at(offset); done < count; ++i) {
    auto const& piece = pieces_[i];
    auto const end = i + 1 < pieces_.size() ? pieces_[i + 1].begin : size_;
    auto const wanted = std::min(count - done, end - (offset + done));
    if (piece.place < 0) {
      break;
    }
    auto const got =
        file_.ReadAt(piece.place + (offset + done - piece.begin), buffer + done, wanted);
    done += std::max<std::int64_t>(got, 0);
    if (got != wanted) {
      break;
    }
  }
  return done;
}

std::int64_t ScatteredBytes::read(std::int64_t offset, char* buffer, std::int64_t size) const {
  if (offset < 0 || offset >= size_ || size <= 0) {
    return 0;
  }
  if (size > block_size / 2) {
    return read_pieces(offset, buffer, size);
  }
  auto const kept_end = block_begin_ + static_cast<std::int64_t>(block_.size());
  if (offset < block_begin_ || offset + size > kept_end) {
    block_.resize(static_cast<std::size_t>(block_size));
    block_.resize(static_cast<std::size_t>(read_pieces(offset, block_.data(), block_size)));
    block_begin_ = offset;
  }
  auto const skipped = static_cast<std::size_t>(offset - block_begin_);
  auto const count = std::min(static_cast<std::size_t>(size), block_.size() - skipped);
  std::memcpy(buffer, block_.data() + skipped, count);
  return static_cast<std::int64_t>(count);
}

std::int64_t SectorSpace::place(std::uint32_t sector) const {
  if (sector >= count) {
    return -1;
  }
  return container == nullptr ? (std::int64_t{sector} + 1) * sector_size
                              : container->place(std::int64_t{sector} * sector_size);
}

std::uint32_t SectorSpace::next(std::uint32_t sector) const {
  char bytes[number_size];
  bool const is_known =
      table.read(std::int64_t{sector} * number_size, bytes, number_size) == number_size;
  return is_known ? little32({bytes, number_size}, 0) : no_sector;
}

void SectorChain::reach(std::int64_t size) {
  while (bytes_.size() < size && followed_ < space_.count) {
    auto const place = space_.place(next_);
    if (place < 0) {
      return;
    }
    bytes_.append(place, space_.sector_size);
    next_ = space_.next(next_);
    ++followed_;
  }
}

std::int64_t SectorChain::place(std::int64_t offset) {
  reach(offset + 1);
  return bytes_.place(offset);
}

std::int64_t SectorChain::read(std::int64_t offset, char* buffer, std::int64_t size) {
  reach(offset + std::max(size, ScatteredBytes::block_size));
  return bytes_.read(offset, buffer, size);
}

/// What is used of the file's header.
struct CompoundFile::Header {
  std::string bytes;

  bool is_valid() const {
    return bytes.size() == header_size && little64(bytes, 0) == 0xe11ab1a1e011cfd0 &&
           sector_shift() >= 7 && sector_shift() <= 16 && small_shift() >= 6 &&
           small_shift() <= sector_shift();
  }
  std::uint32_t sector_shift() const { return little16(bytes, 30); }
  std::uint32_t small_shift() const { return little16(bytes, 32); }
  std::uint32_t table_sectors() const { return little32(bytes, 44); }
  std::uint32_t directory() const { return little32(bytes, 48); }
  std::uint32_t small_below() const { return little32(bytes, 56); }
  std::uint32_t small_table() const { return little32(bytes, 60); }
  std::uint32_t table_list() const { return little32(bytes, 68); }
  std::string_view listed_here() const { return std::string_view(bytes).substr(76); }
};

/// The numbers by which an entry hangs in the tree.
struct CompoundFile::Links {
  std::uint32_t left = no_entry;
  std::uint32_t right = no_entry;
  std::uint32_t child = no_entry;
  bool is_used = false;
};

CompoundFile::CompoundFile(Orlec::Reader const& file)
    : file_(file), sectors_(file), small_sectors_(file) {
  Header const header{read_piece(file, 0, header_size)};
  if (!header.is_valid()) {
    fault_ = "the OLE2 header is damaged";
    return;
  }
  sectors_.sector_size = std::int64_t{1} << header.sector_shift();
  sectors_.count = std::min<std::int64_t>(
      std::max<std::int64_t>(round_up(file.GetSize(), sectors_.sector_size) - 1, 0), first_mark);
  load_table(header);
  load_directory(header);
  if (is_open()) {
    load_small_sectors(header);
  }
}

/// The table that chains the sectors lies in sectors of its own, which the header lists, and behind
/// those it has room for, a chain of sectors whose last number is the next of them.
void CompoundFile::load_table(Header const& header) {
  auto const most = std::min<std::int64_t>(
      header.table_sectors(), round_up(sectors_.count * number_size, sectors_.sector_size));
  auto listed = std::string(header.listed_here());
  auto next = header.table_list();
  for (std::int64_t known = 0; known < most;) {
    auto const numbers = std::min<std::int64_t>(
        most - known, static_cast<std::int64_t>(listed.size()) / number_size);
    for (std::int64_t i = 0; i < numbers; ++i) {
      auto const sector = little32(listed, static_cast<std::size_t>(i * number_size));
      sectors_.table.append(sectors_.place(sector), sectors_.sector_size);
    }
    known += numbers;
    auto const place = sectors_.place(next);
    listed = place < 0 ? std::string{} : read_piece(file_, place, sectors_.sector_size);
    if (listed.size() < 2 * number_size) {
      return;
    }
    next = little32(listed, listed.size() - number_size);
    listed.resize(listed.size() - number_size);
  }
}

void CompoundFile::load_directory(Header const& header) {
  std::vector<Links> links;
  if (!read_entries(header.directory(), links)) {
    entries_.clear();
    return;
  }
  if (entries_.empty() || !entries_.front().is_storage) {
    fault_ = "the OLE2 directory is missing";
    entries_.clear();
    return;
  }
  build_tree(links);
}

bool CompoundFile::read_entries(std::uint32_t first, std::vector<Links>& links) {
  constexpr char type_storage = 1;
  constexpr char type_stream = 2;
  constexpr char type_root = 5;
  auto const most = static_cast<std::size_t>(Orlec::ParseLimits{}.i_entries);
  bool const has_long_sizes = sectors_.sector_size > 512;
  std::unordered_set<std::uint32_t> seen;
  auto sector = first;
  for (; sectors_.place(sector) >= 0; sector = sectors_.next(sector)) {
    if (!seen.insert(sector).second) {
      fault_ = "the OLE2 directory runs in a circle";
      return false;
    }
    auto const bytes = read_piece(file_, sectors_.place(sector), sectors_.sector_size);
    auto rest = std::string_view(bytes);
    for (; rest.size() >= entry_size; rest.remove_prefix(entry_size)) {
      if (entries_.size() == most) {
        is_over_bound_ = true;
        fault_ = "the OLE2 directory has over " + std::to_string(most) + " entries";
        return true;
      }
      auto const type = rest[66];
      auto const size = static_cast<std::int64_t>(
          has_long_sizes ? little64(rest, 120) : std::uint64_t{little32(rest, 120)});
      auto& entry = entries_.emplace_back();
      entry.is_storage = type == type_storage || type == type_root;
      entry.size = std::clamp<std::int64_t>(size, 0, file_.GetSize());
      entry.first_sector = little32(rest, 116);
      auto& link = links.emplace_back();
      link.is_used = entry.is_storage || type == type_stream;
      link.left = little32(rest, 68);
      link.right = little32(rest, 72);
      if (link.is_used) {
        entry.name = entry_name(rest);
        link.child = entry.is_storage ? little32(rest, 76) : no_entry;
      }
    }
  }
  if (sector < first_mark) {
    fault_ = "the OLE2 directory is cut short";
  }
  return true;
}

void CompoundFile::build_tree(std::vector<Links> const& links) {
  std::vector<bool> placed(entries_.size(), false);
  placed.front() = true;
  std::vector<std::uint32_t> storages{0};
  while (!storages.empty()) {
    auto const storage = storages.back();
    storages.pop_back();
    walk_siblings(storage, links, placed);
    for (auto const child : entries_[storage].children) {
      if (entries_[child].is_storage) {
        storages.push_back(child);
      }
    }
  }
}

/// What a storage holds is a binary tree, walked in its order. An entry that has a place already is
/// passed by, which ends circles.
void CompoundFile::walk_siblings(std::uint32_t storage, std::vector<Links> const& links,
                                 std::vector<bool>& placed) {
  std::vector<std::uint32_t> open;
  auto current = links[storage].child;
  while (true) {
    while (enter(current, placed)) {
      open.push_back(current);
      current = links[current].left;
    }
    if (open.empty()) {
      break;
    }
    auto const entry = open.back();
    open.pop_back();
    if (links[entry].is_used) {
      entries_[storage].children.push_back(entry);
    } else {
      find_fault("an OLE2 entry is neither stream nor storage");
    }
    current = links[entry].right;
  }
  check_names(entries_[storage]);
}

bool CompoundFile::enter(std::uint32_t entry, std::vector<bool>& placed) {
  if (entry == no_entry) {
    return false;
  }
  if (entry >= placed.size() || placed[entry]) {
    find_fault("the OLE2 directory is damaged");
    return false;
  }
  placed[entry] = true;
  return true;
}

void CompoundFile::check_names(CompoundEntry const& storage) {
  std::unordered_set<std::string> names;
  for (auto const child : storage.children) {
    if (!names.insert(ascii_lower(entries_[child].name)).second) {
      find_fault("two OLE2 entries have one name");
    }
  }
}

/// Of several faults the first counts.
void CompoundFile::find_fault(char const* fault) {
  if (fault_.empty()) {
    fault_ = fault;
  }
}

void CompoundFile::load_small_sectors(Header const& header) {
  auto const& root = entries_.front();
  small_stream_ = std::make_unique<SectorChain>(file_, sectors_, root.first_sector);
  small_below_ = std::min(header.small_below(), most_small_below);
  small_sectors_.container = small_stream_.get();
  small_sectors_.sector_size = std::int64_t{1} << header.small_shift();
  small_sectors_.count = round_up(root.size, small_sectors_.sector_size);
  auto const most = round_up(small_sectors_.count * number_size, sectors_.sector_size);
  auto sector = header.small_table();
  for (std::int64_t i = 0; i < most && sectors_.place(sector) >= 0; ++i) {
    small_sectors_.table.append(sectors_.place(sector), sectors_.sector_size);
    sector = sectors_.next(sector);
  }
}

SectorChain CompoundFile::open(CompoundEntry const& stream) const {
  auto const& space = stream.size < small_below_ ? small_sectors_ : sectors_;
  return SectorChain(file_, space, stream.first_sector);
}

}  // namespace tessarine
