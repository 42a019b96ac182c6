#include "tests/support/private_mounts.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/child_trial.h"
#include "tests/support/system_error.h"
#include "tests/support/user_namespace.h"

namespace testing_support {

void enterPrivateMounts() {
  // The way for users who may not mount anything: root in a namespace of their own.
  if (unshare(CLONE_NEWNS) != 0) enterUserNamespace();
  check(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "private mounts");
}

std::vector<Way> ways() {
  const int error = errorInChild([] {
    enterPrivateMounts();
    mountEmpty("/mnt");
  });
  if (error != 0) return {Way::StandIn};
  return {Way::StandIn, Way::Mount};
}

void mountEmpty(const std::string& directory, const std::string& options) {
  check(mount("none", directory.c_str(), "tmpfs", 0, options.c_str()), "tmpfs on " + directory);
}

void mountOver(const std::string& source, const std::string& target) {
  check(mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr), "mount on " + target);
}

void makeReadOnly(const std::string& mountPoint) {
  check(mount(nullptr, mountPoint.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
        "read-only " + mountPoint);
}

void unmount(const std::string& mountPoint) {
  check(umount(mountPoint.c_str()), "umount of " + mountPoint);
}

void replaceSystemDirectory() {
  mountEmpty("/etc");
  check(mkdir("/etc/kestrel", 0700), "/etc/kestrel");
}

}  // namespace testing_support
