#include "morvakit/mail/mail_text.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <utility>

#include "morvakit/mail/mime_header.h"
#include "morvakit/text/html_encoding.h"
#include "morvakit/text/text_source.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::int64_t sample_size = std::int64_t{64} << 10;
/// Lines longer than this are taken in pieces.
constexpr std::size_t longest_line = std::size_t{64} << 10;
constexpr std::size_t piece_size = std::size_t{16} << 10;
/// Of more empty lines in a row, the rest is left out.
constexpr std::size_t most_line_ends = 1000;

/// Cuts a text into lines. A piece of a long line is told by `ends` being false.
class Lines {
 public:
  using Consumer = std::function<bool(std::string_view line, bool ends)>;

  explicit Lines(Consumer consumer) : consumer_(std::move(consumer)) {}

  bool add(std::string_view utf8, bool last) {
    while (!utf8.empty()) {
      auto const end = utf8.find_first_of("\r\n");
      auto const text = utf8.substr(0, end);
      utf8.remove_prefix(text.size());
      bool const is_second = text.empty() && after_return_ && utf8.front() == '\n';
      after_return_ = !utf8.empty() && utf8.front() == '\r';
      kept_ += text;
      bool const ends = !utf8.empty();
      utf8.remove_prefix(ends ? 1 : 0);
      if (!is_second && (ends || kept_.size() > longest_line) && !give(ends)) {
        return false;
      }
    }
    return !last || kept_.empty() || give(true);
  }

 private:
  bool give(bool ends) {
    bool const goes_on = consumer_(kept_, ends);
    kept_.clear();
    return goes_on;
  }

  Consumer consumer_;
  std::string kept_;
  bool after_return_ = false;
};

/// Delivers the lines of a text.
class TextLines {
 public:
  TextLines(ReadContext& context, Orlec::ParseTextType type, MailTextForm const& form)
      : context_(context), type_(type), form_(form) {}

  bool line(std::string_view line, bool ends) {
    if (begins_ && form_.is_mailbox && is_quoted_separator(line)) {
      line.remove_prefix(1);
    }
    if (begins_ && form_.is_flowed) {
      line = take_quote_marks(line);
    }
    if (!line.empty()) {
      piece_.append(line_ends_, '\n');
      line_ends_ = 0;
    }
    bool const is_signature = line == "-- ";
    bool const goes_on = form_.is_flowed && ends && line.ends_with(' ') && !is_signature;
    piece_ += goes_on && form_.drop_space ? line.substr(0, line.size() - 1) : line;
    line_ends_ += ends && !goes_on && has_text() && line_ends_ < most_line_ends ? 1U : 0U;
    begins_ = ends;
    is_joined_ = goes_on;
    return piece_.size() < piece_size || flush();
  }

  bool flush() {
    std::replace_if(
        piece_.begin(), piece_.end(),
        [](char character) {
          return static_cast<unsigned char>(character) < ' ' && character != '\t' &&
                 character != '\n';
        },
        ' ');
    if (!piece_.empty() && !std::exchange(has_delivered_, true)) {
      context_.separate(type_, '\n');
    }
    bool const goes_on = context_.text(type_, piece_);
    piece_.clear();
    return goes_on;
  }

 private:
  bool has_text() const { return has_delivered_ || !piece_.empty(); }

  static bool is_quoted_separator(std::string_view line) {
    auto const text = line.substr(std::min(line.find_first_not_of('>'), line.size()));
    return text.size() < line.size() && text.starts_with("From ");
  }

  /// The marks of a line that goes on from another of the same depth say nothing new; a line of
  /// another depth begins anew.
  std::string_view take_quote_marks(std::string_view line) {
    auto const marks = std::min(line.find_first_not_of('>'), line.size());
    auto const text = line.substr(marks);
    bool const is_stuffed = text.starts_with(' ');
    bool const goes_on = std::exchange(is_joined_, false) && marks == depth_;
    if (!goes_on && line_ends_ == 0 && has_text()) {
      ++line_ends_;
    }
    depth_ = marks;
    if (goes_on || marks == 0) {
      return text.substr(is_stuffed ? 1 : 0);
    }
    return line;
  }

  ReadContext& context_;
  Orlec::ParseTextType type_;
  MailTextForm form_;
  std::string piece_;
  std::size_t line_ends_ = 0;
  std::size_t depth_ = 0;
  bool begins_ = true;
  bool is_joined_ = false;
  bool has_delivered_ = false;
};

/// What iCalendar and vCard put behind a backslash.
std::string without_escapes(std::string_view value) {
  std::string text;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] == '\\' && at + 1 < value.size()) {
      ++at;
      text += value[at] == 'n' || value[at] == 'N' ? '\n' : value[at];
    } else {
      text += value[at];
    }
  }
  return text;
}

/// Delivers the properties of a calendar that hold words; each stands on a line that may go on in
/// the next one behind a blank.
class CalendarLines {
 public:
  explicit CalendarLines(ReadContext& context) : context_(context) {}

  bool line(std::string_view line, bool ends) {
    bool const goes_on = !begins_ || line.starts_with(' ') || line.starts_with('\t');
    if (!goes_on) {
      give();
    }
    auto const text = line.substr(begins_ && goes_on ? 1 : 0);
    auto const room = longest_line - std::min(longest_line, property_.size());
    if (text.size() > room) {
      context_.note(Orlec::ParseOutcome::limit_reached,
                    "a property of a calendar over " + std::to_string(longest_line) + " bytes");
    }
    property_ += text.substr(0, room);
    begins_ = ends;
    return context_.keep_going();
  }

  void give() {
    constexpr std::array<std::string_view, 4> kept{"summary", "location", "description", "comment"};
    auto const property = std::exchange(property_, {});
    auto const name =
        tessarine::ascii_lower(std::string_view(property).substr(0, property.find_first_of(":;")));
    auto const colon = value_begin(property);
    if (std::find(kept.begin(), kept.end(), name) == kept.end() || colon >= property.size()) {
      return;
    }
    context_.separate(Orlec::ParseTextType_main, '\n');
    context_.text(Orlec::ParseTextType_main,
                  without_escapes(std::string_view(property).substr(colon)));
  }

 private:
  /// Behind the first colon that does not stand in quotes.
  static std::size_t value_begin(std::string_view property) {
    bool is_quoted = false;
    for (std::size_t at = 0; at < property.size(); ++at) {
      is_quoted = is_quoted != (property[at] == '"');
      if (property[at] == ':' && !is_quoted) {
        return at + 1;
      }
    }
    return property.size();
  }

  ReadContext& context_;
  std::string property_;
  bool begins_ = true;
};

/// A name that says nothing of bytes beyond ASCII.
std::string_view meaningful(std::string_view declared) {
  return tessarine::ascii_lower(declared).find("ascii") == std::string::npos ? declared
                                                                             : std::string_view{};
}

morvabs::DetectedEncoding find_encoding(Orlec::Reader const& text, std::string_view declared,
                                        ReadContext& context) {
  auto const sample = tessarine::read_piece(text, 0, sample_size);
  auto detected = morvabs::detect_encoding(sample);
  if (detected.mark_length != 0) {
    return detected;
  }
  if (meaningful(declared).empty()) {
    return detect_text_encoding(text, context);
  }
  return {choose_encoding(sample, declared)};
}

}  // namespace

std::string find_mail_encoding(Orlec::Reader const& text, std::string_view declared) {
  return choose_encoding(tessarine::read_piece(text, 0, sample_size), declared);
}

void read_mail_text(Orlec::Reader const& text, std::string_view declared_encoding,
                    Orlec::ParseTextType type, MailTextForm const& form, ReadContext& context) {
  TextLines text_lines(context, type, form);
  Lines lines(
      [&text_lines](std::string_view line, bool ends) { return text_lines.line(line, ends); });
  read_decoded(text, context, find_encoding(text, declared_encoding, context),
               [&lines](std::string_view utf8, bool last) { return lines.add(utf8, last); });
  text_lines.flush();
}

void read_mail_html(Orlec::Reader const& text, std::string_view declared_encoding,
                    ReadContext& context) {
  context.separate(Orlec::ParseTextType_main, '\n');
  read_html_part(text, meaningful(declared_encoding), context);
}

void read_mail_calendar(Orlec::Reader const& text, std::string_view declared_encoding,
                        ReadContext& context) {
  CalendarLines calendar(context);
  Lines lines([&calendar](std::string_view line, bool ends) { return calendar.line(line, ends); });
  read_decoded(text, context, find_encoding(text, declared_encoding, context),
               [&lines](std::string_view utf8, bool last) { return lines.add(utf8, last); });
  calendar.give();
}

}  // namespace morvakit
