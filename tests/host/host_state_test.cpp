#include "host_state.h"

#include <string>

#include "host_process.h"

using test::HostProcess;

namespace {

/// The names of what differs, with both values.
std::string differences(test::HostState const& before, test::HostState const& after) {
  std::string found;
  for (auto const& [name, value] : before) {
    auto const now = after.find(name);
    if (now == after.end() || now->second != value) {
      found +=
          name + ": " + value + " became " + (now == after.end() ? "nothing" : now->second) + "\n";
    }
  }
  for (auto const& [name, value] : after) {
    found += before.contains(name) ? "" : name + " is new: " + value + "\n";
  }
  return found;
}

}  // namespace

TEST_F(HostProcess, is_as_it_was_after_all_kinds_of_work) {
  auto const before = test::host_state();
  work();
  auto const after = test::host_state();
  give_back_streams();
  EXPECT_EQ(differences(before, after), "");
}
