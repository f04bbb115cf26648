#pragma once

#include <functional>
#include <string>

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

/// What `act` gives in a process forked for it, for what would harm this one; nothing where it ends
/// on the way. Expectations are to stand outside.
inline std::string in_other_process(std::function<std::string()> const& act) {
  int ends[2];
  if (pipe(ends) != 0) {
    return {};
  }
  pid_t const process = fork();
  if (process == 0) {
    std::string const given = act();
    static_cast<void>(!write(ends[1], given.data(), given.size()));
    _exit(0);
  }
  close(ends[1]);
  std::string given;
  char buffer[4096];
  for (ssize_t size = 0; (size = read(ends[0], buffer, sizeof buffer)) > 0;) {
    given.append(buffer, static_cast<std::size_t>(size));
  }
  close(ends[0]);
  waitpid(process, nullptr, 0);
  return given;
}

/// Gives up the privileges of this process, which from now on is the only one of its user. False
/// where it may not.
inline bool become_lone_user() {
  constexpr uid_t user = 54321;
  return setresuid(user, user, user) == 0;
}

}  // namespace test
