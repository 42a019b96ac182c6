#include "tests/module/private_mounts.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "tests/module/file_calls.h"
#include "tests/module/temp_directory.h"

namespace host {
namespace {

void check(int result, const std::string& what) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), what);
}

/// The way for users who may not mount anything: root in a namespace of their own.
void enterUserNamespace() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  check(unshare(CLONE_NEWUSER | CLONE_NEWNS), "unshare of the user and mount namespaces");
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", "0 " + user + " 1");
  writeFile("/proc/self/gid_map", "0 " + group + " 1");
}

}  // namespace

void enterPrivateMounts() {
  if (unshare(CLONE_NEWNS) != 0) enterUserNamespace();
  check(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr), "private mounts");
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
  std::filesystem::create_directory(SYSTEM_DIRECTORY);
  allowSystemDirectory();
}

}  // namespace host
