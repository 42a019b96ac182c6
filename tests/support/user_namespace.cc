#include "tests/support/user_namespace.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/system_error.h"

namespace testing_support {
namespace {

void writeText(const std::string& path, const std::string& text) {
  std::ofstream file(path);
  file << text << std::flush;
  check(file ? 0 : -1, path);
}

}  // namespace

void enterUserNamespace() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  check(unshare(CLONE_NEWUSER | CLONE_NEWNS), "unshare of the user and mount namespaces");
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", "0 " + user + " 1");
  writeText("/proc/self/gid_map", "0 " + group + " 1");
}

std::string whyNoUserNamespace() {
  const pid_t child = fork();
  check(child < 0 ? -1 : 0, "fork");
  if (child == 0) {
    try {
      enterUserNamespace();
    } catch (const std::system_error& error) {
      _exit(error.code().value());
    }
    _exit(0);
  }
  int status = 0;
  check(waitpid(child, &status, 0) == child ? 0 : -1, "waitpid");
  if (status == 0) return {};
  return "a process cannot have a user namespace of its own here: " +
         (WIFEXITED(status) ? std::generic_category().message(WEXITSTATUS(status))
                            : "signal " + std::to_string(WTERMSIG(status)));
}

}  // namespace testing_support
