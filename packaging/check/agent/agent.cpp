// The first thing that an agent tries: the strongest word of each document that it is given.
#include <morvaai.h>

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    HString const path = morvabs::from_path(argv[i]);
    HFeatureNode words;
    bool const is_read = HFileFeature::get_file_feature(path, words, true);
    *HStdOutStream::ins() << path << L": "
                          << (is_read ? words.vt_words.at(0) : HString(L"not read")) << L"\n";
  }
}
