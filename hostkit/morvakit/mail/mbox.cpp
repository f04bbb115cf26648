#include <algorithm>
#include <string_view>

#include "morvakit/formats.h"
#include "morvakit/mail/mail_message.h"
#include "morvakit/mail/mime_lines.h"
#include "morvakit/spool.h"

namespace morvakit {

namespace {

/// "From somebody Mon Jun  1 10:00:00 2009": an address and a time of day or a year.
bool is_separator(std::string_view line) {
  if (!line.starts_with("From ")) {
    return false;
  }
  auto const is_digit = [](char character) { return character >= '0' && character <= '9'; };
  auto const colon = line.find(':');
  bool const has_time = colon != std::string_view::npos && is_digit(line[colon - 1]);
  constexpr std::size_t year_length = 4;
  auto const year = line.substr(line.size() - year_length);
  return has_time || std::all_of(year.begin(), year.end(), is_digit);
}

}  // namespace

void read_mbox(Orlec::Reader const& reader, tessarine::Recognition const& /*recognition*/,
               ReadContext& context) {
  LineReader lines(reader, context);
  LineReader::Line line;
  std::int64_t begin = 0;
  bool follows_empty_line = false;
  auto const read_one = [&](std::int64_t end) {
    if (end > begin) {
      read_mail(ReaderSlice(reader, {}, begin, end - begin), MailForm::mailbox, context);
    }
  };
  while (lines.next(line)) {
    auto const text = line.text();
    if (line.begins && follows_empty_line && is_separator(text)) {
      read_one(line.offset);
      begin = line.offset;
    }
    follows_empty_line = line.begins && text.empty();
  }
  if (!context.ended()) {
    read_one(reader.GetSize());
  }
}

}  // namespace morvakit
