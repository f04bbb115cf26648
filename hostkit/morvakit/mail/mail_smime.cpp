#include "morvakit/mail/mail_smime.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "morvakit/spool.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using namespace std::string_view_literals;

constexpr unsigned tag_octets = 0x04;
constexpr unsigned tag_identifier = 0x06;
constexpr unsigned bit_constructed = 0x20;

constexpr auto signed_data = "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x02"sv;
constexpr auto enveloped_data = "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x03"sv;
constexpr auto encrypted_data = "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x06"sv;
constexpr auto enveloped_authentic = "\x2a\x86\x48\x86\xf7\x0d\x01\x09\x10\x01\x17"sv;

/// One element of an encoded structure.
struct Element {
  unsigned tag = 0;
  std::int64_t begin = 0;
  /// End of the content; the end of what it stands in where its length is left open.
  std::int64_t end = 0;
  bool is_open_ended = false;

  bool is_constructed() const { return (tag & bit_constructed) != 0; }
  bool is_octets() const { return (tag & ~bit_constructed) == tag_octets; }
};

class Structure {
 public:
  Structure(Orlec::Reader const& reader, ReadContext& context)
      : reader_(reader), context_(context) {}

  std::int64_t size() const { return reader_.GetSize(); }

  std::optional<Element> element(std::int64_t offset, std::int64_t limit) const {
    constexpr std::int64_t longest_head = 10;
    constexpr unsigned most_length_bytes = 7;
    auto const head =
        tessarine::read_piece(reader_, offset, std::min(longest_head, limit - offset));
    if (head.size() < 2) {
      return std::nullopt;
    }
    auto const byte = [&head](std::size_t at) {
      return static_cast<unsigned>(static_cast<unsigned char>(head[at]));
    };
    Element found;
    found.tag = byte(0);
    auto const count = byte(1) & 0x7fU;
    bool const is_long = byte(1) >= 0x80U;
    if (is_long && (count > most_length_bytes || head.size() < 2 + count)) {
      return std::nullopt;
    }
    std::int64_t length = is_long ? 0 : static_cast<std::int64_t>(count);
    for (std::size_t i = 0; is_long && i < count; ++i) {
      length = length << 8 | static_cast<std::int64_t>(byte(2 + i));
    }
    found.begin = offset + 2 + (is_long ? static_cast<std::int64_t>(count) : 0);
    found.is_open_ended = is_long && count == 0;
    found.end = found.is_open_ended ? limit : found.begin + std::min(length, limit - found.begin);
    return found;
  }

  std::string content(Element const& element) const {
    constexpr std::int64_t longest = 64;
    return tessarine::read_piece(reader_, element.begin,
                                 std::min(longest, element.end - element.begin));
  }

  /// Gathers the pieces of an octet string. Those of a divided one stand in a row within it, and
  /// are not divided further.
  void gather(Element const& octets, Spool& out) const {
    if (!octets.is_constructed()) {
      copy(octets, out);
      return;
    }
    for (auto offset = octets.begin; context_.keep_going();) {
      auto const piece = element(offset, octets.end);
      if (!piece || !piece->is_octets() || piece->is_open_ended) {
        return;
      }
      copy(*piece, out);
      offset = piece->end;
    }
  }

 private:
  void copy(Element const& element, Spool& out) const {
    constexpr std::int64_t piece_size = std::int64_t{64} << 10;
    for (auto offset = element.begin; offset < element.end;) {
      auto const piece =
          tessarine::read_piece(reader_, offset, std::min(piece_size, element.end - offset));
      if (piece.empty() || !out.append(piece)) {
        return;
      }
      offset += static_cast<std::int64_t>(piece.size());
    }
  }

  Orlec::Reader const& reader_;
  ReadContext& context_;
};

/// The first element in `outer` of that tag, whose siblings in front are passed over.
std::optional<Element> find_inside(Structure const& structure, std::optional<Element> const& outer,
                                   bool (*is_wanted)(Element const&)) {
  constexpr int most_siblings = 8;
  if (!outer) {
    return std::nullopt;
  }
  auto offset = outer->begin;
  for (int i = 0; i < most_siblings; ++i) {
    auto const found = structure.element(offset, outer->end);
    if (!found || is_wanted(*found) || found->is_open_ended) {
      return found && is_wanted(*found) ? found : std::nullopt;
    }
    offset = found->end;
  }
  return std::nullopt;
}

bool is_sequence(Element const& element) {
  return element.tag == 0x30U;
}

bool is_identifier(Element const& element) {
  return element.tag == tag_identifier;
}

bool is_explicit(Element const& element) {
  return element.tag == 0xa0U;
}

bool is_octets(Element const& element) {
  return element.is_octets();
}

}  // namespace

SmimeContent open_smime(Orlec::Reader const& message, ReadContext& context) {
  Structure const structure(message, context);
  auto const whole = structure.element(0, structure.size());
  auto const identifier = find_inside(structure, whole, is_identifier);
  if (!identifier) {
    return {};
  }
  auto const type = structure.content(*identifier);
  if (type == enveloped_data || type == encrypted_data || type == enveloped_authentic) {
    return {SmimeKind::encrypted, nullptr};
  }
  if (type != signed_data) {
    return {};
  }
  auto const data = find_inside(structure, find_inside(structure, whole, is_explicit), is_sequence);
  // Version and digest algorithms stand in front of the content.
  auto const inner = find_inside(structure, data, is_sequence);
  auto const octets = find_inside(structure, find_inside(structure, inner, is_explicit), is_octets);
  if (!octets) {
    return {};
  }
  auto bytes = std::make_unique<Spool>("signed content", context);
  structure.gather(*octets, *bytes);
  return {SmimeKind::signed_content, std::move(bytes)};
}

}  // namespace morvakit
