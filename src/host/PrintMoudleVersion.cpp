#include "host/PrintMoudleVersion.h"

#include <cstdio>

int PrintMoudleVersion() {
  return std::fprintf(stderr, "%-25.24s%d.%d.%d.%d.%-6d%04d-%02d-%02d %02d:%02d:%02d\n",
                      "libmorvaai", 3, 2306, 4, 13, 1, 2024, 6, 24, 20, 42, 3);
}
