#include "dna/internal/result_text.h"

#include "host/HStdOutStream.h"

namespace morva {

HString get_result_text(HTessarineResult const& result) {
  HString text;
  auto const line = [&text](wchar_t const* label, HString const& value) {
    text << label << value << L"\n";
  };
  auto const block = [&text](wchar_t const* label, HString const& value) {
    text << label << L"\n" << value << L"\n";
  };
  line(L"SUFFIX: ", result.str_suffix);
  line(L"ENCRYPT: ", HString(result.b_encrypt));
  block(L"MAIN: ", result.str_main);
  block(L"HF: ", result.str_hf);
  block(L"COMMENT: ", result.str_comment);
  block(L"REMARK: ", result.str_remark);
  block(L"FN: ", result.str_fn);
  block(L"EN: ", result.str_en);
  block(L"CTRL: ", result.str_ctrl);
  block(L"PROPERTY: ", result.str_property);
  line(L"#############COUNT#############", HString());
  line(L"WORD: ", HString(result.i_word, false));
  line(L"LINE: ", HString(result.i_line, false));
  line(L"PAGE: ", HString(result.i_page, false));
  line(L" IMG: ", HString(result.i_img, false));
  line(L"EMBED: ", HString(result.i_embed, false));
  return text;
}

void print_result(HTessarineResult const& result) {
  *HStdOutStream::ins() << get_result_text(result) << L"\n";
}

}  // namespace morva
