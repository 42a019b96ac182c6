#include "tests/support/child_trial.h"

#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/system_error.h"

namespace testing_support {

int errorInChild(const std::function<void()>& call) {
  const pid_t child = fork();
  check(child < 0 ? -1 : 0, "fork");
  if (child == 0) {
    try {
      call();
    } catch (const std::system_error& error) {
      _exit(error.code().value());
    }
    _exit(0);
  }
  int status = 0;
  check(waitpid(child, &status, 0) == child ? 0 : -1, "waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace testing_support
