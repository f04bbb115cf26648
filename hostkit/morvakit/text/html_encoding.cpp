#include "morvakit/text/html_encoding.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "host/utf8.h"
#include "morvakit/text/text_source.h"

namespace morvakit {

namespace {

constexpr std::int64_t sample_size = std::int64_t{256} << 10;
/// Pages declare their encoding near the beginning, but some have a long script in front.
constexpr std::size_t declaration_distance = std::size_t{16} << 10;

std::string ascii_lower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

/// What stands behind "charset=" or "encoding=" within a tag, without its quotes.
std::string value_behind(std::string_view tag, std::string_view key) {
  auto const found = tag.find(key);
  if (found == std::string_view::npos) {
    return {};
  }
  auto value = tag.substr(found + key.size());
  value.remove_prefix(std::min(value.find_first_not_of(" \t\r\n"), value.size()));
  if (!value.starts_with('=')) {
    return {};
  }
  value.remove_prefix(std::min(value.find_first_not_of("= \t\r\n\"'"), value.size()));
  return std::string(value.substr(0, value.find_first_of("\"'; \t\r\n/>?")));
}

std::string declared_encoding(std::string_view sample) {
  auto const head = ascii_lower(sample.substr(0, declaration_distance));
  for (auto meta = head.find("<meta"); meta != std::string::npos;
       meta = head.find("<meta", meta + 1)) {
    auto const tag = std::string_view(head).substr(meta, head.find('>', meta) - meta);
    if (auto value = value_behind(tag, "charset"); !value.empty()) {
      return value;
    }
  }
  auto const start = std::min(head.find_first_not_of(" \t\r\n"), head.size());
  auto const declaration = std::string_view(head).substr(start, head.find("?>", start) - start);
  return declaration.starts_with("<?xml") ? value_behind(declaration, "encoding") : std::string{};
}

}  // namespace

bool agrees_with_encoding(std::string_view sample, std::string const& encoding) {
  morvabs::TextDecoder decoder(encoding);
  if (!decoder.is_known()) {
    return false;
  }
  std::string utf8;
  decoder.decode(sample, false, utf8);
  std::size_t malformed = 0;
  for (auto found = utf8.find("\xef\xbf\xbd"); found != std::string::npos;
       found = utf8.find("\xef\xbf\xbd", found + 3)) {
    ++malformed;
  }
  auto const beyond_ascii = static_cast<std::size_t>(std::count_if(
      sample.begin(), sample.end(), [](char c) { return static_cast<signed char>(c) < 0; }));
  return malformed * 50 <= beyond_ascii;
}

morvabs::DetectedEncoding find_html_encoding(Orlec::Reader const& reader, ReadContext& context,
                                             std::string_view declared) {
  std::string sample(
      static_cast<std::size_t>(std::clamp<std::int64_t>(reader.GetSize(), 0, sample_size)), '\0');
  auto const got = reader.ReadAt(0, sample.data(), static_cast<std::int64_t>(sample.size()));
  sample.resize(static_cast<std::size_t>(std::max<std::int64_t>(got, 0)));
  auto detected = detect_text_encoding(reader, context);
  auto const whole = std::string_view(sample).substr(0, morvabs::complete_utf8_prefix(sample));
  auto const is_wide = sample.find('\0') != std::string::npos && detected.name.starts_with("UTF-");
  if (detected.mark_length != 0 || is_wide) {
    return detected;
  }
  auto const has_more = std::any_of(sample.begin(), sample.end(),
                                    [](char c) { return static_cast<signed char>(c) < 0; });
  if (has_more && morvabs::is_utf8(whole)) {
    return {"UTF-8"};
  }
  for (auto const& encoding : {ascii_lower(declared), declared_encoding(sample)}) {
    // A declaration that could be read as ASCII does not stand in UTF-16.
    bool const is_wide_name = encoding.starts_with("utf-16") || encoding.starts_with("utf-32");
    if (!encoding.empty() && !is_wide_name && agrees_with_encoding(sample, encoding)) {
      return {encoding};
    }
  }
  return detected;
}

}  // namespace morvakit
