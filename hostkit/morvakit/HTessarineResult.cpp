#include "host/HTessarineResult.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "host/Orlec/IFile.h"
#include "host/Orlec/ParseFile.h"
#include "host/Orlec/TextCallback.h"

namespace {

HString text_of(Orlec::TextLineCallback const& callback, Orlec::ParseTextType type) {
  auto* const text = callback.GetTextByType(type);
  if (text == nullptr) {
    return {};
  }
  wchar_t* buffer = nullptr;
  int length = 0;
  text->GetTextBuff(&buffer, length, std::numeric_limits<int>::max());
  return {buffer, length};
}

void fill_texts(Orlec::TextLineCallback const& callback, HTessarineResult& result) {
  result.str_main = text_of(callback, Orlec::ParseTextType_main);
  result.str_hf = text_of(callback, Orlec::ParseTextType_hf);
  result.str_comment = text_of(callback, Orlec::ParseTextType_comment);
  result.str_remark = text_of(callback, Orlec::ParseTextType_remark);
  result.str_fn = text_of(callback, Orlec::ParseTextType_fn);
  result.str_en = text_of(callback, Orlec::ParseTextType_en);
  result.str_ctrl = text_of(callback, Orlec::ParseTextType_control);
  result.str_property = text_of(callback, Orlec::ParseTextType_property);
}

std::int32_t narrow(std::int64_t count) {
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(count, std::numeric_limits<std::int32_t>::max()));
}

void fill_counts(Orlec::ParseCounts const& counts, HTessarineResult& result) {
  result.i_line = narrow(counts.i_line);
  result.i_page = narrow(counts.i_page);
  result.i_img = narrow(counts.i_img);
  result.i_embed = narrow(counts.i_embed);
}

}  // namespace

bool HTessarine::read(HString const& path, HTessarineResult& result) {
  result.str_suffix = {};
  result.b_encrypt = false;
  recognize(path, result);
  Orlec::IFile file(path, false);
  Orlec::TextLineCallback callback;
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  bool is_read = false;
  Orlec::ParseCounts counts;
  if (parser != nullptr) {
    parser->SetMask(1);
    parser->SetCallBack(&callback, false);
    is_read = parser->InitFile();
    counts = parser->GetCounts();
    result.b_encrypt = result.b_encrypt || parser->GetOutcome() == Orlec::ParseOutcome::encrypted;
  }
  fill_texts(callback, result);
  fill_counts(counts, result);
  return is_read;
}
