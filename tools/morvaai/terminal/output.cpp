#include "terminal/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

#include "terminal/columns.h"
#include "terminal/progress.h"
#include "terminal/style.h"
#include "terminal/terminal.h"

namespace tool {

namespace {

/// Whether the character makes what follows it look other than it is: ends the line, or has it read
/// from the other side.
bool turns_line(char32_t c) {
  return (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// UTF-8 of the text with U+FFFD for each character that steers a terminal, but for those to keep.
std::string harmless(std::wstring text, std::wstring_view kept) {
  for (wchar_t& c : text) {
    auto const code = static_cast<char32_t>(c);
    bool const is_control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    if ((is_control || turns_line(code) || is_style_mark(code)) &&
        kept.find(c) == std::wstring_view::npos) {
      c = L'\xFFFD';
    }
  }
  return morvabs::to_utf8(text);
}

}  // namespace

std::string utf8(HString const& text) {
  return morvabs::to_utf8(text.get_ws());
}

HString text_of(std::string_view utf8) {
  std::wstring const wide = morvabs::from_utf8(utf8);
  return {wide.data(), static_cast<int>(wide.size())};
}

std::string printable(HString const& text) {
  return harmless(text.get_ws(), L"");
}

std::string shown_path(HString const& path, std::size_t columns_before) {
  constexpr std::size_t narrowest = 16;
  std::size_t const width = output_screen().columns.value_or(0);
  std::string const whole = printable(path);
  return width < columns_before + narrowest ? whole : cut_middle(whole, width - columns_before);
}

std::string weighted_words(std::string line,
                           std::vector<std::pair<std::string, double>> const& words,
                           std::size_t columns_before) {
  std::size_t columns = columns_before + columns_of(line);
  for (auto const& [word, weight] : words) {
    std::string const next = fmt::format(" {}({:.3g})", word, weight);
    columns += columns_of(next);
    if (columns > output_screen().columns.value_or(columns)) {
      break;
    }
    line += next;
  }
  return line + "\n";
}

NoComplaints::NoComplaints(bool holds) : before_(holds_) {
  holds_ = holds_ || holds;
}

NoComplaints::~NoComplaints() {
  holds_ = before_;
}

void complain(std::string const& problem) {
  if (NoComplaints::holds_) {
    return;
  }
  Role const role = problem.starts_with("warning: ") ? Role::warning : Role::error;
  std::string const line = styled(role, "morvaai:") + " " + problem + "\n";
  Hush const hush;
  std::fputs((error_screen().has_colors ? with_colors(line) : without_styles(line)).c_str(),
             stderr);
}

bool write_output(std::string const& text) {
  {
    Hush const hush;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
      return true;
    }
  }
  if (errno != EPIPE) {
    complain(std::string("standard output: ") + std::strerror(errno));
  }
  return false;
}

bool show(std::string const& text) {
  return write_output(output_screen().has_colors ? with_colors(text) : without_styles(text));
}

bool write_document(std::string const& text) {
  return write_output(output_screen().is_terminal ? harmless(morvabs::from_utf8(text), L"\n\t")
                                                  : text);
}

}  // namespace tool
