#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/HString.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HString text_of(std::vector<wchar_t> const& characters) {
  return {characters.data(), static_cast<int>(characters.size())};
}

std::vector<HString> split(HString const& text, HString const& separator) {
  std::vector<HString> pieces = {L"old"};
  text.get_vt_str_by_sep(pieces, separator);
  return pieces;
}

std::vector<HString> split_lines(HString const& text) {
  std::vector<HString> pieces = {L"old"};
  text.get_vt_str_by_sep2(pieces, L"\n");
  return pieces;
}

TEST(HString, is_empty_at_the_start) {
  HString const text;
  EXPECT_TRUE(text.empty());
  EXPECT_FALSE(text.not_empty());
  EXPECT_EQ(text.length(), 0);
}

TEST(HString, has_a_virtual_destructor) {
  EXPECT_TRUE(std::has_virtual_destructor_v<HString>);
}

TEST(HString, takes_wide_text_up_to_the_terminator) {
  EXPECT_EQ(HString(L"文档").get_ws(), L"文档");
}

TEST(HString, a_null_pointer_is_the_empty_text) {
  EXPECT_TRUE(HString(static_cast<wchar_t const*>(nullptr)).empty());
  EXPECT_TRUE(HString(static_cast<char const*>(nullptr)).empty());
  EXPECT_TRUE(HString(static_cast<wchar_t const*>(nullptr), 5).empty());
}

TEST(HString, takes_a_number_of_characters_of_a_buffer_without_terminator) {
  wchar_t const buffer[] = {L'a', L'b', L'c'};
  EXPECT_EQ(HString(buffer, 2), HString(L"ab"));
}

TEST(HString, keeps_a_null_character_inside) {
  EXPECT_EQ(text_of({L'a', L'\0', L'b'}).length(), 3);
}

TEST(HString, a_negative_length_gives_the_empty_text) {
  EXPECT_TRUE(HString(L"abc", -1).empty());
}

TEST(HString, narrow_text_is_widened_from_utf8) {
  EXPECT_EQ(HString("a\xE4\xB8\xAD\xF0\x9F\x98\x80"), HString(L"a中\U0001F600"));
}

TEST(HString, a_bad_byte_becomes_the_replacement_character) {
  EXPECT_EQ(HString("a\xFF\xE4z"), HString(L"a\xFFFD\xFFFDz"));
}

TEST(HString, takes_one_character) {
  EXPECT_EQ(HString('x'), HString(L"x"));
  EXPECT_EQ(HString(L'中'), HString(L"中"));
}

TEST(HString, a_single_byte_above_ascii_becomes_the_replacement_character) {
  EXPECT_EQ(HString('\xE4'), HString(L"\xFFFD"));
}

TEST(HString, a_copy_shares_text_until_one_is_changed) {
  HString const original(L"shared");
  HString copy = original;
  copy += L"!";
  EXPECT_EQ(original, HString(L"shared"));
  EXPECT_EQ(copy, HString(L"shared!"));
}

TEST(HString, changing_the_original_leaves_the_copy) {
  HString original(L"shared");
  HString const copy = original;
  original.cut_first(3);
  EXPECT_EQ(copy, HString(L"shared"));
}

TEST(HString, a_moved_from_text_is_empty) {
  HString source(L"text");
  HString const target = std::move(source);
  EXPECT_TRUE(source.empty());  // NOLINT(bugprone-use-after-move): what this test is about
  EXPECT_EQ(target, HString(L"text"));
}

TEST(HString, appending_chains) {
  HString text(L"a");
  text << L"b" << HString(L"c");
  (text += L"d") += L"e";
  EXPECT_EQ(text, HString(L"abcde"));
}

TEST(HString, appends_itself) {
  HString text(L"ab");
  text += text;
  EXPECT_EQ(text, HString(L"abab"));
}

TEST(HString, plus_concatenates_into_a_new_text) {
  HString const left(L"a");
  EXPECT_EQ(left + L"b", HString(L"ab"));
  EXPECT_EQ(L"b" + left, HString(L"ba"));
  EXPECT_EQ(left + HString(), left);
  EXPECT_EQ(HString() + left, left);
}

TEST(HString, equality_is_exact) {
  EXPECT_TRUE(HString(L"Word") == L"Word");
  EXPECT_FALSE(HString(L"Word") == L"word");
  EXPECT_FALSE(HString(L"Word") == HString(L"Words"));
  EXPECT_TRUE(HString() == HString(L""));
}

TEST(HString, order_is_by_code_point) {
  EXPECT_TRUE(HString(L"Z") < HString(L"a"));
  EXPECT_TRUE(HString(L"z") < HString(L"中"));
  EXPECT_FALSE(HString(L"a") < HString(L"a"));
}

TEST(HString, a_prefix_comes_first) {
  EXPECT_TRUE(HString() < HString(L"a"));
  EXPECT_TRUE(HString(L"a") < HString(L"ab"));
  EXPECT_FALSE(HString(L"ab") < HString(L"a"));
}

TEST(HString, order_takes_characters_as_unsigned) {
  HString const high = text_of({static_cast<wchar_t>(0x80000000U)});
  EXPECT_TRUE(HString(L"a") < high);
  EXPECT_FALSE(high < HString(L"a"));
}

TEST(HString, order_differs_from_that_of_utf16) {
  EXPECT_TRUE(HString(L"\xFFFD") < HString(L"\U0001F600"));
}

TEST(HString, gives_the_character_at_an_index) {
  EXPECT_EQ(HString(L"abc")[1], L'b');
  EXPECT_EQ(HString(L"abc")[3], L'\0');
  EXPECT_EQ(HString(L"abc")[-1], L'\0');
}

TEST(HString, clear_empties_only_this_text) {
  HString text(L"abc");
  HString const copy = text;
  text.clear();
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(copy.size(), 3U);
}

TEST(HString, substr_takes_start_and_length) {
  EXPECT_EQ(HString(L"abcdef").substr(2, 3), HString(L"cde"));
}

TEST(HString, substr_is_clamped_to_the_text) {
  EXPECT_EQ(HString(L"abc").substr(1, 100), HString(L"bc"));
  EXPECT_EQ(HString(L"abc").substr(-5, 2), HString(L"ab"));
  EXPECT_TRUE(HString(L"abc").substr(7, 1).empty());
  EXPECT_TRUE(HString(L"abc").substr(1, -1).empty());
}

TEST(HString, gives_its_first_and_last_characters) {
  EXPECT_EQ(HString(L"abcd").get_first(2), HString(L"ab"));
  EXPECT_EQ(HString(L"abcd").get_last(2), HString(L"cd"));
  EXPECT_EQ(HString(L"abcd").get_first(9), HString(L"abcd"));
  EXPECT_EQ(HString(L"abcd").get_last(9), HString(L"abcd"));
  EXPECT_TRUE(HString(L"abcd").get_last(-1).empty());
}

TEST(HString, cuts_characters_from_either_end) {
  HString text(L"abcdef");
  text.cut_first(2);
  text.cut_last(1);
  EXPECT_EQ(text, HString(L"cde"));
}

TEST(HString, cutting_more_than_there_is_leaves_nothing) {
  HString front(L"abc");
  HString back(L"abc");
  front.cut_first(4);
  back.cut_last(4);
  EXPECT_TRUE(front.empty());
  EXPECT_TRUE(back.empty());
}

TEST(HString, cutting_a_negative_number_changes_nothing) {
  HString text(L"abc");
  text.cut_first(-1);
  text.cut_last(-1);
  EXPECT_EQ(text, HString(L"abc"));
}

TEST(HString, joins_a_list_with_bars) {
  EXPECT_EQ(HString(std::vector<HString>{L"a", L"b", L"c"}), HString(L"a|b|c"));
}

TEST(HString, an_empty_list_joins_to_the_empty_text) {
  EXPECT_TRUE(HString(std::vector<HString>()).empty());
}

TEST(HString, a_joined_list_splits_into_the_same_elements) {
  std::vector<HString> const list = {L"", L"class one", L"", L"类", L""};
  EXPECT_EQ(split(HString(list), L"|"), list);
}

TEST(HString, splits_at_every_separator_and_replaces_the_vector) {
  EXPECT_THAT(split(L"a||b|", L"|"), ElementsAre(L"a", L"", L"b", L""));
}

TEST(HString, splits_at_a_separator_of_several_characters) {
  EXPECT_THAT(split(L"a--b---c", L"--"), ElementsAre(L"a", L"b", L"-c"));
}

TEST(HString, the_empty_text_gives_no_piece) {
  EXPECT_THAT(split(HString(), L"|"), IsEmpty());
  EXPECT_THAT(split_lines(HString()), IsEmpty());
}

TEST(HString, an_empty_separator_gives_the_whole_text) {
  EXPECT_THAT(split(L"abc", HString()), ElementsAre(L"abc"));
}

TEST(HString, splits_into_a_vector_that_holds_the_text_itself) {
  std::vector<HString> pieces = {L"a|b"};
  pieces[0].get_vt_str_by_sep(pieces, L"|");
  EXPECT_THAT(pieces, ElementsAre(L"a", L"b"));
}

TEST(HString, sep2_on_a_text_without_the_separator_yields_one_piece) {
  EXPECT_THAT(split_lines(L"one line"), ElementsAre(L"one line"));
}

TEST(HString, sep2_yields_as_many_pieces_as_lines_are_ended) {
  EXPECT_THAT(split_lines(L"label\n3\n1|2|3\n"), ElementsAre(L"label", L"3", L"1|2|3"));
}

TEST(HString, sep2_keeps_empty_pieces_but_the_last) {
  EXPECT_THAT(split_lines(L"\n\na\n\n"), ElementsAre(L"", L"", L"a", L""));
}

TEST(HString, sep2_on_a_lone_separator_yields_one_empty_piece) {
  EXPECT_THAT(split_lines(L"\n"), ElementsAre(L""));
}

TEST(HString, md5_of_the_empty_text_is_that_of_no_bytes) {
  EXPECT_EQ(HString().get_md5_std_format(HString()), HString(L"D41D8CD98F00B204E9800998ECF8427E"));
}

TEST(HString, md5_is_taken_of_utf8_in_upper_case) {
  EXPECT_EQ(HString(L"abc").get_md5_std_format(HString()),
            HString(L"900150983CD24FB0D6963F7D28E17F72"));
  EXPECT_EQ(HString(L"中文").get_md5_std_format(HString()),
            HString(L"A7BAC2239FCDCB3A067903D8077C4A07"));
}

TEST(HString, md5_of_a_long_text_takes_all_of_it) {
  std::wstring const million(1000000, L'a');
  EXPECT_EQ(HString(million.c_str()).get_md5_std_format(HString()),
            HString(L"7707D6AE4E027C70EEA2A935C2296F21"));
}

TEST(HString, a_uuid_is_random_version_4_with_hyphens) {
  std::wstring const id = HString::generateUUID().get_ws();
  ASSERT_EQ(id.size(), 36U);
  EXPECT_EQ(id[8], L'-');
  EXPECT_EQ(id[14], L'4');
  EXPECT_EQ(id.find_first_not_of(L"0123456789abcdef-"), std::wstring::npos);
}

TEST(HString, a_short_uuid_has_32_digits) {
  HString const id = HString::generateUUID2();
  EXPECT_EQ(id.length(), 32);
  EXPECT_TRUE(id.is_all_good_0x());
}

TEST(HString, uuids_differ) {
  std::set<HString> ids;
  for (int i = 0; i < 1000; ++i) {
    ids.insert(HString::generateUUID());
    ids.insert(HString::generateUUID2());
  }
  EXPECT_EQ(ids.size(), 2000U);
}

TEST(HString, matches_when_equal) {
  EXPECT_TRUE(HString(L"Y").is_match_me(L"Y", false));
  EXPECT_FALSE(HString(L"y").is_match_me(L"Y", false));
  EXPECT_FALSE(HString(L"Yes").is_match_me(L"Y", false));
}

/// Standard input replaced by a text for one scope.
class TypedInput {
 public:
  explicit TypedInput(std::string const& text) : old_(dup(STDIN_FILENO)) {
    std::FILE* const file = std::tmpfile();
    std::fwrite(text.data(), 1, text.size(), file);
    std::fflush(file);
    lseek(fileno(file), 0, SEEK_SET);
    dup2(fileno(file), STDIN_FILENO);
    std::fclose(file);
    std::clearerr(stdin);
    std::fflush(stdin);
  }
  ~TypedInput() {
    dup2(old_, STDIN_FILENO);
    close(old_);
    std::clearerr(stdin);
  }
  TypedInput(TypedInput const&) = delete;
  TypedInput& operator=(TypedInput const&) = delete;

 private:
  int old_;
};

HString answer(HString const& prompt, std::string& written) {
  HString text(L"old");
  testing::internal::CaptureStdout();
  text.input(prompt);
  written = testing::internal::GetCapturedStdout();
  return text;
}

TEST(HString, input_writes_exactly_the_prompt) {
  TypedInput const typed("x\n");
  std::string written;
  answer(L"设置 T1", written);
  EXPECT_EQ(written, "设置 T1");
}

TEST(HString, input_reads_line_by_line_without_line_ends) {
  TypedInput const typed("first\r\n\n\xE4\xB8\xAD\n");
  std::string written;
  EXPECT_EQ(answer(L"", written), HString(L"first"));
  EXPECT_EQ(answer(L"", written), HString());
  EXPECT_EQ(answer(L"", written), HString(L"中"));
}

TEST(HString, input_at_the_end_is_empty) {
  TypedInput const typed("last");
  std::string written;
  EXPECT_EQ(answer(L"", written), HString(L"last"));
  EXPECT_TRUE(answer(L"", written).empty());
}

TEST(HString, input_drops_the_rest_of_an_endless_line) {
  TypedInput const typed(std::string(std::size_t{3} << 20, 'a') + "\nnext\n");
  std::string written;
  EXPECT_EQ(answer(L"", written).length(), 1 << 20);
  EXPECT_EQ(answer(L"", written), HString(L"next"));
}

}  // namespace
