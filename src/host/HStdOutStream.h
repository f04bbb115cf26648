#pragma once

#include "host/HString.h"
#include "host/export.h"

/// The console, through which all output that is meant for a person at it goes.
class MORVA_EXPORT HStdOutStream {
 public:
  /// The singleton; both names give the same object.
  static HStdOutStream* ins();
  /// The singleton; `ins` gives the same object.
  static HStdOutStream* pins();

  /// Writes the text to standard output as UTF-8 at once, adds no line end, and returns the stream.
  HStdOutStream const& operator<<(HString const& text) const;

 private:
  HStdOutStream() = default;
};
