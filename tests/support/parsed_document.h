#pragma once

#include <cstddef>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include "host/Orlec/ParseFile.h"
#include "host/Orlec/TextCallback.h"
#include "hostkit/tessarine/memory_reader.h"

namespace test {

/// What came of a parse; of the kinds of text, those that there were.
struct ParsedDocument {
  bool has_parser = false;
  bool is_ok = false;
  Orlec::ParseOutcome outcome = Orlec::ParseOutcome::not_parsed;
  std::wstring reason;
  Orlec::ParseCounts counts;
  std::map<int, std::wstring> text;
};

/// Parses a document that lies in memory.
inline ParsedDocument parse_document(std::string const& bytes, char const* name) {
  MemoryReader reader(bytes, name);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
  ParsedDocument parsed;
  if (parser == nullptr) {
    return parsed;
  }
  Orlec::TextLineCallback callback;
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  parsed.has_parser = true;
  parsed.is_ok = parser->InitFile();
  parsed.outcome = parser->GetOutcome();
  parsed.reason = parser->GetReason().get_ws();
  parsed.counts = parser->GetCounts();
  for (int kind = Orlec::ParseTextType_main; kind <= Orlec::ParseTextType_other; ++kind) {
    if (auto* const text = callback.GetTextByType(static_cast<Orlec::ParseTextType>(kind));
        text != nullptr) {
      wchar_t* buffer = nullptr;
      int length = 0;
      text->GetTextBuff(&buffer, length, std::numeric_limits<int>::max());
      parsed.text[kind].assign(buffer, static_cast<std::size_t>(length));
    }
  }
  return parsed;
}

}  // namespace test
