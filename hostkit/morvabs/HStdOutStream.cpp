#include "host/HStdOutStream.h"

#include <cstdio>

#include "host/utf8.h"

HStdOutStream* HStdOutStream::ins() {
  static HStdOutStream stream;
  return &stream;
}

HStdOutStream* HStdOutStream::pins() {
  return ins();
}

HStdOutStream const& HStdOutStream::operator<<(HString const& text) const {
  std::string const utf8 = morvabs::to_utf8(text.get_ws());
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
  std::fflush(stdout);
  return *this;
}
