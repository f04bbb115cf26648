#include "recording_segmenter.h"

#include "host/HJieba.h"
#include "host/HStutterDict.h"

RecordedCalls& RecordedCalls::get() {
  static RecordedCalls calls;
  return calls;
}

HJieba* HJieba::pins() {
  static HJieba segmenter;
  return &segmenter;
}

void HJieba::textrank_extractor(HString const& file, std::vector<WordNode>& /*words*/,
                                unsigned long const& top, bool const& reserved) {
  RecordedCalls::get().calls.push_back({file.get_ws(), L"", top, reserved});
}

void HJieba::textrank_extractor(HString const& text, HString const& name,
                                std::vector<WordNode>& /*words*/, unsigned long const& top,
                                bool const& reserved) {
  RecordedCalls::get().calls.push_back({text.get_ws(), name.get_ws(), top, reserved});
}

HStutterDict* HStutterDict::pins() {
  static HStutterDict dictionary;
  return &dictionary;
}

void HStutterDict::set_dict_path(HString const& directory) {
  mstr_dict_path = directory;
}

bool HStutterDict::is_exist_dict() const {
  return RecordedCalls::get().has_dictionary;
}
