#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include <gtest/gtest.h>

#include "morvabs/atomic_file.h"
#include "morvabs/text_decoder.h"

namespace {

constexpr std::int64_t largest_file = std::int64_t{64} << 20;

/// Without white space, in which the texts of two programs may differ.
std::string squeezed(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
  return text;
}

TEST(CorpusEncoding, texts_of_many_encodings_decode_as_they_should) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  std::filesystem::path const root(corpus);
  int compared = 0;
  int equal = 0;
  for (auto const& file : std::filesystem::directory_iterator(root / "documents" / "txt")) {
    std::string bytes;
    std::string expected;
    std::string const name = file.path().filename();
    if (!morvabs::read_file(file.path(), bytes, largest_file) ||
        !morvabs::read_file(root / "reference" / "txt" / (name + ".ref.txt"), expected,
                            largest_file)) {
      continue;
    }
    ++compared;
    bool const is_equal = squeezed(morvabs::decode_text(bytes)) == squeezed(expected);
    equal += is_equal ? 1 : 0;
    if (!is_equal) {
      std::cout << "differs: " << name << ", taken as "
                << morvabs::detect_encoding(std::string_view(bytes).substr(0, 1 << 20)).name
                << "\n";
    }
  }
  std::cout << equal << " of " << compared << " texts decode as they should\n";
  ASSERT_GT(compared, 0);
  EXPECT_GE(equal * 100, compared * 95);
}

}  // namespace
