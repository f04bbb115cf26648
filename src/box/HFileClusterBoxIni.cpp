#include "box/HFileClusterBoxIni.h"

#include "host/Orlec/LocateMgr.h"

HString HFileClusterBoxIni::mstr_box_ini =
    Orlec::LocateMgr::pins()->get_box_path(true) + L"box.ini";
