#include "morvakit/xml/xml_part.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace morvakit {

namespace {

/// The pieces of a part, in their order.
std::vector<std::uint64_t> find_pieces(ZipContainer const& container, std::string_view name) {
  if (auto const whole = container.find(name)) {
    return {*whole};
  }
  std::vector<std::uint64_t> pieces;
  while (true) {
    auto const beginning = std::string(name) + "/[" + std::to_string(pieces.size()) + "]";
    if (auto const last = container.find(beginning + ".last.piece")) {
      pieces.push_back(*last);
      return pieces;
    }
    auto const next = container.find(beginning + ".piece");
    if (!next) {
      return pieces;
    }
    pieces.push_back(*next);
  }
}

}  // namespace

bool parse_part(ZipContainer& container, ReadContext& context, std::string_view name,
                XmlHandler& handler, PartFault fault) {
  auto const pieces = find_pieces(container, name);
  if (pieces.empty()) {
    return false;
  }
  XmlStream stream(handler, context);
  bool const complete = std::all_of(pieces.begin(), pieces.end(), [&](std::uint64_t piece) {
    return container.read(piece, [&](std::string_view bytes) { return stream.feed(bytes, false); });
  });
  if (complete) {
    stream.feed({}, true);
  }
  if (fault == PartFault::damage && !stream.fault().empty()) {
    context.note(Orlec::ParseOutcome::damaged,
                 "the part " + std::string(name) + ", " + stream.fault());
  }
  return true;
}

std::optional<std::uint64_t> find_part(ZipContainer const& container, std::string_view name) {
  auto const pieces = find_pieces(container, name);
  return pieces.empty() ? std::nullopt : std::optional(pieces.front());
}

void parse_file(Orlec::Reader const& reader, ReadContext& context, XmlHandler& handler) {
  constexpr std::int64_t piece_size = std::int64_t{64} << 10;
  XmlStream stream(handler, context);
  std::string piece;
  std::int64_t offset = 0;
  for (bool last = false; !last && context.keep_going();) {
    piece.resize(static_cast<std::size_t>(piece_size));
    auto const got = reader.ReadAt(offset, piece.data(), piece_size);
    if (got < 0) {
      context.end_unreadable(reader);
      return;
    }
    piece.resize(static_cast<std::size_t>(got));
    offset += got;
    last = got == 0;
    if (!stream.feed(piece, last)) {
      break;
    }
  }
  if (!stream.fault().empty()) {
    context.end(Orlec::ParseOutcome::damaged, stream.fault());
  }
}

}  // namespace morvakit
