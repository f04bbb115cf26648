#pragma once

#include <functional>

#include "host/HString.h"
#include "host/export.h"

/// One log record under construction: the text and whether the record's level is switched on.
class MORVA_EXPORT HStringForLog {
 public:
  /// The text so far, as it was appended: nothing in it is made harmless yet.
  HString str_text;
  /// Whether the record will be written, as its level is switched on.
  bool mb_on = false;

  /// Appends only while `mb_on` is set, so that a record of a level that is off costs no text.
  HStringForLog& operator<<(HString const& text);

 private:
  friend class HFileLog;
  int level_ = 0;
  HString tag_;
  int line_ = 0;
};

/// The process's log. A caller takes a record, appends to it and hands it back:
///
///     auto& record = HFileLog::ins()->get(1, L"../HFileDNA", __LINE__);
///     record << L"pointn size:" << HString(size);
///     HFileLog::ins()->log(record);
///
/// Levels: 1 failures, 2 warnings, 3 information, 4 verbose detail; a record is on when the log is
/// enabled and its level is from 1 to `mi_level`. Records go to the sink, without one to the file
/// that MORVA_LOG_FILE names, else to standard error. Taking and logging records is safe from any
/// thread; the members and the sink are to be set while no other thread logs.
class MORVA_EXPORT HFileLog {
 public:
  /// Master switch.
  bool mb_enable = true;
  /// Current level, 0 (silent) to 4; at the start what MORVA_LOG_LEVEL says, else 1.
  int mi_level = 1;

  /// The singleton; both names give the same object.
  static HFileLog* ins();
  /// The singleton; `ins` gives the same object.
  static HFileLog* pins();

  /// An empty record of the calling thread, marked with level, tag and line. It stays valid until
  /// it is logged; a thread may have up to 16 records open at a time.
  HStringForLog& get(int level, wchar_t const* file_tag, int line);
  /// Writes the record if it is on.
  void log(HStringForLog& record);
  /// The same, for the chatter of the parsing path.
  void log_noise(HStringForLog& record);

  /// What takes the records of a host: level, source file and line that a record comes from, and
  /// its text, which may hold anything that stands in a document or a path.
  using Sink = std::function<void(int level, HString const& tag, int line, HString const& text)>;
  /// Routes all further records to the host's own logger; an empty function restores the default. A
  /// sink may log itself: such records go to the default place.
  void set_sink(Sink sink);

 private:
  HFileLog();
};
