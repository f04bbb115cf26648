#include "host/HStutterDict.h"

#include "host/native_path.h"
#include "morvabs/locate.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/engine.h"

HStutterDict::HStutterDict() : mstr_dict_path(morvabs::dictionary_directory()) {}

HStutterDict* HStutterDict::ins() {
  return pins();
}

HStutterDict* HStutterDict::pins() {
  static auto* const one = new HStutterDict;
  return one;
}

void HStutterDict::set_dict_path(HString const& directory) {
  mstr_dict_path = directory;
}

bool HStutterDict::is_exist_dict() const {
  auto const directory = morvabs::to_path(mstr_dict_path);
  return directory && !directory->empty() &&
         morvajieba::Dictionary::is_usable(
             morvajieba::join(*directory, morvajieba::dictionary_name));
}
