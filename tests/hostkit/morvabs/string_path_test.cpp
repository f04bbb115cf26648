#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/HString.h"

namespace {

struct PathParts {
  wchar_t const* path;
  wchar_t const* name;
  wchar_t const* name_without_suffix;
  wchar_t const* directory;
};

void PrintTo(PathParts const& parts, std::ostream* out) {
  *out << testing::PrintToString(std::wstring(parts.path));
}

class HStringPath : public testing::TestWithParam<PathParts> {};

TEST_P(HStringPath, gives_its_name) {
  EXPECT_EQ(HString(GetParam().path).get_short_name(), HString(GetParam().name));
}

TEST_P(HStringPath, gives_its_name_without_suffix) {
  EXPECT_EQ(HString(GetParam().path).get_short_name_no_suffix(),
            HString(GetParam().name_without_suffix));
}

TEST_P(HStringPath, gives_its_directory) {
  EXPECT_EQ(HString(GetParam().path).get_path(true), HString(GetParam().directory));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, HStringPath,
    testing::Values(PathParts{L"/data/a.b.docx", L"a.b.docx", L"a.b", L"/data/"},
                    PathParts{L"plain", L"plain", L"plain", L""},
                    PathParts{L"/home/.profile", L".profile", L".profile", L"/home/"},
                    PathParts{L"dir.d/file", L"file", L"file", L"dir.d/"},
                    PathParts{L"/data/", L"", L"", L"/data/"},
                    PathParts{L"/文档/报告.txt", L"报告.txt", L"报告", L"/文档/"},
                    PathParts{L"a/..", L"..", L"..", L"a/"},
                    PathParts{L"end.", L"end.", L"end", L""}, PathParts{L"", L"", L"", L""}));

TEST(HStringDirectory, without_separator_it_ends_before_it) {
  EXPECT_EQ(HString(L"/data/x").get_path(false), HString(L"/data"));
  EXPECT_EQ(HString(L"/x").get_path(false), HString(L"/"));
}

TEST(HStringDirectory, dir_fit_adds_a_separator_where_there_is_none) {
  HString without(L"/data");
  HString with(L"/data/");
  EXPECT_EQ(without.dir_fit(true), HString(L"/data/"));
  EXPECT_EQ(with.dir_fit(true), HString(L"/data/"));
}

TEST(HStringDirectory, dir_fit_returns_the_text_itself) {
  HString text(L"/data");
  EXPECT_EQ(&text.dir_fit(true), &text);
}

TEST(HStringDirectory, dir_fit_leaves_the_empty_text_empty) {
  HString text;
  EXPECT_TRUE(text.dir_fit(true).empty());
}

TEST(HStringDirectory, dir_fit_removes_separators_but_never_the_root) {
  HString several(L"/data//");
  HString root(L"//");
  EXPECT_EQ(several.dir_fit(false), HString(L"/data"));
  EXPECT_EQ(root.dir_fit(false), HString(L"/"));
}

}  // namespace
