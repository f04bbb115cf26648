#pragma once

#include <optional>

#include "host/HString.h"
#include "host/Orlec/ParseFile.h"
#include "host/internal/log_line.h"

namespace morva {

/// The main text that a parser has collected, at most 10485760 characters. Nothing, with the record
/// that tells why written under `tag`, when there is no callback, no main text or an empty one.
/// `function` is named in the assertion record.
inline std::optional<HString> collected_main_text(Orlec::ParseFile* parser, wchar_t const* tag,
                                                  wchar_t const* function) {
  constexpr int most_characters = 0xa00000;
  Orlec::TextLineCallback const* const callback =
      parser == nullptr ? nullptr : parser->GetTextCallback();
  if (callback == nullptr) {
    log_assertion(tag, function, __LINE__, L"ASSERT_NULL");
    return std::nullopt;
  }
  Orlec::ParseText* const main = callback->GetTextByType(Orlec::ParseTextType_main);
  if (main == nullptr) {
    log_assertion(tag, function, __LINE__, L"ASSERT_NULL");
    return std::nullopt;
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  main->GetTextBuff(&buffer, length, most_characters);
  HString text(buffer, length);
  if (text.empty()) {
    log_line(2, tag, __LINE__, L"str_file_centent empty");
    return std::nullopt;
  }
  return text;
}

}  // namespace morva
