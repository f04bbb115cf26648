#include "version_number.h"

#include <fmt/format.h>

#include "morvaai.h"

namespace tool {

std::string version_number() {
  using morva::version;
  return fmt::format("{}.{}.{}.{}.{}", version.major, version.minor, version.patch, version.build,
                     version.revision);
}

}  // namespace tool
