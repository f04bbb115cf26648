#include "tessarine/text_types.h"

#include <algorithm>
#include <array>
#include <optional>

#include "tessarine/byte_reader.h"

namespace tessarine {
namespace {

constexpr std::string_view blanks = " \t\r\n\f";

// Suffixes of texts that are no natural language, and those of plain text. Sorted.
constexpr std::array code_suffixes{
    "asm",   "awk",  "bash",  "bat",   "c",          "cc",     "clj",    "cmake", "cmd",   "coffee",
    "conf",  "cpp",  "cs",    "css",   "cxx",        "d",      "dart",   "diff",  "el",    "erl",
    "ex",    "exs",  "f90",   "fs",    "go",         "gradle", "groovy", "h",     "hh",    "hpp",
    "hs",    "hxx",  "ini",   "ipynb", "java",       "jl",     "js",     "json",  "jsonl", "jsx",
    "kt",    "less", "lisp",  "lua",   "m",          "mjs",    "mk",     "ml",    "mm",    "pas",
    "patch", "php",  "pl",    "pm",    "properties", "proto",  "ps1",    "py",    "r",     "rb",
    "rs",    "s",    "scala", "scss",  "sh",         "sql",    "swift",  "tcl",   "toml",  "ts",
    "tsx",   "v",    "vb",    "vbs",   "vue",        "yaml",   "yml",    "zsh"};
constexpr std::array text_suffixes{"adoc", "asc", "bib", "lst", "log",  "lrc", "nfo", "org",
                                   "po",   "rst", "srt", "tex", "text", "txt", "vcf", "vtt"};

template <std::size_t N>
char const* find_suffix(std::array<char const*, N> const& suffixes, std::string const& suffix) {
  auto const* const found = std::find(suffixes.begin(), suffixes.end(), suffix);
  return found == suffixes.end() ? nullptr : *found;
}

void skip_blanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
}

bool skip_behind(std::string_view& text, std::string_view end) {
  auto const found = text.find(end);
  text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
  return found != std::string_view::npos;
}

std::string tag_name(std::string_view tag) {
  tag.remove_prefix(std::min<std::size_t>(1, tag.size()));
  return ascii_lower(tag.substr(0, tag.find_first_of(" \t\r\n\f/>")));
}

bool is_html_tag(std::string const& name) {
  constexpr std::array<std::string_view, 47> names{
      "a",      "article", "b",     "base",     "blockquote", "body",   "br",      "button",
      "center", "col",     "dd",    "div",      "dl",         "em",     "font",    "footer",
      "form",   "h1",      "h2",    "h3",       "h4",         "head",   "header",  "hr",
      "html",   "i",       "img",   "input",    "label",      "li",     "link",    "main",
      "meta",   "nav",     "ol",    "p",        "pre",        "script", "section", "span",
      "strong", "style",   "table", "template", "title",      "tr",     "ul"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Name of the root element with its prefix cut off, and the tag itself.
struct Root {
  std::string name;
  std::string_view tag;
  bool has_declaration = false;
  bool has_html_type = false;
};

// Goes over what may stand in front of the first element: declaration, comments, document type.
std::optional<Root> find_root(std::string_view text) {
  Root root;
  for (skip_blanks(text); text.starts_with('<'); skip_blanks(text)) {
    if (text.starts_with("<!--")) {
      skip_behind(text, "-->");
    } else if (text.starts_with("<?")) {
      root.has_declaration = root.has_declaration || text.starts_with("<?xml");
      skip_behind(text, ">");
    } else if (text.starts_with("<!")) {
      auto const type = ascii_lower(text.substr(0, 64));
      auto const end = text.find_first_of("[>");
      root.has_html_type = root.has_html_type || type.starts_with("<!doctype html");
      root.has_declaration = root.has_declaration || type.starts_with("<!doctype");
      auto const has_subset = end != std::string_view::npos && text[end] == '[';
      skip_behind(text, has_subset ? "]" : ">");
      if (has_subset) {
        skip_behind(text, ">");
      }
    } else {
      root.tag = text.substr(0, text.find('>'));
      root.name = tag_name(root.tag);
      return root;
    }
  }
  return root.has_html_type || root.has_declaration ? std::optional<Root>(root) : std::nullopt;
}

bool is_xml_name(std::string_view name) {
  return !name.empty() && name.front() != '-' && name.front() != '.' &&
         !(name.front() >= '0' && name.front() <= '9') &&
         std::all_of(name.begin(), name.end(), [](char character) {
           auto const byte = static_cast<unsigned char>(character);
           auto const lower = byte | 0x20;
           auto const is_letter = lower >= 'a' && lower <= 'z';
           auto const is_digit = byte >= '0' && byte <= '9';
           return is_letter || is_digit || byte >= 0x80 || character == '_' || character == ':' ||
                  character == '-' || character == '.';
         });
}

Recognition recognize_flat_document(std::string_view root_tag) {
  if (root_tag.find("opendocument.spreadsheet") != std::string_view::npos) {
    return {FileType::flat_odf, "fods"};
  }
  if (root_tag.find("opendocument.presentation") != std::string_view::npos) {
    return {FileType::flat_odf, "fodp"};
  }
  return {FileType::flat_odf,
          root_tag.find("opendocument.graphics") != std::string_view::npos ? "fodg" : "fodt"};
}

// A part of a page or an element without a declaration counts only where `accept_fragments` says
// so.
Recognition recognize_markup(std::string_view text, bool accept_fragments) {
  auto const root = find_root(text);
  if (!root) {
    return {};
  }
  auto const local_name = root->name.substr(root->name.find(':') + 1);
  if (root->has_html_type || local_name == "html" ||
      (accept_fragments && !root->has_declaration && is_html_tag(root->name))) {
    return {FileType::html, "html"};
  }
  if (root->name == "office:document") {
    return recognize_flat_document(root->tag);
  }
  if (local_name == "svg") {
    return {FileType::xml, "svg"};
  }
  // Without a declaration, the element has to be one: named like one, and closed or with a name
  // space.
  auto const is_element = accept_fragments && is_xml_name(root->name) &&
                          (root->tag.find("xmlns") != std::string_view::npos ||
                           ascii_lower(text).find("</" + root->name) != std::string::npos);
  return root->has_declaration || is_element ? Recognition{FileType::xml, "xml"} : Recognition{};
}

// Whether the first lines can be rows: fields of moderate length, with a separator somewhere.
bool is_like_table(std::string_view text) {
  constexpr std::size_t longest_row = 64 << 10;
  auto const first_row = text.substr(0, text.find_first_of("\r\n"));
  auto const sample = text.substr(0, 16 << 10);
  return first_row.size() < longest_row &&
         (sample.find_first_of(",;\t|") != std::string_view::npos || first_row.size() < 128);
}

}  // namespace

Recognition recognize_text(std::string_view utf8, std::string const& name_suffix) {
  // A script or a Markdown text may well begin with an element; a whole page or document is one.
  auto const* const code = find_suffix(code_suffixes, name_suffix);
  auto const is_markdown = name_suffix == "md" || name_suffix == "markdown";
  auto const embeds_pages = name_suffix == "php" || name_suffix == "vue";
  auto const markup =
      embeds_pages ? Recognition{} : recognize_markup(utf8, code == nullptr && !is_markdown);
  if (markup.type != FileType::unknown) {
    return markup;
  }
  if (code != nullptr) {
    return {FileType::source_code, code};
  }
  if (is_markdown) {
    return {FileType::markdown, "md"};
  }
  if ((name_suffix == "csv" || name_suffix == "tsv") && is_like_table(utf8)) {
    return {FileType::csv, name_suffix == "csv" ? "csv" : "tsv"};
  }
  auto const* const own = find_suffix(text_suffixes, name_suffix);
  return {FileType::plain_text, own == nullptr ? "txt" : own};
}

}  // namespace tessarine
