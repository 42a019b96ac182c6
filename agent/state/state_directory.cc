#include "agent/state/state_directory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "agent/base/own_user.h"
#include "agent/base/start_failure.h"

namespace agent {
namespace {

std::string words(int error) { return std::generic_category().message(error); }

/// The path without links: what it leads to is decided once.
std::string resolved(const std::string& path) {
  char* const found = ::realpath(path.c_str(), nullptr);
  if (found == nullptr) {
    throw StartFailure(EXIT_BAD_FILE,
                       "state directory " + path + " cannot be used: " + words(errno));
  }
  std::string result = found;
  std::free(found);
  return result;
}

void check(const std::string& path, int directory) {
  const std::string who = "state directory " + path + " ";
  struct stat status {};
  if (::fstat(directory, &status) != 0) {
    throw StartFailure(EXIT_BAD_FILE, who + "cannot be used: " + words(errno));
  }
  if (status.st_uid != ::geteuid()) {
    throw StartFailure(EXIT_BAD_FILE, who + "belongs to user " + std::to_string(status.st_uid) +
                                          ", not to the agent's user " +
                                          std::to_string(::geteuid()));
  }
  if (!isOwnUser(status.st_uid)) {
    throw StartFailure(EXIT_BAD_FILE,
                       who + "belongs to user " + std::to_string(status.st_uid) +
                           ", which stands for every user without a number in this namespace");
  }
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    throw StartFailure(EXIT_BAD_FILE,
                       who + "can be written to by other users; mode 0700 would be right");
  }
}

void lock(const std::string& path, int directory) {
  if (::flock(directory, LOCK_EX | LOCK_NB) == 0) return;
  if (errno == EWOULDBLOCK) {
    throw StartFailure(EXIT_TRY_AGAIN, "state directory " + path + " is in use by another agent");
  }
  throw StartFailure(EXIT_BAD_FILE,
                     "state directory " + path + " cannot be locked: " + words(errno));
}

}  // namespace

StateDirectory::StateDirectory(const std::string& path)
    : path_(resolved(path)),
      descriptor_(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW)) {
  if (descriptor_ < 0) {
    throw StartFailure(EXIT_BAD_FILE, "state directory " + path_ +
                                          (errno == ENOTDIR ? " is not a directory"
                                                            : " cannot be used: " + words(errno)));
  }
  try {
    check(path_, descriptor_);
    lock(path_, descriptor_);
  } catch (...) {
    (void)::close(descriptor_);
    throw;
  }
}

StateDirectory::~StateDirectory() { (void)::close(descriptor_); }

}  // namespace agent
