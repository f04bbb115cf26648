#include "host/PrintMoudleVersion.h"

#include <cstdio>

#include "host/version.h"

int PrintMoudleVersion() {
  using morva::version;
  return std::fprintf(stderr, "%-25.24s%d.%d.%d.%d.%-6d%04d-%02d-%02d %02d:%02d:%02d\n",
                      "libmorvaai", version.major, version.minor, version.patch, version.build,
                      version.revision, version.year, version.month, version.day, version.hour,
                      version.minute, version.second);
}
