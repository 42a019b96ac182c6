#include "tests/support/another_user.h"

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "tests/support/system_error.h"

namespace testing_support {
namespace {

void becomeNobody() {
  check(setgroups(0, nullptr), "setgroups");
  check(setgid(NOBODY), "setgid");
  check(setuid(NOBODY), "setuid");
}

}  // namespace

std::string whyNoOtherUser() {
  const pid_t child = fork();
  check(child < 0 ? -1 : 0, "fork");
  if (child == 0) {
    try {
      becomeNobody();
    } catch (const std::system_error& error) {
      _exit(error.code().value());
    }
    _exit(0);
  }
  int status = 0;
  check(waitpid(child, &status, 0) == child ? 0 : -1, "waitpid");
  if (status == 0) return {};
  return "a process cannot become another user here: " +
         std::generic_category().message(WEXITSTATUS(status));
}

std::string whyRightsStay() { return geteuid() == 0 ? whyNoOtherUser() : ""; }

void dropRights() {
  if (geteuid() == 0) becomeNobody();
}

std::optional<ForeignDirectory> foreignDirectory(const std::string& mine) {
  if (chown(mine.c_str(), NOBODY, NOBODY) == 0) return ForeignDirectory{mine, NOBODY};
  struct stat status {};
  check(stat("/", &status), "/");
  if (status.st_uid == geteuid()) return {};
  return ForeignDirectory{"/", status.st_uid};
}

}  // namespace testing_support
