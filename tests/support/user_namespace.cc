#include "tests/support/user_namespace.h"

#include <sched.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "tests/support/child_trial.h"
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

std::vector<Namespace> userNamespaces() {
  if (errorInChild(enterUserNamespace) != 0) return {};
  return {Namespace::Own};
}

}  // namespace testing_support
