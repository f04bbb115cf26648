#include "host/HStutterDict.h"

#include "host/native_path.h"
#include "morvajieba/dictionary.h"
#include "morvajieba/engine.h"

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
  HString path = mstr_dict_path;
  if (path.not_empty()) path.dir_fit(true);
  auto const native = morvabs::to_path(path + HString(morvajieba::dictionary_name));
  return native && morvajieba::Dictionary::is_usable(*native);
}
