#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// A text in both forms that the candidates take.
struct SegmenterText {
  explicit SegmenterText(std::wstring text);

  std::wstring wide;
  std::string utf8;
};

struct NamedTexts {
  std::string name;
  std::vector<SegmenterText> texts;

  std::int64_t bytes() const;  // as UTF-8
};

/// Novels, one to a name: the files of MORVA_CORPUS/long, or a generated one where that is not set.
std::vector<NamedTexts> load_novels();

/// Short documents: per folder of MORVA_CORPUS/text the first 100 files, by path, of 300 to 12,000
/// bytes; or 100 generated ones of 500 to 3,000 characters.
std::vector<NamedTexts> load_short_documents();

/// A text without anything but its Han characters.
std::wstring keep_han(std::wstring_view text);

}  // namespace bench
