// Keeps out of the way of a running agent.
#pragma once

#include <string>

namespace client {

/// The lock by which an agent keeps others out of its state directory. Held until it is destroyed;
/// nothing is held where the directory cannot be opened or its file system has no such locks.
class DirectoryLock {
 public:
  enum Kind {
    Shared,  ///< with others that only read
    Alone,
  };

  /// Throws Failure if an agent, or another client that writes, has the lock of the file's
  /// directory. `advice` is what to do then.
  DirectoryLock(const std::string& file, Kind kind, const char* advice);
  ~DirectoryLock();

  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace client
