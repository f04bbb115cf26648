#include "tessarine/mail_types.h"

#include <algorithm>
#include <array>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

// What the header block says, as far as the decision needs it.
struct HeaderBlock {
  int common = 0;     // fields that a message and many a text have: "Subject: ..."
  int transport = 0;  // fields that only mail programs write
  bool article = false;
  bool addressed = false;
  bool has_address = false;  // "name@host" behind From or To
  bool related = false;      // the content is a page with its parts
};

bool is_header_name(std::string_view name) {
  return !name.empty() && name.size() <= 80 &&
         std::all_of(name.begin(), name.end(), [](char character) {
           return character > ' ' && character < '\x7f' && character != ':';
         });
}

template <std::size_t N>
bool is_one_of(std::array<std::string_view, N> const& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void note_field(HeaderBlock& block, std::string const& name, std::string const& value) {
  constexpr std::array<std::string_view, 9> common{"from", "to",       "subject", "date",      "cc",
                                                   "bcc",  "reply-to", "sender",  "references"};
  constexpr std::array<std::string_view, 9> transport{
      "received",      "return-path",  "message-id", "mime-version",
      "delivered-to",  "content-type", "x-mailer",   "content-transfer-encoding",
      "dkim-signature"};
  block.common += is_one_of(common, name) ? 1 : 0;
  block.transport += is_one_of(transport, name) ? 1 : 0;
  block.article = block.article || name == "newsgroups";
  block.addressed = block.addressed || name == "to" || name == "received" ||
                    name == "return-path" || name == "delivered-to";
  block.has_address = block.has_address ||
                      ((name == "from" || name == "to") && value.find('@') != std::string::npos);
  block.related = block.related ||
                  (name == "content-type" && value.find("multipart/related") != std::string::npos);
}

std::string_view next_line(std::string_view& rest) {
  auto const end = rest.find_first_of("\r\n");
  auto const line = rest.substr(0, end);
  if (end == std::string_view::npos) {
    rest = {};
  } else {
    rest.remove_prefix(end + (rest.substr(end).starts_with("\r\n") ? 2 : 1));
  }
  return line;
}

// An empty block where a line that is no header stands before the first empty line, unless what
// stands in front of it can only be a message's.
HeaderBlock read_headers(std::string_view rest) {
  HeaderBlock block;
  std::string name;
  std::string value;
  while (!rest.empty()) {
    auto const line = next_line(rest);
    if (line.empty()) {
      break;
    }
    if (line.front() == ' ' || line.front() == '\t') {
      if (name.empty()) {
        return {};
      }
      value += ascii_lower(line);
      continue;
    }
    note_field(block, name, value);
    auto const colon = line.find(':');
    if (colon == std::string_view::npos || !is_header_name(line.substr(0, colon))) {
      return block.common >= 2 && block.transport >= 1 ? block : HeaderBlock{};
    }
    name = ascii_lower(line.substr(0, colon));
    value = ascii_lower(line.substr(colon + 1));
  }
  note_field(block, name, value);
  return block;
}

}  // namespace

Recognition recognize_mail(std::string_view head, std::string const& name_suffix) {
  auto rest = head;
  rest.remove_prefix(rest.starts_with("\xef\xbb\xbf") ? 3 : 0);
  rest.remove_prefix(std::min(rest.find_first_not_of("\r\n"), rest.size()));
  auto const has_separator = rest.starts_with("From ");
  if (has_separator) {
    next_line(rest);
  }
  auto const is_named_mail = name_suffix == "eml" || name_suffix == "mbox";
  auto const block = read_headers(rest);
  auto const has_fields = block.transport + block.common >= 2;
  // Three fields with an address among them stand above a mail that never left its program.
  auto const is_letter = block.transport != 0 || (block.common >= 3 && block.has_address);
  auto const is_message = has_separator   ? has_fields || block.transport != 0
                          : is_named_mail ? has_fields
                                          : has_fields && is_letter && !block.article;
  if (!is_message) {
    return {};
  }
  if (has_separator) {
    auto const has_second = rest.find("\n\nFrom ") != std::string_view::npos ||
                            rest.find("\n\r\nFrom ") != std::string_view::npos;
    return has_second || name_suffix != "eml" ? Recognition{FileType::mbox, "mbox"}
                                              : Recognition{FileType::eml, "eml"};
  }
  auto const is_page = block.related && !block.addressed && name_suffix != "eml";
  return is_page ? Recognition{FileType::mhtml, "mht"} : Recognition{FileType::eml, "eml"};
}

}  // namespace tessarine
