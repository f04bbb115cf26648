// An agent with a word segmenter of its own (own_segmenter.cpp): the library works on its words.
//
//     own_host_library FILE
//
// Words and weights are what fingerprints, classes and boxes are made of. So what one segmenter has
// made is not to be compared with what another makes: all machines of a fleet have the same.
#include <iostream>

#include <morvaai.h>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: own_host_library FILE\n";
    return 2;
  }
  if (HJieba::pins()->Init() != 0) {
    std::cerr << "the segmenter has no dictionary\n";
    return 1;
  }
  HFeatureNode record;
  HFileFeature::get_file_feature(morvabs::from_path(argv[1]), record, true);
  for (std::size_t i = 0; i < record.vt_words.size() && i < 10; ++i) {
    *HStdOutStream::ins() << HString(record.vt_weight[i]) << L"  " << record.vt_words[i] << L"\n";
  }
  return record.vt_words.empty() ? 1 : 0;
}
