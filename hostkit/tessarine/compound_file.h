#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/Orlec/IFile.h"

namespace tessarine {

/// Bytes that lie in pieces of a file, read as one run. Small reads come from a block that is kept,
/// so that one object serves one thread at a time.
class ScatteredBytes {
 public:
  explicit ScatteredBytes(Orlec::Reader const& file) : file_(file) {}

  /// Adds a piece at the end; a negative place stands for one that is lost.
  void append(std::int64_t place, std::int64_t size);
  std::int64_t size() const { return size_; }
  /// Where in the file the byte at `offset` lies; negative where it is lost, or past the end.
  std::int64_t place(std::int64_t offset) const;
  /// Number of bytes read, which is below `size` at the end and in front of a lost piece.
  std::int64_t read(std::int64_t offset, char* buffer, std::int64_t size) const;

  /// Bytes that one small read takes from the file.
  static constexpr std::int64_t block_size = 8192;

 private:
  struct Piece {
    std::int64_t begin;
    std::int64_t place;
  };

  std::size_t piece_at(std::int64_t offset) const;
  std::int64_t read_pieces(std::int64_t offset, char* buffer, std::int64_t size) const;

  Orlec::Reader const& file_;
  std::vector<Piece> pieces_;
  std::int64_t size_ = 0;
  mutable std::string block_;
  mutable std::int64_t block_begin_ = 0;
};

class SectorChain;

/// Sectors of one size, and the table that chains them: those of the file itself, or the small ones
/// within the root's stream.
class SectorSpace {
 public:
  explicit SectorSpace(Orlec::Reader const& file) : table(file) {}

  /// Where in the file a sector begins; negative where there is no such sector.
  std::int64_t place(std::uint32_t sector) const;
  /// The sector behind another one in its chain; a number without a sector at the end.
  std::uint32_t next(std::uint32_t sector) const;

  std::int64_t sector_size = 0;
  /// Number of sectors; no chain is longer.
  std::int64_t count = 0;
  ScatteredBytes table;
  /// What small sectors lie in; null for those of the file.
  SectorChain* container = nullptr;
};

/// A chain of sectors, followed as far as it is asked for.
class SectorChain {
 public:
  SectorChain(Orlec::Reader const& file, SectorSpace const& space, std::uint32_t first)
      : space_(space), bytes_(file), next_(first) {}

  /// As `ScatteredBytes::place` and `read`; a chain that is broken or runs in a circle has an end.
  std::int64_t place(std::int64_t offset);
  std::int64_t read(std::int64_t offset, char* buffer, std::int64_t size);

 private:
  void reach(std::int64_t size);

  SectorSpace const& space_;
  ScatteredBytes bytes_;
  std::uint32_t next_;
  std::int64_t followed_ = 0;
};

/// What the directory of a compound file says of one stream or storage.
struct CompoundEntry {
  std::string name;
  bool is_storage = false;
  /// Never more than the file has.
  std::int64_t size = 0;
  std::uint32_t first_sector = 0;
  /// Numbers of the entries in a storage, in the order of the directory.
  std::vector<std::uint32_t> children;
};

/// An OLE2 compound file, as [MS-CFB] describes it. What it costs to open one is bounded whatever
/// the file says: the directory to `ParseLimits::i_entries` as that is by default, everything else
/// to the size of the file; nothing is recursive, and each entry has one place in the tree at most.
class CompoundFile {
 public:
  explicit CompoundFile(Orlec::Reader const& file);
  CompoundFile(CompoundFile const&) = delete;
  CompoundFile& operator=(CompoundFile const&) = delete;

  /// Whether there is a directory with a root, which is entry 0.
  bool is_open() const { return !entries_.empty(); }
  /// An English phrase for what is wrong with the header or the directory; empty where nothing is.
  std::string const& fault() const { return fault_; }
  /// Whether the fault is that the directory has too many entries, of which the first are here.
  bool is_over_bound() const { return is_over_bound_; }
  std::vector<CompoundEntry> const& entries() const { return entries_; }
  /// The bytes of a stream. They have to go before this object.
  SectorChain open(CompoundEntry const& stream) const;

 private:
  struct Header;
  struct Links;

  void load_table(Header const& header);
  void load_directory(Header const& header);
  bool read_entries(std::uint32_t first, std::vector<Links>& links);
  void build_tree(std::vector<Links> const& links);
  void walk_siblings(std::uint32_t storage, std::vector<Links> const& links,
                     std::vector<bool>& placed);
  /// Whether an entry that another one names can be placed in the tree.
  bool enter(std::uint32_t entry, std::vector<bool>& placed);
  /// Children of one name cannot be told apart.
  void check_names(CompoundEntry const& storage);
  void find_fault(char const* fault);
  void load_small_sectors(Header const& header);

  Orlec::Reader const& file_;
  SectorSpace sectors_;
  SectorSpace small_sectors_;
  std::unique_ptr<SectorChain> small_stream_;
  std::int64_t small_below_ = 0;
  std::vector<CompoundEntry> entries_;
  std::string fault_;
  bool is_over_bound_ = false;
};

}  // namespace tessarine
