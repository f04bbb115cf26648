#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseFile.h"

namespace {

using Orlec::ParseOutcome;

std::vector<std::string> documents(std::string const& corpus) {
  std::vector<std::string> paths;
  for (auto const& entry : std::filesystem::recursive_directory_iterator(corpus + "/documents")) {
    if (entry.is_regular_file()) {
      paths.push_back(entry.path().string());
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

void check(std::string const& path) {
  Orlec::IFile file(HString(path.c_str()), false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  if (!parser) {
    return;
  }
  Orlec::TextLineCallback callback;
  parser->SetCallBack(&callback, false);
  bool const read = parser->InitFile();
  auto const outcome = parser->GetOutcome();
  bool const is_read = outcome == ParseOutcome::text || outcome == ParseOutcome::no_text ||
                       outcome == ParseOutcome::incomplete ||
                       outcome == ParseOutcome::limit_reached || outcome == ParseOutcome::timed_out;
  EXPECT_EQ(read, is_read) << path;
  EXPECT_NE(outcome, ParseOutcome::not_parsed) << path;
  bool const needs_reason = outcome != ParseOutcome::text && outcome != ParseOutcome::no_text;
  EXPECT_EQ(parser->GetReason().not_empty(), needs_reason) << path;
  auto* const main = callback.GetTextByType(Orlec::ParseTextType_main);
  EXPECT_TRUE(!read || main != nullptr) << path;
  if (main != nullptr && (outcome == ParseOutcome::text || outcome == ParseOutcome::no_text)) {
    wchar_t* buffer = nullptr;
    int length = 0;
    main->GetTextBuff(&buffer, length, 1);
    EXPECT_EQ(length > 0, outcome == ParseOutcome::text) << path;
  }
}

}  // namespace

TEST(Corpus, every_document_has_a_consistent_outcome) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  for (auto const& path : documents(corpus)) {
    check(path);
  }
}
