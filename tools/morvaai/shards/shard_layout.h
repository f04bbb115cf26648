#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "shards/shard_record.h"

namespace tool {

/// The parts of a shard: a header, blocks of records, an index with the heads of all blocks, and a
/// trailer. All numbers have their lowest byte first. docs/file-formats.md has each byte.

/// What files begin with: shards, and those of an extraction that is on its way.
constexpr std::string_view shard_mark = "\211SHD\r\n\032\n";
constexpr std::string_view journal_mark = "\211SHJ\r\n\032\n";
constexpr std::string_view end_mark = "\nSHDEND\n";

/// A block ends with the record that brings it to so many bytes.
constexpr std::size_t block_size = std::size_t{128} << 10;
/// No block has more: that, and a last record as large as can be.
constexpr std::size_t largest_block = block_size + largest_texts + most_words * 32;

/// The beginning of a file: by what the records were made, and all that is needed to trust it.
struct ShardHeader {
  static constexpr std::size_t fixed_size = 24;
  static constexpr std::size_t longest_origin = 4096;

  /// In one line: the version of the program, and its dictionary. Shards go together only where it
  /// is the same.
  std::string origin;
};
std::string encode_header(std::string_view mark, ShardHeader const& header);
/// The bytes of the whole header, of which these are the first `fixed_size`; nothing where they are
/// of no file with that mark, or of a later version.
std::optional<std::size_t> header_size(std::string_view mark, std::string_view fixed);
/// The header from all its bytes; nothing where they are damaged.
std::optional<ShardHeader> decode_header(std::string_view bytes);

/// What stands before a block, and again in the index.
struct BlockHead {
  static constexpr std::size_t size = 16;

  std::uint32_t bytes = 0;
  std::uint32_t records = 0;
  std::uint64_t checksum = 0;

  friend bool operator==(BlockHead const&, BlockHead const&) = default;
};
void put_head(std::string& bytes, BlockHead const& head);
/// From `BlockHead::size` bytes.
BlockHead take_head(std::string_view bytes);

/// How many documents a shard has.
struct ShardTotals {
  std::uint64_t documents = 0;
  /// Of them, those that gave no words, and those that gave words and were not read to their end.
  std::uint64_t failed = 0;
  std::uint64_t partial = 0;

  void add(ShardRecord const& record);
  friend bool operator==(ShardTotals const&, ShardTotals const&) = default;
};

/// The end of a shard.
struct ShardTrailer {
  static constexpr std::size_t size = 56;
  /// The first bytes, over which the checksum goes too.
  static constexpr std::size_t checked_size = 40;

  ShardTotals totals;
  std::uint64_t blocks = 0;
  std::uint64_t index_offset = 0;
  /// Of header, index and `checked_size` bytes: of all, since the index has those of the blocks.
  std::uint64_t checksum = 0;
};
/// The bytes that the checksum goes over.
std::string encode_totals(ShardTrailer const& trailer);
std::string encode_trailer(ShardTrailer const& trailer);
/// From `ShardTrailer::size` bytes; nothing where they do not end a shard.
std::optional<ShardTrailer> decode_trailer(std::string_view bytes);

}  // namespace tool
