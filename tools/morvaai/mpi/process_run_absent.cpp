#include <stdexcept>

#include "mpi/process_run.h"

namespace tool {

std::optional<std::string> refuse_process_run() {
  return "--mpi: this program was built without MPI: build it with cmake -DMORVA_WITH_MPI=ON "
         "(scripts/setup --mpi installs what that needs)";
}

int run_in_group(std::function<int(std::shared_ptr<HProcessGroup> const&)> const& /*work*/) {
  throw std::logic_error(*refuse_process_run());
}

}  // namespace tool
