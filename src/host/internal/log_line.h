#pragma once

#include "host/HFileLog.h"
#include "host/HString.h"
#include "host/Orlec/Global.h"

namespace morva {

/// Writes one log record made of the pieces.
template <typename... Pieces>
void log_line(int level, wchar_t const* tag, int line, Pieces const&... pieces) {
  HStringForLog& record = HFileLog::ins()->get(level, tag, line);
  (record << ... << HString(pieces));
  HFileLog::ins()->log(record);
}

/// The same, for the chatter of the parsing path.
template <typename... Pieces>
void log_noise_line(int level, wchar_t const* tag, int line, Pieces const&... pieces) {
  HStringForLog& record = HFileLog::ins()->get(level, tag, line);
  (record << ... << HString(pieces));
  HFileLog::ins()->log_noise(record);
}

/// The record of a broken precondition: "<function>, Line:<line>, <kind>" at level 1, and only
/// while the flag of `Orlec::Global` is set.
inline void log_assertion(wchar_t const* tag, wchar_t const* function, int line,
                          wchar_t const* kind) {
  if (Orlec::Global::pins()->mb_assert_log) {
    log_line(1, tag, line, function, L", Line:", HString(line, false), L", ", kind);
  }
}

}  // namespace morva
