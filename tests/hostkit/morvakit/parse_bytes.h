#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "host/Orlec/ParseFile.h"
#include "host/utf8.h"

#include "support/parsed_document.h"

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
  keep_input(bytes, name);
  ParsedDocument const wide = parse_document(bytes, name);
  Parsed parsed{wide.has_parser, wide.is_ok, wide.outcome, morvabs::to_utf8(wide.reason),
                wide.counts,     {}};
  for (auto const& [kind, text] : wide.text) {
    parsed.text[kind] = morvabs::to_utf8(text);
  }
  return parsed;
}

}  // namespace test
