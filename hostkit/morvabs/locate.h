#pragma once

#include "host/HString.h"
#include "host/export.h"

namespace morvabs {

/// The directory or file that an environment variable names, as it stands there; empty where the
/// variable is not set or empty. The environment is asked at every call.
MORVA_EXPORT HString environment_path(char const* variable);

/// The user's data directory for this product, without a separator at its end:
/// $XDG_DATA_HOME/morvaai where that is an absolute path, else ~/.local/share/morvaai.
MORVA_EXPORT HString user_data_directory();

/// The directory of the word dictionaries: MORVA_DICT_PATH as it stands there, else "dict" in the
/// data directory, which lies where the build put it as seen from the library, installed or not.
MORVA_EXPORT HString dictionary_directory();

/// The directory of the running executable, without a separator at its end.
MORVA_EXPORT HString executable_directory();

}  // namespace morvabs
