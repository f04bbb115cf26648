#include "mpi/process_run.h"

#include <set>
#include <vector>

#include "terminal/output.h"

namespace tool {

bool is_first(std::shared_ptr<HProcessGroup> const& group) {
  return !group || group->rank() == 0;
}

bool all_go_on(std::shared_ptr<HProcessGroup> const& group, std::string const& problem) {
  std::vector<std::string> const problems =
      group ? group->all_gather(problem) : std::vector<std::string>{problem};
  std::set<std::string> different(problems.begin(), problems.end());
  different.erase(std::string());
  if (is_first(group)) {
    for (std::string const& one : different) {
      complain(one);
    }
  }
  return different.empty();
}

}  // namespace tool
