#include <cstdlib>
#include <string>

#include "host/HFileLog.h"
#include "host/utf8.h"
#include "host/version.h"
#include "morvaai_c.h"

#include "c/internal/call.h"
#include "c/internal/dictionary.h"
#include "c/internal/log.h"

namespace {

constexpr int most_verbose = 4;
bool has_sink = false;

std::string version_text() {
  auto const& version = morva::version;
  return std::to_string(version.major) + "." + std::to_string(version.minor) + "." +
         std::to_string(version.patch);
}

}  // namespace

void morva::c::leave_sink() {
  HFileLog* const log = HFileLog::ins();
  log->set_sink({});
  log->mi_level = has_sink ? 0 : log->mi_level;
}

int morva_interface_version(void) {
  return 1;
}

char const* morva_library_version(void) {
  static std::string const text = version_text();
  return text.c_str();
}

morva_status morva_load_dictionary(char const* directory) {
  return morva::c::locked_status_of([&] {
    if (directory != nullptr && setenv("MORVA_DICT_PATH", directory, 1) != 0) {
      throw std::bad_alloc();
    }
    morva::c::load_dictionary();
  });
}

morva_status morva_set_log(int level, morva_log_sink sink, void* user) {
  return morva::c::locked_status_of([&] {
    if (level < 0 || level > most_verbose) {
      throw morva::c::Failure(MORVA_INVALID_ARGUMENT, "level is not 0 to 4");
    }
    HFileLog* const log = HFileLog::ins();
    if (sink == nullptr) {
      log->set_sink({});
    } else {
      log->set_sink([sink, user](int at, HString const&, int, HString const& text) {
        sink(user, at, morvabs::to_utf8(text_view(text)).c_str());
      });
    }
    has_sink = sink != nullptr;
    log->mi_level = level;
  });
}
