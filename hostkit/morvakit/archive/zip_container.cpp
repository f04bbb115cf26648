#include "morvakit/archive/zip_container.h"

#include <algorithm>
#include <memory>

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using tessarine::ZipFault;
using tessarine::ZipState;

tessarine::ZipBounds bounds_of(Orlec::ParseLimits const& limits) {
  return {static_cast<std::uint64_t>(std::max<std::int64_t>(limits.i_entries, 0))};
}

/// Ends the context where the directory could not be read; whether it could.
bool check_state(ZipState state, Orlec::Reader const& reader, ReadContext& context) {
  auto const bounds = bounds_of(context.limits());
  switch (state) {
    case ZipState::open:
      return true;
    case ZipState::unreadable:
      return context.end_unreadable(reader);
    case ZipState::too_many_entries:
      return context.end(ParseOutcome::limit_reached,
                         "a container of over " + std::to_string(bounds.entries) + " entries");
    case ZipState::directory_too_large:
      return context.end(
          ParseOutcome::limit_reached,
          "a ZIP directory over " + std::to_string(bounds.directory_bytes) + " bytes");
    case ZipState::no_directory:
      return context.end(ParseOutcome::damaged, "the ZIP directory is missing");
    case ZipState::damaged:
      break;
  }
  return context.end(ParseOutcome::damaged, "the ZIP directory is broken");
}

}  // namespace

ZipContainer::ZipContainer(Orlec::Reader const& reader, ReadContext& context, Directory directory)
    : context_(context), archive_(reader, bounds_of(context.limits())) {
  auto const state = archive_.state();
  bool const is_broken = state == ZipState::no_directory || state == ZipState::damaged;
  if (is_broken && directory == Directory::may_be_broken) {
    return;
  }
  if (check_state(state, reader, context)) {
    list();
  }
}

void ZipContainer::list() {
  auto const count = archive_.count();
  names_.reserve(count);
  is_doubled_.resize(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    // The archive keeps the text of its names, which the map may look at.
    auto const name = archive_.entry(i).name;
    names_.emplace_back(name);
    if (auto const [first, is_new] = exact_.emplace(name, i); !is_new) {
      is_doubled_[i] = true;
      is_doubled_[first->second] = true;
    }
    loose_.emplace(tessarine::zip_name_key(name), i);
  }
}

bool ZipContainer::is_open() const {
  return archive_.state() == ZipState::open;
}

std::uint64_t ZipContainer::count() const {
  return names_.size();
}

std::string const& ZipContainer::name(std::uint64_t index) const {
  static std::string const none;
  return index < count() ? names_[index] : none;
}

std::int64_t ZipContainer::stated_size(std::uint64_t index) const {
  return archive_.entry(index).unpacked;
}

std::optional<std::uint64_t> ZipContainer::find(std::string_view name) const {
  if (auto const found = exact_.find(name); found != exact_.end()) {
    return found->second;
  }
  if (auto const found = loose_.find(tessarine::zip_name_key(name)); found != loose_.end()) {
    return found->second;
  }
  return std::nullopt;
}

bool ZipContainer::is_encrypted(std::uint64_t index) const {
  return archive_.entry(index).is_encrypted;
}

bool ZipContainer::read(std::uint64_t index, Consumer const& consumer) {
  if (index < count() && is_doubled_[index]) {
    context_.note(ParseOutcome::damaged, "two parts have the name " + name(index));
  }
  auto const part_name = "the part " + name(index);
  switch (unpack(index, consumer)) {
    case Unpacking::done:
      return true;
    case Unpacking::stopped:
      return false;
    case Unpacking::encrypted:
      return context_.end(ParseOutcome::encrypted, "the document needs a password");
    case Unpacking::unsupported:
      context_.note(ParseOutcome::not_supported, part_name + " is packed by method " +
                                                     std::to_string(archive_.entry(index).method));
      return false;
    case Unpacking::damaged:
      break;
  }
  context_.note(ParseOutcome::damaged, part_name + " cannot be unpacked");
  return false;
}

void ZipContainer::read_member(std::uint64_t index, std::string_view shown_name,
                               Consumer const& consumer) {
  auto const quoted = "\"" + std::string(shown_name) + "\"";
  switch (unpack(index, consumer)) {
    case Unpacking::done:
    case Unpacking::stopped:
      return;
    case Unpacking::encrypted:
      context_.note(ParseOutcome::incomplete, quoted + " needs a password");
      return;
    case Unpacking::unsupported:
      context_.note(ParseOutcome::incomplete,
                    quoted + ": packed by method " + std::to_string(archive_.entry(index).method));
      return;
    case Unpacking::damaged:
      break;
  }
  context_.note(ParseOutcome::incomplete, quoted + ": cannot be unpacked");
}

ZipContainer::Unpacking ZipContainer::unpack(std::uint64_t index, Consumer const& consumer) {
  if (index >= count() || context_.ended()) {
    return Unpacking::stopped;
  }
  auto part = archive_.open(index);
  if (part.fault() == ZipFault::encrypted) {
    return Unpacking::encrypted;
  }
  if (part.fault() == ZipFault::unsupported) {
    return Unpacking::unsupported;
  }
  auto const packed = archive_.entry(index).packed;
  constexpr std::size_t piece_size = std::size_t{64} << 10;
  // Not filled with zeros: most parts take little of it.
  auto const buffer = std::make_unique_for_overwrite<char[]>(piece_size);
  std::int64_t unpacked = 0;
  for (;;) {
    auto const got = part.read(buffer.get(), piece_size);
    if (got == 0) {
      return Unpacking::done;
    }
    if (got < 0) {
      return Unpacking::damaged;
    }
    unpacked += got;
    if (!context_.charge_expansion(packed, unpacked, got) || !context_.keep_going() ||
        !consumer(std::string_view(buffer.get(), static_cast<std::size_t>(got)))) {
      return Unpacking::stopped;
    }
  }
}

}  // namespace morvakit
