#include "shards/shard_writer.h"

#include <cerrno>
#include <utility>

#include <sys/stat.h>

#include "shards/shard_error.h"
#include "shards/shard_names.h"
#include "shards/shard_reader.h"

namespace tool {

namespace {

// Made anew where it is none that a killed run has left.
LockedFile open_new(std::string const& path) {
  check_output(path);
  LockedFile file(new_shard_of(path));
  std::string const begin = file.read(0, shard_mark.size());
  if (!shard_mark.starts_with(begin)) {
    throw ShardError(file.path(), "is in the way, and no shard; rename or remove it");
  }
  file.truncate(0);
  return file;
}

}  // namespace

void check_output(std::string const& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    if (errno != ENOENT) {
      throw ShardError(path, errno);
    }
    return;
  }
  InputFile const file(path);
  if (file.size() > 0 && !has_shard_mark(file)) {
    throw ShardError(path, "is no shard, and is not replaced; name another file with -o");
  }
}

ShardWriter::ShardWriter(std::string path, std::string const& origin)
    : path_(std::move(path)), file_(open_new(path_)) {
  std::string const header = encode_header(shard_mark, {origin});
  append(header);
  checksum_.add(header);
}

ShardWriter::~ShardWriter() {
  if (!is_done_) {
    try {
      file_.remove();
    } catch (ShardError const&) {
      // The next run overwrites it.
    }
  }
}

void ShardWriter::append(std::string_view bytes) {
  file_.write(offset_, bytes);
  offset_ += bytes.size();
}

void ShardWriter::add(ShardRecord const& record) {
  if (!is_storable(record) ||
      (block_.count() + trailer_.blocks > 0 && !path_before(last_path_, record.path))) {
    throw ShardError(path_, "a record is not as it should be, or not in order");
  }
  block_.add(record);
  trailer_.totals.add(record);
  last_path_ = record.path;
  if (block_.bytes().size() >= block_size) {
    end_block();
  }
}

void ShardWriter::end_block() {
  std::string const& bytes = block_.bytes();
  std::string head;
  put_head(head, {static_cast<std::uint32_t>(bytes.size()), block_.count(), checksum_of(bytes)});
  append(head);
  append(bytes);
  index_ += head;
  ++trailer_.blocks;
  block_.clear();
}

WrittenShard ShardWriter::finish() {
  if (block_.count() > 0) {
    end_block();
  }
  trailer_.index_offset = offset_;
  checksum_.add(index_);
  checksum_.add(encode_totals(trailer_));
  trailer_.checksum = checksum_.value();
  append(index_);
  append(encode_trailer(trailer_));
  file_.move_to(path_);
  is_done_ = true;
  return {trailer_.totals, offset_, trailer_.checksum};
}

}  // namespace tool
