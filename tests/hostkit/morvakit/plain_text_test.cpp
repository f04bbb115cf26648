#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <iconv.h>

#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;
using test::parse_bytes;
using namespace std::string_literals;

std::string encode(std::string_view utf8, char const* encoding) {
  auto* const converter = iconv_open(encoding, "UTF-8");
  std::string input(utf8);
  std::string output(4 * input.size() + 16, '\0');
  auto* from = input.data();
  auto* to = output.data();
  auto from_left = input.size();
  auto to_left = output.size();
  iconv(converter, &from, &from_left, &to, &to_left);
  iconv_close(converter);
  EXPECT_EQ(from_left, 0U) << encoding;
  output.resize(output.size() - to_left);
  return output;
}

struct Sample {
  char const* encoding;
  std::string mark;
  std::string text;
};

std::string const chinese =
    "信息安全是指保护计算机系统和网络中的数据，防止未经授权的访问、使用和泄露。企业应当建立完整的管"
    "理制度，"
    "并且定期检查文件的保密等级。这些措施能够减少风险。";
std::string const traditional =
    "資訊安全是指保護電腦系統和網路中的資料，防止未經授權的存取、使用和洩漏。企業應當建立完整的管理"
    "制度，"
    "並且定期檢查文件的保密等級。這些措施能夠減少風險。";
std::string const japanese =
    "情報セキュリティとは、コンピュータのデータを守り、許可のない利用を防ぐことです。会社は文書を正"
    "しく管理しなければなりません。";
std::string const korean =
    "정보 보안은 컴퓨터와 네트워크의 자료를 보호하는 일입니다. 회사는 문서를 올바르게 관리해야 "
    "합니다. 모든 직원이 규칙을 지켜야 합니다.";
std::string const french =
    "La sécurité des données protège les systèmes contre l'accès non autorisé. Où est le café près "
    "de la forêt ? "
    "L'été dernier, les élèves ont préféré étudier à la bibliothèque.";
std::string const russian =
    "Защита информации включает меры против несанкционированного доступа к данным. Каждая "
    "организация должна "
    "проверять документы и хранить их в надёжном месте.";

class EncodedText : public testing::TestWithParam<Sample> {};

TEST_P(EncodedText, comes_out_as_it_was) {
  auto const& sample = GetParam();
  auto const parsed = parse_bytes(sample.mark + encode(sample.text, sample.encoding), "text.txt");
  EXPECT_EQ(parsed.outcome, ParseOutcome::text);
  EXPECT_EQ(parsed.main(), sample.text);
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, EncodedText,
    testing::Values(Sample{"UTF-8", "", chinese}, Sample{"UTF-8", "\xef\xbb\xbf", chinese},
                    Sample{"UTF-16LE", "\xff\xfe", chinese},
                    Sample{"UTF-16BE", "\xfe\xff", chinese}, Sample{"UTF-16LE", "", french},
                    Sample{"UTF-16BE", "", french}, Sample{"UTF-32LE", "\xff\xfe\0\0"s, chinese},
                    Sample{"UTF-32BE", "\0\0\xfe\xff"s, chinese}, Sample{"GB18030", "", chinese},
                    Sample{"GBK", "", chinese}, Sample{"GB2312", "", chinese},
                    Sample{"BIG5", "", traditional}, Sample{"SHIFT_JIS", "", japanese},
                    Sample{"EUC-JP", "", japanese}, Sample{"EUC-KR", "", korean},
                    Sample{"WINDOWS-1252", "", french}, Sample{"WINDOWS-1251", "", russian}));

TEST(PlainText, line_ends_become_line_feeds) {
  EXPECT_EQ(parse_bytes("a\r\nb\rc\nd\r\r\ne").main(), "a\nb\nc\nd\n\ne");
}

TEST(PlainText, a_line_end_that_is_cut_between_two_pieces_is_one) {
  std::string const before((64 << 10) - 1, 'x');
  EXPECT_EQ(parse_bytes(before + "\r\ny").main(), before + "\ny");
}

TEST(PlainText, a_character_that_is_cut_between_two_pieces_is_whole) {
  std::string const before((64 << 10) - 1, 'x');
  EXPECT_EQ(parse_bytes(before + "\xe4\xb8\xad").main(), before + "\xe4\xb8\xad");
}

TEST(PlainText, control_characters_become_blanks) {
  EXPECT_EQ(parse_bytes("one\x0ctwo\x1bthree\tfour", "x.txt").main(), "one\ntwo three\tfour");
}

TEST(PlainText, the_encoding_is_found_far_behind_the_beginning) {
  std::string const ascii((3 << 20), 'a');
  auto const parsed = parse_bytes(ascii + "\n" + encode(chinese, "GB18030"));
  EXPECT_EQ(parsed.main(), ascii + "\n" + chinese);
}

TEST(PlainText, an_empty_document_has_an_empty_main_text) {
  auto const parsed = parse_bytes("");
  EXPECT_TRUE(parsed.is_ok);
  EXPECT_EQ(parsed.outcome, ParseOutcome::no_text);
  EXPECT_EQ(parsed.text.count(Orlec::ParseTextType_main), 1U);
}

TEST(PlainText, rows_of_csv_come_as_they_stand) {
  EXPECT_EQ(parse_bytes("name,note\r\n\"Li, Wei\",\"says \"\"hi\"\"\"\r\n", "a.csv").main(),
            "name,note\n\"Li, Wei\",\"says \"\"hi\"\"\"\n");
}

}  // namespace
