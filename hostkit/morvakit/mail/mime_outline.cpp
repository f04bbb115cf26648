#include "morvakit/mail/mime_outline.h"

#include <algorithm>
#include <utility>

#include "morvakit/mail/mime_lines.h"

#include "tessarine/byte_reader.h"

namespace morvakit {

namespace {

constexpr std::size_t deepest_part = 100;
constexpr std::size_t longest_field = std::size_t{1} << 20;
constexpr std::size_t longest_part_field = std::size_t{16} << 10;
/// Bytes of all header fields that are kept of one mail.
constexpr std::size_t most_header_bytes = std::size_t{8} << 20;
constexpr std::size_t most_fields = 10000;
constexpr std::size_t longest_boundary = 1000;

/// What a mailbox, and some programs elsewhere, put in front of the first field.
constexpr std::string_view envelope = "From ";
constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";

bool is_blank(char character) {
  return character == ' ' || character == '\t';
}

/// Length of the field's name in front of its colon; 0 for a line that is no field.
std::size_t field_name_length(std::string_view line) {
  auto const colon = line.find(':');
  auto const name = line.substr(0, colon);
  auto const length = name.find_last_not_of(" \t") + 1;
  bool const is_name =
      colon != std::string_view::npos &&
      std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(length),
                  [](char character) { return character > ' ' && character < '\x7f'; });
  return is_name ? length : 0;
}

std::string without_brackets(std::string_view id) {
  id.remove_prefix(std::min(id.find_first_not_of(" \t<"), id.size()));
  return std::string(id.substr(0, id.find_first_of("> \t")));
}

/// A multipart whose end has not come yet.
struct OpenPart {
  std::size_t part = 0;
  std::string boundary;
  bool has_parts = false;
};

class Outliner {
 public:
  Outliner(Orlec::Reader const& reader, ReadContext& context)
      : reader_(reader), context_(context), lines_(reader, context) {}

  MimeOutline run() {
    begin_part(0, 0);
    LineReader::Line line;
    while (!is_full_ && lines_.next(line)) {
      take_line(line);
      last_end_ = line.bytes.size() - line.text().size();
    }
    auto const end = is_full_ ? end_ : reader_.GetSize();
    if (is_in_header_) {
      end_header(end);
    }
    end_part(end);
    bool const is_cut = !open_.empty() && open_.back().has_parts;
    while (!open_.empty()) {
      close_multipart(end);
    }
    if (is_cut && !is_full_) {
      context_.note(Orlec::ParseOutcome::incomplete, "the mail ends within a part");
    }
    return std::move(outline_);
  }

 private:
  void take_line(LineReader::Line const& line) {
    if (line.begins && line.bytes.starts_with("--") && !open_.empty() && take_boundary(line)) {
      return;
    }
    if (is_in_header_) {
      take_header_line(line);
    }
  }

  /// Whether the line ends a part; it may end several within each other.
  bool take_boundary(LineReader::Line const& line) {
    auto text = line.text().substr(2);
    text = text.substr(0, text.find_last_not_of(" \t") + 1);
    auto const is_of = [text](OpenPart const& open) {
      auto const size = open.boundary.size();
      return text.starts_with(open.boundary) &&
             (text.size() == size || (text.size() == size + 2 && text.ends_with("--")));
    };
    auto const found = std::find_if(open_.rbegin(), open_.rend(), is_of);
    if (found == open_.rend()) {
      return false;
    }
    auto const level = static_cast<std::size_t>(open_.rend() - found);
    // The end of the line in front belongs to the boundary.
    auto const end = line.offset - static_cast<std::int64_t>(last_end_);
    if (is_in_header_) {
      end_header(end);
    }
    end_part(end);
    while (open_.size() > level) {
      close_multipart(end);
    }
    if (text.size() > open_.back().boundary.size()) {
      close_multipart(end);
    } else {
      open_.back().has_parts = true;
      begin_part(open_.back().part, line.end());
    }
    return true;
  }

  void begin_part(std::size_t parent, std::int64_t offset) {
    auto const most = context_.limits().i_entries;
    if (static_cast<std::int64_t>(outline_.parts.size()) >= most && !outline_.parts.empty()) {
      stop("over " + std::to_string(most) + " parts in a mail", offset);
      return;
    }
    outline_.parts.emplace_back();
    outline_.parts.back().parent = parent;
    outline_.parts.back().begin = offset;
    fields_.clear();
    is_in_header_ = true;
    is_in_part_ = true;
    has_line_ = false;
  }

  void stop(std::string const& reason, std::int64_t offset) {
    context_.note(Orlec::ParseOutcome::limit_reached, reason);
    is_full_ = true;
    end_ = offset;
  }

  void take_header_line(LineReader::Line const& line) {
    auto const text = line.text();
    if (!line.begins || (!text.empty() && is_blank(text.front()) && has_line_)) {
      continue_field(text, line.begins);
      return;
    }
    bool const is_mail = outline_.parts.size() == 1;
    if (is_mail && !has_line_ && (text.empty() || is_envelope(text))) {
      if (text.size() > envelope.size()) {
        begin_field("envelope", text.substr(text.find(envelope) + envelope.size()));
      }
      return;
    }
    auto const length = field_name_length(text);
    if (length == 0) {
      // An empty line, or none where there should be one.
      end_header(text.empty() ? line.end() : line.offset);
      if (text.starts_with("--")) {
        take_boundary(line);
      }
      return;
    }
    has_line_ = true;
    begin_field(tessarine::ascii_lower(text.substr(0, length)), text.substr(text.find(':') + 1));
  }

  /// Not a field, but what some programs put in front of the first one.
  static bool is_envelope(std::string_view text) {
    return text.starts_with(envelope) ||
           (text.starts_with('>') && text.substr(1).starts_with(envelope)) ||
           text == byte_order_mark;
  }

  void begin_field(std::string name, std::string_view value) {
    bool const is_mail = outline_.parts.size() == 1;
    is_kept_ = (is_mail || name.starts_with("content-")) && fields_.size() < most_fields;
    if (is_kept_) {
      header_bytes_ += name.size() + sizeof(MimeField);
      fields_.push_back({std::move(name), {}});
      continue_field(value, true);
    }
  }

  void continue_field(std::string_view text, bool begins_line) {
    if (!is_kept_ || fields_.empty()) {
      return;
    }
    auto& value = fields_.back().value;
    auto const most = outline_.parts.size() == 1 ? longest_field : longest_part_field;
    if (value.size() + text.size() > most || header_bytes_ + text.size() > most_header_bytes) {
      context_.note(Orlec::ParseOutcome::limit_reached, "header fields that are too long");
      return;
    }
    if (begins_line) {
      text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
      value += value.empty() ? "" : " ";
    }
    header_bytes_ += text.size() + 1;
    value += text;
  }

  std::string_view field(std::string_view name) const {
    auto const found = std::find_if(fields_.begin(), fields_.end(),
                                    [name](MimeField const& one) { return one.name == name; });
    return found == fields_.end() ? std::string_view{} : std::string_view(found->value);
  }

  /// The header block of the newest part is complete: its content begins.
  void end_header(std::int64_t offset) {
    is_in_header_ = false;
    auto const number = outline_.parts.size() - 1;
    auto& part = outline_.parts.back();
    part.begin = offset;
    part.type = parse_mime_value(field("content-type"));
    part.disposition = parse_mime_value(field("content-disposition"));
    part.transfer = find_transfer(parse_mime_value(field("content-transfer-encoding")).value);
    part.content_id = without_brackets(field("content-id"));
    if (part.type.value.find('/') == std::string::npos) {
      bool const is_digest = outline_.parts[part.parent].type.value == "multipart/digest";
      part.type.value = is_digest && number != 0 ? "message/rfc822" : "text/plain";
    }
    if (number == 0) {
      outline_.fields = std::move(fields_);
    }
    open_multipart(number, offset);
  }

  void open_multipart(std::size_t number, std::int64_t offset) {
    auto& type = outline_.parts[number].type;
    if (!type.value.starts_with("multipart/")) {
      return;
    }
    auto const boundary = type.parameter("boundary");
    if (boundary.empty() || boundary.size() > longest_boundary) {
      type.value = "text/plain";
      return;
    }
    if (open_.size() >= deepest_part) {
      stop("parts of a mail nested over " + std::to_string(deepest_part) + " deep", offset);
      return;
    }
    open_.push_back({number, std::string(boundary.substr(0, boundary.find_last_not_of(' ') + 1))});
    is_in_part_ = false;
  }

  /// The part that lines belong to, if there is one, has come to its end.
  void end_part(std::int64_t offset) {
    if (std::exchange(is_in_part_, false)) {
      auto& part = outline_.parts.back();
      part.end = std::max(part.begin, offset);
    }
  }

  /// A multipart without a part is a text that is called something else.
  void close_multipart(std::int64_t offset) {
    auto& part = outline_.parts[open_.back().part];
    part.end = std::max(part.begin, offset);
    if (!open_.back().has_parts) {
      part.type.value = "text/plain";
    }
    open_.pop_back();
  }

  Orlec::Reader const& reader_;
  ReadContext& context_;
  LineReader lines_;
  MimeOutline outline_;
  std::vector<OpenPart> open_;
  std::vector<MimeField> fields_;
  std::size_t header_bytes_ = 0;
  /// Length of the last line's end.
  std::size_t last_end_ = 0;
  std::int64_t end_ = 0;
  bool is_in_header_ = false;
  bool is_in_part_ = false;
  /// Whether a field has come in the current header block.
  bool has_line_ = false;
  bool is_kept_ = false;
  bool is_full_ = false;
};

}  // namespace

std::string_view MimePart::file_name() const {
  auto const name = disposition.parameter("filename");
  return name.empty() ? type.parameter("name") : name;
}

MimeOutline outline_mail(Orlec::Reader const& reader, ReadContext& context) {
  return Outliner(reader, context).run();
}

}  // namespace morvakit
