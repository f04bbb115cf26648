#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/Orlec/ParseFile.h"
#include "host/Orlec/TextCallback.h"
#include "host/utf8.h"
#include "hostkit/tessarine/memory_reader.h"

namespace test {

/// What came of a parse, in UTF-8.
struct Parsed {
  bool has_parser = false;
  bool is_ok = false;
  Orlec::ParseOutcome outcome = Orlec::ParseOutcome::not_parsed;
  std::string reason;
  Orlec::ParseCounts counts;
  std::map<int, std::string> text;

  std::string main() const { return kind(Orlec::ParseTextType_main); }
  std::string kind(Orlec::ParseTextType type) const {
    auto const found = text.find(type);
    return found == text.end() ? std::string{} : found->second;
  }
};

/// Writes the first documents of each test to the folder that MORVA_KEEP_INPUTS names, where it
/// does: the fuzzer begins with them.
inline void keep_input(std::string const& bytes, char const* name) {
  constexpr std::size_t largest = 64 << 10;
  constexpr int most = 3;
  static std::map<void const*, int> kept;
  auto const* const folder = std::getenv("MORVA_KEEP_INPUTS");
  auto const* const running = testing::UnitTest::GetInstance()->current_test_info();
  if (folder != nullptr && bytes.size() <= largest && kept[running]++ < most) {
    auto const file = std::to_string(std::hash<std::string>()(bytes)) +
                      std::filesystem::path(name).extension().string();
    std::ofstream(std::filesystem::path(folder) / file, std::ios::binary) << bytes;
  }
}

/// Parses a document that was built in memory.
inline Parsed parse_bytes(std::string const& bytes, char const* name = "document") {
  constexpr int everything = 1 << 30;
  keep_input(bytes, name);
  MemoryReader reader(bytes, name);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&reader, false));
  Parsed parsed;
  if (parser == nullptr) {
    return parsed;
  }
  Orlec::TextLineCallback callback;
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  parsed.has_parser = true;
  parsed.is_ok = parser->InitFile();
  parsed.outcome = parser->GetOutcome();
  parsed.reason = morvabs::to_utf8(parser->GetReason().get_ws());
  parsed.counts = parser->GetCounts();
  for (int type = Orlec::ParseTextType_main; type <= Orlec::ParseTextType_other; ++type) {
    if (auto* const text = callback.GetTextByType(static_cast<Orlec::ParseTextType>(type));
        text != nullptr) {
      wchar_t* buffer = nullptr;
      int length = 0;
      text->GetTextBuff(&buffer, length, everything);
      parsed.text[type] = morvabs::to_utf8({buffer, static_cast<std::size_t>(length)});
    }
  }
  return parsed;
}

}  // namespace test
