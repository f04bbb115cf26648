#include "shards/shard_reader.h"

#include <algorithm>
#include <utility>

#include "shards/checksum.h"
#include "shards/shard_error.h"

namespace tool {

namespace {

constexpr char const* damaged = "the shard is damaged; copy it again, or extract it again";
constexpr char const* cut_off =
    "the end of the shard is missing; copy it again, or extract it again";
constexpr char const* no_shard = "no shard; morvaai extract makes them";
constexpr char const* other_version = "a shard of another version of its format";

}  // namespace

bool has_shard_mark(InputFile const& file) {
  return file.size() >= shard_mark.size() && file.read(0, shard_mark.size()) == shard_mark;
}

bool is_shard(std::string const& path) {
  try {
    return has_shard_mark(InputFile(path));
  } catch (ShardError const&) {
    return false;
  }
}

ShardReader::ShardReader(std::string path) : file_(std::move(path)) {
  read_header();
  read_trailer();
  check_index();
  offset_ = header_.size();
}

void ShardReader::refuse(char const* why) const {
  throw ShardError(file_.path(), why);
}

void ShardReader::read_header() {
  if (!has_shard_mark(file_)) {
    refuse(no_shard);
  }
  if (file_.size() < ShardHeader::fixed_size + ShardTrailer::size) {
    refuse(cut_off);
  }
  auto const size = header_size(shard_mark, file_.read(0, ShardHeader::fixed_size));
  if (!size) {
    refuse(other_version);
  }
  if (file_.size() < *size + ShardTrailer::size) {
    refuse(cut_off);
  }
  header_ = file_.read(0, *size);
  auto header = decode_header(header_);
  if (!header) {
    refuse(damaged);
  }
  origin_ = std::move(header->origin);
}

void ShardReader::read_trailer() {
  std::uint64_t const end = file_.size() - ShardTrailer::size;
  auto const trailer = decode_trailer(file_.read(end, ShardTrailer::size));
  if (!trailer) {
    refuse(cut_off);
  }
  trailer_ = *trailer;
  if (trailer_.index_offset < header_.size() || trailer_.index_offset > end ||
      end - trailer_.index_offset != trailer_.blocks * BlockHead::size ||
      trailer_.blocks > end / BlockHead::size) {
    refuse(damaged);
  }
}

void ShardReader::check_index() const {
  constexpr std::uint64_t at_once = std::uint64_t{64} << 10;
  Checksum checksum;
  checksum.add(header_);
  std::uint64_t const end = file_.size() - ShardTrailer::size;
  for (std::uint64_t at = trailer_.index_offset; at < end; at += at_once) {
    checksum.add(file_.read(at, static_cast<std::size_t>(std::min(at_once, end - at))));
  }
  checksum.add(encode_totals(trailer_));
  if (checksum.value() != trailer_.checksum) {
    refuse(damaged);
  }
}

BlockHead ShardReader::head_of(std::uint64_t block) const {
  return take_head(file_.read(trailer_.index_offset + block * BlockHead::size, BlockHead::size));
}

// The block whose head stands at the offset, which lies before the index.
std::string ShardReader::block_at(std::uint64_t offset, BlockHead const& head) const {
  std::uint64_t const room = trailer_.index_offset - offset;
  if (room < BlockHead::size || head.bytes > room - BlockHead::size || head.bytes > largest_block ||
      head.records == 0 || take_head(file_.read(offset, BlockHead::size)) != head) {
    refuse(damaged);
  }
  std::string bytes = file_.read(offset + BlockHead::size, head.bytes);
  if (checksum_of(bytes) != head.checksum) {
    refuse(damaged);
  }
  return bytes;
}

// False behind the last block.
bool ShardReader::next_block() {
  if (block_ == trailer_.blocks) {
    if (offset_ != trailer_.index_offset || seen_ != trailer_.totals) {
      refuse(damaged);
    }
    return false;
  }
  BlockHead const head = head_of(block_);
  bytes_ = block_at(offset_, head);
  decoder_.emplace(bytes_);
  left_in_block_ = head.records;
  offset_ += BlockHead::size + head.bytes;
  ++block_;
  return true;
}

bool ShardReader::next(ShardRecord& record) {
  if (left_in_block_ == 0) {
    if (decoder_ && !decoder_->is_at_end()) {
      refuse(damaged);
    }
    if (!next_block()) {
      return false;
    }
  }
  if (!decoder_->take(record) || (seen_.documents > 0 && !path_before(last_path_, record.path))) {
    refuse(damaged);
  }
  --left_in_block_;
  seen_.add(record);
  last_path_ = record.path;
  return true;
}

std::optional<std::string> ShardReader::last_path() const {
  if (trailer_.blocks == 0) {
    return std::nullopt;
  }
  BlockHead const head = head_of(trailer_.blocks - 1);
  std::uint64_t const size = std::uint64_t{BlockHead::size} + head.bytes;
  if (size > trailer_.index_offset - header_.size()) {
    refuse(damaged);
  }
  std::string const bytes = block_at(trailer_.index_offset - size, head);
  RecordDecoder decoder(bytes);
  ShardRecord record;
  for (std::uint32_t i = 0; i < head.records; ++i) {
    if (!decoder.take(record)) {
      refuse(damaged);
    }
  }
  return record.path;
}

}  // namespace tool
