// A part of a host that is loaded and unloaded while the host runs, and brings the library along.

#include "morvaai.h"

/// The number of words that characterise a document; -1 where there are none to be had.
extern "C" MORVA_EXPORT int count_words(char const* path) {
  Orlec::IFile file(HString(path), false);
  std::unique_ptr<Orlec::ParseFile> const parser(Orlec::GetParser(&file, false));
  Orlec::TextLineCallback callback;
  HFeatureNode record;
  if (parser == nullptr) {
    return -1;
  }
  parser->SetMask(1);
  parser->SetCallBack(&callback, false);
  if (!parser->InitFile() || !HFileFeature::get_file_feature(parser.get(), record)) {
    return -1;
  }
  return static_cast<int>(record.vt_words.size());
}
