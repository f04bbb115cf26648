#pragma once

#include <string>

#include "host/HString.h"
#include "host/export.h"

namespace Orlec {

/// Kinds of text that a document holds.
enum ParseTextType : int {
  ParseTextType_main = 1,  ///< body text in reading order: tables, text boxes, slides and cells too
  ParseTextType_hf = 2,    ///< headers and footers
  ParseTextType_comment = 3,   ///< comments, annotations
  ParseTextType_remark = 4,    ///< speaker notes
  ParseTextType_fn = 5,        ///< footnotes
  ParseTextType_en = 6,        ///< endnotes
  ParseTextType_control = 7,   ///< form fields and other controls
  ParseTextType_property = 8,  ///< document properties, one "name: value" a line
  ParseTextType_other = 9,     ///< all other text
};

/// The collected text of one kind; belongs to the callback.
class MORVA_EXPORT ParseText {
 public:
  /// Points `*buffer` at the text, which need not be terminated, and sets `length` to its length,
  /// `limit` characters at most; what lies behind is not seen. The buffer stays valid until the
  /// next parse with the callback, or its end.
  void GetTextBuff(wchar_t** buffer, int& length, int limit);

 private:
  friend class TextLineCallback;
  std::wstring text_;
};

}  // namespace Orlec
