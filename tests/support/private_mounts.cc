#include "tests/support/private_mounts.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
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

/// The way for users who may not mount anything: root in a namespace of their own.
void enterUserNamespace() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  check(unshare(CLONE_NEWUSER | CLONE_NEWNS), "unshare of the user and mount namespaces");
  writeText("/proc/self/setgroups", "deny");
  writeText("/proc/self/uid_map", "0 " + user + " 1");
  writeText("/proc/self/gid_map", "0 " + group + " 1");
}

}  // namespace

void enterPrivateMounts() {
  if (unshare(CLONE_NEWNS) != 0) enterUserNamespace();
  check(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "private mounts");
}

std::vector<Way> ways() {
  const pid_t child = fork();
  check(child < 0 ? -1 : 0, "fork");
  if (child == 0) {
    try {
      enterPrivateMounts();
      mountEmpty("/mnt");
    } catch (const std::system_error&) {
      _exit(1);
    }
    _exit(0);
  }
  int status = 0;
  check(waitpid(child, &status, 0) == child ? 0 : -1, "waitpid");
  if (status == 0) return {Way::StandIn, Way::Mount};
  return {Way::StandIn};
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
