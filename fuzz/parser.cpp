#include <algorithm>
#include <cstdint>
#include <cwchar>
#include <functional>
#include <string>
#include <string_view>

#include "host/Orlec/Global.h"
#include "host/Orlec/ParseFile.h"
#include "morvabs/component.h"

#include "fuzz/require.h"
#include "support/parsed_document.h"

namespace {

using Orlec::ParseOutcome;

/// The name that inputs have, from the option --name.
std::string input_name = "input";

/// Small enough that a bound that is not kept shows in time or memory.
void set_limits() {
  auto& limits = Orlec::Global::pins()->limits;
  limits.i_expanded_bytes = std::int64_t{64} << 20;
  limits.i_entries = 2000;
  limits.i_nesting = 4;
  limits.i_entity_bytes = std::int64_t{1} << 20;
  limits.i_list_bytes = std::int64_t{32} << 20;
  limits.i_memory_chars = std::int64_t{1} << 20;
  limits.i_milliseconds = 4000;
}

using test::ParsedDocument;

ParsedDocument parse(std::string const& bytes) {
  return test::parse_document(bytes, input_name.c_str());
}

std::wstring main_text(ParsedDocument const& parsed) {
  auto const found = parsed.text.find(Orlec::ParseTextType_main);
  return found == parsed.text.end() ? std::wstring() : found->second;
}

bool gives_text(ParseOutcome outcome) {
  return outcome == ParseOutcome::text || outcome == ParseOutcome::no_text ||
         outcome == ParseOutcome::incomplete || outcome == ParseOutcome::limit_reached ||
         outcome == ParseOutcome::timed_out;
}

bool is_character(wchar_t character) {
  auto const code = static_cast<std::uint32_t>(character);
  return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

std::int64_t lines_of(std::wstring_view text) {
  std::int64_t lines = 0;
  bool is_empty = true;
  for (auto const character : text) {
    bool const is_end = character == L'\n' || character == L'\r';
    lines += !is_end && is_empty ? 1 : 0;
    is_empty = is_end;
  }
  return lines;
}

void check_outcome(ParsedDocument const& parsed) {
  using fuzz::require;
  auto const outcome = parsed.outcome;
  require(!Orlec::GetOutcomeName(outcome).empty(), "the outcome has a name");
  require(outcome != ParseOutcome::not_parsed, "a parse has an outcome");
  require(outcome != ParseOutcome::failed, "reading from memory into memory does not fail");
  require(parsed.is_ok == gives_text(outcome), "InitFile tells whether there is text to be used");
  bool const is_whole = outcome == ParseOutcome::text || outcome == ParseOutcome::no_text;
  require(parsed.reason.empty() == is_whole, "there is a reason where not all was read");
  auto const main = main_text(parsed);
  require(outcome != ParseOutcome::text || !main.empty(), "text has main text");
  require(outcome != ParseOutcome::no_text || main.empty(), "no text has no main text");
  require(!parsed.is_ok || parsed.text.contains(Orlec::ParseTextType_main),
          "what was read has a main text, empty or not");
}

void check_texts(ParsedDocument const& parsed) {
  using fuzz::require;
  auto const most = static_cast<std::size_t>(Orlec::Global::pins()->limits.i_memory_chars);
  std::size_t others = 0;
  for (auto const& [kind, text] : parsed.text) {
    require(std::all_of(text.begin(), text.end(), is_character), "text is made of characters");
    others += text.size();
  }
  auto const main = main_text(parsed);
  others -= main.size();
  require(main.size() <= most, "main text keeps to its bound");
  require(others <= most, "the other kinds keep to theirs");
}

void check_counts(ParsedDocument const& parsed) {
  using fuzz::require;
  auto const& counts = parsed.counts;
  require(counts.i_line >= 0 && counts.i_page >= 0 && counts.i_img >= 0 && counts.i_embed >= 0,
          "counts are not negative");
  auto const lines = lines_of(main_text(parsed));
  require(parsed.outcome == ParseOutcome::limit_reached ? lines <= counts.i_line
                                                        : lines == counts.i_line,
          "the lines of the main text are those that were counted");
}

void check_repeated(std::string const& bytes, ParsedDocument const& parsed) {
  constexpr std::size_t one_in = 16;
  if (std::hash<std::string>()(bytes) % one_in != 0) {
    return;
  }
  auto const again = parse(bytes);
  bool const is_timed =
      parsed.outcome == ParseOutcome::timed_out || again.outcome == ParseOutcome::timed_out;
  fuzz::require(is_timed || (again.outcome == parsed.outcome && again.reason == parsed.reason &&
                             again.text == parsed.text),
                "parsing again gives the same");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
  constexpr std::string_view option = "--name=";
  for (int i = 1; i < *count; ++i) {
    std::string_view const argument = (*arguments)[i];
    if (argument.starts_with(option)) {
      input_name = argument.substr(option.size());
    }
  }
  set_limits();
  // Loaded before the fuzzer looks at what there is to be reached.
  for (auto const* const component :
       {"libmorvakit-html.so", "libmorvakit-archive.so", "libmorvakit-pdf.so"}) {
    morvabs::component_function(component, "");
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const bytes(reinterpret_cast<char const*>(data), size);
  auto const parsed = parse(bytes);
  if (parsed.has_parser) {
    check_outcome(parsed);
    check_texts(parsed);
    check_counts(parsed);
    check_repeated(bytes, parsed);
  }
  return 0;
}
