#include <string>

#include <gtest/gtest.h>

#include "hostkit/morvakit/missing_component.h"
#include "hostkit/morvakit/parse_bytes.h"

namespace {

using Orlec::ParseOutcome;
using test::parse_bytes;
using namespace std::string_literals;

std::string page(std::string const& body) {
  return "<!DOCTYPE html><html><body>" + body + "</body></html>";
}

TEST(Html, the_title_is_the_first_line) {
  EXPECT_EQ(
      parse_bytes("<html><head><title>My  title</title></head><body><p>Text</p></body></html>")
          .main(),
      "My title\nText");
}

TEST(Html, blocks_end_lines_and_inline_elements_do_not) {
  EXPECT_EQ(
      parse_bytes(page("<p>one <b>bo</b>ld</p><div>two</div>three<br>four<ul><li>five<li>six</ul>"))
          .main(),
      "one bold\ntwo\nthree\nfour\nfive\nsix");
}

TEST(Html, cells_are_separated_by_tabs_and_rows_by_lines) {
  EXPECT_EQ(parse_bytes(page("<table><tr><td>a</td><td>b</td></tr><tr><th>c<td>d</table>")).main(),
            "a\tb\nc\td");
}

TEST(Html, scripts_styles_and_comments_are_no_text) {
  auto const parsed = test::parse_bytes(
      page("<script>var a = '<p>no</p>';</script><style>p{}</style><!-- no -->yes"));
  EXPECT_EQ(parsed.main(), "yes");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "");
}

TEST(Html, what_a_browser_shows_in_some_cases_only_is_other_text) {
  auto const parsed = test::parse_bytes(
      page("<template><p>row</p></template><noscript>switch it on</noscript>yes"));
  EXPECT_EQ(parsed.main(), "yes");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_other), "row\nswitch it on");
}

TEST(Html, entities_are_read_and_hard_blanks_are_blanks) {
  EXPECT_EQ(parse_bytes(page("caf&eacute;&nbsp;&amp;&#20013;&lt;x&gt;")).main(),
            "caf\xc3\xa9 &\xe4\xb8\xad<x>");
}

TEST(Html, preformatted_lines_stay_lines) {
  EXPECT_EQ(parse_bytes(page("<pre>one\ntwo</pre>")).main(), "one\ntwo");
}

TEST(Html, control_values_are_control_text) {
  auto const parsed = parse_bytes(
      page("<input value='first'><input type=hidden value=no><textarea>second</textarea>"
           "<select><option>third</option></select>main"));
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_control), "first\nsecond\nthird");
  EXPECT_EQ(parsed.main(), "main");
}

TEST(Html, descriptions_are_properties) {
  auto const parsed = parse_bytes(
      "<html><head><meta name=\"Keywords\" content=\"a, b\"><meta name=author "
      "content=Li></head></html>");
  EXPECT_EQ(parsed.kind(Orlec::ParseTextType_property), "keywords: a, b\nauthor: Li");
}

TEST(Html, alternative_texts_are_other_text) {
  EXPECT_EQ(
      parse_bytes(page("<img alt='A picture' title='Hint'>")).kind(Orlec::ParseTextType_other),
      "A picture\nHint");
}

TEST(Html, gb2312_is_read_as_gb18030) {
  // The last character is beyond GB2312.
  EXPECT_EQ(
      parse_bytes(
          "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=gb2312\">"
          "</head><body>\xd6\xd0\xce\xc4\xe9\x46</body></html>")
          .main(),
      "\xe4\xb8\xad\xe6\x96\x87\xe9\x95\x95");
}

TEST(Html, a_mark_stands_above_the_declaration) {
  EXPECT_EQ(
      parse_bytes(
          "\xef\xbb\xbf<html><head><meta charset=big5></head><body>\xe4\xb8\xad</body></html>")
          .main(),
      "\xe4\xb8\xad");
}

TEST(Html, utf_16_is_read_by_its_mark) {
  std::string bytes = "\xff\xfe";
  for (auto const character : "<html><body>text</body></html>"s) {
    bytes += character;
    bytes += '\0';
  }
  EXPECT_EQ(parse_bytes(bytes).main(), "text");
}

TEST(Html, a_wrong_declaration_does_not_garble) {
  EXPECT_EQ(parse_bytes("<html><head><meta "
                        "charset=iso-8859-1></head><body>\xe4\xb8\xad\xe6\x96\x87</body></html>")
                .main(),
            "\xe4\xb8\xad\xe6\x96\x87");
}

TEST(Html, elements_nested_without_end_reach_the_limit) {
  std::string body;
  for (int i = 0; i < 20000; ++i) {
    body += "<div>";
  }
  auto const parsed = parse_bytes(page("start" + body + "x"));
  EXPECT_EQ(parsed.outcome, ParseOutcome::limit_reached);
  EXPECT_EQ(parsed.main(), "start");
}

TEST(Html, a_page_without_words_has_no_text) {
  EXPECT_EQ(parse_bytes(page("<p> &nbsp; </p>")).outcome, ParseOutcome::no_text);
}

// Runs in a process of its own, started by the test below.
TEST(HtmlComponent, DISABLED_is_missing) {
  auto const parsed = test::parse_bytes("<html><body><p>x</p></body></html>", "page.html");
  EXPECT_EQ(parsed.outcome, Orlec::ParseOutcome::not_supported);
  EXPECT_EQ(parsed.reason, "the HTML component is not installed");
}

TEST(HtmlComponent, that_is_missing_is_told) {
  EXPECT_TRUE(test::passes_without_components("HtmlComponent.DISABLED_is_missing"));
}

}  // namespace
