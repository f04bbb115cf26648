#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "host/utf8.h"
#include "morvakit/formats.h"
#include "morvakit/rtf/rtf_encoding.h"
#include "morvakit/rtf/rtf_object.h"
#include "morvakit/rtf/rtf_tokens.h"
#include "morvakit/rtf/rtf_words.h"
#include "morvakit/text_flow.h"

namespace morvakit {

namespace {

using Orlec::ParseOutcome;
using Orlec::ParseTextType;

/// What becomes of the text of a group.
enum class Place {
  text,  ///< delivered
  left_out,
  fonts,        ///< names of fonts
  information,  ///< nothing but properties
  gathered,     ///< kept until the group ends, for what it says about other text
};

/// What holds until the end of a group, and is what it was before behind it.
struct Group {
  Place place = Place::text;
  /// Where the groups go that are resumed within one that is left out.
  Place resumed = Place::text;
  ParseTextType kind = Orlec::ParseTextType_main;
  /// The destination that this very group is.
  RtfRole destination = RtfRole::unknown;
  int font = RtfFonts::default_font;
  int far_east_font = RtfFonts::default_font;
  int unicode_skip = 1;
  bool is_far_east = false;
  bool is_deleted = false;
  bool is_object_data = false;
};

/// The address in the code of a field that is a link to elsewhere; empty for another field.
std::string_view link_target(std::string_view code) {
  constexpr std::string_view keyword = "HYPERLINK";
  auto const begin = code.find_first_not_of(' ');
  if (begin == std::string_view::npos || code.substr(begin, keyword.size()) != keyword) {
    return {};
  }
  code.remove_prefix(begin + keyword.size());
  auto const quote = code.find('"');
  auto const bookmark = code.find("\\l");
  if (quote == std::string_view::npos || bookmark < quote) {
    return {};
  }
  code.remove_prefix(quote + 1);
  return code.substr(0, code.find('"'));
}

class RtfReader {
 public:
  RtfReader(Orlec::Reader const& reader, ReadContext& context)
      : context_(context), flow_(context), tokens_(reader), groups_(1) {}

  void read();

 private:
  struct Target {
    Place place = Place::text;
    ParseTextType kind = Orlec::ParseTextType_main;
    bool operator==(Target const&) const = default;
  };

  Group& group() { return groups_.back(); }
  bool take(RtfToken const& token);
  void begin_group();
  bool end_group();
  void finish(Group const& ended);

  void word(RtfToken const& token);
  bool begin_destination(RtfWord const& word);
  bool begin_part_of_information(RtfWord const& word);
  void begin_gathering(RtfRole destination);
  void begin_shape_value();
  void begin_object_data();
  void begin_text(RtfRole destination, ParseTextType kind);
  bool use_encoding(RtfWord const& word, RtfToken const& token);
  void use_font(int font);
  bool add_word(RtfWord const& word, RtfToken const& token);
  void add_symbol(char symbol);
  void add_unicode(int parameter);

  bool turn_to_group();
  void add_bytes(std::string_view bytes);
  void add_character(std::uint32_t value);
  void separate(char separator);
  void deliver();
  void deliver_text(std::string const& text);

  void end_date(std::string_view label);
  void end_file();
  void read_objects();

  ReadContext& context_;
  TextFlow flow_;
  RtfTokens tokens_;
  RtfFonts fonts_;
  RtfDecoder decoder_;
  /// The first is around all groups of the file.
  std::vector<Group> groups_;
  /// Where the text in the decoder goes.
  Target target_;
  std::string gathered_;
  /// Stands in front of the next text of a property.
  std::string label_;
  std::string shape_name_;
  std::array<int, 5> date_{};
  std::vector<std::int64_t> object_offsets_;
  /// Whether what follows may be left out by readers that do not know it.
  bool is_ignorable_ = false;
  /// Characters that stand for a Unicode character just read.
  int skip_ = 0;
};

void RtfReader::read() {
  while (context_.keep_going()) {
    auto const token = tokens_.next();
    if (token.type == RtfToken::Type::end) {
      end_file();
      break;
    }
    if (!take(token)) {
      break;
    }
  }
  deliver();
  read_objects();
}

/// False behind the document.
bool RtfReader::take(RtfToken const& token) {
  switch (token.type) {
    case RtfToken::Type::group_begin:
      begin_group();
      break;
    case RtfToken::Type::group_end:
      return end_group();
    case RtfToken::Type::word:
      word(token);
      break;
    case RtfToken::Type::symbol:
      add_symbol(token.text.front());
      break;
    case RtfToken::Type::byte:
    case RtfToken::Type::text:
      add_bytes(token.text);
      break;
    default:
      break;
  }
  return true;
}

void RtfReader::begin_group() {
  skip_ = 0;
  is_ignorable_ = false;
  auto const most = context_.limits().i_xml_depth;
  if (static_cast<std::int64_t>(groups_.size()) > most) {
    context_.end(ParseOutcome::limit_reached,
                 "groups nested over " + std::to_string(most) + " deep");
    return;
  }
  groups_.push_back(group());
  group().destination = RtfRole::unknown;
}

bool RtfReader::end_group() {
  skip_ = 0;
  is_ignorable_ = false;
  if (groups_.size() == 1) {
    return true;
  }
  bool const is_whole = group().destination == RtfRole::document;
  finish(group());
  groups_.pop_back();
  return !is_whole;
}

void RtfReader::finish(Group const& ended) {
  if (ended.destination == RtfRole::unknown) {
    return;
  }
  deliver();
  switch (ended.destination) {
    case RtfRole::beside:
    case RtfRole::resumed:
    case RtfRole::shape_value:
      flow_.separate(ended.kind, '\n');
      break;
    case RtfRole::property:
    case RtfRole::property_value:
      flow_.separate(ended.kind, '\n');
      label_.clear();
      break;
    case RtfRole::date:
      end_date(std::exchange(label_, {}));
      break;
    case RtfRole::property_name:
      label_ = std::exchange(gathered_, {});
      break;
    case RtfRole::shape_name:
      shape_name_ = std::exchange(gathered_, {});
      break;
    case RtfRole::field_code:
      flow_.line(Orlec::ParseTextType_other, link_target(gathered_));
      break;
    default:
      break;
  }
}

void RtfReader::word(RtfToken const& token) {
  bool const is_ignorable = std::exchange(is_ignorable_, false);
  auto const word = find_rtf_word(token.text);
  if (word.role == RtfRole::unknown) {
    if (is_ignorable) {
      group().place = group().resumed = Place::left_out;
    }
    return;
  }
  if (!begin_destination(word) && !use_encoding(word, token)) {
    add_word(word, token);
  }
}

/// False for a word that is no destination.
bool RtfReader::begin_destination(RtfWord const& word) {
  auto& group = groups_.back();
  switch (word.role) {
    case RtfRole::document:
      group.destination = groups_.size() == 2 ? word.role : group.destination;
      return true;
    case RtfRole::left_out:
      group.place = group.resumed = Place::left_out;
      return true;
    case RtfRole::kept:
      return true;
    case RtfRole::suspended:
      group.place = Place::left_out;
      return true;
    case RtfRole::resumed:
      group.place = group.resumed;
      if (word.value != 0) {
        begin_text(word.role, group.kind);
      }
      return true;
    case RtfRole::beside:
      begin_text(word.role, static_cast<ParseTextType>(word.value));
      return true;
    case RtfRole::endnote:
      group.kind = group.kind == Orlec::ParseTextType_fn ? Orlec::ParseTextType_en : group.kind;
      return true;
    case RtfRole::fonts:
      group.place = Place::fonts;
      return true;
    case RtfRole::field_code:
    case RtfRole::shape_name:
      begin_gathering(word.role);
      return true;
    case RtfRole::shape_value:
      begin_shape_value();
      return true;
    case RtfRole::picture:
      context_.count_images(group.resumed == Place::text ? 1 : 0);
      group.place = Place::left_out;
      return true;
    case RtfRole::object_data:
      begin_object_data();
      return true;
    default:
      return begin_part_of_information(word);
  }
}

/// The data are read from their place in the file, behind all text, rather than kept.
void RtfReader::begin_object_data() {
  if (!std::exchange(group().is_object_data, true) &&
      context_.charge_memory(sizeof(std::int64_t))) {
    object_offsets_.push_back(tokens_.offset());
  }
  group().place = group().resumed = Place::left_out;
}

bool RtfReader::begin_part_of_information(RtfWord const& word) {
  switch (word.role) {
    case RtfRole::information:
      group().place = group().resumed = Place::information;
      return true;
    case RtfRole::property:
    case RtfRole::date:
      if (group().place == Place::information) {
        group().font = RtfFonts::document_font;
        begin_text(word.role, Orlec::ParseTextType_property);
        label_ = word.label;
        date_ = {};
      }
      return true;
    case RtfRole::property_name:
      group().font = RtfFonts::document_font;
      begin_gathering(word.role);
      return true;
    case RtfRole::property_value:
      group().font = RtfFonts::document_font;
      begin_text(word.role, Orlec::ParseTextType_property);
      return true;
    default:
      return false;
  }
}

void RtfReader::begin_gathering(RtfRole destination) {
  deliver();
  gathered_.clear();
  group().place = Place::gathered;
  group().resumed = Place::left_out;
  group().destination = destination;
}

/// The values of two properties of shapes are text: the words of a word art, and what is said of
/// the shape for those who do not see it.
void RtfReader::begin_shape_value() {
  bool const is_seen = group().resumed == Place::text;
  if (is_seen && shape_name_ == "gtextUNICODE") {
    group().place = Place::text;
    begin_text(RtfRole::shape_value, group().kind);
  } else if (is_seen && shape_name_ == "wzDescription") {
    group().place = Place::text;
    begin_text(RtfRole::shape_value, Orlec::ParseTextType_other);
  } else {
    group().place = Place::left_out;
  }
}

/// Text that stands on lines of its own, unless it stands in what is left out.
void RtfReader::begin_text(RtfRole destination, ParseTextType kind) {
  if (group().place == Place::left_out) {
    return;
  }
  deliver();
  group().place = Place::text;
  group().kind = kind;
  group().destination = destination;
  flow_.separate(kind, '\n');
}

/// False for a word that has nothing to do with encodings or with the groups' other states.
bool RtfReader::use_encoding(RtfWord const& word, RtfToken const& token) {
  auto& group = groups_.back();
  constexpr int longest_skip = 255;
  switch (word.role) {
    case RtfRole::code_page:
      fonts_.set_default_code_page(word.value);
      return true;
    case RtfRole::stated_code_page:
      fonts_.state_code_page(token.parameter);
      return true;
    case RtfRole::default_font:
      fonts_.set_default_font(token.parameter);
      return true;
    case RtfRole::font:
      use_font(token.parameter);
      return true;
    case RtfRole::font_charset:
    case RtfRole::font_code_page:
      if (group.place == Place::fonts && word.role == RtfRole::font_charset) {
        fonts_.set_charset(token.parameter);
      } else if (group.place == Place::fonts) {
        fonts_.set_code_page(token.parameter);
      }
      return true;
    case RtfRole::far_east:
      group.is_far_east = word.value != 0;
      return true;
    case RtfRole::associated_font:
      group.far_east_font = group.is_far_east ? token.parameter : group.far_east_font;
      return true;
    case RtfRole::unicode_skip:
      group.unicode_skip = std::clamp(token.parameter, 0, longest_skip);
      return true;
    case RtfRole::plain:
      group.font = group.far_east_font = RtfFonts::default_font;
      group.is_far_east = group.is_deleted = false;
      return true;
    case RtfRole::deleted:
      group.is_deleted = !token.has_parameter || token.parameter != 0;
      return true;
    default:
      return false;
  }
}

void RtfReader::use_font(int font) {
  constexpr std::size_t entry_size = 32;
  if (group().place != Place::fonts) {
    group().font = font;
  } else if (fonts_.select(font)) {
    context_.charge_memory(entry_size);
  }
}

bool RtfReader::add_word(RtfWord const& word, RtfToken const& token) {
  switch (word.role) {
    case RtfRole::character:
      add_character(static_cast<std::uint32_t>(word.value));
      return true;
    case RtfRole::separator:
      separate(static_cast<char>(word.value));
      return true;
    case RtfRole::unicode:
      if (token.has_parameter) {
        add_unicode(token.parameter);
      }
      return true;
    case RtfRole::page_count:
      context_.count_pages(group().place == Place::information ? std::max(token.parameter, 0) : 0);
      return true;
    case RtfRole::date_part:
      date_[static_cast<std::size_t>(word.value)] = token.parameter;
      return true;
    default:
      return false;
  }
}

void RtfReader::add_symbol(char symbol) {
  if (symbol == '*') {
    is_ignorable_ = true;
    return;
  }
  if (symbol == '\r' || symbol == '\n') {
    separate('\n');
    return;
  }
  constexpr std::uint32_t no_break_space = 0xA0;
  if (symbol == '~') {
    add_character(no_break_space);
  } else if (symbol == '_') {
    add_bytes("-");
  } else if (symbol == '\\' || symbol == '{' || symbol == '}' || symbol == '\t') {
    add_bytes({&symbol, 1});
  }
}

/// Symbol fonts put their characters into the private use area, where they mean nothing as text.
void RtfReader::add_unicode(int parameter) {
  constexpr std::uint32_t units = 0x10000;
  auto const value = static_cast<std::uint32_t>(parameter);
  auto const character = parameter < 0 ? value + units : value;
  bool const is_symbol = character >= 0xF000 && character <= 0xF0FF;
  skip_ = 0;
  add_character(is_symbol || character < ' ' ? ' ' : character);
  skip_ = group().unicode_skip;
}

/// Makes sure that what is in the decoder goes where text of the group goes; false where that is
/// nowhere.
bool RtfReader::turn_to_group() {
  constexpr std::size_t piece_size = 16 << 10;
  is_ignorable_ = false;
  Target const target{group().place, group().kind};
  bool const is_wanted = target.place == Place::text || target.place == Place::gathered;
  if (!is_wanted || group().is_deleted) {
    return false;
  }
  if (target != target_) {
    deliver();
    target_ = target;
  } else if (decoder_.size() >= piece_size) {
    deliver_text(decoder_.take(false));
  }
  return true;
}

void RtfReader::add_bytes(std::string_view bytes) {
  auto const skipped = std::min(static_cast<std::size_t>(skip_), bytes.size());
  skip_ -= static_cast<int>(skipped);
  bytes.remove_prefix(skipped);
  if (bytes.empty() || !turn_to_group()) {
    return;
  }
  auto page = fonts_.code_page(group().font);
  if (group().is_far_east && !is_double_byte(page)) {
    auto const far_east = fonts_.code_page(group().far_east_font);
    page = is_double_byte(far_east) ? far_east : page;
  }
  decoder_.bytes(bytes, page, fonts_.default_code_page());
}

void RtfReader::add_character(std::uint32_t value) {
  if (skip_ > 0) {
    --skip_;
  } else if (turn_to_group()) {
    decoder_.unit(value);
  }
}

void RtfReader::separate(char separator) {
  if (group().place == Place::text) {
    deliver();
    flow_.separate(group().kind, separator);
  }
}

void RtfReader::deliver() {
  deliver_text(decoder_.take(true));
}

void RtfReader::deliver_text(std::string const& text) {
  constexpr std::size_t gathered_size = 16 << 10;
  if (text.empty()) {
    return;
  }
  if (target_.place == Place::gathered) {
    auto const left = gathered_size - std::min(gathered_.size(), gathered_size);
    auto const piece = std::string_view(text).substr(0, left);
    gathered_ += piece.substr(0, morvabs::complete_utf8_prefix(piece));
    return;
  }
  if (target_.kind == Orlec::ParseTextType_property && !label_.empty()) {
    flow_.text(target_.kind, std::exchange(label_, {}) + ": ");
  }
  flow_.text(target_.kind, text);
}

void RtfReader::end_date(std::string_view label) {
  auto const [year, month, day, hour, minute] = date_;
  if (year == 0) {
    return;
  }
  std::array<char, 80> date{};
  std::snprintf(date.data(), date.size(), "%04d-%02d-%02dT%02d:%02d", year, month, day, hour,
                minute);
  flow_.line(Orlec::ParseTextType_property, std::string(label) + ": " + date.data());
}

void RtfReader::end_file() {
  if (tokens_.has_failed()) {
    context_.end_unreadable(tokens_.reader());
  } else if (tokens_.is_binary_cut()) {
    context_.note(ParseOutcome::damaged, "binary data reach beyond the end of the file");
  } else if (groups_.size() > 1) {
    context_.note(ParseOutcome::damaged, "the document ends within a group");
  }
}

void RtfReader::read_objects() {
  for (auto const offset : object_offsets_) {
    tokens_.seek(offset);
    if (!context_.keep_going() || !read_rtf_object(tokens_, context_)) {
      return;
    }
  }
}

}  // namespace

void read_rtf(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
              ReadContext& context) {
  RtfReader(reader, context).read();
}

}  // namespace morvakit
