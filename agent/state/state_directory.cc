#include "agent/state/state_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "agent/base/start_failure.h"

namespace agent {
namespace {

std::string words(int error) { return std::generic_category().message(error); }

void check(const std::string& path) {
  const std::string who = "state directory " + path + " ";
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    throw StartFailure(EXIT_BAD_CONFIG, who + "cannot be used: " + words(errno));
  }
  if (!S_ISDIR(status.st_mode)) throw StartFailure(EXIT_BAD_CONFIG, who + "is not a directory");
  if (status.st_uid != ::geteuid()) {
    throw StartFailure(EXIT_BAD_CONFIG, who + "belongs to user " + std::to_string(status.st_uid) +
                                            ", not to the agent's user " +
                                            std::to_string(::geteuid()));
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw StartFailure(EXIT_BAD_CONFIG,
                       who + "can be written to by other users; mode 0700 would be right");
  }
}

}  // namespace

StateDirectory::StateDirectory(std::string path) : path_(std::move(path)) {
  while (path_.size() > 1 && path_.ends_with('/')) path_.pop_back();
  check(path_);
  const std::string lockFile = at("localsettings.lock");
  lock_ = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (lock_ < 0)
    throw StartFailure(EXIT_BAD_CONFIG, lockFile + " cannot be opened: " + words(errno));
  if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    const int reason = errno;
    (void)::close(lock_);
    if (reason != EWOULDBLOCK) {
      throw StartFailure(EXIT_BAD_CONFIG, lockFile + " cannot be locked: " + words(reason));
    }
    throw StartFailure(EXIT_IN_USE, "state directory " + path_ + " is in use by another agent");
  }
}

StateDirectory::~StateDirectory() { (void)::close(lock_); }

}  // namespace agent
