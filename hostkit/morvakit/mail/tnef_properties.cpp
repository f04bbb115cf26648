#include "morvakit/mail/tnef_properties.h"

#include <algorithm>

#include "morvakit/spool.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr unsigned flag_many = 0x1000;
constexpr unsigned first_named_id = 0x8000;
constexpr std::int64_t identifier_size = 16;

/// Bytes of one value of a type of fixed size, its padding included; 0 for the other types.
std::int64_t fixed_size(unsigned type) {
  switch (type) {
    case 0x0002:  // 16-bit integer
    case 0x0003:  // 32-bit integer
    case 0x0004:  // single
    case 0x000a:  // error
    case 0x000b:  // Boolean
      return 4;
    case 0x0005:  // double
    case 0x0006:  // currency
    case 0x0007:  // time of an application
    case 0x0014:  // 64-bit integer
    case 0x0040:  // time
      return 8;
    case 0x0048:  // class
      return identifier_size;
    default:
      return 0;
  }
}

bool is_of_variable_size(unsigned type) {
  auto const one = static_cast<MapiType>(type);
  return one == MapiType::text_8 || one == MapiType::text_16 || one == MapiType::binary ||
         one == MapiType::object;
}

/// Reads a row of properties through a small window, within bounds.
class Row {
 public:
  Row(Orlec::Reader const& file, std::int64_t begin, std::int64_t end)
      : file_(file), at_(begin), end_(end) {}

  std::int64_t at() const { return at_; }
  bool has(std::int64_t size) const { return size >= 0 && size <= end_ - at_; }

  /// False, with nothing taken, where less than four bytes are left.
  bool take32(std::uint32_t& value) {
    if (!has(4)) {
      return false;
    }
    if (at_ < window_begin_ ||
        at_ + 4 > window_begin_ + static_cast<std::int64_t>(window_.size())) {
      constexpr std::int64_t window_size = 4096;
      window_ = tessarine::read_piece(file_, at_, std::min(window_size, end_ - at_));
      window_begin_ = at_;
    }
    value = tessarine::little32(window_, static_cast<std::size_t>(at_ - window_begin_));
    at_ += 4;
    return true;
  }

  /// Passes over bytes that are filled up to a multiple of four.
  bool skip_padded(std::int64_t size) {
    if (!has(size)) {
      return false;
    }
    at_ = std::min(end_, at_ + (size + 3) / 4 * 4);
    return true;
  }

 private:
  Orlec::Reader const& file_;
  std::int64_t at_;
  std::int64_t end_;
  std::string window_;
  std::int64_t window_begin_ = 0;
};

/// The name of a named property: a number, or a text.
bool skip_name(Row& row) {
  std::uint32_t kind = 0;
  std::uint32_t value = 0;
  if (!row.skip_padded(identifier_size) || !row.take32(kind) || !row.take32(value)) {
    return false;
  }
  return kind == 0 || row.skip_padded(value);
}

}  // namespace

std::int64_t TnefItem::add_row(std::int64_t begin, std::int64_t end, ReadContext& context) {
  Row row(file_, begin, end);
  std::uint32_t count = 0;
  if (!row.take32(count)) {
    return end;
  }
  for (std::uint32_t i = 0; i < count && context.keep_going(); ++i) {
    std::uint32_t word = 0;
    if (!row.take32(word)) {
      break;
    }
    auto const type = word & 0xffffU & ~flag_many;
    TnefProperty property;
    property.tag = {static_cast<std::uint16_t>(word >> 16U), static_cast<MapiType>(type)};
    property.is_named = property.tag.id >= first_named_id;
    std::uint32_t values = 1;
    bool const is_variable = is_of_variable_size(type);
    bool const has_count = is_variable || (word & flag_many) != 0;
    if ((property.is_named && !skip_name(row)) || (has_count && !row.take32(values)) ||
        (!is_variable && fixed_size(type) == 0)) {
      break;
    }
    for (std::uint32_t value = 0; value < values && context.keep_going(); ++value) {
      std::uint32_t length = 0;
      if (is_variable && !row.take32(length)) {
        return end;
      }
      property.size = is_variable ? std::int64_t{length} : fixed_size(type);
      property.offset = row.at();
      if (!row.skip_padded(property.size) || !context.charge_memory(sizeof(TnefProperty))) {
        return end;
      }
      properties_.push_back(property);
    }
  }
  return row.at();
}

TnefProperty const* TnefItem::find(MapiTag tag) const {
  auto const found =
      std::find_if(properties_.begin(), properties_.end(),
                   [tag](TnefProperty const& property) { return property.tag == tag; });
  return found == properties_.end() ? nullptr : &*found;
}

std::unique_ptr<Orlec::Reader> TnefItem::bytes(MapiTag tag) const {
  auto const* const found = find(tag);
  return found == nullptr
             ? nullptr
             : std::make_unique<ReaderSlice>(file_, std::string_view{}, found->offset, found->size);
}

std::optional<std::uint64_t> TnefItem::number(MapiTag tag) const {
  auto const* const found = find(tag);
  if (found == nullptr) {
    return std::nullopt;
  }
  auto value = tessarine::read_piece(file_, found->offset, found->size);
  value.resize(sizeof(std::uint64_t));
  return tessarine::little64(value, 0);
}

void TnefItem::visit_named_texts(MapiType type, TextConsumer const& consumer) const {
  for (auto const& property : properties_) {
    if (property.is_named && property.tag.type == type &&
        !consumer(ReaderSlice(file_, std::string_view{}, property.offset, property.size))) {
      return;
    }
  }
}

}  // namespace morvakit
