#include "dna/internal/result_text.h"

#include <gtest/gtest.h>

namespace {

TEST(ResultText, labels_every_field_but_the_path) {
  HTessarineResult result;
  result.str_path = L"/secret";
  result.str_suffix = L"docx";
  result.b_encrypt = true;
  result.str_main = L"m";
  result.str_hf = L"h";
  result.str_comment = L"c";
  result.str_remark = L"r";
  result.str_fn = L"f";
  result.str_en = L"e";
  result.str_ctrl = L"t";
  result.str_property = L"p";
  result.i_word = 1;
  result.i_line = 2;
  result.i_page = 3;
  result.i_img = 4;
  result.i_embed = 5;
  EXPECT_EQ(morva::get_result_text(result),
            HString(L"SUFFIX: docx\nENCRYPT: true\nMAIN: \nm\nHF: \nh\nCOMMENT: \nc\nREMARK: \nr\n"
                    L"FN: \nf\nEN: \ne\nCTRL: \nt\nPROPERTY: \np\n#############COUNT#############\n"
                    L"WORD: 1\nLINE: 2\nPAGE: 3\n IMG: 4\nEMBED: 5\n"));
}

TEST(ResultText, is_printed_with_a_line_feed_behind_it) {
  testing::internal::CaptureStdout();
  morva::print_result(HTessarineResult());
  std::string const printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed.substr(printed.size() - 10), "EMBED: 0\n\n");
}

}  // namespace
