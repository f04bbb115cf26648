#include <cstdio>

#include "command_line/commands.h"
#include "exit_status.h"
#include "terminal/output.h"

namespace tool {

int run_console(std::string const& method) {
  if (method == "canopy") {
    HClusterTest::test_canopy();
  } else if (method == "kmeans") {
    HClusterTest::test_kmeans(0);
  } else {
    HClusterTest::test_dbscan();
  }
  if (std::ferror(stdout) != 0) {
    complain("standard output: not all could be written");
    return some_failed;
  }
  return all_done;
}

}  // namespace tool
