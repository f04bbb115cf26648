#include <vector>

#include "hostkit/tessarine/memory_reader.h"

#include "fuzz/mutators.h"
#include "tessarine/compound_file.h"

namespace fuzz {

namespace {

constexpr std::int64_t longest_piece = 4096;

/// Changes a piece of a stream, and writes back as much as it had.
bool change_piece(std::string& file, tessarine::SectorChain& stream, std::int64_t from,
                  std::int64_t size) {
  std::string piece(static_cast<std::size_t>(size), '\0');
  piece.resize(
      static_cast<std::size_t>(std::max<std::int64_t>(stream.read(from, piece.data(), size), 0)));
  auto const changed = mutated(piece, piece.size());
  for (std::size_t i = 0; i < std::min(changed.size(), piece.size()); ++i) {
    auto const place = stream.place(from + static_cast<std::int64_t>(i));
    if (place < 0 || place >= static_cast<std::int64_t>(file.size())) {
      return false;
    }
    file[static_cast<std::size_t>(place)] = changed[i];
  }
  return !piece.empty();
}

}  // namespace

std::optional<std::string> mutate_ole(std::string const& input, Random& random) {
  if (!input.starts_with("\xd0\xcf\x11\xe0")) {
    return std::nullopt;
  }
  test::MemoryReader const reader(input, "input");
  tessarine::CompoundFile const container(reader);
  std::vector<tessarine::CompoundEntry const*> streams;
  for (auto const& entry : container.entries()) {
    if (!entry.is_storage && entry.size > 0) {
      streams.push_back(&entry);
    }
  }
  if (streams.empty()) {
    return std::nullopt;
  }
  auto const& entry = *streams[pick(random, streams.size())];
  auto stream = container.open(entry);
  // Half of the changes are to the head, where a stream says what it is made of.
  auto const size = std::min(entry.size, longest_piece);
  auto const last = static_cast<std::size_t>(entry.size - size);
  auto const from = pick(random, 2) == 0 ? 0 : pick(random, last + 1);
  auto file = input;
  return change_piece(file, stream, static_cast<std::int64_t>(from), size)
             ? std::optional(std::move(file))
             : std::nullopt;
}

}  // namespace fuzz
