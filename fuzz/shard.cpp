#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/require.h"
#include "shards/checksum.h"
#include "shards/record_coding.h"
#include "shards/shard_error.h"
#include "shards/shard_layout.h"
#include "shards/shard_reader.h"

// Shards: one that is read to its end has records as they should be, in order, which are the same
// when they are written and read again. An input whose first byte is even is the file behind it;
// else it is a block, of half as many records as that byte says, in a file that is right otherwise.

namespace {

using fuzz::require;
using tool::ShardRecord;

/// A file without a name that has a path while it is open.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content) : descriptor_(memfd_create("shard", MFD_CLOEXEC)) {
    require(
        write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
        "there is memory for the input");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(MemoryFile const&) = delete;
  MemoryFile& operator=(MemoryFile const&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

tool::ShardTotals totals_of(std::string_view block, std::uint32_t count) {
  tool::RecordDecoder decoder(block);
  tool::ShardTotals totals;
  ShardRecord record;
  for (std::uint32_t i = 0; i < count && decoder.take(record); ++i) {
    totals.add(record);
  }
  return totals;
}

std::string shard_around(std::string_view block, std::uint32_t count) {
  std::string const header = tool::encode_header(tool::shard_mark, {"morvaai"});
  std::string head;
  tool::put_head(head, {static_cast<std::uint32_t>(block.size()), count, tool::checksum_of(block)});
  tool::ShardTrailer trailer;
  trailer.totals = totals_of(block, count);
  trailer.blocks = 1;
  trailer.index_offset = header.size() + head.size() + block.size();
  trailer.checksum = tool::checksum_of(header + head + tool::encode_totals(trailer));
  return header + head + std::string(block) + head + tool::encode_trailer(trailer);
}

std::vector<ShardRecord> read_all(std::string_view content) {
  MemoryFile const file(content);
  tool::ShardReader reader(file.path());
  std::vector<ShardRecord> records;
  for (ShardRecord record; reader.next(record);) {
    require(tool::is_storable(record), "a record keeps its bounds");
    require(records.empty() || tool::path_before(records.back().path, record.path),
            "records come in order");
    records.push_back(record);
  }
  require(records.size() == reader.totals().documents, "the end of a shard counts its records");
  require(
      reader.last_path() == (records.empty() ? std::nullopt : std::optional(records.back().path)),
      "the last path is that of the last record");
  return records;
}

void check_again(std::vector<ShardRecord> const& records) {
  for (auto next = records.begin(); next != records.end();) {
    auto const first = next;
    tool::RecordEncoder encoder;
    while (next != records.end() && encoder.bytes().size() < tool::block_size) {
      encoder.add(*next++);
    }
    tool::RecordDecoder decoder(encoder.bytes());
    ShardRecord again;
    for (auto record = first; record != next; ++record) {
      require(decoder.take(again) && again == *record, "what is written is read again");
    }
    require(decoder.is_at_end(), "nothing is written behind the last record");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::string_view const rest(reinterpret_cast<char const*>(data) + 1, size - 1);
  try {
    check_again(read_all(data[0] % 2 == 0 ? std::string(rest) : shard_around(rest, data[0] / 2U)));
  } catch (tool::ShardError const&) {
    // Refused.
  }
  return 0;
}
