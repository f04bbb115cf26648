#include "shards/shard_layout.h"

#include "shards/byte_coding.h"
#include "shards/checksum.h"

namespace tool {

namespace {

constexpr std::uint32_t format_version = 1;
constexpr std::size_t mark_size = shard_mark.size();
constexpr std::size_t checksum_at = 16;
static_assert(journal_mark.size() == mark_size && end_mark.size() == mark_size);

// All of a header but its checksum.
std::string checked_part(std::string_view header) {
  std::string part(header.substr(0, checksum_at));
  part += header.substr(ShardHeader::fixed_size);
  return part;
}

}  // namespace

std::string encode_header(std::string_view mark, ShardHeader const& header) {
  std::string bytes(mark);
  put_number(bytes, format_version, sizeof format_version);
  put_number(bytes, header.origin.size(), sizeof(std::uint32_t));
  std::string checksum;
  put_number(checksum, checksum_of(bytes + header.origin), sizeof(std::uint64_t));
  return bytes + checksum + header.origin;
}

std::optional<std::size_t> header_size(std::string_view mark, std::string_view fixed) {
  ByteReader reader(fixed);
  bool const has_mark = reader.take_bytes(mark_size) == mark;
  std::uint64_t const version = reader.take_number(sizeof format_version);
  std::uint64_t const length = reader.take_number(sizeof(std::uint32_t));
  if (!has_mark || !reader.is_good() || version != format_version ||
      length > ShardHeader::longest_origin) {
    return std::nullopt;
  }
  return ShardHeader::fixed_size + static_cast<std::size_t>(length);
}

std::optional<ShardHeader> decode_header(std::string_view bytes) {
  ByteReader reader(bytes.substr(checksum_at));
  std::uint64_t const checksum = reader.take_number(sizeof(std::uint64_t));
  if (checksum != checksum_of(checked_part(bytes))) {
    return std::nullopt;
  }
  return ShardHeader{std::string(bytes.substr(ShardHeader::fixed_size))};
}

void put_head(std::string& bytes, BlockHead const& head) {
  put_number(bytes, head.bytes, sizeof head.bytes);
  put_number(bytes, head.records, sizeof head.records);
  put_number(bytes, head.checksum, sizeof head.checksum);
}

BlockHead take_head(std::string_view bytes) {
  ByteReader reader(bytes);
  BlockHead head;
  head.bytes = static_cast<std::uint32_t>(reader.take_number(sizeof head.bytes));
  head.records = static_cast<std::uint32_t>(reader.take_number(sizeof head.records));
  head.checksum = reader.take_number(sizeof head.checksum);
  return head;
}

void ShardTotals::add(ShardRecord const& record) {
  ++documents;
  failed += record.words.empty() ? 1U : 0U;
  partial += is_partial(record) ? 1U : 0U;
}

std::string encode_totals(ShardTrailer const& trailer) {
  std::string bytes;
  for (std::uint64_t const number :
       {trailer.totals.documents, trailer.totals.failed, trailer.totals.partial, trailer.blocks,
        trailer.index_offset}) {
    put_number(bytes, number, sizeof number);
  }
  return bytes;
}

std::string encode_trailer(ShardTrailer const& trailer) {
  std::string bytes = encode_totals(trailer);
  put_number(bytes, trailer.checksum, sizeof trailer.checksum);
  bytes += end_mark;
  return bytes;
}

std::optional<ShardTrailer> decode_trailer(std::string_view bytes) {
  ByteReader reader(bytes);
  ShardTrailer trailer;
  for (std::uint64_t* const number :
       {&trailer.totals.documents, &trailer.totals.failed, &trailer.totals.partial, &trailer.blocks,
        &trailer.index_offset, &trailer.checksum}) {
    *number = reader.take_number(sizeof *number);
  }
  return reader.take_bytes(mark_size) == end_mark ? std::optional(trailer) : std::nullopt;
}

}  // namespace tool
