#include "morvakit/ole/ole_properties.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "morvakit/text/code_page.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using tessarine::little16;
using tessarine::little32;
using tessarine::little64;
using tessarine::read_piece;

constexpr auto kind = Orlec::ParseTextType_property;
constexpr int utf16_code_page = 1200;
/// Bytes of one property that are read.
constexpr std::int64_t longest_property = 1 << 20;

// Properties that every set has, by their numbers.
constexpr std::uint32_t dictionary_property = 0;
constexpr std::uint32_t code_page_property = 1;

// Types of values.
enum ValueType : std::uint16_t {
  type_int16 = 2,
  type_int32 = 3,
  type_float = 4,
  type_double = 5,
  type_date = 7,
  type_bool = 11,
  type_variant = 12,
  type_uint16 = 18,
  type_uint32 = 19,
  type_int64 = 20,
  type_uint64 = 21,
  type_ansi_string = 30,
  type_wide_string = 31,
  type_file_time = 64,
  type_vector = 0x1000,
};

struct PropertyName {
  std::uint32_t number;
  std::string_view name;
};

constexpr std::array summary_names{
    PropertyName{2, "title"},          PropertyName{3, "subject"},
    PropertyName{4, "creator"},        PropertyName{5, "keywords"},
    PropertyName{6, "description"},    PropertyName{7, "Template"},
    PropertyName{8, "lastModifiedBy"}, PropertyName{9, "revision"},
    PropertyName{11, "lastPrinted"},   PropertyName{12, "created"},
    PropertyName{13, "modified"},      PropertyName{14, "Pages"},
    PropertyName{15, "Words"},         PropertyName{16, "Characters"},
    PropertyName{18, "Application"},   PropertyName{19, "DocSecurity"},
};
constexpr std::uint32_t pages_property = 14;

constexpr std::array document_names{
    PropertyName{2, "category"},       PropertyName{3, "PresentationFormat"},
    PropertyName{5, "Lines"},          PropertyName{6, "Paragraphs"},
    PropertyName{7, "Slides"},         PropertyName{8, "Notes"},
    PropertyName{9, "HiddenSlides"},   PropertyName{12, "HeadingPairs"},
    PropertyName{13, "TitlesOfParts"}, PropertyName{14, "Manager"},
    PropertyName{15, "Company"},       PropertyName{26, "contentType"},
    PropertyName{27, "contentStatus"}, PropertyName{28, "language"},
    PropertyName{29, "version"},
};

/// How the numbers of a set's properties become names.
struct SetFormat {
  PropertyName const* begin = nullptr;
  PropertyName const* end = nullptr;
};

std::string number_text(double value) {
  std::array<char, 32> digits{};
  auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  return {digits.data(), end};
}

std::string time_text(std::int64_t seconds) {
  using namespace std::chrono;
  auto const time = sys_seconds(std::chrono::seconds(seconds));
  auto const day = floor<days>(time);
  year_month_day const date(day);
  hh_mm_ss const clock(time - day);
  std::array<char, 64> text{};
  auto const length = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()));
  return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

/// Times are counted in steps of 100 ns from 1601 on; durations use the same type with small
/// numbers, and 0 stands for a time that was never set.
std::string file_time_text(std::uint64_t ticks) {
  constexpr std::int64_t ticks_per_second = 10'000'000;
  constexpr std::int64_t from_1601_to_1970 = 11'644'473'600;
  constexpr std::int64_t year_9999 = 253'402'300'800;
  auto const seconds =
      static_cast<std::int64_t>(ticks / static_cast<std::uint64_t>(ticks_per_second)) -
      from_1601_to_1970;
  bool const is_date = seconds > -from_1601_to_1970 / 2 && seconds < year_9999;
  return is_date ? time_text(seconds) : std::string();
}

/// Days from 1899-12-30 on.
std::string date_text(double days) {
  constexpr double from_1899_to_1970 = 25569;
  constexpr double latest = 2'958'466;
  constexpr double seconds_per_day = 86400;
  bool const is_date = days > 0 && days < latest;
  return is_date
             ? time_text(static_cast<std::int64_t>((days - from_1899_to_1970) * seconds_per_day))
             : std::string();
}

template <typename Number>
Number number_from(std::uint64_t bits) {
  Number number{};
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

/// Blanks at the ends and zeros behind the text are no part of it; lines become one.
std::string one_line(std::string text) {
  text.resize(std::min(text.size(), text.find('\0')));
  std::replace_if(
      text.begin(), text.end(),
      [](char character) { return static_cast<unsigned char>(character) < ' '; }, ' ');
  auto const first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string()
                                    : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Reads one set of properties of a stream.
class PropertySet {
 public:
  PropertySet(Orlec::Reader const& stream, std::int64_t offset, TextFlow& flow)
      : stream_(stream), begin_(offset), flow_(flow), budget_(2 * stream.GetSize()) {}

  void read(SetFormat const& format);
  std::int64_t pages() const { return pages_; }

 private:
  struct Property {
    std::uint32_t number;
    std::int64_t offset;
  };

  bool read_directory();
  void read_names(std::int64_t offset);
  std::string value(std::int64_t offset);
  /// Reads a value of a type and moves behind it.
  std::string typed_value(std::uint16_t type, std::int64_t& at);
  std::string vector_value(std::uint16_t type, std::int64_t& at);
  std::string string_value(std::uint16_t type, std::int64_t& at);
  std::string bytes(std::int64_t at, std::int64_t size);
  /// The same for a text, of which no more is read than of a property.
  std::string text_bytes(std::int64_t at, std::int64_t size);
  void note_cut();
  std::uint32_t word(std::int64_t at) { return little32(bytes(at, 4), 0); }
  std::string name_of(std::uint32_t number, SetFormat const& format) const;

  Orlec::Reader const& stream_;
  std::int64_t begin_;
  TextFlow& flow_;
  /// What may still be read: values that overlap must not make a small set long.
  std::int64_t budget_;
  int code_page_ = 1252;
  std::vector<Property> properties_;
  std::unordered_map<std::uint32_t, std::string> names_;
  std::int64_t pages_ = 0;
};

std::string PropertySet::bytes(std::int64_t at, std::int64_t size) {
  auto const most = std::clamp<std::int64_t>(stream_.GetSize() - at, 0, size);
  budget_ -= most;
  return budget_ < 0 ? std::string() : read_piece(stream_, at, most);
}

std::string PropertySet::text_bytes(std::int64_t at, std::int64_t size) {
  if (std::min(size, stream_.GetSize() - at) > longest_property) {
    note_cut();
  }
  return bytes(at, std::min(size, longest_property));
}

void PropertySet::note_cut() {
  flow_.context().note(
      ParseOutcome::limit_reached,
      "a property of the document is over " + std::to_string(longest_property) + " bytes");
}

bool PropertySet::read_directory() {
  constexpr std::int64_t entry_size = 8;
  std::int64_t const count = word(begin_ + 4);
  auto const left = (stream_.GetSize() - begin_ - 8) / entry_size;
  if (count > left || !flow_.context().charge_memory(static_cast<std::size_t>(count) * 16)) {
    flow_.context().note(ParseOutcome::incomplete, "the document's properties are cut short");
    return false;
  }
  auto const entries = bytes(begin_ + 8, count * entry_size);
  for (std::size_t at = 0; at + 8 <= entries.size(); at += 8) {
    properties_.push_back({little32(entries, at), begin_ + little32(entries, at + 4)});
  }
  return true;
}

void PropertySet::read_names(std::int64_t offset) {
  auto const count = word(offset);
  auto at = offset + 4;
  for (std::uint32_t i = 0; i < count && budget_ > 0 && flow_.context().keep_going(); ++i) {
    auto const head = bytes(at, 8);
    if (head.size() < 8) {
      return;
    }
    bool const is_wide = code_page_ == utf16_code_page;
    std::int64_t const size = std::int64_t{little32(head, 4)} * (is_wide ? 2 : 1);
    auto const name = text_bytes(at + 8, size);
    if (!flow_.context().charge_memory(name.size())) {
      return;
    }
    names_[little32(head, 0)] =
        one_line(is_wide ? decode_utf16(name) : decode_code_page(name, code_page_));
    at += 8 + size + (is_wide ? (4 - size % 4) % 4 : 0);
  }
}

std::string PropertySet::string_value(std::uint16_t type, std::int64_t& at) {
  bool const is_wide = type == type_wide_string || code_page_ == utf16_code_page;
  // Lengths of strings in code pages are in bytes, even where the code page is that of UTF-16.
  std::int64_t const size = std::int64_t{word(at)} * (type == type_wide_string ? 2 : 1);
  auto const text = text_bytes(at + 4, size);
  at += 4 + size;
  // Only strings in Unicode are filled up to what follows in a vector.
  at += type == type_wide_string ? (4 - size % 4) % 4 : 0;
  return one_line(is_wide ? decode_utf16(text.substr(0, text.size() / 2 * 2))
                          : decode_code_page(text, code_page_));
}

std::string PropertySet::vector_value(std::uint16_t type, std::int64_t& at) {
  auto const count = word(at);
  at += 4;
  std::string joined;
  for (std::uint32_t i = 0;
       i < count && at < stream_.GetSize() && budget_ > 0 && flow_.context().keep_going(); ++i) {
    auto element_type = type;
    if (type == type_variant) {
      element_type = little16(bytes(at, 4), 0);
      at += 4;
    }
    // A vector in a vector is not part of the format.
    auto const element =
        (element_type & type_vector) == 0 ? typed_value(element_type, at) : std::string();
    if (!element.empty()) {
      joined += joined.empty() ? "" : " ";
      joined += element;
    }
    if (joined.size() > static_cast<std::size_t>(longest_property)) {
      note_cut();
      break;
    }
  }
  return joined;
}

std::string PropertySet::typed_value(std::uint16_t type, std::int64_t& at) {
  if ((type & type_vector) != 0) {
    return vector_value(static_cast<std::uint16_t>(type & ~type_vector), at);
  }
  if (type == type_ansi_string || type == type_wide_string) {
    return string_value(type, at);
  }
  auto const eight = bytes(at, 8);
  auto const bits = little64(eight, 0);
  auto const low = little32(eight, 0);
  bool const is_long = type == type_double || type == type_date || type == type_int64 ||
                       type == type_uint64 || type == type_file_time;
  at += is_long ? 8 : 4;
  switch (type) {
    case type_int16:
      return std::to_string(static_cast<std::int16_t>(low));
    case type_uint16:
      return std::to_string(static_cast<std::uint16_t>(low));
    case type_int32:
      return std::to_string(static_cast<std::int32_t>(low));
    case type_uint32:
      return std::to_string(low);
    case type_int64:
      return std::to_string(static_cast<std::int64_t>(bits));
    case type_uint64:
      return std::to_string(bits);
    case type_float:
      return number_text(double{number_from<float>(low)});
    case type_double:
      return number_text(number_from<double>(bits));
    case type_date:
      return date_text(number_from<double>(bits));
    case type_bool:
      return (low & 0xFFFFU) != 0 ? "true" : "false";
    case type_file_time:
      return file_time_text(bits);
    default:
      return {};
  }
}

std::string PropertySet::value(std::int64_t offset) {
  auto const type = little16(bytes(offset, 4), 0);
  auto at = offset + 4;
  return typed_value(type, at);
}

std::string PropertySet::name_of(std::uint32_t number, SetFormat const& format) const {
  auto const* const known =
      std::find_if(format.begin, format.end,
                   [number](PropertyName const& property) { return property.number == number; });
  if (known != format.end) {
    return std::string(known->name);
  }
  auto const given = names_.find(number);
  return given == names_.end() ? std::string() : given->second;
}

void PropertySet::read(SetFormat const& format) {
  if (!read_directory()) {
    return;
  }
  for (auto const& property : properties_) {
    if (property.number == code_page_property) {
      code_page_ = little16(bytes(property.offset, 8), 4);
    }
  }
  for (auto const& property : properties_) {
    if (property.number == dictionary_property && format.begin == nullptr) {
      read_names(property.offset);
    }
  }
  for (auto const& property : properties_) {
    if (!flow_.context().keep_going()) {
      return;
    }
    auto name = name_of(property.number, format);
    // Names that begin like this are the program's own: digests of links, identifiers.
    if (name.empty() || name.starts_with("_")) {
      continue;
    }
    auto const text = value(property.offset);
    if (!text.empty()) {
      flow_.line(kind, name.append(": ").append(text));
    }
    if (format.begin == summary_names.data() && property.number == pages_property) {
      std::from_chars(text.data(), text.data() + text.size(), pages_);
    }
  }
}

/// A stream of properties holds one set or two, of which the second is that of the user.
std::int64_t read_stream(tessarine::OleStorage const& storage, std::string_view name,
                         SetFormat const& format, TextFlow& flow) {
  constexpr std::int64_t head_size = 28;
  constexpr std::int64_t set_entry_size = 20;
  auto const stream = storage.stream(name);
  if (stream == nullptr || stream->GetSize() == 0) {
    return 0;
  }
  auto const head = read_piece(*stream, 0, head_size + 2 * set_entry_size);
  constexpr std::uint16_t byte_order = 0xFFFE;
  if (little16(head, 0) != byte_order) {
    flow.context().note(ParseOutcome::incomplete, "the document's properties are damaged");
    return 0;
  }
  auto const sets = std::min<std::uint32_t>(little32(head, 24), 2);
  std::int64_t pages = 0;
  for (std::uint32_t i = 0; i < sets; ++i) {
    auto const offset = little32(head, 44 + i * std::size_t{20});
    PropertySet set(*stream, offset, flow);
    set.read(i == 0 ? format : SetFormat{});
    pages = std::max(pages, set.pages());
  }
  return pages;
}

}  // namespace

std::int64_t read_ole_properties(tessarine::OleStorage const& storage, TextFlow& flow) {
  auto const pages =
      read_stream(storage, "\x05SummaryInformation",
                  {summary_names.data(), summary_names.data() + summary_names.size()}, flow);
  read_stream(storage,
              "\x05"
              "DocumentSummaryInformation",
              {document_names.data(), document_names.data() + document_names.size()}, flow);
  return pages;
}

}  // namespace morvakit
