#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tessarine/file_type.h"

namespace {

/// Documents of which the folder's name says what they are.
class CorpusFolder : public testing::TestWithParam<char const*> {};

TEST_P(CorpusFolder, holds_what_its_name_says) {
  char const* const corpus = std::getenv("MORVA_CORPUS");
  if (corpus == nullptr) {
    GTEST_SKIP() << "MORVA_CORPUS is not set";
  }
  for (auto const& entry : std::filesystem::directory_iterator(std::filesystem::path(corpus) /
                                                               "documents" / GetParam())) {
    Orlec::IFile const file(HString(entry.path().c_str()), false);
    EXPECT_STREQ(tessarine::recognize(file).suffix, GetParam()) << entry.path();
  }
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusFolder,
                         testing::Values("csv", "doc", "docx", "eml", "epub", "et", "html", "mbox",
                                         "msg", "odp", "ods", "odt", "ofd", "pdf", "ppt", "pptx",
                                         "rtf", "wps", "xls", "xlsx"));

}  // namespace
