#include "shards/extract_journal.h"

#include <utility>

#include "morvaai.h"

#include "shards/byte_coding.h"
#include "shards/checksum.h"
#include "shards/record_coding.h"
#include "shards/shard_error.h"
#include "shards/shard_layout.h"
#include "terminal/output.h"

namespace tool {

namespace {

constexpr std::size_t number_size = 8;
constexpr std::size_t length_size = 4;
// Length and checksum of what follows.
constexpr std::size_t head_size = length_size + number_size;
constexpr std::size_t stamp_size = 3 * number_size;

}  // namespace

struct ExtractJournal::Entry {
  ShardRecord record;
  FileStamp stamp;
  std::uint64_t size = 0;
};

ExtractJournal::ExtractJournal(std::string path, std::string const& origin)
    : file_(std::move(path)) {
  std::string const fixed = file_.read(0, ShardHeader::fixed_size);
  if (!journal_mark.starts_with(fixed.substr(0, journal_mark.size()))) {
    throw ShardError(file_.path(), "is in the way, and no unfinished shard; rename or remove it");
  }
  auto const size = header_size(journal_mark, fixed);
  std::string const bytes = size ? file_.read(0, *size) : std::string();
  auto const header = size == bytes.size() ? decode_header(bytes) : std::nullopt;
  if (header && header->origin == origin) {
    first_ = end_ = bytes.size();
    return;
  }
  if (!fixed.empty()) {
    complain("warning: " + printable(morvabs::from_path(file_.path())) + ": " +
             (header ? "was begun with another version or dictionary"
                     : "its header is damaged, or of another version of the format") +
             "; all is read anew");
  }
  begin(origin);
}

void ExtractJournal::begin(std::string const& origin) {
  std::string const header = encode_header(journal_mark, {origin});
  file_.truncate(0);
  file_.write(0, header);
  first_ = end_ = header.size();
}

// False where there is none that is whole.
bool ExtractJournal::read_entry(std::uint64_t place, Entry& entry) const {
  std::string const head = file_.read(place, head_size);
  ByteReader reader(head);
  std::uint64_t const size = reader.take_number(length_size);
  std::uint64_t const checksum = reader.take_number(number_size);
  if (!reader.is_good() || size < stamp_size || size > largest_block) {
    return false;
  }
  std::string const body = file_.read(place + head_size, static_cast<std::size_t>(size));
  if (body.size() != size || checksum_of(body) != checksum) {
    return false;
  }
  ByteReader numbers(body);
  entry.stamp.size = numbers.take_number(number_size);
  entry.stamp.content_changed = numbers.take_number(number_size);
  entry.stamp.changed = numbers.take_number(number_size);
  entry.size = head_size + size;
  RecordDecoder decoder(std::string_view(body).substr(stamp_size));
  return decoder.take(entry.record) && decoder.is_at_end();
}

void ExtractJournal::read(
    std::function<void(ShardRecord const&, FileStamp const&, std::uint64_t)> const& take) {
  Entry entry;
  for (end_ = first_; read_entry(end_, entry); end_ += entry.size) {
    take(entry.record, entry.stamp, end_);
  }
  file_.truncate(end_);
}

std::uint64_t ExtractJournal::add(ShardRecord const& record, FileStamp const& stamp) {
  RecordEncoder encoder;
  encoder.add(record);
  std::string body;
  put_number(body, stamp.size, number_size);
  put_number(body, stamp.content_changed, number_size);
  put_number(body, stamp.changed, number_size);
  body += encoder.bytes();
  std::string bytes;
  put_number(bytes, body.size(), length_size);
  put_number(bytes, checksum_of(body), number_size);
  bytes += body;
  file_.write(end_, bytes);
  return std::exchange(end_, end_ + bytes.size());
}

ShardRecord ExtractJournal::at(std::uint64_t place) const {
  Entry entry;
  if (!read_entry(place, entry)) {
    throw ShardError(file_.path(),
                     "was changed while it was in use; the same command again "
                     "reads what is missing");
  }
  return std::move(entry.record);
}

}  // namespace tool
