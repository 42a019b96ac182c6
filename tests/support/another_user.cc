#include "tests/support/another_user.h"

#include <grp.h>
#include <sys/stat.h>

#include "tests/support/child_trial.h"
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
  const int error = errorInChild(becomeNobody);
  if (error == 0) return {};
  return "a process cannot become another user here: " + std::generic_category().message(error);
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
