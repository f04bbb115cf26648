#include "morvakit/spool.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <unistd.h>

#include "host/utf8.h"

namespace morvakit {

namespace {

constexpr std::int64_t memory_limit = std::int64_t{16} << 20;

}  // namespace

Spool::Spool(std::string_view name, ReadContext& context)
    : context_(context), name_(std::string(name).c_str()) {}

bool Spool::append(std::string_view bytes) {
  if (!context_.keep_going()) {
    return false;
  }
  auto const added = static_cast<std::int64_t>(bytes.size());
  auto const most = context_.limits().i_input_bytes;
  if (size_ + added > most) {
    return refuse("over " + std::to_string(most) + " bytes", Orlec::ParseOutcome::limit_reached);
  }
  if (!is_in_file(size_ + added)) {
    memory_.append(bytes);
  } else if (!write_to_file(bytes)) {
    return refuse("no room for a temporary copy", Orlec::ParseOutcome::incomplete);
  }
  size_ += added;
  return true;
}

bool Spool::refuse(std::string const& why, Orlec::ParseOutcome outcome) {
  context_.note(outcome, "\"" + morvabs::to_utf8(name_.get_ws()) + "\": " + why);
  return false;
}

bool Spool::is_in_file(std::int64_t size) {
  if (size > memory_limit && !std::exchange(has_outgrown_memory_, true)) {
    file_ = morvabs::open_unnamed_file();
  }
  return file_.is_open();
}

bool Spool::write_to_file(std::string_view bytes) {
  if (!memory_.empty()) {
    std::string const kept = std::exchange(memory_, {});
    if (!write_to_file(kept)) {
      return false;
    }
  }
  while (!bytes.empty()) {
    auto const written = ::write(file_.get(), bytes.data(), bytes.size());
    if (written <= 0) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::int64_t Spool::ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const {
  auto const count = std::min(size, size_ - offset);
  if (offset < 0 || count <= 0) {
    return 0;
  }
  if (file_.is_open()) {
    return ::pread(file_.get(), buffer, static_cast<std::size_t>(count), offset);
  }
  std::memcpy(buffer, memory_.data() + offset, static_cast<std::size_t>(count));
  return count;
}

ReaderSlice::ReaderSlice(Orlec::Reader const& whole, std::string_view name, std::int64_t offset,
                         std::int64_t size)
    : whole_(whole),
      name_(std::string(name).c_str()),
      offset_(std::clamp<std::int64_t>(offset, 0, whole.GetSize())),
      size_(std::clamp<std::int64_t>(size, 0, whole.GetSize() - offset_)) {}

std::int64_t ReaderSlice::ReadAt(std::int64_t offset, void* buffer, std::int64_t size) const {
  auto const count = std::min(size, size_ - offset);
  return offset < 0 || count <= 0 ? 0 : whole_.ReadAt(offset_ + offset, buffer, count);
}

}  // namespace morvakit
