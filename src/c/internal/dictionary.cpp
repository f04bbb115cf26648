#include "c/internal/dictionary.h"

#include "host/HJieba.h"
#include "host/HStutterDict.h"
#include "host/Orlec/LocateMgr.h"

#include "c/internal/call.h"
#include "c/internal/shown.h"

namespace morva::c {

HString load_dictionary() {
  HString directory = Orlec::LocateMgr::pins()->get_dict_path(false);
  HStutterDict::pins()->set_dict_path(directory);
  if (!HStutterDict::pins()->is_exist_dict() || HJieba::pins()->Init() != 0) {
    throw Failure(MORVA_NO_DICTIONARY, "there is no dictionary in " + shown(directory));
  }
  return directory;
}

}  // namespace morva::c
