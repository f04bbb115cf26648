#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/HIniFileHelper.h"

#include "support/temporary_directory.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class IniFile : public testing::Test {
 protected:
  HIniFileHelper helper() const {
    HIniFileHelper made;
    made.mb_utf8 = true;
    made.setFile(directory_ / "box.ini");
    return made;
  }
  void put(std::string const& content) const { directory_.write("box.ini", content); }
  std::string content() const { return directory_.read("box.ini"); }
  HString read(HString const& section, HString const& key) const {
    HString value(L"untouched");
    helper().read_string(section, key, value);
    return value;
  }
  bool write(HString const& section, HString const& key, HString const& value) const {
    return helper().write_string(section, key, value);
  }
  std::vector<HString> sections() const {
    HIniFileHelper whole = helper();
    whole.read_all();
    std::vector<HString> names;
    for (HIniSection const& section : whole.vt_section) {
      names.push_back(section.str_name);
    }
    return names;
  }
  test::TemporaryDirectory directory_;
};

TEST_F(IniFile, a_written_value_is_read_back) {
  EXPECT_TRUE(write(L"box", L"MD5", L"0123"));
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"0123"));
}

TEST_F(IniFile, plain_names_and_values_are_written_plain) {
  write(L"my box", L"CLASS", L"类一|class two=2; # 100% [x]");
  EXPECT_EQ(content(), "[my box]\nCLASS = 类一|class two=2; # 100% [x]\n");
}

TEST_F(IniFile, a_missing_key_leaves_the_output_untouched) {
  write(L"box", L"MD5", L"0123");
  EXPECT_EQ(read(L"box", L"CLASS"), HString(L"untouched"));
  EXPECT_EQ(read(L"other", L"MD5"), HString(L"untouched"));
}

TEST_F(IniFile, a_missing_file_has_no_values) {
  HString value(L"untouched");
  EXPECT_FALSE(helper().read_string(L"a", L"b", value));
  EXPECT_FALSE(helper().read_all());
}

TEST_F(IniFile, an_empty_value_is_a_value) {
  write(L"box", L"CLASS", HString());
  EXPECT_EQ(read(L"box", L"CLASS"), HString());
}

TEST_F(IniFile, writing_a_key_again_replaces_its_value) {
  write(L"box", L"MD5", L"old");
  write(L"box", L"MD5", L"new");
  EXPECT_EQ(content(), "[box]\nMD5 = new\n");
}

TEST_F(IniFile, writing_reaches_the_file_and_not_the_section_list) {
  HIniFileHelper writer = helper();
  writer.write_string(L"box", L"MD5", L"0123");
  EXPECT_THAT(writer.vt_section, IsEmpty());
}

TEST_F(IniFile, sections_and_keys_keep_the_order_of_the_file) {
  for (wchar_t const* name : {L"zebra", L"Ape", L"ape", L"中"}) {
    write(name, L"z", L"1");
    write(name, L"a", L"2");
  }
  EXPECT_THAT(sections(), ElementsAre(L"zebra", L"Ape", L"ape", L"中"));
  HIniFileHelper whole = helper();
  whole.read_all();
  EXPECT_EQ(whole.vt_section[0].vt_key[0].str_key, HString(L"z"));
  EXPECT_EQ(whole.vt_section[0].vt_key[1].str_key, HString(L"a"));
}

TEST_F(IniFile, names_are_case_sensitive) {
  write(L"box", L"md5", L"lower");
  write(L"box", L"MD5", L"upper");
  EXPECT_EQ(read(L"box", L"md5"), HString(L"lower"));
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"upper"));
}

TEST_F(IniFile, an_erased_section_is_gone_after_write_all) {
  write(L"one", L"MD5", L"1");
  write(L"two", L"MD5", L"2");
  HIniFileHelper whole = helper();
  whole.read_all();
  whole.vt_section.erase(whole.vt_section.begin());
  EXPECT_TRUE(whole.write_all());
  EXPECT_THAT(sections(), ElementsAre(L"two"));
}

TEST_F(IniFile, read_all_replaces_the_section_list) {
  write(L"one", L"MD5", L"1");
  HIniFileHelper whole = helper();
  whole.read_all();
  whole.read_all();
  EXPECT_EQ(whole.vt_section.size(), 1U);
}

TEST_F(IniFile, a_file_that_is_gone_empties_the_section_list) {
  write(L"one", L"MD5", L"1");
  HIniFileHelper whole = helper();
  whole.read_all();
  std::filesystem::remove(directory_.path() / "box.ini");
  EXPECT_FALSE(whole.read_all());
  EXPECT_THAT(whole.vt_section, IsEmpty());
}

TEST_F(IniFile, comments_survive_every_rewrite) {
  std::string const text =
      "; about the file\n"
      "\n"
      "# about the section\n"
      "[box]\n"
      "; about the key\n"
      "MD5 = 1\n"
      "\n"
      "; at the end\n";
  put(text);
  write(L"box", L"MD5", L"1");
  EXPECT_EQ(content(), text);
}

TEST_F(IniFile, comments_stand_in_the_section_list) {
  put("; section\n[box]\n; key\nMD5 = 1\n");
  HIniFileHelper whole = helper();
  whole.read_all();
  ASSERT_EQ(whole.vt_section.size(), 1U);
  EXPECT_EQ(whole.vt_section[0].str_comment, HString(L"; section"));
  EXPECT_EQ(whole.vt_section[0].vt_key[0].str_comment, HString(L"; key"));
}

TEST_F(IniFile, a_comment_without_a_mark_gets_one) {
  HIniFileHelper whole = helper();
  whole.vt_section.resize(1);
  whole.vt_section[0].str_name = L"box";
  whole.vt_section[0].str_comment = L"one\n[evil]";
  whole.write_all();
  EXPECT_THAT(sections(), ElementsAre(L"box"));
}

TEST_F(IniFile, other_keys_and_sections_survive) {
  put("[other]\nkey = value\n\n[box]\nMD5 = 1\nEXTRA = x\n");
  write(L"box", L"MD5", L"2");
  EXPECT_EQ(content(), "[other]\nkey = value\n\n[box]\nMD5 = 2\nEXTRA = x\n");
}

TEST_F(IniFile, keys_in_front_of_the_first_section_survive) {
  put("free = 1\n\n[box]\nMD5 = 1\n");
  EXPECT_EQ(read(HString(), L"free"), HString(L"1"));
  write(L"box", L"MD5", L"2");
  EXPECT_EQ(content(), "free = 1\n\n[box]\nMD5 = 2\n");
}

TEST_F(IniFile, reads_what_others_write) {
  put("\xEF\xBB\xBF[ box ]\r\n  MD5=1  \r\nCLASS =\r\n junk\r\n[broken\r\n= nothing\r\n");
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"1"));
  EXPECT_EQ(read(L"box", L"CLASS"), HString());
}

TEST_F(IniFile, what_is_utf8_is_never_taken_for_another_encoding) {
  put("#\x01k\n");  // two characters in UTF-16
  write(L"box", L"MD5", L"1");
  EXPECT_EQ(content(), "[box]\nMD5 = 1\n\n#\x01k\n");
}

TEST_F(IniFile, text_in_another_encoding_is_read_as_that) {
  put("[\xC0\xE0]\nMD5 = 1\n[\xB7\xD6\xC0\xE0]\nMD5 = 2\n");  // GB18030
  EXPECT_THAT(sections(), ElementsAre(L"类", L"分类"));
}

TEST_F(IniFile, a_section_without_its_bracket_is_passed_over) {
  put("[box]\nMD5 = 1\n[broken\nCLASS = 2\n");
  EXPECT_THAT(sections(), ElementsAre(L"box"));
  EXPECT_EQ(read(L"box", L"CLASS"), HString(L"2"));
}

TEST_F(IniFile, sections_of_one_name_are_one_however_it_is_encoded) {
  put("[box]\nMD5 = 1\n[other]\n[%62ox]\nCLASS = 2\n[box]\nEXTRA = 3\n");
  EXPECT_THAT(sections(), ElementsAre(L"box", L"other"));
  EXPECT_EQ(read(L"box", L"CLASS"), HString(L"2"));
  EXPECT_EQ(read(L"box", L"EXTRA"), HString(L"3"));
}

TEST_F(IniFile, of_two_values_the_last_one_counts_however_the_key_is_encoded) {
  put("[box]\nMD5 = 1\nCLASS = 1\nCLASS = 2\n%4DD5 = 2\n");
  EXPECT_EQ(read(L"box", L"CLASS"), HString(L"2"));
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"2"));
}

TEST_F(IniFile, comments_of_a_key_that_is_encoded_twice_survive) {
  put("[box]\n; one\nab = 1\n; two\n%61b = 2\n");
  EXPECT_TRUE(write(L"other", L"key", L"value"));
  EXPECT_THAT(content(), HasSubstr("; one\n; two\nab = 2\n"));
}

TEST_F(IniFile, comments_of_a_section_that_is_encoded_twice_survive) {
  put("; one\n[box]\na = 1\n; two\n[b%6Fx]\nb = 2\n");
  EXPECT_TRUE(write(L"other", L"key", L"value"));
  EXPECT_THAT(content(), HasSubstr("; one\n; two\n[box]\n"));
}

TEST_F(IniFile, digits_of_an_escape_are_ascii) {
  put("[box]\nkey = %{\xC5\x81}\n");  // U+0141, the low byte of which is that of "A"
  EXPECT_EQ(read(L"box", L"key"), HString(L"%{\x141}"));
}

TEST_F(IniFile, a_per_cent_sign_that_is_no_escape_stands_for_itself) {
  put("[box]\na = 100%\nb = %zz %{zz} %E4 %{\n");
  EXPECT_EQ(read(L"box", L"a"), HString(L"100%"));
  EXPECT_EQ(read(L"box", L"b"), HString(L"%zz %{zz} %E4 %{"));
}

TEST_F(IniFile, a_line_break_is_written_as_an_escape) {
  write(L"box", L"key", L"a\nb");
  EXPECT_THAT(content(), HasSubstr("key = a%0Ab\n"));
}

class OddText : public IniFile, public testing::WithParamInterface<std::wstring> {
 protected:
  HString text() const { return {GetParam().data(), static_cast<int>(GetParam().size())}; }
};

TEST_P(OddText, comes_back_as_a_value) {
  write(L"box", L"key", text());
  EXPECT_EQ(read(L"box", L"key"), text());
}

TEST_P(OddText, comes_back_as_a_key) {
  write(L"box", text(), L"value");
  write(L"box", text(), L"newer");
  EXPECT_EQ(read(L"box", text()), HString(L"newer"));
}

TEST_P(OddText, comes_back_as_a_section) {
  write(L"first", L"key", L"other");
  write(text(), L"key", L"value");
  write(text(), L"key", L"newer");
  EXPECT_EQ(read(text(), L"key"), HString(L"newer"));
  EXPECT_EQ(sections().size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, OddText,
    testing::Values(L"", L" ", L" a ", L"\t", L"a\nb\r\n", L"a]b", L"[a", L"a=b", L"=", L";a",
                    L"#a", L"%", L"%41", L"%%41", L"%{", L"%{41}", L"%{}", L"100%", L"%\n4",
                    L"\"quoted\"", L"<<<EOT", L"a\\", L"\xFEFF", L"\x01\x7F", L"\x2028\x85",
                    std::wstring(L"a\0b", 3), std::wstring{wchar_t(0xDC80), wchar_t(0xD800)},
                    std::wstring{wchar_t(0x110000), wchar_t(0xFFFFFFFF)}, L"中文 😀"),
    [](auto const& text) { return "text_" + std::to_string(text.index); });

TEST_F(IniFile, a_file_that_cannot_be_read_is_not_overwritten) {
  std::filesystem::create_directory(directory_.path() / "box.ini");
  EXPECT_FALSE(write(L"box", L"MD5", L"1"));
  EXPECT_TRUE(std::filesystem::is_directory(directory_.path() / "box.ini"));
}

TEST_F(IniFile, a_file_that_read_all_could_not_read_is_not_overwritten) {
  put("[box]\nMD5 = 1\n");
  auto const path = directory_.path() / "box.ini";
  constexpr std::uintmax_t too_large = (std::uintmax_t{8} << 20U) + 1;
  std::filesystem::resize_file(path, too_large);
  HIniFileHelper whole = helper();
  EXPECT_FALSE(whole.read_all());
  EXPECT_FALSE(whole.write_all());
  EXPECT_EQ(std::filesystem::file_size(path), too_large);
}

class LargeIniFile : public IniFile {
 protected:
  static constexpr std::size_t largest = std::size_t{8} << 20U;

  static std::string repeated(std::string const& line, std::size_t size) {
    std::string text;
    while (text.size() + line.size() <= size) {
      text += line;
    }
    return text;
  }
  /// The file can neither be read nor is it lost.
  void expect_refused(std::string const& text) const {
    put(text);
    HIniFileHelper whole = helper();
    EXPECT_FALSE(whole.read_all());
    EXPECT_THAT(whole.vt_section, IsEmpty());
    EXPECT_FALSE(whole.write_all());
    EXPECT_FALSE(write(L"box", L"MD5", L"2"));
    EXPECT_EQ(content().size(), text.size());
  }
};

TEST_F(LargeIniFile, beyond_the_largest_size_is_refused) {
  expect_refused(std::string(largest + 1, '\n'));
}

TEST_F(LargeIniFile, of_too_many_sections_is_refused) {
  expect_refused(repeated("[a]\n", 500'000));
}

TEST_F(LargeIniFile, of_too_many_keys_is_refused) {
  expect_refused("[box]\n" + repeated("a=\n", 400'000));
}

TEST_F(LargeIniFile, with_a_section_name_of_megabytes_is_refused) {
  expect_refused("[" + std::string(1 << 20, 'a') + "]\nMD5 = 1\n");
  expect_refused(std::string(1, '\0') + "[" + std::string(1 << 20, 'a') + "]\nMD5 = 1\n");
}

TEST_F(LargeIniFile, is_not_written_with_a_name_that_could_not_be_read_back) {
  write(L"box", L"MD5", L"1");
  EXPECT_FALSE(write(HString(std::wstring(5000, L'a').c_str()), L"MD5", L"1"));
  EXPECT_EQ(content(), "[box]\nMD5 = 1\n");
}

TEST_F(LargeIniFile, of_one_line_is_read) {
  std::string const value(largest / 4, 'v');
  put("[box]\nMD5 = 1\nCLASS = " + value + "\n");
  EXPECT_EQ(read(L"box", L"CLASS").size(), value.size());
}

TEST_F(LargeIniFile, of_escapes_without_an_end_is_read_in_linear_time) {
  put("[box]\nCLASS = " + repeated("%{", 1 << 20) + "\n");
  EXPECT_EQ(read(L"box", L"CLASS").size(), std::size_t{1} << 20U);
}

TEST_F(LargeIniFile, of_broken_sections_is_read_in_linear_time) {
  put("[box]\nMD5 = 1\n" + repeated("[" + std::string(1000, 'a') + "\n", largest / 8) +
      repeated("a = 1\n", 400'000));
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"1"));
}

TEST_F(IniFile, writing_where_there_is_no_directory_fails) {
  HIniFileHelper lost;
  lost.setFile(directory_ / "missing/box.ini");
  EXPECT_FALSE(lost.write_string(L"box", L"MD5", L"1"));
  EXPECT_FALSE(lost.write_all());
}

TEST_F(IniFile, an_unbound_helper_fails) {
  HIniFileHelper unbound;
  HString value;
  EXPECT_FALSE(unbound.read_all());
  EXPECT_FALSE(unbound.read_string(L"a", L"b", value));
  EXPECT_FALSE(unbound.write_string(L"a", L"b", L"c"));
}

TEST_F(IniFile, bytes_of_no_meaning_do_no_harm) {
  std::string noise;
  unsigned state = 1;
  for (int i = 0; i < 20000; ++i) {
    state = state * 1103515245U + 12345U;
    noise.push_back("[]=;#%{}\n\r \t\0a\xE4"[(state >> 16U) % 15U]);
  }
  put(noise);
  EXPECT_TRUE(write(L"box", L"MD5", L"1"));
  EXPECT_EQ(read(L"box", L"MD5"), HString(L"1"));
}

}  // namespace
